// pppoe_br: LAN devices bridged out over WAN devices for their hosts' own PPPoE, with VLAN tags.
#include "records/pppoe_br.h"

#include "args/print.h"
#include "net/commands.h"
#include "order/order.h"
#include "platform/list.h"

namespace {

// The names up to the first empty one. Returns their number.
uint32_t parse_devices(char (&devices)[kMaxPppoeBridgeLan][16], char* list) {
  char* words[kMaxPppoeBridgeLan];
  const int count = split_string(list, ' ', words, kMaxPppoeBridgeLan);
  int copied = 0;
  for (; copied < count && words[copied][0] != '\0'; ++copied) copy_text(devices[copied], words[copied]);
  return static_cast<uint32_t>(copied);
}

uint16_t vlan_number(const char* word) {
  const uint32_t number = J_atoi(word);
  return number < 4096 ? static_cast<uint16_t>(number) : uint16_t{0};
}

// START[-END]; what is missing is 0.
void parse_vlan_range(uint16_t& start, uint16_t& end, char* range) {
  char* words[2];
  const int count = split_string(range, '-', words, 2);
  if (count > 0) start = vlan_number(words[0]);
  if (count > 1) end = vlan_number(words[1]);
}

void parse_out_devices(PppoeBridgeOut (&out)[2], char* names, char* vlans) {
  char* words[3];
  int count = split_string(names, ',', words, 3);
  for (int i = 0; i < 2; ++i) copy_text(out[i].name, i < count ? words[i] : "none");
  count = split_string(vlans, ',', words, 2);
  for (int i = 0; i < count; ++i) {
    char* const dot = strchr(words[i], '.');
    if (dot != nullptr) {
      *dot = '\0';
      parse_vlan_range(out[i].vlan2_start, out[i].vlan2_end, dot + 1);
    }
    parse_vlan_range(out[i].vlan_start, out[i].vlan_end, words[i]);
  }
}

// A word that is not NAME:ID is left out. Returns the number of entries.
uint32_t parse_more(PppoeBridgeMore* more, char* list) {
  char* words[kMaxPppoeBridgeMore];
  const int count = split_string(list, ',', words, kMaxPppoeBridgeMore);
  uint32_t kept = 0;
  for (int i = 0; i < count; ++i) {
    char* parts[3];
    if (split_string(words[i], ':', parts, 3) != 2) continue;
    copy_text(more[kept].name, parts[0]);
    more[kept++].id = static_cast<uint16_t>(J_atoi(parts[1]));
  }
  return kept;
}

bool parse_config(PppoeBridgeConfig& config, const Args& args) {
  config.en = args.is(3, "0") ? 0 : 1;
  config.en_more = args.is(4, "0") ? 0 : 1;
  args.take(5, config.time, config.hi_jh);
  config.lan_count = parse_devices(config.lan, args.get(7));
  parse_out_devices(config.out, args.get(8), args.get(9));
  config.more_count = parse_more(reinterpret_cast<PppoeBridgeMore*>(&config + 1), args.get(10));
  return true;
}

void print_config(const PppoeBridgeConfig& config) {
  print("en:%d\n en_more:%d\n time:%d\n ,hi_jh:%d\n", config.en, config.en_more, config.time, config.hi_jh);
  print("lan_dev:");
  for (uint32_t i = 0; i < std::min(config.lan_count, kMaxPppoeBridgeLan); ++i) print("%s ", config.lan[i]);
  print("\n");
  for (int i = 0; i < 2; ++i) {
    const PppoeBridgeOut& out = config.out[i];
    print("i:%d,name:%s,vlan:%u-%u,vlan2:%u-%u,state:%d,times:%d\n", i + 1, out.name, out.vlan_start,
          out.vlan_end, out.vlan2_start, out.vlan2_end, out.state, out.times);
  }
  print("\n");
}

void print_vlan_ids(const Answer& answer) {
  print("num: %d\n", answer.get<int32_t>(kListCountOffset));
  for (const PppoeBridgeVlanId& entry : answer.list<PppoeBridgeVlanId>()) {
    print("mac:%s,id:%d,dev:%d\n", entry.mac, entry.id, entry.dev);
  }
  print("\n");
}

void print_macs(const Answer& answer) {
  print("num: %d\n", answer.get<int32_t>(kListCountOffset));
  for (const PppoeBridgeMac& entry : answer.list<PppoeBridgeMac>()) {
    print("lan_mac:%s, wan_mac:%s, in_dev:%s, flag:%d, changed:%d, init_wanid:%d, set_wanid:%d, ",
          entry.lan_mac, entry.wan_mac, entry.in_dev, entry.flag, entry.changed, entry.init_wanid,
          entry.set_wanid);
    print("vlanid:%d, vlanid2:%d, ltm:%lu\n", entry.vlanid, entry.vlanid2, entry.ltm);
  }
  print("\n");
}

// clang-format off
constexpr SubCommand kPppoeBridge[] = {
    {"set", kModulePppoeBridge, kPppoeBridgeSet, 102400, 102000, 11, "en[1|0] en_more[1|0] time hi_jh indev outdev more_wan", parse_as<parse_config>, nullptr},
    {"get", kModulePppoeBridge, kPppoeBridgeGet, 102400, 102000, 0, "", nullptr, print_as<print_config>},
    {"vlanid_list", kModulePppoeBridge, kPppoeBridgeVlanIds, 102400, 102000, 0, "", nullptr, print_as<print_vlan_ids>},
    {"more_add", kModulePppoeBridge, kPppoeBridgeMoreAdd, 1024, 1020, 5, "dev id", parse_words<&PppoeBridgeMore::name, &PppoeBridgeMore::id>, nullptr},
    {"more_del", kModulePppoeBridge, kPppoeBridgeMoreDel, 1024, 1020, 5, "dev id", parse_words<&PppoeBridgeMore::name, &PppoeBridgeMore::id>, nullptr},
    // No name at all asks for the entries of every device.
    {"more_get", kModulePppoeBridge, kPppoeBridgeMoreGet, 1024, 1020, 0, "dev", parse_words<&PppoeBridgeMore::name>, nullptr},
    {"more_delall", kModulePppoeBridge, kPppoeBridgeMoreDelAll, 1024, 1020, 0, "", nullptr, nullptr},
    {"mac_dev_list", kModulePppoeBridge, kPppoeBridgeMacs, 102400, 102000, 0, "", nullptr, print_as<print_macs>},
};
// clang-format on

}  // namespace

int cmd_pppoe_br(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kPppoeBridge, argc, argv, entry);
}
