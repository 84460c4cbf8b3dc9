// The HTTP content filters: forum words (module 35), download suffixes (36), POST (37) and URLs (82). Rules
// are kept as the records that they came in; adding a name again replaces its rule.
#include "modules/checks.h"
#include "modules/modules.h"
#include "records/bbsfilter.h"
#include "records/hpostfixfilter.h"
#include "records/hpostforbid.h"
#include "records/urlfilter.h"
#include "state/settings.h"

// Where check_lists finds it.
static void check_element(const Postfix& postfix) {
  refuse_unless(postfix.length > 0 && postfix.length <= sizeof postfix.text, kBadList);
  check_text({postfix.text, postfix.length});
}

namespace {

constexpr uint32_t kMaxMode = 2;

template <typename Rule>
constexpr uint32_t kModuleOf = 0;
template <>
constexpr uint32_t kModuleOf<UrlFilterRule> = kModuleUrlFilter;
template <>
constexpr uint32_t kModuleOf<PostfixFilterRule> = kModulePostfixFilter;
template <>
constexpr uint32_t kModuleOf<PostForbidRule> = kModulePostForbid;

void check_rule(const UrlFilterRule& rule) {
  check_switch(rule.act);
  check_text(text(rule.url));
  refuse_unless(rule.url[0] != '\0', kBadUrl);
}

void check_rule(const PostfixFilterRule& rule) { refuse_unless(rule.postfix_count != 0, kEmptyList); }

void check_rule(const PostForbidRule&) {}

uint16_t priority(const UrlFilterRule& rule) { return rule.prio; }
template <typename Rule>
uint16_t priority(const Rule&) {
  return 0;
}

// A list of hosts with nobody in it would be a rule that never works.
template <typename Rule>
void add(Store& store, const Rule& rule, Order& order) {
  check_name(text(rule.name));
  check_switch(rule.log);
  check_rule(rule);
  refuse_unless(rule.address_count != 0 || rule.v6_count != 0, kEmptyList);
  std::vector<uint8_t> record = order.request_bytes(order.room());
  std::span<const uint8_t> rest(record.data() + sizeof rule, record.size() - sizeof rule);
  check_lists(rule, rest);
  record.resize(record.size() - rest.size());
  constexpr uint32_t module = kModuleOf<Rule>;
  store.execute(
      "INSERT INTO filter_rule (module, name, prio, record) VALUES (?, ?, ?, ?)"
      "  ON CONFLICT (module, name) DO UPDATE SET prio = excluded.prio, record = excluded.record",
      module, rule.name, priority(rule), record);
  refuse_unless(
      store.number("SELECT sum(length(record)) FROM filter_rule WHERE module = ?", module) <= kMaxTableBytes,
      kTableFull);
}

template <typename Rule>
void del(Store& store, const Rule& rule) {
  refuse_if_none(
      store.execute("DELETE FROM filter_rule WHERE module = ? AND name = ?", kModuleOf<Rule>, rule.name),
      kNoSuchRule);
}

template <typename Rule>
void list(Store& store, Order& order) {
  RecordList answer(order);
  Statement row =
      store.query("SELECT record FROM filter_rule WHERE module = ? ORDER BY prio, id", kModuleOf<Rule>);
  for (std::vector<uint8_t> record; row.next();) {
    row.read(record);
    answer.add_bytes(record.data(), static_cast<uint32_t>(record.size()));
  }
}

void del_all_urls(Store& store) {
  store.execute("DELETE FROM filter_rule WHERE module = ?", kModuleUrlFilter);
}

void check_mode(uint32_t mode) { refuse_unless(mode <= kMaxMode, kBadMode); }

void set_url_switch(Store& store, const UrlFilterSwitch& setting) {
  check_mode(setting.acl);
  check_switch(setting.block);
  set_setting(store, kModuleUrlFilter, "acl", setting.acl);
  set_setting(store, kModuleUrlFilter, "block", setting.block);
}

void set_postfix_switch(Store& store, const PostfixFilterSwitch& setting) {
  check_mode(setting.mode);
  set_setting(store, kModulePostfixFilter, "mode", setting.mode);
  set_setting(store, kModulePostfixFilter, "block", setting.block);
}

void set_forbid_switch(Store& store, const PostForbidSwitch& setting) {
  check_mode(setting.mode);
  set_setting(store, kModulePostForbid, "mode", setting.mode);
}

// ---- Words ----

std::string word_of(const BbsWord& word, const Order& order) {
  refuse_unless(word.length <= kMaxBbsWord, kBadRecord);
  const std::vector<uint8_t> bytes = order.request_bytes(uint32_t{sizeof word} + word.length);
  return {bytes.begin() + sizeof word, bytes.end()};
}

// A word stands once, whatever its type.
void add_word(Store& store, const BbsWord& word, Order& order) {
  const std::string bytes = word_of(word, order);
  check_name(bytes);
  store.execute(
      "INSERT INTO bbs_word (word, type) VALUES (?, ?) ON CONFLICT (word) DO UPDATE SET type = excluded.type",
      bytes, word.type);
  refuse_unless(store.number("SELECT sum(length(CAST(word AS BLOB)) + ?) FROM bbs_word",
                             sizeof(BbsWordPlace)) <= kMaxTableBytes,
                kTableFull);
}

void del_word(Store& store, const BbsWord& word, Order& order) {
  refuse_if_none(
      store.execute("DELETE FROM bbs_word WHERE word = ? AND type = ?", word_of(word, order), word.type));
}

void del_all_words(Store& store) { store.execute("DELETE FROM bbs_word"); }

// The places of all words, then the words.
void list_words(Store& store, Order& order) {
  std::vector<BbsWordPlace> places;
  std::string words;
  Statement row = store.query("SELECT word, type FROM bbs_word ORDER BY id");
  while (row.next()) {
    std::string word;
    BbsWordPlace place = {};
    row.read(word, place.type);
    place.data_offset = static_cast<uint32_t>(words.size());
    place.data_length = static_cast<uint16_t>(word.size());
    places.push_back(place);
    words += word;
  }
  const auto start = static_cast<uint32_t>(sizeof(BbsWordList) + places.size() * sizeof(BbsWordPlace));
  for (BbsWordPlace& place : places) place.data_offset += start;
  order.answer(
      BbsWordList{static_cast<uint32_t>(places.size()), start + static_cast<uint32_t>(words.size())});
  order.answer_bytes(sizeof(BbsWordList), places.data(), start - uint32_t{sizeof(BbsWordList)});
  order.answer_bytes(start, words.data(), static_cast<uint32_t>(words.size()));
}

void set_word_switch(Store& store, const BbsFilterSwitch& setting) {
  set_setting(store, kModuleBbsFilter, "acl", setting.acl);
  set_setting(store, kModuleBbsFilter, "log", setting.log);
  set_setting(store, kModuleBbsFilter, "block", setting.block);
}

constexpr const char* kRuleSchema[] = {R"(
CREATE TABLE filter_rule (
  id INTEGER PRIMARY KEY,
  module INTEGER NOT NULL,
  name TEXT NOT NULL,
  prio INTEGER NOT NULL,
  record BLOB NOT NULL,
  UNIQUE (module, name)
))"};
constexpr const char* kWordSchema[] = {R"(
CREATE TABLE bbs_word (id INTEGER PRIMARY KEY, word TEXT NOT NULL UNIQUE, type INTEGER NOT NULL))"};

constexpr Command kUrlCommands[] = {
    {kUrlFilterAdd, kWrites, run_as<add<UrlFilterRule>>},
    {kUrlFilterDel, kWrites, run_as<del<UrlFilterRule>>},
    {kUrlFilterDelAll, kWrites, run_as<del_all_urls>},
    {kUrlFilterList, kReads, run_as<list<UrlFilterRule>>},
    {kUrlFilterGlobal, kWrites, run_as<set_url_switch>},
};

constexpr Command kPostfixCommands[] = {
    {kPostfixFilterAdd, kWrites, run_as<add<PostfixFilterRule>>},
    {kPostfixFilterDel, kWrites, run_as<del<PostfixFilterRule>>},
    {kPostfixFilterList, kReads, run_as<list<PostfixFilterRule>>},
    {kPostfixFilterGlobal, kWrites, run_as<set_postfix_switch>},
};

constexpr Command kForbidCommands[] = {
    {kPostForbidAdd, kWrites, run_as<add<PostForbidRule>>},
    {kPostForbidDel, kWrites, run_as<del<PostForbidRule>>},
    {kPostForbidList, kReads, run_as<list<PostForbidRule>>},
    {kPostForbidGlobal, kWrites, run_as<set_forbid_switch>},
};

constexpr Command kWordCommands[] = {
    {kBbsFilterAdd, kWrites, run_as<add_word>},           {kBbsFilterDel, kWrites, run_as<del_word>},
    {kBbsFilterDelAll, kWrites, run_as<del_all_words>},   {kBbsFilterList, kReads, run_as<list_words>},
    {kBbsFilterGlobal, kWrites, run_as<set_word_switch>},
};

}  // namespace

const Module kBbsFilterModule = {kModuleBbsFilter, kWordCommands, kWordSchema};
const Module kPostfixFilterModule = {kModulePostfixFilter, kPostfixCommands, kRuleSchema};
const Module kPostForbidModule = {kModulePostForbid, kForbidCommands};
const Module kUrlFilterModule = {kModuleUrlFilter, kUrlCommands};
