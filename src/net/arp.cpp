// arp: ARP defence settings of an interface and the table that binds IP addresses to MAC addresses.
#include "records/arp.h"

#include <arpa/inet.h>

#include "args/address_text.h"
#include "args/bits_text.h"
#include "args/print.h"
#include "main/handlers.h"
#include "order/order.h"

namespace {

// The modules count levels downwards.
uint32_t deal_level(int32_t value) { return value <= 100 ? 2 : value <= 200 ? 1 : 0; }

bool parse_settings(ArpSettings& settings, const Args& args) {
  if (args.count() < 4) return false;
  copy_text(settings.dev, args[3]);
  if (args.is(2, "get")) return true;
  if (args.count() < 8) return false;
  settings.tm = args.number(4);
  settings.ip = StrToIp(args[5]);
  settings.check_ip = StrToIp(args[6]);
  settings.deal_level = deal_level(static_cast<int32_t>(args.number(7)));
  return true;
}

bool parse_binding(ArpBinding& binding, const Args& args) {
  if (args.count() < 5) return false;
  copy_text(binding.dev, args[3]);
  binding.ip = StrToIp(args[4]);
  if (binding.ip == 0) binding.ip = htonl(args.number(4));
  if (binding.ip == 0) {
    print("ip err:%s/n", args[4]);  // callers look for the two characters "/n"
    return false;
  }
  if (args.is(2, "del")) return true;
  if (args.count() < 8) return false;
  if (StrToMac(args[5], binding.mac) != 0) return false;
  const std::string_view type = args[6];
  if (type.size() != 1 || type[0] < '1' || type[0] > '4') return false;
  binding.type = static_cast<uint16_t>(type[0] - '0');
  copy_text(binding.name, args[7]);
  return true;
}

bool parse_bulk(ArpBinding& binding, const Args& args) {
  if (args.count() < 5) return false;
  copy_text(binding.dev, args[3]);
  binding.type = args.number<uint16_t>(4);
  return true;
}

bool parse_list_filter(ArpListFilter& filter, const Args& args) {
  if (args.count() < 4) return false;
  copy_text(filter.dev, args[3]);
  return true;
}

bool parse_switch(ArpSwitch& disonline, const Args& args) {
  if (args.count() < 4) return false;
  disonline.enable = args.number(3);
  return true;
}

bool parse_database_key(ArpDatabaseKey& key, const Args& args) {
  if (args.count() < 5) return false;
  key.ip = StrToIp(args[4]);
  copy_text(key.dev, args[3]);
  return true;
}

bool parse_mac_key(ArpMacKey& key, const Args& args) {
  if (args.count() < 5) return false;
  StrToMac(args[4], key.mac);  // no MAC at all goes out as it was read: the module finds nothing to delete
  copy_text(key.dev, args[3]);
  return true;
}

bool parse_search(ArpSearch& search, const Args& args) {
  if (args.count() < 6) return false;
  copy_text(search.dev, args[3]);
  const uint32_t ip = StrToIp(args[4]);
  const uint32_t mask = StrToIp(args[5]);
  if (ip == 0 || mask == 0) return false;
  search.first_ip = ip & mask;
  search.last_ip = ip | ~mask;
  return true;
}

void print_settings(const ArpSettings& settings) {
  print(" dev: %s  tm: %d ip:%s  check_ip:%s deal_level:%d\n", settings.dev, settings.tm,
        ip_text(settings.ip).chars, ip_text(settings.check_ip).chars, settings.deal_level);
}

void print_switch(const ArpSwitch& disonline) { print(" enable:%d\n", disonline.enable); }

void print_list(const Answer& answer) {
  print("ip \t\t check_ip \t\t org_ip \t \t mac \t \t dev \t  type \t state \t del_time\n");
  for (const ArpListEntry& entry : answer.list<ArpListEntry>()) {
    print("%s\t%s\t%s\t%s\t%s\t%u\t%u[%s]%d\t%lu\n", ip_text(entry.ip).chars, ip_text(entry.check_ip).chars,
          ip_text(entry.org_ip).chars, mac_text(entry.mac).chars, entry.dev, entry.type, entry.state,
          bits_text(entry.state, 20).chars, entry.count, entry.del_time);
  }
}

// clang-format off
constexpr SubCommand kArp[] = {
    {"set", kArpSet, 1024, sizeof(ArpSettings), "dev tm ip check_ip zn_jb", parse_as<parse_settings>, nullptr},
    {"get", kArpGet, 1024, sizeof(ArpSettings), "dev", parse_as<parse_settings>, print_as<print_settings>},
    {"add", kArpAdd, 1024, sizeof(ArpBinding), "dev ip mac type[1|2|3|4] name", parse_as<parse_binding>, nullptr},
    {"del", kArpDel, 1024, sizeof(ArpBinding), "dev ip", parse_as<parse_binding>, nullptr},
    {"list", kArpList, 0x400000, 0x3ffc00, "dev", parse_as<parse_list_filter>, print_as<print_list>},
    {"delall", kArpDelAll, 1024, sizeof(ArpBinding), "", nullptr, nullptr},
    {"addall", kArpAddAll, 1024, sizeof(ArpBinding), "dev[lan|wan] type[1|2|3|4]", parse_as<parse_bulk>, nullptr},
    {"disonline_set", kArpDisonlineSet, 1024, sizeof(ArpSwitch), "en[0|1]", parse_as<parse_switch>, nullptr},
    {"disonline_get", kArpDisonlineGet, 1024, sizeof(ArpSwitch), "", nullptr, print_as<print_switch>},
    {"db_del", kArpDatabaseDel, 1024, sizeof(ArpDatabaseKey), "dev ip", parse_as<parse_database_key>, nullptr},
    {"del_mac", kArpDelMac, 1024, sizeof(ArpMacKey), "dev mac", parse_as<parse_mac_key>, nullptr},
    {"debug", kArpDebug, 1024, 1024, "", nullptr, nullptr},
    {"search", kArpSearch, 1024, 1024, "dev ip mask", parse_as<parse_search>, nullptr},
};
// clang-format on

}  // namespace

int cmd_arp(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kModuleArp, kArp, argc, argv, entry);
}
