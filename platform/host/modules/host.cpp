// The host table (module 13). Hosts are the neighbours that Linux knows on the LAN interfaces, and those that
// a lab has put in place: these stay as recently seen as it says, as if packets kept coming. Tables keep
// addresses as combined values, which sort IPv4 first and by number.
#include "modules/host.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

#include "linux/net.h"
#include "modules/checks.h"
#include "modules/devmg.h"
#include "modules/modules.h"
#include "records/host.h"
#include "state/settings.h"
#include "state/time.h"

namespace {

constexpr uint32_t kMaxAgeing = 7 * 24 * 60;  // minutes
constexpr uint32_t kFirstAgeing = 30;
constexpr const char* kAgeing = "ageing";
constexpr const char* kAgeing3 = "ageing3";

constexpr uint64_t kFlagSeen = 1;  // of a neighbour, in its flag word

// Seconds after which what is silent is gone; 0 minutes are for ever.
int64_t ageing_seconds(Store& store, const char* name, uint32_t if_never_set) {
  const uint32_t minutes = get_setting(store, kModuleHost, name, if_never_set);
  return minutes == 0 ? std::numeric_limits<int64_t>::max() : int64_t{minutes} * 60;
}
int64_t host_ageing_seconds(Store& store) { return ageing_seconds(store, kAgeing, kFirstAgeing); }

// Linux does not tell since when it has known a neighbour. The MAC address of a neighbour is its own, so that
// nobody need be asked for it.
HostAiEntry neighbour_host(const Neighbour& neighbour, Ip4 own_ip) {
  HostAiEntry entry = {};
  HostEntry& host = entry.host;
  host.ip = neighbour.address;
  host.flag = {kFlagSeen};
  host.arp_ip = neighbour.ip4();
  host.local_ip = own_ip;
  host.local_mac = host.real_mac = neighbour.mac;
  host.no_snmp = 1;
  copy_text(host.devname, neighbour.dev);
  copy_text(entry.in_devname, neighbour.dev);
  return entry;
}

std::map<IpAddress, HostAiEntry> neighbour_hosts(Store& store) {
  std::map<IpAddress, HostAiEntry> hosts;
  const std::vector<std::string> devs = select_interfaces(store, "lan");
  if (devs.empty()) return hosts;
  const auto own_ips = linux_own_ips();
  for (const Neighbour& neighbour : linux_neighbours()) {
    if (neighbour.ip4().value == 0 || std::ranges::find(devs, neighbour.dev) == devs.end()) continue;
    const auto own_ip = own_ips.find(neighbour.dev);
    const HostAiEntry entry = neighbour_host(neighbour, own_ip == own_ips.end() ? Ip4{} : own_ip->second);
    hosts.emplace(entry.host.ip, entry);
  }
  return hosts;
}

std::map<IpAddress, Mac> real_macs(Store& store) {
  std::map<IpAddress, Mac> macs;
  Statement row = store.query("SELECT ip, mac FROM host_real_mac");
  while (row.next()) {
    IpAddress ip;
    Mac mac;
    row.read(ip, mac);
    macs.emplace(ip, mac);
  }
  return macs;
}

// Calls visit(const HostAiEntry&) with each host in the order of their addresses, times and real MAC
// addresses filled in.
template <typename Visit>
void each_host(Store& store, Visit visit) {
  const std::map<IpAddress, Mac> macs = real_macs(store);
  const int64_t ageing = host_ageing_seconds(store);
  const uint64_t present = calendar_seconds();
  const auto finish = [&](HostAiEntry& entry, uint64_t idle) {
    HostEntry& host = entry.host;
    host.last_tm = present - std::min(idle, present);
    if (ageing != std::numeric_limits<int64_t>::max())
      host.del_tm = host.last_tm + static_cast<uint64_t>(ageing);
    const auto mac = macs.find(host.ip);
    if (mac != macs.end()) host.real_mac = mac->second;
    visit(std::as_const(entry));
  };

  std::map<IpAddress, HostAiEntry> neighbours = neighbour_hosts(store);
  auto neighbour = neighbours.begin();
  Statement row = store.query("SELECT entry, idle FROM host WHERE idle < ? ORDER BY ip", ageing);
  while (row.next()) {
    uint8_t bytes[sizeof(HostAiEntry)];
    uint64_t idle;
    row.read(bytes, idle);
    HostAiEntry entry;
    memcpy(&entry, bytes, sizeof entry);
    const IpAddress ip = entry.host.ip;
    for (; neighbour != neighbours.end() && neighbour->first < ip; ++neighbour) finish(neighbour->second, 0);
    if (neighbour != neighbours.end() && neighbour->first == ip) ++neighbour;  // the lab's word counts
    finish(entry, idle);
  }
  for (; neighbour != neighbours.end(); ++neighbour) finish(neighbour->second, 0);
}

void require_host(Store& store, const IpAddress& ip) {
  if (store.number("SELECT count(*) FROM host WHERE ip = ? AND idle < ?", ip, host_ageing_seconds(store)) ==
          0 &&
      !neighbour_hosts(store).contains(ip)) {
    throw Refusal{kUnknownHost};
  }
}

// Those behind the last that the record has room for are left out.
void list(Store& store, Order& order) {
  ListAnswer<HostEntry> answer(order);
  each_host(store, [&](const HostAiEntry& entry) { answer.add(entry.host); });
}

// Of the hosts on a wireless network alone.
void wireless_list(Store& store, Order& order) {
  ListAnswer<HostEntry> answer(order);
  each_host(store, [&](const HostAiEntry& entry) {
    if (entry.ssid[0] != '\0') answer.add(entry.host);
  });
}

void extended_list(Store& store, Order& order) {
  ListAnswer<HostAiEntry> answer(order);
  each_host(store, [&](const HostAiEntry& entry) { answer.add(entry); });
}

void run_info(Store& store, HostRunInfo& info) {
  info = {};
  for (const HostCounter& counter : kHostCounters) {
    info.*counter.field = get_setting(store, kModuleHost, counter.name, counter.at_first);
  }
  info.ct_num = static_cast<uint32_t>(store.number("SELECT count(*) FROM host_connection"));
  each_host(store, [&](const HostAiEntry&) { ++info.host_list_num; });
  info.host_num =
      info.host_list_num + static_cast<uint32_t>(store.number("SELECT count(*) FROM host WHERE idle >= ?",
                                                              host_ageing_seconds(store)));
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

template <const char* const& name>
void set_ageing(Store& store, const HostAgeing& ageing) {
  if (ageing.minutes > kMaxAgeing) throw Refusal{kBadTime};
  set_setting(store, kModuleHost, name, ageing.minutes);
}

void third_list(Store& store, Order& order) {
  ListAnswer<ThirdEntry> answer(order);
  const int64_t oldest = static_cast<int64_t>(calendar_seconds()) - ageing_seconds(store, kAgeing3, 0);
  Statement row = store.query("SELECT * FROM host_third WHERE creat_tm > ? ORDER BY ip", oldest);
  while (row.next()) {
    ThirdEntry entry = {};
    row.read_fields(entry);
    answer.add(entry);
  }
}

void refuse_if_full(Store& store, const char* count) {
  if (store.number(count) > kMaxHosts) throw Refusal{kTableFull};
}

void redirect(Store& store, HostRedirect& redirect) {
  require_host(store, redirect.ip);
  if (redirect.set != 0) {
    store.execute("INSERT OR REPLACE INTO host_redirect VALUES (?, ?)", redirect.ip, redirect.flag);
    refuse_if_full(store, "SELECT count(*) FROM host_redirect");
  } else {
    redirect.flag = static_cast<uint32_t>(
        store.number("SELECT coalesce((SELECT flag FROM host_redirect WHERE ip = ?), 0)", redirect.ip));
  }
}

void set_mac(Store& store, const HostMac& update) {
  require_host(store, update.ip);
  if (!is_host_mac(update.mac)) throw Refusal{kBadAddress};
  store.execute("INSERT OR REPLACE INTO host_real_mac VALUES (?, ?)", update.ip, update.mac);
  refuse_if_full(store, "SELECT count(*) FROM host_real_mac");
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
CREATE TABLE host_redirect (ip BLOB PRIMARY KEY, flag INTEGER NOT NULL) WITHOUT ROWID)"};

constexpr Command kCommands[] = {
    {kHostList, kReads, run_as<list>},
    {kHostRunInfo, kReads, run_as<run_info>},
    {kHostConnections, kReads, run_as<connections>},
    {kHostSetAgeing, kWrites, run_as<set_ageing<kAgeing>>},
    {kHostSetAgeing3, kWrites, run_as<set_ageing<kAgeing3>>},
    {kHostThirdList, kReads, run_as<third_list>},
    {kHostRedirect, kWrites, run_as<redirect>},
    {kHostWsList, kReads, run_as<wireless_list>},
    {kHostSetMac, kWrites, run_as<set_mac>},
    {kHostSnmpScan, kReads, run_as<list>},
    {kHostAiList, kReads, run_as<extended_list>},
};

}  // namespace

const Module kHostModule = {kModuleHost, kCommands, kSchema};
