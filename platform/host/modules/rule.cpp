// The rule tables (module 11): access rules with their default action, whitelist, multi-line routing with its
// hit counters, application filter. Rules are kept as the records that they came in, and listed by priority,
// lowest number first; rules of one priority in the order in which they were added.
#include "modules/rule.h"

#include <algorithm>
#include <cstddef>

#include "modules/checks.h"
#include "modules/modules.h"
#include "modules/mr.h"
#include "records/list.h"
#include "records/rule.h"
#include "state/settings.h"

namespace {

constexpr const char* kDefaultAction = "acc_default";

enum Table { kAcc = 1, kWhitelist, kMroute, kFilter };

// What a routing rule goes by, which decides when it can choose a line.
enum RouteType : uint8_t {
  kByAddress = 1,      // known with the first packet
  kByApplication = 2,  // known once the traffic has been recognised
};

// Where a rule stands.
struct Place {
  Table table;
  uint8_t gid;  // of a filter: a name is one rule's within its group
  std::string_view name;
  uint16_t prio;
};

Place place_of(const AccRule& rule) { return {kAcc, 0, text(rule.name), rule.prio}; }
Place place_of(const WhitelistEntry& entry) { return {kWhitelist, 0, text(entry.name), 0}; }
Place place_of(const MrouteRule& rule) { return {kMroute, 0, text(rule.name), rule.prio}; }
Place place_of(const FilterRule& rule) { return {kFilter, rule.gid, text(rule.name), rule.prio}; }

// Of the lists behind a rule.
template <typename Rule>
uint32_t list_bytes(const Rule& rule) {
  return rule.list_bytes;
}
uint32_t list_bytes(const FilterRule& rule) { return rule.id_count * uint32_t{sizeof(NumberRange)}; }

// A list with nobody in it is no rule for nobody: whoever wrote it meant somebody.
template <typename Rule>
void check_hosts(const Rule& rule) {
  refuse_unless(rule.address_count != 0 || (rule.type == kHostRanges && rule.v6_count != 0), kEmptyList);
}

// A mode of class list wants a list: without one the rule would be for all classes.
template <typename Rule>
void check_classes(const Rule& rule) {
  refuse_unless(rule.thd_type == 0 || rule.thd_count != 0, kEmptyList);
}

void check(Store&, const AccRule& rule) {
  check_switch(rule.act);
  check_switch(rule.log);
  check_classes(rule);
  if (rule.type == kRuleMac) {
    refuse_unless(is_host_mac(rule.mac), kBadMac);
  } else {
    check_hosts(rule);
  }
}

void check(Store&, const WhitelistEntry& entry) { check_hosts(entry); }

// The lines in use: what stands behind a place that is left empty is not.
std::span<const uint16_t> wans(const MrouteRule& rule) {
  return {rule.wans, std::ranges::find(rule.wans, 0)};
}

// The links of VPNs come and go by themselves.
void check(Store& store, const MrouteRule& rule) {
  check_switch(rule.log);
  check_classes(rule);
  check_hosts(rule);
  refuse_unless(!wans(rule).empty(), kEmptyList);
  for (const uint16_t wan : wans(rule)) {
    if (wan < kFirstVpnLine) {
      require_line(store, wan - 1U);
    } else {
      refuse_unless(wan <= kLastLine, kUnknownLine);
    }
  }
}

void check(Store&, const FilterRule& rule) {
  check_switch(rule.act);
  check_switch(rule.log);
  refuse_unless(rule.gid != 0 || rule.id_count != 0, kEmptyList);  // nothing at all of nobody in particular
}

uint8_t route_type(const MrouteRule& rule) {
  return rule.thd_count != 0 || rule.shibie_count != 0 ? kByApplication : kByAddress;
}

// A name stands once: who wants another rule under it deletes the first.
template <typename Rule>
void add(Store& store, const Rule& request, Order& order) {
  Rule rule = request;
  uint8_t kind = 0;
  if constexpr (std::is_same_v<Rule, MrouteRule>) kind = rule.rule_type = route_type(rule);
  const Place place = place_of(rule);
  std::vector<uint8_t> record = order.request_bytes(uint32_t{sizeof rule} + list_bytes(rule));
  std::span<const uint8_t> lists(record.data() + sizeof rule, record.size() - sizeof rule);
  check_lists(rule, lists);
  refuse_unless(lists.empty(), kBadRecord);
  check_name(place.name);
  check(store, rule);
  memcpy(record.data(), &rule, sizeof rule);

  refuse_if_none(store.execute("INSERT OR IGNORE INTO rule (tab, gid, name, prio, kind, record) "
                               "VALUES (?, ?, ?, ?, ?, ?)",
                               place.table, place.gid, place.name, place.prio, kind, record),
                 kAlreadyThere);
  refuse_unless(
      store.number("SELECT sum(length(record)) FROM rule WHERE tab = ?", place.table) <= kMaxTableBytes,
      kTableFull);
}

void delete_rule(Store& store, Table table, uint8_t gid, std::string_view name) {
  refuse_if_none(store.execute("DELETE FROM rule WHERE tab = ? AND gid = ? AND name = ?", table, gid, name),
                 kNoSuchRule);
}

template <Table table>
void del(Store& store, const RuleName& rule) {
  delete_rule(store, table, 0, text(rule.name));
}

void del_filter(Store& store, const FilterRule& rule) {
  delete_rule(store, kFilter, rule.gid, text(rule.name));
}

template <Table table>
void del_all(Store& store) {
  store.execute("DELETE FROM rule WHERE tab = ?", table);
}

// Which routing rules to delete is their type; 0 deletes all.
void del_all_routes(Store& store, const MrouteRule& request) {
  refuse_unless(request.delall_which <= kByApplication, kBadType);
  store.execute("DELETE FROM rule WHERE tab = ?1 AND (?2 = 0 OR kind = ?2)", kMroute, request.delall_which);
}

// The rules of a group; 0 stands for every group.
void list_rules(Store& store, Table table, uint8_t gid, Order& order) {
  RecordList answer(order);
  Statement row = store.query(
      "SELECT record FROM rule WHERE tab = ?1 AND (?2 = 0 OR gid = ?2) ORDER BY prio, id", table, gid);
  for (std::vector<uint8_t> record; row.next();) {
    row.read(record);
    answer.add_bytes(record.data(), static_cast<uint32_t>(record.size()));
  }
}

template <Table table>
void list(Store& store, Order& order) {
  list_rules(store, table, 0, order);
}

void list_filters(Store& store, const FilterListRequest& request, Order& order) {
  list_rules(store, kFilter, request.gid, order);
}

void set_default(Store& store, const AccDefault& setting) {
  refuse_unless(setting.action <= kMaxAccDefault, kBadMode);
  set_setting(store, kModuleRule, kDefaultAction, setting.action);
}

void get_default(Store& store, AccDefault& setting) {
  setting.action = get_setting(store, kModuleRule, kDefaultAction);
}

void hits(Store& store, Order& order) {
  ListAnswer<RuleHitEntry> answer(order);
  Statement row = store.query("SELECT name, hits FROM rule WHERE tab = ? ORDER BY prio, id", kMroute);
  for (RuleHitEntry entry = {}; row.next();) {
    row.read(entry.name, entry.hits);
    answer.add(entry);
  }
}

// Sets the counter of a rule back, or without a name that of every rule.
void clear_hits(Store& store, const RuleName& rule) {
  const std::string_view name = text(rule.name);
  const int cleared =
      store.execute("UPDATE rule SET hits = 0 WHERE tab = ?1 AND (?2 = '' OR name = ?2)", kMroute, name);
  if (!name.empty()) refuse_if_none(cleared, kNoSuchRule);
}

// Those that send traffic over the line of an interface.
std::vector<int64_t> routes_over(Store& store, std::string_view dev) {
  std::vector<int64_t> ids;
  const int64_t wan = store.number("SELECT wanid + 1 FROM line WHERE dev = ?", dev);
  Statement row = store.query("SELECT id, record FROM rule WHERE tab = ? AND ? <> 0", kMroute, wan);
  for (std::vector<uint8_t> record; row.next();) {
    int64_t id;
    row.read(id, record);
    MrouteRule rule;
    memcpy(&rule, record.data(), sizeof rule);
    if (std::ranges::find(wans(rule), wan) != wans(rule).end()) ids.push_back(id);
  }
  return ids;
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE rule (
  id INTEGER PRIMARY KEY,
  tab INTEGER NOT NULL,
  gid INTEGER NOT NULL,
  name TEXT NOT NULL,
  prio INTEGER NOT NULL,
  kind INTEGER NOT NULL,
  hits INTEGER NOT NULL DEFAULT 0,
  record BLOB NOT NULL,
  UNIQUE (tab, gid, name)
))"};

constexpr Command kCommands[] = {
    {kAccDefaultSet, kWrites, run_as<set_default>},
    {kAccDefaultGet, kReads, run_as<get_default>},
    {kAccAdd, kWrites, run_as<add<AccRule>>},
    {kAccDel, kWrites, run_as<del<kAcc>>},
    {kAccDelAll, kWrites, run_as<del_all<kAcc>>},
    {kAccList, kReads, run_as<list<kAcc>>},
    {kMrouteAdd, kWrites, run_as<add<MrouteRule>>},
    {kMrouteDel, kWrites, run_as<del<kMroute>>},
    {kMrouteDelAll, kWrites, run_as<del_all_routes>},
    {kMrouteList, kReads, run_as<list<kMroute>>},
    {kFilterAdd, kWrites, run_as<add<FilterRule>>},
    {kFilterDel, kWrites, run_as<del_filter>},
    {kFilterList, kReads, run_as<list_filters>},
    {kWhitelistAdd, kWrites, run_as<add<WhitelistEntry>>},
    {kWhitelistDel, kWrites, run_as<del<kWhitelist>>},
    {kWhitelistDelAll, kWrites, run_as<del_all<kWhitelist>>},
    {kWhitelistList, kReads, run_as<list<kWhitelist>>},
    {kMrouteHit, kReads, run_as<hits>},
    {kMrouteHitDel, kWrites, run_as<clear_hits>},
};

}  // namespace

const Module kRuleModule = {kModuleRule, kCommands, kSchema};

bool is_routed_over(Store& store, std::string_view dev) { return !routes_over(store, dev).empty(); }

void delete_routes_over(Store& store, std::string_view dev) {
  for (const int64_t id : routes_over(store, dev)) store.execute("DELETE FROM rule WHERE id = ?", id);
}

bool set_route_hits(Store& store, std::string_view name, uint64_t hits) {
  return store.execute("UPDATE rule SET hits = ? WHERE tab = ? AND name = ?", hits, kMroute, name) != 0;
}
