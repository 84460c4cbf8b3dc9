// arp: ARP defence settings of an interface and the table that binds IP addresses to MAC addresses.
#include "records/arp.h"

#include "args/print.h"
#include "net/commands.h"
#include "order/order.h"

namespace {

// The modules count levels downwards.
uint32_t deal_level(int32_t value) { return value <= 100 ? 2 : value <= 200 ? 1 : 0; }

bool parse_settings(ArpSettings& settings, const Args& args) {
  args.take(3, settings.dev, settings.tm, settings.ip, settings.check_ip);
  settings.deal_level = deal_level(static_cast<int32_t>(args.number(7)));
  return true;
}

bool parse_bound_address(ArpBinding& binding, const Args& args) {
  args.take(3, binding.dev, binding.ip);
  if (binding.ip.value == 0) binding.ip.value = htonl(args.number(4));
  if (binding.ip.value == 0) print("ip err:%s/n", args[4]);  // callers look for the two characters "/n"
  return binding.ip.value != 0;
}

bool parse_binding(ArpBinding& binding, const Args& args) {
  if (!parse_bound_address(binding, args) || args.count() < 8 || !args.read(5, binding.mac)) return false;
  const std::string_view type = args[6];
  if (type.size() != 1 || type[0] < '1' || type[0] > '4') return false;
  binding.type = static_cast<uint16_t>(type[0] - '0');
  copy_text(binding.name, args[7]);
  return true;
}

bool parse_search(ArpSearch& search, const Args& args) {
  copy_text(search.dev, args[3]);
  const uint32_t ip = args.ip(4).value;
  const uint32_t mask = args.ip(5).value;
  search.first_ip = {ip & mask};
  search.last_ip = {ip | ~mask};
  return ip != 0 && mask != 0;
}

void print_settings(const ArpSettings& settings) {
  print(" dev: %s  tm: %d ip:%s  check_ip:%s deal_level:%d\n", settings.dev, settings.tm, settings.ip,
        settings.check_ip, settings.deal_level);
}

void print_switch(const ArpSwitch& disonline) { print(" enable:%d\n", disonline.enable); }

void print_list(const Answer& answer) {
  print("ip \t\t check_ip \t\t org_ip \t \t mac \t \t dev \t  type \t state \t del_time\n");
  for (const ArpListEntry& entry : answer.list<ArpListEntry>()) {
    print("%s\t%s\t%s\t%s\t%s\t%u\t%u[%s]%d\t%lu\n", entry.ip, entry.check_ip, entry.org_ip, entry.mac,
          entry.dev, entry.type, entry.state.value, entry.state, entry.count, entry.del_time);
  }
}

// clang-format off
constexpr SubCommand kArp[] = {
    {"set", kModuleArp, kArpSet, 1024, sizeof(ArpSettings), 8, "dev tm ip check_ip zn_jb", parse_as<parse_settings>, nullptr},
    {"get", kModuleArp, kArpGet, 1024, sizeof(ArpSettings), 4, "dev", parse_words<&ArpSettings::dev>, print_as<print_settings>},
    {"add", kModuleArp, kArpAdd, 1024, sizeof(ArpBinding), 5, "dev ip mac type[1|2|3|4] name", parse_as<parse_binding>, nullptr},
    {"del", kModuleArp, kArpDel, 1024, sizeof(ArpBinding), 5, "dev ip", parse_as<parse_bound_address>, nullptr},
    {"list", kModuleArp, kArpList, 0x400000, 0x3ffc00, 4, "dev", parse_words<&ArpListFilter::dev>, print_as<print_list>},
    {"delall", kModuleArp, kArpDelAll, 1024, sizeof(ArpBinding), 0, "", nullptr, nullptr},
    {"addall", kModuleArp, kArpAddAll, 1024, sizeof(ArpBinding), 5, "dev[lan|wan] type[1|2|3|4]", parse_words<&ArpBinding::dev, &ArpBinding::type>, nullptr},
    {"disonline_set", kModuleArp, kArpDisonlineSet, 1024, sizeof(ArpSwitch), 4, "en[0|1]", parse_words<&ArpSwitch::enable>, nullptr},
    {"disonline_get", kModuleArp, kArpDisonlineGet, 1024, sizeof(ArpSwitch), 0, "", nullptr, print_as<print_switch>},
    {"db_del", kModuleArp, kArpDatabaseDel, 1024, sizeof(ArpDatabaseKey), 5, "dev ip", parse_words<&ArpDatabaseKey::dev, &ArpDatabaseKey::ip>, nullptr},
    // No MAC at all goes out as zero: the module finds nothing to delete.
    {"del_mac", kModuleArp, kArpDelMac, 1024, sizeof(ArpMacKey), 5, "dev mac", parse_words<&ArpMacKey::dev, &ArpMacKey::mac>, nullptr},
    {"debug", kModuleArp, kArpDebug, 1024, 1024, 0, "", nullptr, nullptr},
    {"search", kModuleArp, kArpSearch, 1024, 1024, 6, "dev ip mask", parse_as<parse_search>, nullptr},
};
// clang-format on

}  // namespace

int cmd_arp(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kArp, argc, argv, entry);
}
