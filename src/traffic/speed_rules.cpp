// qos, its second half: traffic types, speed rules, priority rules, and what traffic is recognised by.
#include "traffic/speed_rules.h"

#include <arpa/inet.h>

#include "args/hosts.h"
#include "args/print.h"
#include "platform/list.h"
#include "records/qos.h"

namespace {

constexpr int kMaxPieces = 255;

// ---- Traffic types ----

const char* priority_text(uint8_t priority) {
  return priority == kPriorityHigh     ? "high"
         : priority == kPriorityNormal ? "normal"
         : priority == kPriorityLow    ? "low"
                                       : "err";
}

void print_types(const Answer& answer) {
  const auto count = answer.get<uint32_t>(kListCountOffset);
  print("num: %d\n", count);
  print("id\tpri\t sp[up]\t sp[down]\tcount[up] count_skb[up] count[down] count_skb[down]\n\n");
  for (const QosTypeEntry& type : answer.entries<QosTypeEntry>(kListEntriesOffset, count)) {
    print("%d\t%s\t%luK/s\t  %luK/s\t\t %luK\t  %lu\t%luK\t  %lu\t\n", type.id, priority_text(type.priority),
          type.sp_up >> 10, type.sp_down >> 10, type.count_up >> 10, type.count_skb_up, type.count_down >> 10,
          type.count_skb_down);
  }
}

// ---- Speed rules ----

constexpr const char* kKinds[] = {"xz", "bz", "pri"};

// The place of a word among the first kinds; false where it is none of them.
template <typename Kind>
bool read_kind(Kind& kind, const Args& args, int index, uint8_t most) {
  for (uint8_t i = 0; i <= most; ++i) {
    if (!args.is(index, kKinds[i])) continue;
    kind = i;
    return true;
  }
  return false;
}

Verdict parse_speed_rule(SpeedRule& rule, const Args& args) {
  if (!read_kind(rule.kind, args, 4, kSpeedGuaranteed)) return kRejected;
  copy_text(rule.name, args[5]);
  if (args.is(3, "del")) {
    rule.action = kSpeedRuleDel;
    return kAccepted;
  }
  if (!args.is(3, "add") || args.count() < 12) return kRejected;
  rule.action = kSpeedRuleAdd;
  rule.is_shared = args.is(8, "gx") ? 1 : 0;
  rule.up = args.number(9);
  rule.down = args.number(10);
  constexpr int kLastWord = 3;
  rule.all_types = args.is(7, "all") ? 1 : 0;
  if (rule.all_types == 0) rule_set_bits(&rule.types, args[7], kLastWord);
  rule.all_lines = args.is(11, "all") ? 1 : 0;
  if (rule.all_lines == 0) wans_set_bits(&rule.lines, args[11], kLastWord);
  ListWriter lists = ListWriter::behind(rule);
  rule.range_count = lists.add<V4Range>(get_iplist_str, args[6]);
  rule.range_bytes = static_cast<uint16_t>(lists.bytes());
  return lists.fits() ? kAccepted : kRejected;
}

bool parse_speed_list(SpeedListRequest& request, const Args& args) {
  return read_kind(request.kind, args, 3, kSpeedGuaranteed);
}

// Readers of the list take an id and the one 32 above it in its word for the same: the bit of the lower one
// tells of both.
void print_ids(uint8_t is_all, const IdSet& set) {
  if (is_all != 0) {
    print("all");
    return;
  }
  for (int id = 1; id < 255; ++id) {
    if ((set.words[id / 64].value() >> id % 32 & 1) != 0) print("%d,", id);
  }
}

void print_speed_rules(const Answer& answer) {
  print("num: %d\n", answer.get<int32_t>(kListCountOffset));
  print("name\t sp[up]\t sp[down]\t gongx\t user\t qostype\t dev\n\n");
  print_rules<SpeedRule>(answer, [](AnswerCursor& cursor, const SpeedRule& rule) {
    print("%s\t %lu\t %lu\t %d\tips:", rule.name, rule.up.value(), rule.down.value(), rule.is_shared);
    const uint32_t before = cursor.room();
    print_addr_ranges(cursor, rule.range_count, 0);
    print("\tqostype:");
    print_ids(rule.all_types, rule.types);
    print("\tdev:");
    print_ids(rule.all_lines, rule.lines);
    print("\n");
    // The next rule begins behind as many bytes as the list is said to have.
    const uint32_t taken = before - cursor.room();
    if (rule.range_bytes > taken) cursor.skip(rule.range_bytes - taken);
  });
}

// ---- Priority rules ----

// As people count priorities: 1 high, 3 low, all else normal.
uint8_t priority(const Args& args, int index) {
  const uint32_t given = args.number(index);
  return given == 1 ? kPriorityHigh : given == 3 ? kPriorityLow : kPriorityNormal;
}

// The channels that a rule is for: those that the word lists, all of one kind, or none.
const char* channels(const Args& args) {
  switch (args.number(11)) {
    case 1:
    case 2:
      return args[16];
    case 3:
      return "0,";
    default:
      return "";
  }
}

Verdict parse_rule(PriorityRule& rule, const Args& args) {
  if (!read_kind(rule.kind, args, 4, kSpeedPriority)) return kRejected;
  args.take(5, rule.name, rule.run_prio);
  rule.dev_prio = priority(args, 7);
  rule.hi_prio = priority(args, 8);
  args.take(9, rule.is_and, rule.sp_type);
  rule.thd_type = args.number(11) == 1 ? 1 : 0;
  args.take(12, rule.up, rule.down);
  args.take(19, rule.sp_check);
  rule.type = host_type(args, 14);

  ListWriter lists = ListWriter::behind(rule);
  add_hosts(rule, lists, args[14]);
  rule.dev_count = lists.add<NumberRange>(get_devlist_str, args[15]);
  rule.thd_count = lists.add<NumberRange>(get_qosthdid_str, channels(args));
  rule.shibie_count = lists.add<IdRange>(get_shibie_ips_str, args[17]);
  rule.ipport_bytes = lists.add_block(get_ipport_str, args[18]);
  rule.list_bytes = lists.bytes();
  return lists.fits() ? kAccepted : kTooLong;
}

bool parse_rule_name(PriorityRule& rule, const Args& args) {
  copy_text(rule.name, args[5]);
  return read_kind(rule.kind, args, 4, kSpeedPriority);
}

bool parse_rule_list(PriorityRule& rule, const Args& args) {
  return read_kind(rule.kind, args, 4, kSpeedPriority);
}

// This display takes the block's DNS types for numbers of 16 bits, with what stands behind them.
void print_block(AnswerCursor& answer) {
  IpPortBlock block;
  answer.read(block);
  print("]\t f_ip:[");
  print_addr_ranges(answer, block.v4_count, block.v6_count);
  print("]\t proto:[");
  print_protocols(answer, block.protocol_count);
  print(
      "]\tcl_type:[%d]\tcl_type_fei:[%d]\tdns_en:[%d]\tdns_typeid:[%d]\tdns_typeid_fei:[%d]\tdns_wanid[%d]\t"
      "dns_wanid_fei[%d]\tdns_fei[%d]\n",
      block.cl_type, block.cl_type_fei, block.dns_en, block.dns_typeid | block.dns_wanid_fei << 8,
      block.dns_typeid_fei | block.dns_fei << 8, block.dns_wanid, block.dns_wanid_fei, block.dns_fei);
}

void print_rule_lists(AnswerCursor& answer, const PriorityRule& rule, const char* dev, const char* thd,
                      const char* shibie) {
  print_host_list(answer, rule.type, rule.address_count, rule.v6_count);
  print("%s", dev);
  print_number_ranges(answer, rule.dev_count);
  print("%s", thd);
  print_number_ranges(answer, rule.thd_count);
  print("%s", shibie);
  print_id_ranges(answer, rule.shibie_count);
}

void print_listed_rule(AnswerCursor& answer, const PriorityRule& rule) {
  print(
      "name:[%s]\t run_prio:[%u]\t dev_prio:[%u]\t hi_prio:[%u]\t is_and:[%u]\t sp_type:[%u]\t "
      "thd_type:[%u]\t "
      "up:[%u]\t dowm:[%u]\t sp_check:[%u]\t user_group:[",
      rule.name, rule.run_prio, rule.dev_prio, rule.hi_prio, rule.is_and, rule.sp_type, rule.thd_type,
      rule.up, rule.down, rule.sp_check);
  print_rule_lists(answer, rule, "]\t dev_duan:[", "]\t thdduan:[", "]\t shibie_duan:[");
  if (rule.ipport_bytes != 0) {
    print_block(answer);
  } else {
    print("]\t f_ip:[]\t proto:[]\t f_dns:[]\n");
  }
}

void print_listed_rules(const Answer& answer) {
  print("num: %d\n", answer.get<int32_t>(kListCountOffset));
  print_rules<PriorityRule>(answer, print_listed_rule);
}

// The line of a destination is there even where the rule has none.
void print_rule(const Answer& answer) {
  const auto rule = answer.get<PriorityRule>(0);
  AnswerCursor lists(answer, sizeof rule);
  print(
      "name:[%s]\trun_prio:[%u]\tdev_prio:[%u]\thi_prio:[%u]\tis_and:[%u]\tsp_type:[%u]\tthd_type:[%u]\tup:[%"
      "u]\t"
      "dowm:[%u]\tsp_check:[%u]\tuser_group:[",
      rule.name, rule.run_prio, rule.dev_prio, rule.hi_prio, rule.is_and, rule.sp_type, rule.thd_type,
      rule.up, rule.down, rule.sp_check);
  print_rule_lists(lists, rule, "]\tdev_duan:[", "]\tthdduan:[", "]\tsb_duan:[");
  AnswerCursor nothing(nullptr, 0);
  print_block(rule.ipport_bytes != 0 ? lists : nothing);
}

void print_deleted(const Answer&) { print_error("ok\n"); }

constexpr DirectStyle kRuleAddStyle = {.rejection = "type should be xz , bz pri"};
constexpr DirectStyle kRuleDelStyle = {.failure_reason = kDirectList.failure_reason,
                                       .rejection = "type should be xz or bz"};

// clang-format off
constexpr SubCommand kRules[] = {
    direct("add", kModuleQos, kQosRuleAdd, 102400, 20,
           "add type[xz bz pri] name run_prio dev_prio hi_prio is_and sp_type  thd_type up down user_group dev_duan "
           "thd_duan shibie_duan ipport_duan sp_check",
           parse_as<parse_rule>, nullptr, kRuleAddStyle),
    direct("del", kModuleQos, kQosRuleDel, 10240, 6, "del type[xz bz pri] name", parse_as<parse_rule_name>, print_as<print_deleted>, kRuleDelStyle),
    direct("get", kModuleQos, kQosRuleGet, 10240, 6, "get type[xz bz pri] name", parse_as<parse_rule_name>, print_as<print_rule>, kDirectList),
    direct("list", kModuleQos, kQosRuleList, 1024000, 5, "type[xz bz pri]", parse_as<parse_rule_list>, print_as<print_listed_rules>, kDirectList),
};
// clang-format on

// An action that there is none of is left to other builds: nothing is done or said.
int run_rule_command(const Args& args, const CommandEntry*) {
  if (args.count() < 4) {
    print_error("vek qos sprule add/del/list\n");
    return kStatusRejected;
  }
  const SubCommand* const row = find_sub_command(kRules, args, 3);
  return row == nullptr ? kStatusOk : run_request(*row, args);
}

// ---- What traffic is recognised by ----

bool is_nothing(const char* word) { return *word == '\0' || strcmp(word, "not") == 0; }

Ip4 read_ip(const char* text) {
  in_addr address = {};
  inet_aton(text, &address);
  return {address.s_addr};
}

// "FIRST-LAST", or an address that is both ends.
RecognitionRange read_range(char* item) {
  char* const last = strchr(item, '-');
  if (last != nullptr) *last = '\0';
  return {read_ip(item), read_ip(last == nullptr ? item : last + 1)};
}

uint16_t put_names(ListWriter& lists, char* word) {
  constexpr int kMaxNames = 64;
  if (word == nullptr || strcmp(word, "ZENTRIK") == 0) return 0;
  char* pieces[kMaxNames];
  const int count = split_string(word, ',', pieces, kMaxNames);
  for (int i = 0; i < count; ++i) {
    RecognitionName name = {};
    copy_text(name.name, pieces[i]);
    lists.put(name);
  }
  return static_cast<uint16_t>(count);
}

uint16_t put_ranges(ListWriter& lists, char* word) {
  if (word == nullptr || is_nothing(word)) return 0;
  char* items[kMaxPieces];
  const int count = split_string(word, ',', items, kMaxPieces);
  for (int i = 0; i < count; ++i) lists.put(read_range(items[i]));
  return static_cast<uint16_t>(count);
}

// An item may end in '|' and a number; with -1 it is left out, but counted.
uint16_t put_hosts(ListWriter& lists, char* word) {
  if (word == nullptr || is_nothing(word)) return 0;
  char* items[kMaxPieces];
  const int count = split_string(word, ',', items, kMaxPieces);
  for (int i = 0; i < count; ++i) {
    char* const mark = strchr(items[i], '|');
    if (mark != nullptr) *mark = '\0';
    if (mark == nullptr || static_cast<int32_t>(J_atoi(mark + 1)) != -1) lists.put(read_range(items[i]));
  }
  return static_cast<uint16_t>(count);
}

uint16_t put_protocols(ListWriter& lists, const char* word) {
  return is_nothing(word) ? 0 : lists.add<ProtocolEntry>(add_prot, word);
}

bool parse_recognition(RecognitionLists& recognition, const Args& args) {
  ListWriter lists = ListWriter::behind(recognition);
  recognition.name_count = put_names(lists, args.get(3));
  recognition.range_count = put_ranges(lists, args.get(4));
  recognition.protocol_count = put_protocols(lists, args[5]);
  recognition.hi_count = put_hosts(lists, args.get(6));
  return lists.fits();
}

// One list of the four, the words of all a place later.
bool parse_app_names(RecognitionLists& recognition, const Args& args) {
  ListWriter lists = ListWriter::behind(recognition);
  recognition.name_count = put_names(lists, args.get(4));
  return lists.fits();
}

bool parse_app_ranges(RecognitionLists& recognition, const Args& args) {
  ListWriter lists = ListWriter::behind(recognition);
  recognition.range_count = put_ranges(lists, args.get(5));
  return lists.fits();
}

bool parse_app_protocols(RecognitionLists& recognition, const Args& args) {
  ListWriter lists = ListWriter::behind(recognition);
  recognition.protocol_count = put_protocols(lists, args[6]);
  return lists.fits();
}

bool parse_app_hosts(RecognitionLists& recognition, const Args& args) {
  ListWriter lists = ListWriter::behind(recognition);
  recognition.hi_count = put_hosts(lists, args.get(7));
  return lists.fits();
}

constexpr const char* kRecognitionUsage = "dns fip prot hi";

// clang-format off
constexpr SubCommand kAppRecognition[] = {
    {"dns", kModuleQos, kQosAppDns, 20480, 20000, 5, kRecognitionUsage, parse_as<parse_app_names>, nullptr},
    {"fip", kModuleQos, kQosAppIp, 20480, 20000, 6, kRecognitionUsage, parse_as<parse_app_ranges>, nullptr},
    {"prot", kModuleQos, kQosAppProtocol, 20480, 20000, 7, kRecognitionUsage, parse_as<parse_app_protocols>, nullptr},
    {"hi", kModuleQos, kQosAppHost, 20480, 20000, 8, kRecognitionUsage, parse_as<parse_app_hosts>, nullptr},
};

constexpr SubCommand kCommands[] = {
    {"typelist", kModuleQos, kQosTypeList, 20480, 20000, 0, " ", nullptr, print_as<print_types>},
    {"spset", kModuleQos, kQosSpeedSet, 20480, 128, 6, "cmd[add del] type[xz bz] name ipduan qostype[id,id] mode[gx dl] up down wans[0,1,2] ", parse_as<parse_speed_rule>, nullptr},
    {"splist", kModuleQos, kQosSpeedList, 20480, 20000, 4, "type[xz bz]", parse_as<parse_speed_list>, print_as<print_speed_rules>},
    handled("sprule", run_rule_command),
    {"dns_ip", kModuleQos, kQosDnsIp, 20480, 20000, 7, kRecognitionUsage, parse_as<parse_recognition>, nullptr},
    group("app_dns_ip", kAppRecognition, "vek qos app_dns_ip dns/fip/prot/hi dns fip prot hi\n"),
};
// clang-format on

}  // namespace

const std::span<const SubCommand> kSpeedRuleCommands = kCommands;
