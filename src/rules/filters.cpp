// urlfilter, hpostfixfilter, hpostforbid, bbsfilter: what of HTTP is blocked for whom.
#include <cstdio>

#include "order/order.h"
#include "platform/address.h"
#include "records/bbsfilter.h"
#include "records/hpostfixfilter.h"
#include "records/hpostforbid.h"
#include "records/urlfilter.h"
#include "rules/commands.h"
#include "rules/hosts.h"

namespace {

// Puts the hosts into the rule, and the bytes that they take.
template <typename Rule>
Verdict set_hosts(Rule& rule, ListWriter& lists, const Args& args, int index) {
  rule.type = host_type(args, index);
  rule.list_bytes = static_cast<decltype(rule.list_bytes)>(add_hosts(rule, lists, args[index]));
  return lists.fits() ? kAccepted : kTooLong;
}

// The first character decides, whatever follows.
bool parse_mode(uint32_t& mode, const Args& args) {
  const char first = args[3][0];
  mode = static_cast<uint32_t>(first - '0');
  return first >= '0' && first <= '2';
}

uint32_t is_on(const Args& args, int index) { return args.is(index, "0") ? 0 : 1; }

// ---- urlfilter ----

Verdict parse_url_rule(UrlFilterRule& rule, const Args& args) {
  constexpr size_t kMaxEncoded = 220;
  const size_t length = strlen(args[5]);
  if (length > kMaxEncoded) return kRejected;
  args.take(3, rule.name);
  ListWriter lists = ListWriter::behind(rule);
  const Verdict verdict = set_hosts(rule, lists, args, 4);
  base64_decode2(args[5], rule.url, static_cast<int>(length), sizeof rule.url);
  args.take(6, rule.log, rule.prio, rule.act);
  return verdict;
}

void print_rule(AnswerCursor& answer, const UrlFilterRule& rule) {
  print("name:%s ,log:%d, act:%d, prio:%d, ruleips:%d, ,url:%s ", rule.name, rule.log, rule.act, rule.prio,
        rule.type, rule.url);
  print_hosts(answer, rule);
  print("\n");
}

void print_url_rules(const Answer& answer) {
  print("num:%d\n", answer.get<int32_t>(kListCountOffset));
  print_rules<UrlFilterRule>(answer);
}

// ---- hpostfixfilter ----

// Suffixes are cut to their field; blanks count nowhere, empty ones not at all.
Verdict parse_postfix_rule(PostfixFilterRule& rule, const Args& args) {
  args.take(3, rule.name, rule.log);
  ListWriter lists = ListWriter::behind(rule);
  rule.postfix_count = lists.add<Postfix>(read_postfixes, args[6]);
  return set_hosts(rule, lists, args, 5);
}

void print_rule(AnswerCursor& answer, const PostfixFilterRule& rule) {
  print("name:%s  log:%d  postfix: ", rule.name, rule.log);
  for (const Postfix& postfix : answer.entries<Postfix>(rule.postfix_count)) {
    print("%s,", std::string_view(postfix.text, std::min<size_t>(postfix.length, sizeof postfix.text)));
  }
  print_hosts(answer, rule);
  print("\n");
}

void print_postfix_rules(const Answer& answer) {
  print("count:%d\n", answer.get<int32_t>(kListCountOffset));
  print_rules<PostfixFilterRule>(answer);
}

bool parse_postfix_switch(PostfixFilterSwitch& setting, const Args& args) {
  setting.block = is_on(args, 4);
  return parse_mode(setting.mode, args);
}
