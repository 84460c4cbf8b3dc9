// Speed rules of the QoS engine (module 14, beside its control): limits and guarantees, priority rules,
// traffic types, and what traffic is recognised by. Rules are kept as the records that they came in; a limit
// or guarantee set again is replaced, a priority rule stands once.
#include "modules/speed_rules.h"

#include <algorithm>

#include "modules/kept_records.h"
#include "modules/modules.h"
#include "records/qos.h"

// Where check_lists finds them.
static void check_element(const RecognitionName& name) { check_name(text(name.name)); }

// All zero where the words were no address, or behind the last of the ranges that were not left out.
static void check_element(const RecognitionRange& range) {
  refuse_unless(ntohl(range.first.value) <= ntohl(range.last.value), kBadRange);
}

namespace {

// As much as the answers to a list hold: no rule works unseen.
constexpr uint32_t kMaxSpeedBytes = 20480 - kListEntriesOffset;
constexpr uint32_t kMaxPriorityBytes = 1024000 - sizeof(OrderRecord) - kListEntriesOffset;

// ---- Limits and guarantees ----

bool is_empty(const IdSet& set) {
  return std::ranges::all_of(set.words, [](const auto& word) { return word.value() == 0; });
}

void set_speed_rule(Store& store, const SpeedRule& rule, Order& order) {
  check_name(text(rule.name));
  refuse_unless(rule.kind <= kSpeedGuaranteed, kBadType);
  if (rule.action == kSpeedRuleDel) {
    refuse_if_none(store.execute("DELETE FROM speed_rule WHERE kind = :kind AND name = :name", rule),
                   kNoSuchRule);
    return;
  }
  refuse_unless(rule.action == kSpeedRuleAdd, kBadMode);
  refuse_unless(rule.range_count != 0 && (rule.all_types != 0 || !is_empty(rule.types)) &&
                    (rule.all_lines != 0 || !is_empty(rule.lines)),
                kEmptyList);
  refuse_unless(rule.range_bytes == rule.range_count * sizeof(V4Range), kBadRecord);
  store.put("speed_rule", Column{"kind", rule.kind}, Column{"name", text(rule.name)},
            Column{"record", whole_record(rule, order)});
  refuse_unless(store.number("SELECT max(bytes) FROM (SELECT sum(length(record)) AS bytes FROM speed_rule"
                             "  GROUP BY kind)") <= kMaxSpeedBytes,
                kTableFull);
}

void list_speed_rules(Store& store, const SpeedListRequest& request, Order& order) {
  refuse_unless(request.kind <= kSpeedGuaranteed, kBadType);
  list_records(store.query("SELECT record FROM speed_rule WHERE kind = ? ORDER BY id", request.kind), order);
}

// ---- Priority rules ----

void add_rule(Store& store, const PriorityRule& rule, Order& order) {
  check_name(text(rule.name));
  refuse_unless(rule.kind <= kSpeedPriority, kBadType);
  check_switch(rule.is_and);
  refuse_unless(rule.address_count != 0 || rule.v6_count != 0, kEmptyList);
  const std::vector<uint8_t> record = whole_record(rule, order);
  refuse_unless(record.size() == sizeof rule + rule.list_bytes, kBadRecord);
  if (store.execute("INSERT OR IGNORE INTO priority_rule (kind, name, run_prio, record)"
                    "  VALUES (:kind, :name, :run_prio, :record)",
                    rule, Column{"record", record}) == 0) {
    throw Refusal{kAlreadyThere};
  }
  refuse_unless(store.number("SELECT max(bytes) FROM (SELECT sum(length(record)) AS bytes FROM priority_rule"
                             "  GROUP BY kind)") <= kMaxPriorityBytes,
                kTableFull);
}

void del_rule(Store& store, const PriorityRule& rule) {
  refuse_if_none(store.execute("DELETE FROM priority_rule WHERE kind = :kind AND name = :name", rule),
                 kNoSuchRule);
}

void get_rule(Store& store, const PriorityRule& rule, Order& order) {
  Statement row = store.query("SELECT record FROM priority_rule WHERE kind = :kind AND name = :name", rule);
  refuse_unless(row.next(), kNoSuchRule);
  std::vector<uint8_t> record;
  row.read(record);
  refuse_unless(order.answer_bytes(0, record.data(), static_cast<uint32_t>(record.size())), kBadRecord);
}

void list_rules(Store& store, const PriorityRule& rule, Order& order) {
  list_records(
      store.query("SELECT record FROM priority_rule WHERE kind = ? ORDER BY run_prio, id", rule.kind), order);
}

// ---- Recognition and traffic types ----

// What is given replaces what was: no order reads it back, a report counts it.
void set_recognition(Store& store, const RecognitionLists& lists, Order& order) {
  store.execute("INSERT OR REPLACE INTO recognition VALUES (?, ?)", order.command(),
                whole_record(lists, order));
}

void list_types(Store& store, Order& order) {
  ListAnswer<QosTypeEntry> answer(order);
  Statement row = store.query("SELECT * FROM qos_type ORDER BY id");
  while (row.next()) {
    QosTypeEntry type = {};
    row.read_fields(type);
    answer.add(type);
  }
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE speed_rule (
  id INTEGER PRIMARY KEY,
  kind INTEGER NOT NULL,
  name TEXT NOT NULL,
  record BLOB NOT NULL,
  UNIQUE (kind, name)
);
CREATE TABLE priority_rule (
  id INTEGER PRIMARY KEY,
  kind INTEGER NOT NULL,
  name TEXT NOT NULL,
  run_prio INTEGER NOT NULL,
  record BLOB NOT NULL,
  UNIQUE (kind, name)
);
CREATE TABLE recognition (command INTEGER PRIMARY KEY, record BLOB NOT NULL);
CREATE TABLE qos_type (                   -- a lab's word
  id INTEGER PRIMARY KEY,
  priority INTEGER NOT NULL,
  sp_up INTEGER NOT NULL,
  sp_down INTEGER NOT NULL,
  count_up INTEGER NOT NULL,
  count_skb_up INTEGER NOT NULL,
  count_down INTEGER NOT NULL,
  count_skb_down INTEGER NOT NULL
))"};

constexpr Command kCommands[] = {
    {kQosTypeList, kReads, run_as<list_types>},
    {kQosSpeedSet, kWrites, run_as<set_speed_rule>},
    {kQosSpeedList, kReads, run_as<list_speed_rules>},
    {kQosDnsIp, kWrites, run_as<set_recognition>},
    {kQosAppDns, kWrites, run_as<set_recognition>},
    {kQosAppIp, kWrites, run_as<set_recognition>},
    {kQosAppProtocol, kWrites, run_as<set_recognition>},
    {kQosAppHost, kWrites, run_as<set_recognition>},
    {kQosRuleAdd, kWrites, run_as<add_rule>},
    {kQosRuleDel, kWrites, run_as<del_rule>},
    {kQosRuleGet, kReads, run_as<get_rule>},
    {kQosRuleList, kReads, run_as<list_rules>},
};

// The IPv4 ranges with which the lists behind a rule begin.
template <typename Rule>
std::vector<V4Range> ranges_behind(const Rule&, uint16_t count, const std::vector<uint8_t>& record) {
  std::vector<V4Range> ranges(count);
  memcpy(ranges.data(), record.data() + sizeof(Rule), ranges.size() * sizeof(V4Range));
  return ranges;
}

int32_t as_limit(uint64_t rate) { return static_cast<int32_t>(std::min<uint64_t>(rate, INT32_MAX)); }

}  // namespace

