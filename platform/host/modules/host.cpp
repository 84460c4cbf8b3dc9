// The host table (module 13). Hosts are the neighbours that Linux knows on the LAN interfaces, and those that
// a lab has put in place: these stay as recently seen as it says, as if packets kept coming. Tables keep
// addresses as combined values, which sort IPv4 first and by number.
#include "modules/host.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>

#include "linux/net.h"
#include "modules/checks.h"
#include "modules/devmg.h"
#include "modules/modules.h"
#include "modules/speed_rules.h"
#include "state/settings.h"
#include "state/time.h"

namespace {

constexpr uint32_t kMaxAgeing = 7 * 24 * 60;  // minutes
constexpr uint32_t kFirstAgeing = 30;
constexpr const char* kAgeing = "ageing";
constexpr const char* kAgeing3 = "ageing3";
constexpr const char* kConnectionShow = "connection_show";

constexpr uint64_t kFlagSeen = 1;  // of a neighbour, in its flag word

constexpr int64_t kForever = std::numeric_limits<int64_t>::max();

// Seconds after which what is silent is gone.
int64_t ageing_seconds(Store& store, const char* name, uint32_t if_never_set) {
  const uint32_t minutes = get_setting(store, kModuleHost, name, if_never_set);
  return minutes == 0 ? kForever : int64_t{minutes} * 60;
}
int64_t host_ageing_seconds(Store& store) { return ageing_seconds(store, kAgeing, kFirstAgeing); }
int64_t third_ageing_seconds(Store& store) { return ageing_seconds(store, kAgeing3, 0); }

// While they are collected, their times are seconds before the present: for how long a host has been known,
// and since when it has been silent.
using Hosts = std::map<IpAddress, HostAiEntry>;

// The MAC address of a neighbour is its own, so that nobody need be asked for it.
HostAiEntry neighbour_entry(const Neighbour& neighbour, Ip4 own_ip) {
  HostAiEntry entry = {};
  HostEntry& host = entry.host;
  host.ip = neighbour.address;
  host.flag = {kFlagSeen};
  host.creat_tm = host.last_tm = neighbour.idle_seconds;
  host.arp_ip = neighbour.ip4();
  if (host.arp_ip.value != 0) host.local_ip = own_ip;
  host.local_mac = host.real_mac = neighbour.mac;
  host.no_snmp = 1;
  copy_text(host.devname, neighbour.dev);
  copy_text(entry.in_devname, neighbour.dev);
  return entry;
}

// Linux does not tell since when it has known a neighbour: that is kept from the first look at it until it is
// gone, or another has its address.
void keep_ages(Store& store, Hosts& hosts) {
  std::set<IpAddress> kept;
  std::vector<IpAddress> gone;
  Statement row = store.query("SELECT ip, mac, age(since) FROM host_neighbour");
  while (row.next()) {
    IpAddress ip;
    Mac mac;
    uint64_t age;
    row.read(ip, mac, age);
    const auto host = hosts.find(ip);
    if (host == hosts.end() || host->second.host.local_mac != mac) {
      gone.push_back(ip);
    } else {
      host->second.host.creat_tm = std::max(age, host->second.host.last_tm);
      kept.insert(ip);
    }
  }
  for (const IpAddress& ip : gone) store.execute("DELETE FROM host_neighbour WHERE ip = ?", ip);
  for (const auto& [ip, entry] : hosts) {
    if (kept.contains(ip)) continue;
    store.put("host_neighbour", Column{"ip", ip}, Column{"mac", entry.host.local_mac});
  }
}

Hosts neighbour_hosts(Store& store) {
  Hosts hosts;
  const std::vector<std::string> devs = select_interfaces(store, "lan");
  if (devs.empty()) return hosts;
  const int64_t ageing =
      std::min(host_ageing_seconds(store),
               store.number("SELECT coalesce((SELECT age(since) + seconds FROM host_cut), ?)", kForever));
  const auto own_ips = linux_own_ips();
  for (const Neighbour& neighbour : linux_neighbours()) {
    if (neighbour.idle_seconds >= ageing || std::ranges::find(devs, neighbour.dev) == devs.end()) continue;
    const auto own_ip = own_ips.find(neighbour.dev);
    hosts.emplace(neighbour.address,
                  neighbour_entry(neighbour, own_ip == own_ips.end() ? Ip4{} : own_ip->second));
  }
  return hosts;
}

void delete_aged(Store& store) {
  store.execute("DELETE FROM host WHERE idle >= ?", host_ageing_seconds(store));
  store.execute("DELETE FROM host_third WHERE age(since) + known >= ?", third_ageing_seconds(store));
}

// The hosts that are there now. What has aged out is deleted on the way.
Hosts look(Store& store) {
  delete_aged(store);
  Hosts hosts = neighbour_hosts(store);
  keep_ages(store, hosts);
  Statement row = store.query("SELECT entry, idle, age(since) + known FROM host");
  while (row.next()) {
    uint8_t bytes[sizeof(HostAiEntry)];
    HostAiEntry entry;
    uint64_t idle;
    uint64_t known;
    row.read(bytes, idle, known);
    memcpy(&entry, bytes, sizeof entry);
    entry.host.last_tm = idle;
    entry.host.creat_tm = std::max(known, idle);
    hosts.insert_or_assign(entry.host.ip, entry);  // the lab's word counts
  }
  Statement scanned = store.query("SELECT ip, mac FROM host_real_mac");
  while (scanned.next()) {
    IpAddress ip;
    Mac mac;
    scanned.read(ip, mac);
    const auto host = hosts.find(ip);
    if (host != hosts.end()) host->second.host.real_mac = mac;
  }
  Statement limited = store.query("SELECT ip, sx, xx FROM host_tmp_limit");
  while (limited.next()) {
    HostTmpLimit limit = {};
    limited.read_fields(limit);
    const auto host = hosts.find(limit.ip);
    if (host == hosts.end()) continue;
    host->second.host.tmp_speed_limit_up = static_cast<int32_t>(limit.sx);
    host->second.host.tmp_speed_limit_down = static_cast<int32_t>(limit.xx);
  }
  const int64_t ageing = host_ageing_seconds(store);
  const uint64_t present = calendar_seconds();
  const SpeedLimits limits(store);
  for (auto& [ip, entry] : hosts) {
    HostEntry& host = entry.host;
    limits.apply(host);
    for (uint64_t* moment : {&host.creat_tm, &host.last_tm}) *moment = present - std::min(*moment, present);
    if (ageing != kForever) host.del_tm = host.last_tm + static_cast<uint64_t>(ageing);
  }
  return hosts;
}

void require_host(Store& store, const IpAddress& ip) {
  refuse_unless(look(store).contains(ip), kUnknownHost);
}

// Those behind the last that the record has room for are left out.
void list(Store& store, Order& order) {
  ListAnswer<HostEntry> answer(order);
  for (const auto& [ip, entry] : look(store)) answer.add(entry.host);
}

// Of the hosts on a wireless network alone.
void wireless_list(Store& store, Order& order) {
  ListAnswer<HostEntry> answer(order);
  for (const auto& [ip, entry] : look(store)) {
    if (entry.ssid[0] != '\0') answer.add(entry.host);
  }
}

void extended_list(Store& store, Order& order) {
  ListAnswer<HostAiEntry> answer(order);
  for (const auto& [ip, entry] : look(store)) answer.add(entry);
}

void run_info(Store& store, HostRunInfo& info) {
  info = {};
  for (const HostCounter& counter : kHostCounters) {
    info.*counter.field = get_setting(store, kModuleHost, counter.name, counter.at_first);
  }
  info.host_num = info.host_list_num = static_cast<uint32_t>(look(store).size());
  info.ct_num = static_cast<uint32_t>(store.number("SELECT count(*) FROM host_connection"));
}

void connections(Store& store, const HostKey& key, Order& order) {
  require_host(store, key.ip);
  ListAnswer<HostConnection> answer(order, kConnectionCountOffset, kConnectionEntriesOffset);
  Statement row = store.query("SELECT entry FROM host_connection WHERE host = ? ORDER BY id", key.ip);
  while (row.next()) {
    uint8_t bytes[sizeof(HostConnection)];
    row.read(bytes);
    HostConnection connection;
    memcpy(&connection, bytes, sizeof connection);
    answer.add(connection);
  }
}

// What the time until now has let go does not come back with a longer one. Of neighbours, who stay where they
// are in Linux, that takes a note: the last of those who were not seen any more.
void set_ageing(Store& store, const HostAgeing& ageing) {
  refuse_unless(ageing.minutes <= kMaxAgeing, kBadTime);
  delete_aged(store);
  const int64_t seconds = host_ageing_seconds(store);
  if (seconds != kForever) {
    store.execute("DELETE FROM host_cut WHERE age(since) + seconds >= ?", seconds);
    store.execute("INSERT INTO host_cut (seconds) SELECT ? WHERE NOT EXISTS (SELECT * FROM host_cut)",
                  seconds);
  }
  set_setting(store, kModuleHost, kAgeing, ageing.minutes);
}

void set_third_ageing(Store& store, const HostAgeing& ageing) {
  refuse_unless(ageing.minutes <= kMaxAgeing, kBadTime);
  delete_aged(store);
  set_setting(store, kModuleHost, kAgeing3, ageing.minutes);
}

void third_list(Store& store, Order& order) {
  delete_aged(store);
  ListAnswer<ThirdEntry> answer(order);
  const uint64_t present = calendar_seconds();
  Statement row = store.query(
      "SELECT ip, mac, clt_installed, device_type, age(since) + known AS creat_tm FROM host_third ORDER BY "
      "ip");
  while (row.next()) {
    ThirdEntry entry = {};
    row.read_fields(entry);
    entry.creat_tm = present - std::min(entry.creat_tm, present);
    answer.add(entry);
  }
}

void redirect(Store& store, HostRedirect& redirect) {
  require_host(store, redirect.ip);
  if (redirect.set != 0) {
    store.put("host_redirect", Column{"ip", redirect.ip}, Column{"flag", redirect.flag});
  } else {
    redirect.flag =
        static_cast<uint32_t>(store.number("SELECT flag FROM host_redirect WHERE ip = ?", redirect.ip));
  }
}

void set_mac(Store& store, const HostMac& update) {
  require_host(store, update.ip);
  refuse_unless(is_host_mac(update.mac), kBadMac);
  store.put("host_real_mac", update);
}

// 0 lifts a limit, that of a lab included.
void set_tmp_limit(Store& store, const HostTmpLimit& limit) {
  require_host(store, limit.ip);
  check_number(limit.sx);
  check_number(limit.xx);
  store.put("host_tmp_limit", limit);
}

void set_connection_show(Store& store, const HostConnectionShow& show) {
  check_switch(show.en);
  set_setting(store, kModuleHost, kConnectionShow, show.en);
}

void get_connection_show(Store& store, HostConnectionShow& show) {
  show.en = get_setting(store, kModuleHost, kConnectionShow);
}

void get_signal(Store& store, ClientSignal& signal) {
  Statement row = store.query("SELECT rssi FROM client_signal WHERE mac = ?", signal.mac);
  refuse_unless(row.next(), kUnknownHost);
  row.read(signal.rssi);
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE host (
  id INTEGER PRIMARY KEY,
  ip BLOB NOT NULL UNIQUE,
  idle INTEGER NOT NULL,
  entry BLOB NOT NULL
);
CREATE TABLE host_connection (
  id INTEGER PRIMARY KEY,
  host BLOB NOT NULL REFERENCES host (ip) ON DELETE CASCADE,
  entry BLOB NOT NULL
);
CREATE INDEX host_connection_host ON host_connection (host);
CREATE TABLE host_third (
  ip BLOB PRIMARY KEY,
  mac BLOB NOT NULL,
  creat_tm INTEGER NOT NULL,
  clt_installed INTEGER NOT NULL,
  device_type INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TABLE host_real_mac (ip BLOB PRIMARY KEY, mac BLOB NOT NULL) WITHOUT ROWID;
CREATE TABLE host_redirect (ip BLOB PRIMARY KEY, flag INTEGER NOT NULL) WITHOUT ROWID)",
                                   // Times by the clock that no one sets. What has been set for a host
                                   // goes with it.
                                   R"(
ALTER TABLE host ADD COLUMN since INTEGER NOT NULL DEFAULT 0;  -- when it was put in place
ALTER TABLE host ADD COLUMN known INTEGER NOT NULL DEFAULT 0;  -- for how many seconds by then
UPDATE host SET since = present();
CREATE TABLE host_third_of_step_2 (
  ip BLOB PRIMARY KEY,
  mac BLOB NOT NULL,
  since INTEGER NOT NULL DEFAULT (present()),
  known INTEGER NOT NULL,
  clt_installed INTEGER NOT NULL,
  device_type INTEGER NOT NULL
) WITHOUT ROWID;
INSERT INTO host_third_of_step_2 (ip, mac, known, clt_installed, device_type)
  SELECT ip, mac, max(0, unixepoch() - creat_tm), clt_installed, device_type FROM host_third;
DROP TABLE host_third;
ALTER TABLE host_third_of_step_2 RENAME TO host_third;
CREATE TABLE host_neighbour (
  ip BLOB PRIMARY KEY,
  mac BLOB NOT NULL,
  since INTEGER NOT NULL DEFAULT (present())
) WITHOUT ROWID;
CREATE TABLE host_cut (since INTEGER NOT NULL DEFAULT (present()), seconds INTEGER NOT NULL);
CREATE TRIGGER host_gone AFTER DELETE ON host BEGIN
  DELETE FROM host_real_mac WHERE ip = old.ip;
  DELETE FROM host_redirect WHERE ip = old.ip;
END;
CREATE TRIGGER host_neighbour_gone AFTER DELETE ON host_neighbour
WHEN NOT EXISTS (SELECT * FROM host WHERE ip = old.ip) BEGIN
  DELETE FROM host_real_mac WHERE ip = old.ip;
  DELETE FROM host_redirect WHERE ip = old.ip;
END)",
                                   R"(
CREATE TABLE host_tmp_limit (ip BLOB PRIMARY KEY, sx INTEGER NOT NULL, xx INTEGER NOT NULL) WITHOUT ROWID;
CREATE TRIGGER host_tmp_limit_gone AFTER DELETE ON host BEGIN
  DELETE FROM host_tmp_limit WHERE ip = old.ip;
END;
CREATE TRIGGER host_tmp_limit_of_neighbour_gone AFTER DELETE ON host_neighbour
WHEN NOT EXISTS (SELECT * FROM host WHERE ip = old.ip) BEGIN
  DELETE FROM host_tmp_limit WHERE ip = old.ip;
END;
CREATE TABLE client_signal (mac BLOB PRIMARY KEY, rssi INTEGER NOT NULL) WITHOUT ROWID)"};

