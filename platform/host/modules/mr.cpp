// Multi-line selection (module 10): the lines, each of them a WAN interface of the registry, with their
// settings, and the routes that pin traffic to a line. Who uses which line only packets would tell: that is
// the lab's word, or 0.
#include "modules/mr.h"

#include <arpa/inet.h>

#include "modules/checks.h"
#include "modules/devmg.h"
#include "modules/general.h"
#include "modules/modules.h"
#include "platform/address.h"
#include "records/mr.h"
#include "state/settings.h"

namespace {

constexpr int kMaxRoutes = 1024;

void set_balance(Store& store, const LineRecord& line) {
  check_switch(line.jh);
  check_switch(line.ppp_demand);
  refuse_unless(line.wan_proto != 0, kBadType);
  store.execute(
      "UPDATE line SET jh = :jh, host_num = :host_num, wan_proto = :wan_proto, ppp_demand = :ppp_demand,"
      "  ct_num = :ct_num WHERE wanid = :wanid",
      line);
}

void set_weight(Store& store, const LineRecord& line) {
  check_switch(line.is_qosval);
  store.execute("UPDATE line SET val = :val, is_qosval = :is_qosval WHERE wanid = :wanid", line);
}

void set_flow(Store& store, const LineRecord& line) {
  check_switch(line.flow_limit);
  store.execute("UPDATE line SET flow_limit = :flow_limit WHERE wanid = :wanid", line);
}

void set_dns(Store& store, const LineRecord& line) {
  store.execute(
      "UPDATE line SET dns_prio = :prio, dns4_1 = :dns4_1, dns4_2 = :dns4_2, dns4_3 = :dns4_3,"
      "  dns6_1 = :dns6_1, dns6_2 = :dns6_2, dns6_3 = :dns6_3 WHERE wanid = :wanid",
      line);
}

// Detection runs from when it is set with its switch on until it is stopped.
void set_detection(Store& store, uint16_t wanid, const LineDetection& zc) {
  check_switch(zc.en);
  refuse_unless(zc.act >= 1 && zc.act <= 2, kBadMode);
  for (const auto& name : zc.target_names) check_text(text(name));
  check_text(text(zc.option_text));
  store.execute(
      "INSERT OR REPLACE INTO line_zc (wanid, state, en, act, tm, times, sd, gw, second_ip,"
      "  target_ips_1, target_ips_2, target_ips_3, target_names_1, target_names_2, target_names_3,"
      "  mobile, option, option_text, option_ip) "
      "VALUES (:wanid, :en, :en, :act, :tm, :times, :sd, :gw, :second_ip,"
      "  :target_ips_1, :target_ips_2, :target_ips_3, :target_names_1, :target_names_2, :target_names_3,"
      "  :mobile, :option, :option_text, :option_ip)",
      Column{"wanid", wanid}, zc);
}

void stop_detection(Store& store, uint16_t wanid) {
  refuse_if_none(store.execute("UPDATE line_zc SET state = 0 WHERE wanid = ? AND state = 1", wanid),
                 kNotRunning);
}

void count_change(Store& store, uint16_t wanid) {
  store.execute("UPDATE line SET change_id = change_id + 1 WHERE wanid = ?", wanid);
}

void set_line(Store& store, const LineRecord& line) {
  require_line(store, line.wanid);
  switch (line.operation) {
    case kLineBalance:
      set_balance(store, line);
      break;
    case kLineWeight:
      set_weight(store, line);
      break;
    case kLineDetect:
      set_detection(store, line.wanid, line.zc);
      break;
    case kLineDns:
      set_dns(store, line);
      break;
    case kLineDetectStop:
      stop_detection(store, line.wanid);
      break;
    case kLineFlow:
      set_flow(store, line);
      break;
    default:
      throw Refusal{kBadType};
  }
  count_change(store, line.wanid);
}

void set_ipv6(Store& store, const LineIpv6& ipv6) {
  require_line(store, ipv6.wanid);
  store.execute("UPDATE line SET state_v6 = :state WHERE wanid = :wanid", ipv6);
  count_change(store, ipv6.wanid);
}

void set_ula(Store& store, const LineUla& ula) {
  require_line(store, ula.wanid);
  const bool is_unique_local = (ula.prefix.bytes[0] & 0xfe) == 0xfc;
  refuse_unless(is_unique_local, kBadAddress);
  refuse_unless(ula.prefix_length <= 128, kBadMask);
  store.execute("UPDATE line SET ula = :prefix, ula_length = :prefix_length WHERE wanid = :wanid", ula);
  count_change(store, ula.wanid);
}

// A line is up once its interface is done; a line that takes its weight from QoS weighs what its interface is
// shaped to, or while it is not, what it has been seen to carry.
void list(Store& store, Order& order) {
  ListAnswer<LineEntry> answer(order);
  Statement row = store.query(
      "SELECT jh, interface.flags & ? <> 0 AS state_v4, is_qosval AS chk_qosval, wan_proto, change_id,"
      "  ppp_demand, state_v6, flow_limit, val, coalesce(qos_device.up, seen_up) AS qos_speed_1,"
      "  coalesce(qos_device.down, seen_down) AS qos_speed_2, host_num, ct_num AS ct_limit_num, dns4_1, "
      "dns4_2,"
      "  dns4_3, dns6_1, dns6_2, dns6_3, dns_prio AS dns_pri, create_tm, ula, ula_length, hi, hi_bracket_1,"
      "  hi_bracket_2, ct, hi_val, ct_val, false_tm, trys, ret_state, zc.*, line.wanid "
      "FROM line JOIN interface USING (dev) LEFT JOIN line_zc AS zc USING (wanid)"
      "  LEFT JOIN line_fact USING (wanid) LEFT JOIN qos_device ON qos_device.dev = line.dev AND "
      "qos_device.en ORDER BY line.wanid",
      kInterfaceLineUp);
  while (row.next()) {
    LineEntry line = {};
    row.read_fields(line);
    if (line.chk_qosval != 0) line.qos_val = line.qos_speed[0] + line.qos_speed[1];
    answer.add(line);
  }
}

void set_mode(Store& store, const LineMode& mode) {
  refuse_unless(mode.type >= kByHost && mode.type <= kByWeights, kBadMode);
  set_setting(store, kModuleMr, "type", mode.type);
  set_setting(store, kModuleMr, "zn_val", mode.zn_val);
  set_setting(store, kModuleMr, "ct_rule_name", mode.ct_rule_name);
}

void set_only_wan(Store& store, const LineMode& mode) {
  check_switch(mode.onlywan);
  check_switch(mode.onlywan_tcp);
  set_setting(store, kModuleMr, "onlywan", mode.onlywan);
  set_setting(store, kModuleMr, "onlywan_tcp", mode.onlywan_tcp);
}

void get_mode(Store& store, LineMode& mode) {
  mode.type = get_setting(store, kModuleMr, "type", kByHost);
  mode.onlywan = get_setting(store, kModuleMr, "onlywan");
  mode.onlywan_tcp = get_setting(store, kModuleMr, "onlywan_tcp");
  mode.zn_val = get_setting(store, kModuleMr, "zn_val");
  mode.ct_rule_name = get_setting(store, kModuleMr, "ct_rule_name");
}

// One side of a route: both zero for any address. An address or a mask that was not understood came in as
// zero, and would make the route one for other hosts.
void check_net(Ip4 address, Ip4 mask) {
  refuse_unless(is_mask(mask) && (mask.value != 0 || address.value == 0), kBadMask);
  refuse_unless(address.value != 0 || mask.value == 0, kBadAddress);
}

void add_route(Store& store, const LineRoute& route) {
  require_line(store, route.wanid);
  check_net(route.src, route.srcmask);
  check_net(route.dst, route.dstmask);
  refuse_if_none(store.execute("INSERT OR IGNORE INTO line_route (wanid, prio, src, srcmask, dst, dstmask)"
                               "  VALUES (:wanid, :prio, :src, :srcmask, :dst, :dstmask)",
                               route),
                 kAlreadyThere);
  refuse_if_full(store, "line_route", kMaxRoutes);
}

// The order names no more than the line: all its routes go.
void del_routes(Store& store, const LineRoute& route) {
  require_line(store, route.wanid);
  refuse_if_none(store.execute("DELETE FROM line_route WHERE wanid = ?", route.wanid), kNoSuchRoute);
}

void list_routes(Store& store, Order& order) {
  ListAnswer<LineRoute> answer(order);
  Statement row = store.query("SELECT * FROM line_route ORDER BY prio, wanid, rowid");
  while (row.next()) {
    LineRoute route = {};
    row.read_fields(route);
    answer.add(route);
  }
}

// The command answers nothing but its result, so the servers, those to be asked first in front, go where
// errinfo finds them.
void report_dns(Store& store) {
  std::string report = "dns servers:";
  Statement row = store.query(
      "SELECT wanid, dns4_1, dns4_2, dns4_3, dns6_1, dns6_2, dns6_3 FROM line ORDER BY dns_prio, wanid");
  while (row.next()) {
    LineRecord line = {};
    row.read_fields(line);
    std::string servers;
    char ip[64];
    for (const Ip4& server : line.dns4) {
      if (server != Ip4{}) servers += std::string(" ") + IpToStr(ip, server.value);
    }
    for (const Ip6& server : line.dns6) {
      if (server != Ip6{}) servers += std::string(" ") + Ip6ToStr(ip, &server);
    }
    if (!servers.empty()) report += " line " + std::to_string(line.wanid) + ":" + servers;
  }
  store_report(store, kModuleMr, report);
}

// Sets a column of addresses to what they are in the other byte order. SQL's bit operators all bind alike.
#define SWAPPED(column)                                                            \
  column " = ((" column " & 255) << 24) | ((" column " & 65280) << 8) | ((" column \
         " >> 8) & 65280) | (" column " >> 24)"

// The triggers keep the lines in step with the interfaces marked as WAN (bit 2 of their flags), those of a
// state from before there were lines included. A line keeps its number until it goes; a new one gets the
// lowest that is free.
constexpr const char* kSchema[] = {
    R"(
CREATE TABLE line (
  wanid INTEGER PRIMARY KEY,
  dev TEXT NOT NULL UNIQUE REFERENCES interface (dev) ON DELETE CASCADE,
  create_tm INTEGER NOT NULL DEFAULT (unixepoch()),
  change_id INTEGER NOT NULL DEFAULT 0,
  jh INTEGER NOT NULL DEFAULT 0,
  host_num INTEGER NOT NULL DEFAULT 0,
  wan_proto INTEGER NOT NULL DEFAULT 0,
  ppp_demand INTEGER NOT NULL DEFAULT 0,
  ct_num INTEGER NOT NULL DEFAULT 0,
  flow_limit INTEGER NOT NULL DEFAULT 0,
  val INTEGER NOT NULL DEFAULT 0,
  is_qosval INTEGER NOT NULL DEFAULT 0,
  dns_prio INTEGER NOT NULL DEFAULT 0,
  dns4_1 INTEGER NOT NULL DEFAULT 0,
  dns4_2 INTEGER NOT NULL DEFAULT 0,
  dns4_3 INTEGER NOT NULL DEFAULT 0,
  dns6_1 BLOB,
  dns6_2 BLOB,
  dns6_3 BLOB,
  state_v6 INTEGER NOT NULL DEFAULT 0,
  ula BLOB,
  ula_length INTEGER NOT NULL DEFAULT 0
);
INSERT INTO line (wanid, dev) SELECT row_number() OVER (ORDER BY dev_id) - 1, dev FROM interface WHERE flags & 2;
CREATE TRIGGER line_comes AFTER UPDATE OF flags ON interface WHEN new.flags & 2 BEGIN
  INSERT OR IGNORE INTO line (wanid, dev) VALUES (
    (SELECT min(id) + 1 FROM (SELECT -1 AS id UNION ALL SELECT wanid FROM line)
     WHERE id + 1 NOT IN (SELECT wanid FROM line)), new.dev);
END;
CREATE TRIGGER line_goes AFTER UPDATE OF flags ON interface WHEN NOT new.flags & 2 BEGIN
  DELETE FROM line WHERE dev = new.dev;
END;
CREATE TABLE line_zc (
  wanid INTEGER PRIMARY KEY REFERENCES line (wanid) ON DELETE CASCADE,
  state INTEGER NOT NULL,
  en INTEGER NOT NULL,
  act INTEGER NOT NULL,
  tm INTEGER NOT NULL,
  times INTEGER NOT NULL,
  sd INTEGER NOT NULL,
  gw INTEGER NOT NULL,
  second_ip INTEGER NOT NULL,
  ip1 INTEGER NOT NULL,
  ip2 INTEGER NOT NULL,
  ip3 INTEGER NOT NULL,
  name1 TEXT NOT NULL,
  name2 TEXT NOT NULL,
  name3 TEXT NOT NULL,
  mobile INTEGER NOT NULL,
  option INTEGER NOT NULL,
  option_text TEXT NOT NULL,
  option_ip INTEGER NOT NULL
);
CREATE TABLE line_fact (                  -- what a lab says of lines
  wanid INTEGER PRIMARY KEY REFERENCES line (wanid) ON DELETE CASCADE,
  flags_before INTEGER NOT NULL,          -- the interface's, when the lab found it; 0: it made it
  hi INTEGER NOT NULL,
  hi_bracket_1 INTEGER NOT NULL,
  hi_bracket_2 INTEGER NOT NULL,
  ct INTEGER NOT NULL,
  hi_val INTEGER NOT NULL,
  ct_val INTEGER NOT NULL,
  seen_up INTEGER NOT NULL,
  seen_down INTEGER NOT NULL,
  false_tm INTEGER NOT NULL,
  trys INTEGER NOT NULL,
  ret_state INTEGER NOT NULL
);
CREATE TABLE line_route (
  wanid INTEGER NOT NULL REFERENCES line (wanid) ON DELETE CASCADE,
  prio INTEGER NOT NULL,
  src INTEGER NOT NULL,
  srcmask INTEGER NOT NULL,
  dst INTEGER NOT NULL,
  dstmask INTEGER NOT NULL,
  UNIQUE (wanid, src, srcmask, dst, dstmask)
))",
    // Addresses as numbers that sort, under the names of their fields.
    R"(
ALTER TABLE line_zc RENAME COLUMN ip1 TO target_ips_1;
ALTER TABLE line_zc RENAME COLUMN ip2 TO target_ips_2;
ALTER TABLE line_zc RENAME COLUMN ip3 TO target_ips_3;
ALTER TABLE line_zc RENAME COLUMN name1 TO target_names_1;
ALTER TABLE line_zc RENAME COLUMN name2 TO target_names_2;
ALTER TABLE line_zc RENAME COLUMN name3 TO target_names_3;
UPDATE line SET )" SWAPPED("dns4_1") ", " SWAPPED("dns4_2") ", " SWAPPED("dns4_3") R"(;
UPDATE line_zc SET )" SWAPPED("gw") ", " SWAPPED("second_ip") ", " SWAPPED("option_ip") ", " SWAPPED(
        "target_ips_1") ", " SWAPPED("target_ips_2") ", " SWAPPED("target_ips_3") R"(;
