// ctrule: limits on the number ("ct") and the rate ("ddos") of connections of groups, and their defaults.
#include "records/ctrule.h"

#include <span>

#include "args/hosts.h"
#include "order/order.h"
#include "platform/list.h"
#include "traffic/commands.h"

namespace {

constexpr const char* kClassNames[] = {"all", "tcp", "udp", "icmp", "other", "tcp_ipport", "udp_ipport"};
static_assert(std::size(kClassNames) == kClassCount);

bool read_type(uint8_t& type, const Args& args) {
  type = args.is(3, "ct") ? kLimitCount : args.is(3, "ddos") ? kLimitRate : 0;
  return type != 0;
}

bool read_class(uint8_t& prot, const Args& args, int index) {
  for (prot = 0; prot < kClassCount; ++prot) {
    if (is_rule_class(prot) && args.is(index, kClassNames[prot])) return true;
  }
  return false;
}

bool parse_rule_name(LimitRule& rule, const Args& args) {
  copy_text(rule.name, args[4]);
  rule.action = kLimitDel;
  return read_type(rule.type, args);
}

bool parse_rule(LimitRule& rule, const Args& args) {
  if (!parse_rule_name(rule, args) || !read_class(rule.prot, args, 6)) return false;
  rule.action = kLimitAdd;
  rule.kind = host_type(args, 5);
  rule.max = args.number(7);
  if (rule.type == kLimitRate) {
    rule.tm = args.number(8);
    if (rule.tm == 0) return false;
  }
  ListWriter lists = ListWriter::behind(rule);
  rule.list_count = rule.kind == kHostRanges ? lists.add<V4Range>(get_iplist_str, args[5])
                                             : lists.add<NumberRange>(get_user_group_str, args[5]);
  rule.list_bytes = lists.bytes();
  return lists.fits();
}

bool parse_list(LimitListRequest& request, const Args& args) { return read_type(request.type, args); }

bool parse_defaults(LimitDefaults& limits, const Args& args) {
  constexpr int kWordsOfAll = 24;
  const int classes = args.count() >= kWordsOfAll ? kClassCount : kClassTcpIpPort;
  for (int i = 0; i < classes; ++i) {
    args.take(3 + 3 * i, limits.ct_max[i], limits.ddos_max[i], limits.ddos_time[i]);
  }
  return true;
}

void print_rule(AnswerCursor& answer, const LimitRule& rule) {
  const char* const prot = rule.prot < kClassCount ? kClassNames[rule.prot] : "unknow";
  print("%s   %s  %d  %d  ", rule.name, prot, rule.max, rule.tm);
  print_host_list(answer, rule.kind, rule.list_count, rule.v6_count);
  print("\n");
}

void print_list(const Answer& answer) {
  print("num: %d\nname  prot  max  tm group\n\n", answer.get<int32_t>(kListCountOffset));
  print_rules<LimitRule>(answer, print_rule);
}

void print_defaults(const LimitDefaults& limits) {
  for (int i = 0; i < kClassCount; ++i) {
    print("%s: ct_max:%d,ddos_max:%d,ddos_time:%d\n", kClassNames[i], limits.ct_max[i], limits.ddos_max[i],
          limits.ddos_time[i]);
  }
}

// clang-format off
constexpr SubCommand kCommands[] = {
    {"add", kModuleRule, kLimitRuleSet, 1024, sizeof(LimitRule), 8, "type[ct ddos] name user_group prot[all,tcp,udp] max tm", parse_as<parse_rule>, nullptr},
    {"del", kModuleRule, kLimitRuleSet, 1024, sizeof(LimitRule), 5, "type name", parse_as<parse_rule_name>, nullptr},
    {"list", kModuleRule, kLimitRuleList, 40480, 40000, 4, "type", parse_as<parse_list>, print_as<print_list>},
    {"defset", kModuleRule, kLimitDefaultsSet, 1024, sizeof(LimitDefaults), 18, "ct_max ddos_max ddos_time", parse_as<parse_defaults>, nullptr},
    {"defget", kModuleRule, kLimitDefaultsGet, 1024, sizeof(LimitDefaults), 0, "", nullptr, print_as<print_defaults>},
};
// clang-format on

}  // namespace

int cmd_ctrule(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kCommands, argc, argv, entry);
}