const Module kSpeedRuleModule = {.number = kModuleQos, .commands = kCommands, .schema = kSchema, .part = 1};

SpeedLimits::SpeedLimits(Store& store) {
  std::vector<uint8_t> record;
  Statement speed = store.query("SELECT record FROM speed_rule WHERE kind = ? ORDER BY id", kSpeedLimited);
  while (speed.next()) {
    speed.read(record);
    const auto rule = fixed_part<SpeedRule>(record);
    limits_.push_back({ranges_behind(rule, rule.range_count, record), as_limit(rule.up.value()),
                       as_limit(rule.down.value())});
  }
  Statement priority =
      store.query("SELECT record FROM priority_rule WHERE kind = ? ORDER BY run_prio, id", kSpeedLimited);
  while (priority.next()) {
    priority.read(record);
    const auto rule = fixed_part<PriorityRule>(record);
    if (rule.type != kHostRanges) continue;
    limits_.push_back(
        {ranges_behind(rule, rule.address_count, record), as_limit(rule.up), as_limit(rule.down)});
  }
}

void SpeedLimits::apply(HostEntry& host) const {
  if (host.ip.family.value() != 4) return;
  uint32_t ip;
  memcpy(&ip, host.ip.bytes, sizeof ip);
  ip = ntohl(ip);
  for (const Limit& limit : limits_) {
    const auto covers = [ip](const V4Range& range) {
      return range.first.value <= ip && ip <= range.last.value;
    };
    if (std::ranges::none_of(limit.ranges, covers)) continue;
    host.speed_limit_up = limit.up;
    host.speed_limit_down = limit.down;
    return;
  }
}
