// Limits on connections (module 11, beside the rule tables): rules that limit the number or the rate of a
// group's connections, and the limits of everybody else. A name stands once among the rules of its type, as
// in the other tables of the module.
#include "records/ctrule.h"

#include <algorithm>

#include "modules/kept_records.h"
#include "modules/modules.h"

namespace {

// As much as the answer to a list holds: no rule works unseen.
constexpr uint32_t kMaxLimitBytes = 40480 - kListEntriesOffset;

void check_type(uint8_t type) { refuse_unless(type == kLimitCount || type == kLimitRate, kBadType); }

void add_rule(Store& store, const LimitRule& rule, Order& order) {
  refuse_unless(is_rule_class(rule.prot), kBadType);
  refuse_unless(rule.max != 0, kBadNumber);  // nobody is to have no connection at all: that is an access rule
  check_number(rule.max);
  refuse_unless(rule.type == kLimitCount || (rule.tm != 0 && rule.tm <= INT32_MAX), kBadTime);
  refuse_unless(rule.list_count != 0 || (rule.kind == kHostRanges && rule.v6_count != 0), kEmptyList);
  const std::vector<uint8_t> record = whole_record(rule, order);
  refuse_unless(record.size() == sizeof rule + rule.list_bytes, kBadRecord);
  refuse_if_none(store.execute("INSERT OR IGNORE INTO limit_rule (type, name, record) VALUES (?, ?, ?)",
                               rule.type, rule.name, record),
                 kAlreadyThere);
  refuse_unless(
      store.number("SELECT sum(length(record)) FROM limit_rule WHERE type = ?", rule.type) <= kMaxLimitBytes,
      kTableFull);
}

void set_rule(Store& store, const LimitRule& rule, Order& order) {
  check_name(text(rule.name));
  check_type(rule.type);
  if (rule.action == kLimitDel) {
    refuse_if_none(store.execute("DELETE FROM limit_rule WHERE type = :type AND name = :name", rule),
                   kNoSuchRule);
    return;
  }
  refuse_unless(rule.action == kLimitAdd, kBadMode);
  add_rule(store, rule, order);
}

void list_rules(Store& store, const LimitListRequest& request, Order& order) {
  check_type(request.type);
  list_records(store.query("SELECT record FROM limit_rule WHERE type = ? ORDER BY id", request.type), order);
}

void set_defaults(Store& store, const LimitDefaults& limits, Order& order) {
  for (int i = 0; i < kClassCount; ++i) {
    check_number(limits.ct_max[i]);
    check_number(limits.ddos_max[i]);
    refuse_unless(limits.ddos_time[i] <= INT32_MAX && (limits.ddos_max[i] == 0 || limits.ddos_time[i] != 0),
                  kBadTime);
  }
  store.execute("INSERT OR REPLACE INTO limit_defaults VALUES (0, ?)", order.request_bytes(sizeof limits));
}

void get_defaults(Store& store, LimitDefaults& limits) {
  Statement row = store.query("SELECT record FROM limit_defaults");
  std::vector<uint8_t> record(sizeof limits);
  if (row.next()) row.read(record);
  limits = fixed_part<LimitDefaults>(record);
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE limit_rule (
  id INTEGER PRIMARY KEY,
  type INTEGER NOT NULL,
  name TEXT NOT NULL,
  record BLOB NOT NULL,
  UNIQUE (type, name)
);
CREATE TABLE limit_defaults (id INTEGER PRIMARY KEY CHECK (id = 0), record BLOB NOT NULL))"};

constexpr Command kCommands[] = {
    {kLimitRuleSet, kWrites, run_as<set_rule>},
    {kLimitRuleList, kReads, run_as<list_rules>},
    {kLimitDefaultsSet, kWrites, run_as<set_defaults>},
    {kLimitDefaultsGet, kReads, run_as<get_defaults>},
};

}  // namespace

const Module kLimitModule = {.number = kModuleRule, .commands = kCommands, .schema = kSchema, .part = 1};