UPDATE line_route SET )" SWAPPED("src") ", " SWAPPED("srcmask") ", " SWAPPED("dst") ", " SWAPPED("dstmask"),
    // What the lab says of an interface stays known when its line goes.
    R"(
CREATE TABLE lab_line (
  dev TEXT PRIMARY KEY REFERENCES interface (dev) ON DELETE CASCADE,
  flags_before INTEGER NOT NULL           -- the interface's, when the lab found it; 0: it made it
) WITHOUT ROWID;
INSERT INTO lab_line SELECT dev, flags_before FROM line JOIN line_fact USING (wanid);
ALTER TABLE line_fact DROP COLUMN flags_before)"};

#undef SWAPPED

constexpr Command kCommands[] = {
    {kMrLine, kWrites, run_as<set_line>},        {kMrMode, kWrites, run_as<set_mode>},
    {kMrOnlyWan, kWrites, run_as<set_only_wan>}, {kMrGet, kReads, run_as<get_mode>},
    {kMrRouteAdd, kWrites, run_as<add_route>},   {kMrRouteDel, kWrites, run_as<del_routes>},
    {kMrRouteList, kReads, run_as<list_routes>}, {kMrDnsCache, kWrites, run_as<report_dns>},
    {kMrIpv6, kWrites, run_as<set_ipv6>},        {kMrList, kReads, run_as<list>},
    {kMrUla, kWrites, run_as<set_ula>},
};

}  // namespace

const Module kMrModule = {kModuleMr, kCommands, kSchema};

std::string line_device(Store& store, uint32_t line) {
  std::string dev;
  Statement row = store.query("SELECT dev FROM line WHERE wanid = ?", line);
  if (row.next()) row.read(dev);
  return dev;
}

void require_line(Store& store, uint32_t line) {
  refuse_unless(!line_device(store, line).empty(), kUnknownLine);
}
