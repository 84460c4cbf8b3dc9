// The PPPoE server (module 9): its settings, the groups of its addresses, and the probe. Its clients are the
// hosts that accounts have logged in by PPPoE; what else only packets would tell is the lab's word.
#include "records/pppoe.h"

#include <set>

#include "modules/checks.h"
#include "modules/devmg.h"
#include "modules/modules.h"
#include "modules/user.h"
#include "records/user.h"
#include "state/settings.h"

namespace {

constexpr int kMaxGroups = 1024;
constexpr uint32_t kMaxShown = INT32_MAX;  // of what lists show with a sign
constexpr const char* kDebug = "debug";
constexpr const char* kDebugLog = "debug log";

// ---- The networks that addresses are handed out of ----

// The server's network or that of a group.
struct Network {
  Ip4 ip;  // the router's own address there
  Ip4 mask;
  Ip4 dns[2];

  uint32_t first() const { return ntohl(ip.value & mask.value) + 1; }
  uint32_t last() const { return ntohl(ip.value | ~mask.value) - 1; }
  bool has_host(uint32_t host) const { return first() <= host && host <= last(); }
};

void check_network(Ip4 ip, Ip4 mask) {
  constexpr uint32_t kSmallest = 0xfffffffc;  // the mask of two hosts
  refuse_unless(is_host_ip(ip), kBadAddress);
  refuse_unless(is_mask(mask) && mask.value != 0 && ntohl(mask.value) <= kSmallest, kBadMask);
}

void check_servers(const Ip4 (&dns)[2]) {
  for (const Ip4& server : dns) refuse_unless(server.value == 0 || is_host_ip(server), kBadAddress);
}

std::vector<PppoeRange> ranges_of(const std::set<uint32_t>& hosts) {
  std::vector<PppoeRange> ranges;
  for (const uint32_t host : hosts) {
    const Ip4 ip = {htonl(host)};
    if (!ranges.empty() && ntohl(ranges.back().end.value) + 1 == host) {
      ranges.back().end = ip;
    } else {
      ranges.push_back({ip, ip});
    }
  }
  return ranges;
}

// What of a network is never handed out.
std::set<uint32_t> reserved_hosts(const Network& network) {
  std::set<uint32_t> hosts;
  for (const Ip4& ip : {network.ip, network.dns[0], network.dns[1]}) {
    if (network.has_host(ntohl(ip.value))) hosts.insert(ntohl(ip.value));
  }
  return hosts;
}

std::set<uint32_t> session_hosts(Store& store, const Network& network) {
  std::set<uint32_t> hosts;
  Statement row = store.query("SELECT ip FROM session WHERE service = ? AND ip BETWEEN ? AND ?", kUserPppoe,
                              network.first(), network.last());
  for (uint32_t host; row.next(); hosts.insert(host)) row.read(host);
  return hosts;
}

// Puts a list into the answer, as much of it as the record has room for, and steps over it.
template <typename Element>
uint32_t answer_list(Order& order, uint32_t& offset, const std::vector<Element>& list) {
  uint32_t count = 0;
  for (const Element& element : list) {
    if (!order.answer(element, offset)) break;
    offset += uint32_t{sizeof element};
    ++count;
  }
  return count;
}

// The lists that the server and a group report alike.
template <typename Report>
void answer_pools(Store& store, Order& order, uint32_t& offset, Report& report, const Network& network) {
  report.pool_num =
      answer_list<PppoeRange>(order, offset, {{{htonl(network.first())}, {htonl(network.last())}}});
  report.bl_num = answer_list(order, offset, ranges_of(reserved_hosts(network)));
  report.ipused_num = answer_list(order, offset, ranges_of(session_hosts(store, network)));
}

// ---- The server ----

void set_base(Store& store, const PppoeServerConfig& config) {
  check_switch(config.en);
  require_interface(store, text(config.dev));
  check_network(config.srv_ip, config.netmask);
  refuse_unless(Network{config.srv_ip, config.netmask, {}}.has_host(ntohl(config.srv_ip.value)), kBadAddress);
  store.execute("INSERT OR REPLACE INTO pppoe_base VALUES (0, :en, :dev, :srv_ip, :netmask, :sys_run_flag)",
                config);
}

void set_options(Store& store, const PppoeServerConfig& config) {
  check_text(text(config.acname));
  check_servers(config.dns);
  refuse_unless(config.check_tm <= kMaxShown && config.check_max <= kMaxShown, kBadNumber);
  for (const uint8_t value :
       {config.pap, config.chap, config.mschap, config.mschap2, config.any_acname, config.any_user}) {
    check_switch(value);
  }
  store.execute(
      "INSERT OR REPLACE INTO pppoe_options VALUES (0, :acname, :dns_1, :dns_2, :any_acname, :check_tm,"
      "  :check_max, :pap, :chap, :mschap, :mschap2, :any_user)",
      config);
}

// Each half leaves the other as it is.
void set(Store& store, const PppoeServerConfig& config) {
  switch (config.half) {
    case kPppoeBase:
      return set_base(store, config);
    case kPppoeOptions:
      return set_options(store, config);
    default:
      throw Refusal{kBadMode};
  }
}

// All zero for a half that was never set.
PppoeServerConfig read_config(Store& store) {
  PppoeServerConfig config = {};
  Statement base = store.query("SELECT en, dev, srv_ip, netmask, sys_run_flag FROM pppoe_base");
  if (base.next()) base.read_fields(config);
  Statement options = store.query(
      "SELECT acname, dns_1, dns_2, any_acname, check_tm, check_max, pap, chap, mschap, mschap2, any_user "
      "FROM pppoe_options");
  if (options.next()) options.read_fields(config);
  return config;
}

bool has_network(const PppoeServerConfig& config) { return config.srv_ip.value != 0; }

Network network_of(const PppoeServerConfig& config) {
  return {config.srv_ip, config.netmask, {config.dns[0], config.dns[1]}};
}

void show(Store& store, PppoeServerConfig& config) {
  config = read_config(store);
  if (has_network(config)) {
    const Network network = network_of(config);
    config.start_ip = {htonl(network.first())};
    config.end_ip = {htonl(network.last())};
  }
  Statement counted = store.query("SELECT rcv_padi, send_pado FROM pppoe_fact");
  if (counted.next()) counted.read_fields(config);
}

std::vector<PppoeSession> all_sessions(Store& store) {
  std::vector<PppoeSession> sessions;
  Statement row = store.query("SELECT ip FROM session WHERE service = ? AND ip <> 0 ORDER BY ip", kUserPppoe);
  while (row.next()) row.read(sessions.emplace_back().ip);
  return sessions;
}

void debug(Store& store, const PppoeDebug& request, Order& order) {
  refuse_unless(request.mode <= 1, kBadMode);
  if (request.mode == 1) {
    check_switch(request.en);
    check_switch(request.log_en);
    set_setting(store, kModulePppoe, kDebug, request.en);
    set_setting(store, kModulePppoe, kDebugLog, request.log_en);
    return;
  }
  end_sessions(store);
  PppoeDebug report = {};
  report.en = get_setting(store, kModulePppoe, kDebug);
  report.log_en = get_setting(store, kModulePppoe, kDebugLog);
  uint32_t offset = sizeof report;
  const PppoeServerConfig config = read_config(store);
  if (has_network(config)) answer_pools(store, order, offset, report, network_of(config));
  report.session_num = answer_list(order, offset, all_sessions(store));
  order.answer(report);
}

// Nothing here goes by the clock that was set.
void change_time(Store&, const PppoeTimeChange&) {}

// ---- Groups ----

void check_group(const PppoeGroup& group) {
  check_network(group.ip, group.mask);
  check_servers(group.dns);
}

// No address is handed out by two groups.
void check_overlap(Store& store, const PppoeGroup& group) {
  refuse_unless(store.number("SELECT count(*) FROM pppoe_group "
                             "WHERE name <> :name AND ip & mask & :mask = :ip & mask & :mask",
                             group) == 0,
                kOverlap);
}

void group_add(Store& store, const PppoeGroup& group) {
  check_name(text(group.name));
  check_group(group);
  refuse_if_none(
      store.execute("INSERT OR IGNORE INTO pppoe_group (name, ip, mask, dns_1, dns_2, sys_run_flag)"
                    "  VALUES (:name, :ip, :mask, :dns_1, :dns_2, :sys_run_flag)",
                    group),
      kAlreadyThere);
  check_overlap(store, group);
  refuse_if_full(store, "pppoe_group", kMaxGroups);
}

// The limits stay.
void group_mod(Store& store, const PppoeGroup& group) {
  check_group(group);
  refuse_if_none(
      store.execute("UPDATE pppoe_group SET ip = :ip, mask = :mask, dns_1 = :dns_1, dns_2 = :dns_2,"
                    "  sys_run_flag = :sys_run_flag WHERE name = :name",
                    group),
      kUnknownGroup);
  check_overlap(store, group);
}

void group_del(Store& store, const PppoeGroup& group) {
  refuse_if_none(store.execute("DELETE FROM pppoe_group WHERE name = ?", group.name), kUnknownGroup);
}

void group_del_all(Store& store) { store.execute("DELETE FROM pppoe_group"); }

void group_speed(Store& store, const PppoeGroup& group) {
  refuse_unless(group.up <= kMaxShown && group.down <= kMaxShown, kBadNumber);
  refuse_if_none(store.execute("UPDATE pppoe_group SET up = :up, down = :down WHERE name = :name", group),
                 kUnknownGroup);
}

void group_list(Store& store, Order& order) {
  end_sessions(store);
  ListAnswer<PppoeGroup> answer(order);
  Statement row = store.query(
      "SELECT *, (SELECT count(*) FROM session WHERE service = ? AND session.ip & mask = pppoe_group.ip & "
      "mask)"
      "  AS user FROM pppoe_group ORDER BY rowid",
      kUserPppoe);
  while (row.next()) {
    PppoeGroup group = {};
    row.read_fields(group);
    answer.add(group);
  }
}

void group_debug(Store& store, const PppoeGroupDebug& request, Order& order) {
  end_sessions(store);
  Network network = {};
  Statement row = store.query("SELECT ip, mask, dns_1, dns_2 FROM pppoe_group WHERE name = ?", request.name);
  refuse_unless(row.next(), kUnknownGroup);
  row.read(network.ip, network.mask, network.dns[0], network.dns[1]);
  PppoeGroupDebug report = request;
  uint32_t offset = sizeof report;
  answer_pools(store, order, offset, report, network);
  order.answer(report);
}

// ---- The probe ----

void probe_start(Store& store, const PppoeProbe& probe) {
  check_switch(probe.enable);
  require_interface(store, text(probe.dev));
  store.execute("INSERT OR REPLACE INTO pppoe_probe VALUES (0, :dev, :enable)", probe);
}

void probe_stop(Store& store) {
  refuse_if_none(store.execute("UPDATE pppoe_probe SET enable = 0 WHERE enable"), kNotRunning);
}

// What the last probe has found stays when it is stopped.
void probe_status(Store& store, PppoeProbe& probe) {
  probe = {};
  Statement row = store.query(
      "SELECT dev, enable, status, username, userpwd, numbers_1, numbers_2, numbers_3, numbers_4 "
      "FROM pppoe_probe LEFT JOIN pppoe_probe_fact USING (dev)");
  if (row.next()) row.read_fields(probe);
}

// With its interface the server loses its base settings, and the probe its device.
constexpr const char* kSchema[] = {R"(
CREATE TABLE pppoe_base (
  id INTEGER PRIMARY KEY CHECK (id = 0),
  en INTEGER NOT NULL,
  dev TEXT NOT NULL REFERENCES interface (dev) ON DELETE CASCADE,
  srv_ip INTEGER NOT NULL,
  netmask INTEGER NOT NULL,
  sys_run_flag INTEGER NOT NULL
);
CREATE TABLE pppoe_options (
  id INTEGER PRIMARY KEY CHECK (id = 0),
  acname TEXT NOT NULL,
  dns_1 INTEGER NOT NULL,
  dns_2 INTEGER NOT NULL,
  any_acname INTEGER NOT NULL,
  check_tm INTEGER NOT NULL,
  check_max INTEGER NOT NULL,
  pap INTEGER NOT NULL,
  chap INTEGER NOT NULL,
  mschap INTEGER NOT NULL,
  mschap2 INTEGER NOT NULL,
  any_user INTEGER NOT NULL
);
CREATE TABLE pppoe_group (
  name TEXT NOT NULL UNIQUE,
  ip INTEGER NOT NULL,
  mask INTEGER NOT NULL,
  dns_1 INTEGER NOT NULL,
  dns_2 INTEGER NOT NULL,
  sys_run_flag INTEGER NOT NULL,
  up INTEGER NOT NULL DEFAULT 0,
  down INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE pppoe_probe (
  id INTEGER PRIMARY KEY CHECK (id = 0),
  dev TEXT NOT NULL REFERENCES interface (dev) ON DELETE CASCADE,
  enable INTEGER NOT NULL
);
CREATE TABLE pppoe_fact (                 -- this and the next: what a lab says
  id INTEGER PRIMARY KEY CHECK (id = 0),
  rcv_padi INTEGER NOT NULL,
  send_pado INTEGER NOT NULL
);
CREATE TABLE pppoe_probe_fact (           -- of what a probe would find
  dev TEXT PRIMARY KEY,
  status INTEGER NOT NULL,
  username TEXT NOT NULL,
  userpwd TEXT NOT NULL,
  numbers_1 INTEGER NOT NULL,
  numbers_2 INTEGER NOT NULL,
  numbers_3 INTEGER NOT NULL,
  numbers_4 INTEGER NOT NULL
) WITHOUT ROWID)"};

constexpr Command kCommands[] = {
    {kPppoeSet, kWrites, run_as<set>},
    {kPppoeShow, kReads, run_as<show>},
    {kPppoeDebug, kWrites, run_as<debug>},
    {kPppoeGroupAdd, kWrites, run_as<group_add>},
    {kPppoeGroupDel, kWrites, run_as<group_del>},
    {kPppoeGroupMod, kWrites, run_as<group_mod>},
    {kPppoeGroupDelAll, kWrites, run_as<group_del_all>},
    {kPppoeGroupList, kWrites, run_as<group_list>},
    {kPppoeGroupSpeed, kWrites, run_as<group_speed>},
    {kPppoeGroupDebug, kWrites, run_as<group_debug>},
    {kPppoeProbeStart, kWrites, run_as<probe_start>},
    {kPppoeProbeStop, kWrites, run_as<probe_stop>},
    {kPppoeProbeStatus, kReads, run_as<probe_status>},
    {kPppoeTimeChange, kReads, run_as<change_time>},
};

}  // namespace

const Module kPppoeModule = {kModulePppoe, kCommands, kSchema};
