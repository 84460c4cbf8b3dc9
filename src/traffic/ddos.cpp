// ddos_fy, ddos: defence against attacks: its switch, the hosts that it lets be, limits, and the protection
// of devices and of the LAN.
#include "records/ddos.h"

#include <cstring>
#include <span>

#include "args/lists.h"
#include "args/print.h"
#include "order/order.h"
#include "platform/list.h"
#include "traffic/commands.h"

namespace {

// ---- Switch, exempt hosts, limit ----

bool parse_switch(DdosFySettings& settings, const Args& args) {
  args.take(3, settings.fy_en, settings.fy_type, settings.fy_rule, settings.more[0], settings.more[1],
            settings.more[2]);
  return args.read(9, settings.mac);
}

// What stands behind a '|' is for people. An item that is no MAC address is nobody's exemption.
bool parse_macs(ExemptMacList& list, const Args& args) {
  constexpr int kMaxItems = 256;
  char* items[kMaxItems];
  const int count = split_string(args.get(3), ',', items, kMaxItems);
  ListWriter macs = ListWriter::behind(list);
  for (int i = 0; i < count; ++i) {
    char* const mark = strchr(items[i], '|');
    if (mark != nullptr) *mark = '\0';
    ExemptMac entry = {};
    if (StrToMac(items[i], &entry.mac) != 0) continue;
    macs.put(entry);
    ++list.count;
  }
  return true;
}

void print_macs(const Answer& answer) {
  const auto list = answer.get<ExemptMacList>(0);
  print("cnt:%d\n", list.count);
  for (const ExemptMac& entry : answer.entries<ExemptMac>(sizeof list, list.count)) {
    print("%s\n", entry.mac);
  }
  print("\n");
}

void print_wan_attack(const WanAttack& attack) { print("en:%d,limit:%d\n", attack.en, attack.limit); }

// ---- Profiles ----

constexpr const char* kCheckNames[] = {
    "unknow_id",   "TearDrop",  "IpFrag",         "LAND",        "WinNuke",   "Smurf",
    "PingOfDeath", "IpOptErr",  "IpOptTimeStamp", "IpOptSec",    "IpOptSid",  "IpOptRR",
    "IpOptLSRR",   "IpOptSSRR", "TcpSynFrag",     "TcpFlagZero", "TcpSynFin", "TcpFin",
};
static_assert(std::size(kCheckNames) == kAttackChecks);

constexpr const char* kRateNames[] = {"ARP", "IP_SCAN", "PORT_SCAN", "ICMP",
                                      "UDP", "SYN_dst", "SYN_src",   "DNS"};
static_assert(std::size(kRateNames) == kRateChecks);

// "MAX" or "MAX,TIME" for all of the checks, or where there are two a pair for each.
bool read_rates(std::span<RateLimit> rates, const char* word) {
  uint32_t numbers[4] = {};
  ListWriter list(numbers, rates.size_bytes());
  const uint16_t count = list.add<uint32_t>(get_u32_str, word);
  if (!list.fits() || count == 0 || count == 3) return false;
  const uint32_t* pair = numbers;
  for (RateLimit& rate : rates) {
    rate = {pair[0], pair[1]};
    if (count == 4) pair += 2;
  }
  return true;
}

bool parse_rates(ProtectProfile& profile, const Args& args, ListWriter lists) {
  constexpr int kWords = 16;
  if (args.count() < kWords) return false;
  args.take(6, profile.log, profile.block);
  profile.d_ip_count = lists.add<NumberRange>(get_user_group_str, args[8]);
  int word = 9;
  for (int check = 0; check < kRateChecks; ++word) {
    const int directions = check == kRateSynDst ? 2 : 1;
    if (!read_rates({profile.rate + check, static_cast<size_t>(directions)}, args[word])) return false;
    check += directions;
  }
  return lists.fits();
}

bool parse_checks(ProtectProfile& profile, const Args& args) {
  constexpr int kFirst = 6;
  for (int i = 0; i < kAttackChecks; ++i) profile.enable[i] = args.is(kFirst + i, "0") ? 0 : 1;
  return args.count() >= kFirst + kAttackChecks;
}

bool parse_profile(ProtectSetting& setting, const Args& args) {
  args.take(4, setting.profile.name, setting.profile.dev);
  setting.half = args.is(3, "rate") ? kProtectRates : kProtectChecks;
  if (setting.half == kProtectRates) {
    return parse_rates(setting.profile, args, ListWriter::behind(setting));
  }
  return args.is(3, "enable") && parse_checks(setting.profile, args);
}

void print_profile(AnswerCursor& lists, const ProtectProfile& profile, const char* indent, const char* gap) {
  print("name:%s, log:%d, block:%d, count:%llu\n", profile.name, profile.log, profile.block, profile.hits);
  print("d_ip_num:%d, d_ip_list: ", profile.d_ip_count);
  print_number_ranges(lists, profile.d_ip_count);
  print("s_area_num:%d, s_area_list: ", profile.s_area_count);
  print_number_ranges(lists, profile.s_area_count);
  print("\nenable:\n");
  for (int i = 0; i < kAttackChecks; ++i) {
    print("%s%s%sen:%d\n", indent, kCheckNames[i], gap, profile.enable[i]);
  }
  print("\nrate:\n");
  for (int i = 0; i < kRateChecks; ++i) {
    const RateLimit& rate = profile.rate[i];
    print("%s%s%smax:%d%stime:%d\n", indent, kRateNames[i], gap, rate.max, gap, rate.time);
  }
  print("\n\n");
}

void print_profiles(const Answer& answer) {
  print("ddos wan protect list num:%d\n", answer.get<int32_t>(kListCountOffset));
  AnswerCursor cursor(answer, kListEntriesOffset);
  ProtectProfile profile;
  for (int32_t left = answer.get<int32_t>(kListCountOffset); left > 0 && cursor.read(profile); --left) {
    print_profile(cursor, profile, "  ", " ");
  }
}

void print_profile_of_device(const Answer& answer) {
  AnswerCursor cursor(answer, 0);
  ProtectProfile profile;
  cursor.read(profile);
  print_profile(cursor, profile, "\t\t", "  ");
}

// ---- LAN ----

bool parse_lan(LanProtect& lan, const Args& args) {
  args.take(3, lan.en);
  args.take(6, lan.type);
  args.take(8, lan.max_tcp_conns, lan.max_pkt_count, lan.defen_time, lan.log, lan.little_len);
  ListWriter lists = ListWriter::behind(lan);
  lan.src_area_count = lists.add<NumberRange>(get_user_group_str, args[4]);
  const RangeCounts src = lists.add_addresses(args[5]);
  const RangeCounts exclude = lists.add_addresses(args[7]);
  lan.src_v4_count = src.v4;
  lan.src_v6_count = src.v6;
  lan.exclude_v4_count = exclude.v4;
  lan.exclude_v6_count = exclude.v6;
  return lists.fits();
}

void print_lan(const Answer& answer) {
  const auto lan = answer.get<LanProtect>(0);
  AnswerCursor lists(answer, sizeof lan);
  print("en:%d\nsrc_area:", lan.en);
  print_number_ranges(lists, lan.src_area_count);
  print("\nsrc_addr:");
  print_addr_ranges(lists, lan.src_v4_count, lan.src_v6_count);
  print("\ntype:%d\nexclude_addr:", lan.type);
  print_addr_ranges(lists, lan.exclude_v4_count, lan.exclude_v6_count);
  print("\nmax_tcp_conns:%d\nmax_pkt_count:%d\ndefen_time:%d\nlog:%d\nlittle_len:%d\n", lan.max_tcp_conns,
        lan.max_pkt_count, lan.defen_time, lan.log, lan.little_len);
}

// ---- Tables ----

constexpr const char* kProtectUsage =
    "opt[rate/enable] name dev rate[log block dest_ip arp ip_scan port_scan icmp udp syn dns]\n"
    "enable[unknow teardrop ipfrag land winnuke smurf ping ipopt(err timestamp sec sid rr lsrr ssrr) "
    "tcp(syn_frag flag_zero syn_fin fin)]";

// clang-format off
constexpr SubCommand kDdosFy[] = {
    {"set", kModuleDdosFy, kDdosFySet, 1024, sizeof(DdosFySettings), 10, "fy_en fy_type fy_rule", parse_as<parse_switch>, nullptr},
    {"mac_set", kModuleDdosFy, kDdosFyMacSet, 40480, 40000, 4, "mac", parse_as<parse_macs>, nullptr},
    {"mac_get", kModuleDdosFy, kDdosFyMacGet, 40480, 40000, 0, "", nullptr, print_as<print_macs>},
};

constexpr SubCommand kDdos[] = {
    {"mac_set", kModuleDdos, kDdosMacSet, 40480, 40000, 4, "mac", parse_as<parse_macs>, nullptr},
    {"mac_get", kModuleDdos, kDdosMacGet, 40480, 40000, 0, "", nullptr, print_as<print_macs>},
    {"wan_attack", kModuleDdos, kDdosWanAttack, 1024, 1020, 4, "set/get en limit", parse_pair_of<&WanAttack::en, &WanAttack::limit>, print_as<print_wan_attack>},
    {"protect_set", kModuleDdos, kProtectSet, 10240, 10200, 6, kProtectUsage, parse_as<parse_profile>, nullptr},
    {"protect_dev_get", kModuleDdos, kProtectDevGet, 10240, 10200, 4, "dev", parse_words<&ProtectProfile::dev>, print_as<print_profile_of_device>},
    {"protect_del", kModuleDdos, kProtectDel, 4096, 4096, 4, "name", parse_words<&ProtectProfile::name>, nullptr},
    {"protect_delall", kModuleDdos, kProtectDelAll, 1024, 1024, 0, "", nullptr, nullptr},
    {"protect_list", kModuleDdos, kProtectList, 102400, 102400, 0, "", nullptr, print_as<print_profiles>},
    {"lan_protect_set", kModuleDdos, kLanProtectSet, 10240, 10200, 13, "en src_area src_addr type exclude_addr max_tcp_conns max_pkt_count defen_time log little_len", parse_as<parse_lan>, nullptr},
    {"lan_protect_get", kModuleDdos, kLanProtectGet, 10240, 10200, 0, "", nullptr, print_as<print_lan>},
    {"protect_clear", kModuleDdos, kProtectClear, 4096, 4096, 4, "name", parse_words<&ProtectProfile::name>, nullptr},
};
// clang-format on

}  // namespace

int cmd_ddos_fy(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kDdosFy, argc, argv, entry);
}

int cmd_ddos(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kDdos, argc, argv, entry);
}