constexpr Command kCommands[] = {
    {kHostList, kWrites, run_as<list>},
    {kHostRunInfo, kWrites, run_as<run_info>},
    {kHostConnections, kWrites, run_as<connections>},
    {kHostSetAgeing, kWrites, run_as<set_ageing>},
    {kHostSetAgeing3, kWrites, run_as<set_third_ageing>},
    {kHostThirdList, kWrites, run_as<third_list>},
    {kHostTmpLimit, kWrites, run_as<set_tmp_limit>},
    {kHostConnectionShowSet, kWrites, run_as<set_connection_show>},
    {kHostConnectionShowGet, kReads, run_as<get_connection_show>},
    {kHostSignal, kReads, run_as<get_signal>},
    {kHostRedirect, kWrites, run_as<redirect>},
    {kHostWsList, kWrites, run_as<wireless_list>},
    {kHostSetMac, kWrites, run_as<set_mac>},
    {kHostSnmpScan, kWrites, run_as<list>},
    {kHostAiList, kWrites, run_as<extended_list>},
};

}  // namespace

const Module kHostModule = {kModuleHost, kCommands, kSchema};

std::vector<HostAddress> known_addresses(Store& store, const HostAddress& host) {
  std::vector<HostAddress> known;
  const auto add = [&](const Ip4& ip, const Mac& mac) {
    if (ip == Ip4{} || mac == Mac{}) return;
    if (ip == host.ip || mac == host.mac) known.push_back({ip, mac});
  };
  const auto add_rows = [&](const char* sql) {
    Statement row = store.query(sql);
    for (HostAddress found = {}; row.next();) {
      row.read(found.ip, found.mac);
      add(found.ip, found.mac);
    }
  };
  add_rows("SELECT ip, mac FROM session");
  for (const auto& [ip, entry] : look(store)) {
    add(ip4(ip), entry.host.local_mac);
    add(ip4(ip), entry.host.real_mac);
  }
  add_rows("SELECT ip, mac FROM arp_binding");
  for (const Neighbour& neighbour : linux_neighbours()) add(neighbour.ip4(), neighbour.mac);
  return known;
}
