// urlfilter, hpostfixfilter, hpostforbid, bbsfilter: what of HTTP is blocked for whom.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "args/hosts.h"
#include "order/order.h"
#include "platform/address.h"
#include "records/bbsfilter.h"
#include "records/hpostfixfilter.h"
#include "records/hpostforbid.h"
#include "records/urlfilter.h"
#include "rules/commands.h"

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
  print_rules<UrlFilterRule>(answer, print_rule);
}

// ---- hpostfixfilter ----

// Reads a comma list of suffixes, each cut to its field. Blanks count nowhere, empty suffixes not at all.
int read_postfixes(void* destination, const char* text) {
  auto* const postfixes = static_cast<Postfix*>(destination);
  int count = 0;
  Postfix postfix = {};
  const auto close = [&] {
    if (postfix.length == 0) return;
    postfixes[count++] = postfix;
    postfix = {};
  };
  for (const char* at = text; *at != '\0'; ++at) {
    if (*at == ',') {
      close();
    } else if (*at != ' ' && postfix.length < sizeof postfix.text) {
      postfix.text[postfix.length++] = *at;
    }
  }
  close();
  return count;
}

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
  print_rules<PostfixFilterRule>(answer, print_rule);
}

bool parse_postfix_switch(PostfixFilterSwitch& setting, const Args& args) {
  setting.block = is_on(args, 4);
  return parse_mode(setting.mode, args);
}

// ---- hpostforbid ----

Verdict parse_forbid_rule(PostForbidRule& rule, const Args& args) {
  args.take(3, rule.name, rule.log);
  ListWriter lists = ListWriter::behind(rule);
  return set_hosts(rule, lists, args, 5);
}

void print_rule(AnswerCursor& answer, const PostForbidRule& rule) {
  print("name:%s log:%d", rule.name, rule.log);
  print_hosts(answer, rule);
  print("\n");
}

void print_forbid_rules(const Answer& answer) {
  print("num:%d\n", answer.get<int32_t>(kListCountOffset));
  print_rules<PostForbidRule>(answer, print_rule);
}

bool parse_forbid_switch(PostForbidSwitch& setting, const Args& args) {
  return parse_mode(setting.mode, args);
}

// ---- bbsfilter ----

Verdict parse_word(BbsWord& word, const Args& args) {
  word.length = static_cast<uint16_t>(strlen(args[3]));
  if (word.length > kMaxBbsWord) {
    print_error("the string is too long!\n");
    return leave_with(kStatusRejected);
  }
  word.type = args.number<uint8_t>(4);
  memcpy(&word + 1, args[3], word.length);
  return kAccepted;
}

void print_words(const Answer& answer) {
  const auto list = answer.get<BbsWordList>(0);
  print("item_cnt=%d need_size=%d\n", list.item_cnt, list.need_size);
  for (const BbsWordPlace& place : answer.entries<BbsWordPlace>(sizeof list, list.item_cnt)) {
    print("type=%d data_offset=%d data_length=%d  ", place.type, place.data_offset, place.data_length);
    const uint32_t length = std::min<uint32_t>(place.data_length, answer.room(place.data_offset));
    if (length > 0) fwrite(answer.payload() + place.data_offset, 1, length, stdout);
    print("\n");
  }
  print("\n");
}

bool parse_word_switch(BbsFilterSwitch& setting, const Args& args) {
  setting = {.acl = is_on(args, 3), .log = is_on(args, 4), .block = is_on(args, 5)};
  return true;
}

// ---- Tables ----

constexpr const char* kUrlUsage = "vek urlfilter add/del name ips url log prio act";
constexpr const char* kPostfixUsage = "vek hpostfixfilter add/del name log ips_id  postfix";
constexpr const char* kForbidUsage = "vek hpostforbid add/del name log ips";
constexpr const char* kWordUsage = "vek bbsfilter add/del string type";

// clang-format off
constexpr SubCommand kUrlFilter[] = {
    direct("add", kModuleUrlFilter, kUrlFilterAdd, 10240, 9, kUrlUsage, parse_as<parse_url_rule>, nullptr),
    direct("del", kModuleUrlFilter, kUrlFilterDel, 10240, 4, kUrlUsage, parse_words<&UrlFilterRule::name>, nullptr),
    direct("delall", kModuleUrlFilter, kUrlFilterDelAll, 1024, 0, "vek urlfilter delall", nullptr, nullptr),
    direct("list", kModuleUrlFilter, kUrlFilterList, 102400, 0, " vek urlfilter list", nullptr, print_as<print_url_rules>, kDirectList),
    direct("global", kModuleUrlFilter, kUrlFilterGlobal, 1024, 5, "vek urlfilter global acl block", parse_words<&UrlFilterSwitch::acl, &UrlFilterSwitch::block>, nullptr),
};

constexpr SubCommand kPostfixFilter[] = {
    direct("add", kModulePostfixFilter, kPostfixFilterAdd, 10240, 4, kPostfixUsage, parse_as<parse_postfix_rule>, nullptr),
    direct("del", kModulePostfixFilter, kPostfixFilterDel, 10240, 4, kPostfixUsage, parse_words<&PostfixFilterRule::name>, nullptr),
    direct("list", kModulePostfixFilter, kPostfixFilterList, 102400, 0, " vek hpostfixfilter list", nullptr, print_as<print_postfix_rules>, kDirectList),
    direct("global", kModulePostfixFilter, kPostfixFilterGlobal, 1024, 5, "vek hpostfixfilter global", parse_as<parse_postfix_switch>, nullptr),
};

constexpr SubCommand kPostForbid[] = {
    direct("add", kModulePostForbid, kPostForbidAdd, 10240, 6, kForbidUsage, parse_as<parse_forbid_rule>, nullptr),
    direct("del", kModulePostForbid, kPostForbidDel, 10240, 4, kForbidUsage, parse_words<&PostForbidRule::name>, nullptr),
    direct("list", kModulePostForbid, kPostForbidList, 102400, 0, " vek hpostforbid list", nullptr, print_as<print_forbid_rules>, kDirectList),
    direct("global", kModulePostForbid, kPostForbidGlobal, 1024, 4, "vek hpostforbid global acl", parse_as<parse_forbid_switch>, nullptr),
};

constexpr SubCommand kBbsFilter[] = {
    direct("add", kModuleBbsFilter, kBbsFilterAdd, 10240, 5, kWordUsage, parse_as<parse_word>, nullptr),
    direct("del", kModuleBbsFilter, kBbsFilterDel, 10240, 5, kWordUsage, parse_as<parse_word>, nullptr),
    direct("delall", kModuleBbsFilter, kBbsFilterDelAll, 1024, 0, "vek bbsfilter delall", nullptr, nullptr),
    direct("list", kModuleBbsFilter, kBbsFilterList, 102400, 0, "vek bbsfilter list", nullptr, print_as<print_words>, kDirectList),
    direct("global", kModuleBbsFilter, kBbsFilterGlobal, 1024, 6, "vek bbsfilter global acl log", parse_as<parse_word_switch>, nullptr),
};
// clang-format on

}  // namespace

int cmd_urlfilter(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kUrlFilter, argc, argv, entry);
}

int cmd_hpostfixfilter(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kPostfixFilter, argc, argv, entry);
}

int cmd_hpostforbid(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kPostForbid, argc, argv, entry);
}

int cmd_bbsfilter(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kBbsFilter, argc, argv, entry);
}
