// rule: the tables that decide which traffic passes (acc, whitelist, filter) and which line it takes
// (mroute).
#include "records/rule.h"

#include "args/hosts.h"
#include "order/order.h"
#include "platform/list.h"
#include "rules/commands.h"

namespace {

// ---- Requests ----

template <typename Rule>
Verdict finish(Rule& rule, const ListWriter& lists) {
  rule.list_bytes = lists.bytes();
  return lists.fits() ? kAccepted : kTooLong;
}

// "0" drops and any other word accepts, so that no slip of the keyboard cuts anyone off.
uint8_t action(const Args& args, int index) { return args.is(index, "0") ? 1 : 0; }

Verdict parse_acc(AccRule& rule, const Args& args) {
  args.take(4, rule.name, rule.prio);
  rule.act = action(args, 7);
  args.take(8, rule.log, rule.thd_type);
  rule.type = take_host_type(args.get(6), args.number<uint8_t>(12));

  ListWriter lists = ListWriter::behind(rule);
  rule.thd_count = lists.add<NumberRange>(get_typeid_str, args[10]);
  if (rule.type == kRuleMac) {
    args.read(6, rule.mac);  // no MAC at all goes out as it was read: the module refuses it
  } else {
    add_hosts(rule, lists, args[6]);
  }
  rule.ipport_bytes = lists.add_block(get_ipport_str_vek, args[11]);
  return finish(rule, lists);
}

Verdict parse_whitelist(WhitelistEntry& entry, const Args& args) {
  copy_text(entry.name, args[4]);
  entry.type = host_type(args, 5);
  ListWriter lists = ListWriter::behind(entry);
  add_hosts(entry, lists, args[5]);
  entry.ipport_bytes = lists.add_block(get_ipport_str_vek, args[6]);
  return finish(entry, lists);
}

// 0 is no line in the table, so lines count from one; numbers above the last line go as they are. A place
// that is left empty stays one: what stands behind it is kept, and out of use.
void set_wans(uint16_t (&wans)[256], char* list) {
  constexpr uint16_t kLastLine = 120;
  char* words[256];
  const int count = split_string(list, ',', words, 256);
  for (int i = 0; i < count; ++i) {
    if (*words[i] == '\0') continue;
    const auto line = static_cast<uint16_t>(J_atoi(words[i]));
    wans[i] = line <= kLastLine ? static_cast<uint16_t>(line + 1) : line;
  }
}

Verdict parse_mroute(MrouteRule& rule, const Args& args) {
  copy_text(rule.name, args[4]);
  args.take(6, rule.log, rule.prio);
  set_wans(rule.wans, args.get(8));
  rule.thd_type = args.number<uint8_t>(9);
  rule.no_change = args.number<uint8_t>(13);
  rule.type = take_host_type(args.get(5), args.number<uint8_t>(14));

  ListWriter lists = ListWriter::behind(rule);
  rule.thd_count = lists.add<NumberRange>(get_typeid_str, args[10]);
  add_hosts(rule, lists, args[5]);
  rule.shibie_count = lists.add<IdRange>(get_shibie_ips_str, args[11]);
  rule.ipport_bytes = lists.add_block(get_ipport_str, args[12]);
  return finish(rule, lists);
}

Verdict parse_filter(FilterRule& rule, const Args& args) {
  constexpr int kStatusNothingToFilter = 41;
  args.take(4, rule.name, rule.prio, rule.hi_type, rule.log);
  rule.act = action(args, 8);
  rule.gid = args.number<uint8_t>(9);
  ListWriter lists = ListWriter::behind(rule);
  rule.id_count = lists.add<NumberRange>(get_typeid_str, args[10]);
  if (!lists.fits()) return kTooLong;
  return rule.gid == 0 && rule.id_count == 0 ? leave_with(kStatusNothingToFilter) : kAccepted;
}

// No name at all would clear every counter.
bool parse_hit_name(RuleName& rule, const Args& args) {
  copy_text(rule.name, args[4]);
  return args.count() >= 5;
}

bool parse_name(RuleName& rule, const Args& args) {
  copy_text(rule.name, args[4]);
  return true;
}

bool parse_filter_name(FilterRule& rule, const Args& args) {
  args.take(4, rule.name, rule.gid);
  return true;
}

bool parse_filter_list(FilterListRequest& request, const Args& args) {
  args.take(4, request.gid);
  return true;
}

constexpr const char* kDefaultWords[] = {"off", "accept", "drop"};  // 0, 1, 2

Verdict parse_default(AccDefault& setting, const Args& args) {
  for (const char* word : kDefaultWords) {
    if (args.is(4, word)) return kAccepted;
    ++setting.action;
  }
  return leave_with(kStatusRejected);
}

bool parse_delete_all(MrouteRule& rule, const Args& args) {
  args.take(4, rule.delall_which);
  return true;
}

// ---- Answers ----

const char* action_text(uint8_t act) { return act != 0 ? "drop" : "accept"; }

void print_type_ids(AnswerCursor& answer, uint16_t count) {
  const char* separator = "";
  for (const NumberRange& ids : answer.entries<NumberRange>(count)) {
    if (ids.first == ids.last) {
      print("%s%d", separator, ids.first);
    } else {
      print("%s%d-%d", separator, ids.first, ids.last);
    }
    separator = ",";
  }
}

// The destination block of a rule that has one, and the end of the rule's line.
void print_destination(AnswerCursor& answer, uint16_t bytes, const char* if_none) {
  if (bytes == 0) {
    print("%s\n", if_none);
    return;
  }
  IpPortBlock block;
  answer.read(block);
  print(" cl_type:%d cl_type_fei:%d f_ip:", block.cl_type, block.cl_type_fei);
  print_addr_ranges(answer, block.v4_count, block.v6_count);
  print(" proto:");
  print_protocols(answer, block.protocol_count);
  print(" dns_en:%d,dns_typeid:%d,dns_typeid_fei:%d dns_wanid:%d,dns_wanid_fei:%d,dns_fei:%d\n", block.dns_en,
        block.dns_typeid, block.dns_typeid_fei, block.dns_wanid, block.dns_wanid_fei, block.dns_fei);
}

constexpr const char* kNoDestination = " cl_type: f_ip:  proto: f_dns: ";

void print_rule(AnswerCursor& answer, const AccRule& rule) {
  print("name:%s prio:%d log:%d act:%s thd_type:%d thd:", rule.name, rule.prio, rule.log,
        action_text(rule.act), rule.thd_type);
  print_type_ids(answer, rule.thd_count);
  if (rule.type == kRuleMac) {
    print(" mac: %s", rule.mac);
  } else {
    print_hosts(answer, rule);
  }
  print_destination(answer, rule.ipport_bytes, kNoDestination);
}

void print_rule(AnswerCursor& answer, const WhitelistEntry& entry) {
  print("name:%s ", entry.name);
  print_hosts(answer, entry);
  print_destination(answer, entry.ipport_bytes, kNoDestination);
}

void print_rule(AnswerCursor& answer, const MrouteRule& rule) {
  // The number beside the lines is the size of their table in bytes.
  print("name:%s prio:%d log:%d no_change:%d rule_type:%d  wans[%zu]:", rule.name, rule.prio, rule.log,
        rule.no_change, rule.rule_type, sizeof rule.wans);
  const char* separator = "";
  for (const uint16_t* line = rule.wans; line != std::end(rule.wans) && *line != 0; ++line) {
    print("%s%d", separator, *line);
    separator = ",";
  }
  print(" thd_type:%d  thd:", rule.thd_type);
  print_type_ids(answer, rule.thd_count);
  print_hosts(answer, rule);
  print(" shibie_duan:");
  print_id_ranges(answer, rule.shibie_count);
  print_destination(answer, rule.ipport_bytes, kNoDestination + 1);  // without its blank
}

void print_rule(AnswerCursor& answer, const FilterRule& rule) {
  print("%s %d %d %d %s %d  ", rule.name, rule.prio, rule.hi_type, rule.log, action_text(rule.act), rule.gid);
  print_type_ids(answer, rule.id_count);
  print("\n");
}

void print_count(const Answer& answer) { print("num:%d\n", answer.get<int32_t>(kListCountOffset)); }

template <typename Rule>
void print_list(const Answer& answer) {
  print_count(answer);
  print_rules<Rule>(answer, print_rule);
}

void print_filter_list(const Answer& answer) {
  print_count(answer);
  print(" name prio hi_type log act gid  shibie_ids\n");
  print_rules<FilterRule>(answer, print_rule);
}

void print_hits(const Answer& answer) {
  print("num: %d\nname                hit\n", answer.get<int32_t>(kListCountOffset));
  for (const RuleHitEntry& entry : answer.list<RuleHitEntry>()) print("%-20s %lu\n", entry.name, entry.hits);
}

void print_default(const AccDefault& setting) {
  const bool is_known = setting.action < std::size(kDefaultWords);
  print("defact=%s\nok\n", is_known ? kDefaultWords[setting.action] : "error");
}

// ---- Tables ----

constexpr DirectStyle kUsageAlone = {.failure = DirectStyle::kUsageAlone};
constexpr DirectStyle kHitStyle = {.failure = DirectStyle::kUsageAlone,
                                   .failure_reason = kDirectList.failure_reason};

constexpr const char* kHitDelText = "vek rule mroute hit_del/hit_delall name";

// clang-format off
constexpr SubCommand kAcc[] = {
    direct("add", kModuleRule, kAccAdd, 10240, 12, "add NAME RPRI IPS ACT LOG THD_TYPE THD IPPORT", parse_as<parse_acc>, nullptr),
    direct("del", kModuleRule, kAccDel, 1024, 5, "vek rule acc del name", parse_as<parse_name>, nullptr),
    direct("delall", kModuleRule, kAccDelAll, 1024, 0, "vek rule acc delall", nullptr, nullptr),
    direct("list", kModuleRule, kAccList, 102400, 0, " vek rule acc list ", nullptr, print_as<print_list<AccRule>>, kDirectList),
    direct("defset", kModuleRule, kAccDefaultSet, 1024, 5, "vek rule acc defset act[off|accept|drop]", parse_as<parse_default>, nullptr),
    direct("defget", kModuleRule, kAccDefaultGet, 1024, 0, "vek rule acc defget", nullptr, print_as<print_default>),
};

constexpr SubCommand kWhitelist[] = {
    direct("add", kModuleRule, kWhitelistAdd, 10240, 7, "add name ips ipport", parse_as<parse_whitelist>, nullptr),
    direct("del", kModuleRule, kWhitelistDel, 1024, 5, "vek rule whitelist del name", parse_as<parse_name>, nullptr),
    direct("delall", kModuleRule, kWhitelistDelAll, 1024, 0, "vek rule acc delall", nullptr, nullptr),  // the third field tells them apart
    direct("list", kModuleRule, kWhitelistList, 102400, 0, " vek rule whitelist list ", nullptr, print_as<print_list<WhitelistEntry>>, kDirectList),
};

constexpr SubCommand kMroute[] = {
    direct("add", kModuleRule, kMrouteAdd, 20480, 14, "vek rule mroute add name ip_duan log prio wans thd_type thd shibie_id ipport no_change", parse_as<parse_mroute>, nullptr),
    direct("del", kModuleRule, kMrouteDel, 102400, 5, "vek rule mroute del name", parse_as<parse_name>, nullptr, kUsageAlone),
    direct("delall", kModuleRule, kMrouteDelAll, 102400, 0, "vek rule mroute delall", parse_as<parse_delete_all>, nullptr),
    direct("list", kModuleRule, kMrouteList, 102400, 0, " vek rule mroute list", nullptr, print_as<print_list<MrouteRule>>, kDirectList),
    direct("hit", kModuleRule, kMrouteHit, 102400, 0, " vek rule mroute hit", nullptr, print_as<print_hits>, kHitStyle),
    direct("hit_del", kModuleRule, kMrouteHitDel, 102400, 0, kHitDelText, parse_as<parse_hit_name>, nullptr, kDirectList),
    direct("hit_delall", kModuleRule, kMrouteHitDel, 102400, 0, kHitDelText, nullptr, nullptr, kDirectList),
};

constexpr SubCommand kFilter[] = {
    direct("add", kModuleRule, kFilterAdd, 10240, 11, "vek rule filter add  name prio hi_type log act gid  shibie_ids ", parse_as<parse_filter>, nullptr),
    direct("del", kModuleRule, kFilterDel, 1024, 6, "vek rule filter del  name gid", parse_as<parse_filter_name>, nullptr),
    direct("list", kModuleRule, kFilterList, 102400, 5, " vek rule filter list gid", parse_as<parse_filter_list>, print_as<print_filter_list>, kDirectList),
};

constexpr SubCommand kRule[] = {
    group("acc", kAcc, "vek rule acc add/del/list/defset/defget\n"),
    group("whitelist", kWhitelist, "vek rule whitelist add/del/list\n"),
    group("mroute", kMroute, "vek rule mroute add/del/list/hit/hit_del/hit_delall\n"),
    group("filter", kFilter, " vek rule filter add/del/list \n"),
};
// clang-format on

}  // namespace

// A word that is no table of rules is no sub-command of any, and nothing is said of it.
int cmd_rule(int argc, char** argv, const CommandEntry* entry) {
  const Args args(argc, argv);
  const bool is_unknown = args.count() > 2 && find_sub_command(kRule, args, 2) == nullptr;
  return is_unknown ? kStatusRejected : run_sub_command({kRule}, args, entry);
}
