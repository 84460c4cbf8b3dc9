// The DHCP server (module 5): pools, reservations and addresses that are not assigned of each interface. What
// is kept here dnsmasq serves (modules/dnsmasq.h), whose leases are listed beside those of a lab. The binding
// switch and the defence against other servers are kept for those who ask.
#include "modules/dhcp.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <optional>

#include "linux/net.h"
#include "modules/checks.h"
#include "modules/devmg.h"
#include "modules/dnsmasq.h"
#include "modules/modules.h"
#include "state/settings.h"

namespace {

constexpr int kMaxReservations = 1024;
constexpr int kMaxExclusions = 256;
constexpr uint32_t kMinLease = 120;  // dnsmasq's
constexpr uint32_t kMaxLease = 365 * 24 * 60 * 60;
constexpr uint32_t kMinHostBits = 2;

constexpr uint8_t kLeaseBound = 1;     // state
constexpr uint8_t kLeaseReserved = 1;  // type; 0: from a pool

using Settings = DhcpSettings<HostIp4>;

bool overlap(const V4Range& one, const V4Range& other) {
  return contains(one, other.first) || contains(other, one.first);
}

// Every address of a network but its own and that of all its hosts.
V4Range hosts_of(const V4Range& network) { return {{network.first.value + 1}, {network.last.value - 1}}; }

std::optional<Settings> pool_of(Store& store, std::string_view dev) {
  Statement row = store.query("SELECT * FROM dhcp_pool WHERE dev = ?", dev);
  if (!row.next()) return {};
  DhcpPoolRequest request = {};
  row.read_fields(request);
  return request.pool.settings;
}

// dnsmasq takes the other characters that Linux allows for its own.
bool is_plain_name(std::string_view dev) {
  return std::ranges::all_of(
      dev, [](char c) { return isalnum(static_cast<uint8_t>(c)) != 0 || c == '.' || c == '_' || c == '-'; });
}

// Calls visit(pool) for each of the pools that there are.
template <typename Visit>
void each_pool(const Settings& settings, Visit visit) {
  for (int pool = 0; pool < 3; ++pool) {
    if (settings.start_addr[pool].value != 0) visit(pool);
  }
}

// ---- Pools ----

void check_pool(const Settings& settings, int pool) {
  const uint32_t mask = settings.snmask[pool].value;
  refuse_unless(mask != 0 && is_mask(mask) && (~mask >> kMinHostBits) != 0, kBadMask);
  refuse_unless(is_host_ip(Ip4{htonl(settings.gwaddr[pool].value)}), kBadAddress);
  const V4Range range = {settings.start_addr[pool], settings.end_addr[pool]};
  refuse_unless(range.first.value <= range.last.value, kBadRange);
  const V4Range hosts = hosts_of(network_of(settings, pool));
  refuse_unless(contains(hosts, range.first) && contains(hosts, range.last), kOutsideNetwork);
  refuse_unless(contains(hosts, settings.gwaddr[pool]), kBadAddress);
}

// In a network of one of the pools, whose first and last address no host has.
void check_host_of(const Settings& settings, HostIp4 ip) {
  refuse_unless(has_network_for(settings, ip), kOutsideNetwork);
  each_pool(settings, [&](int pool) {
    const V4Range network = network_of(settings, pool);
    refuse_unless(ip != network.first && ip != network.last, kBadAddress);
  });
}

// Two pools of an interface may share a network, but nothing less.
void check_pair(const Settings& settings, int pool, int other) {
  const auto range = [&settings](int i) { return V4Range{settings.start_addr[i], settings.end_addr[i]}; };
  const V4Range network = network_of(settings, pool);
  const V4Range other_network = network_of(settings, other);
  const bool is_same = network.first == other_network.first && network.last == other_network.last;
  refuse_unless(is_same || !overlap(network, other_network), kOverlap);
  refuse_unless(!overlap(range(pool), range(other)), kOverlap);
}

// No network is on two interfaces.
void check_other_interfaces(Store& store, const Settings& settings) {
  Statement row = store.query("SELECT * FROM dhcp_pool WHERE dev <> ?", settings.dev);
  while (row.next()) {
    DhcpPoolRequest other = {};
    row.read_fields(other);
    each_pool(settings, [&](int pool) {
      each_pool(other.pool.settings, [&](int other_pool) {
        refuse_unless(!overlap(network_of(settings, pool), network_of(other.pool.settings, other_pool)),
                      kOverlap);
      });
    });
  }
}

// The router's own addresses are nobody's, nor are those that no host may have.
void check_not_reserved(Store& store, const Settings& settings, HostIp4 ip) {
  refuse_unless(
      store.number("SELECT count(*) FROM dhcp_reservation WHERE dev = ? AND ip = ?", settings.dev, ip) == 0,
      kInUse);
}

void check_settings(Store& store, const Settings& settings) {
  require_interface(store, text(settings.dev));
  refuse_unless(is_plain_name(text(settings.dev)), kBadName);
  const HostIp4 srv_ip{ntohl(settings.srv_ip.value)};
  refuse_unless(is_host_ip(settings.srv_ip), kBadAddress);
  check_not_reserved(store, settings, srv_ip);
  int count = 0;
  each_pool(settings, [&](int pool) {
    ++count;
    check_pool(settings, pool);
    const V4Range network = network_of(settings, pool);
    for (const HostIp4 ip : {settings.gwaddr[pool], network.first, network.last}) {
      check_not_reserved(store, settings, ip);
    }
    for (int other = 0; other < pool; ++other) {
      if (settings.start_addr[other].value != 0) check_pair(settings, pool, other);
    }
  });
  refuse_unless(count != 0, kEmptyList);
  check_host_of(settings, srv_ip);
  for (const uint32_t filter : settings.filter) check_number(filter);
  check_other_interfaces(store, settings);
  for (const HostIp4 server : settings.dnss) {
    refuse_unless(server.value == 0 || is_host_ip(Ip4{htonl(server.value)}), kBadAddress);
  }
  refuse_unless(settings.leasetime >= kMinLease && settings.leasetime <= kMaxLease, kBadTime);
  if (settings.domain_name[0] != '\0') check_domain(text(settings.domain_name));
}

void check_option43(const DhcpOption43& option43) {
  refuse_unless(option43.length <= sizeof option43.bytes, kBadNumber);
}

void add(Store& store, const DhcpPoolRequest& request) {
  check_settings(store, request.pool.settings);
  check_option43(request.pool.option43);
  check_switch(request.dhcp_type);
  store.put("dhcp_pool", request.pool.settings, request.pool.option43,
            Column{"dhcp_type", request.dhcp_type});
}

// The type stays as it is.
void new_add(Store& store, const DhcpNewPool& request) {
  check_settings(store, request.pool.settings);
  check_option43(request.pool.option43);
  store.put("dhcp_pool", request.pool.settings, request.pool.option43);
}

void del(Store& store, const DhcpPoolRequest& request) {
  require_interface(store, text(request.pool.settings.dev));
  refuse_if_none(store.execute("DELETE FROM dhcp_pool WHERE dev = ?", request.pool.settings.dev));
}

void show(Store& store, DhcpPoolAnswer& answer) {
  const std::string dev(text(answer.pool.settings.dev));
  require_interface(store, dev);
  Statement row =
      store.query("SELECT * FROM dhcp_pool LEFT JOIN dhcp_counter USING (dev) WHERE dev = ?", dev);
  if (!row.next()) throw Refusal{kNoSuchEntry};
  answer = {};
  row.read_fields(answer);
  answer.pool.srv_mac = linux_interface(dev).value_or(Interface{}).mac;
}

// ---- Reservations ----

void reserve(Store& store, const DhcpReservation& reservation) {
  const HostIp4 ip{ntohl(reservation.ip.value)};
  require_interface(store, text(reservation.dev));
  refuse_unless(is_host_ip(reservation.ip), kBadAddress);
  refuse_unless(is_host_mac(reservation.mac), kBadMac);
  if (const std::optional<Settings> settings = pool_of(store, text(reservation.dev))) {
    check_host_of(*settings, ip);
    refuse_unless(reservation.ip != settings->srv_ip && std::ranges::count(settings->gwaddr, ip) == 0,
                  kInUse);
  }
  Statement row = store.query("SELECT * FROM dhcp_exclusion WHERE dev = ?", reservation.dev);
  while (row.next()) {
    DhcpExclusion exclusion = {};
    row.read_fields(exclusion);
    refuse_unless(!contains(range_of(exclusion), ip), kOverlap);
  }
  refuse_unless(store.number("SELECT count(*) FROM dhcp_reservation WHERE dev = ? AND ip = ? AND mac <> ?",
                             reservation.dev, ip, reservation.mac) == 0,
                kInUse);
  store.put("dhcp_reservation", reservation);
  refuse_if_full(store, "dhcp_reservation", kMaxReservations);
}

void reserve_del(Store& store, const DhcpReservation& reservation) {
  require_interface(store, text(reservation.dev));
  refuse_if_none(store.execute("DELETE FROM dhcp_reservation WHERE dev = :dev AND mac = :mac", reservation));
}

void reserve_del_all(Store& store, const DhcpReservation& reservation) {
  require_interface(store, text(reservation.dev));
  store.execute("DELETE FROM dhcp_reservation WHERE dev = ?", reservation.dev);
}

template <typename Entry>
void answer_entries(Statement& row, Order& order) {
  ListAnswer<Entry> answer(order, kDhcpCountOffset, kDhcpEntriesOffset);
  while (row.next()) {
    Entry entry = {};
    row.read_fields(entry);
    answer.add(entry);
  }
}

void reserve_show(Store& store, const DhcpReservation& filter, Order& order) {
  require_interface(store, text(filter.dev));
  Statement row = store.query("SELECT * FROM dhcp_reservation WHERE dev = ? ORDER BY ip", filter.dev);
  answer_entries<DhcpReservation>(row, order);
}

// ---- Addresses that are not assigned ----

void exclude(Store& store, const DhcpExclusion& exclusion) {
  require_interface(store, text(exclusion.dev));
  refuse_unless(is_host_ip(exclusion.ip), kBadAddress);
  const V4Range range = range_of(exclusion);
  refuse_unless(range.first.value <= range.last.value, kBadRange);
  refuse_unless(store.number("SELECT count(*) FROM dhcp_reservation WHERE dev = ? AND ip BETWEEN ? AND ?",
                             exclusion.dev, range.first, range.last) == 0,
                kOverlap);
  store.put("dhcp_exclusion", exclusion);
  refuse_if_full(store, "dhcp_exclusion", kMaxExclusions);
}

void exclude_del(Store& store, const DhcpExclusion& exclusion) {
  require_interface(store, text(exclusion.dev));
  refuse_if_none(store.execute(
      "DELETE FROM dhcp_exclusion WHERE dev = :dev AND ip = :ip AND netmask = :netmask", exclusion));
}

void exclude_del_all(Store& store, const DhcpExclusion& exclusion) {
  require_interface(store, text(exclusion.dev));
  store.execute("DELETE FROM dhcp_exclusion WHERE dev = ?", exclusion.dev);
}

void exclude_show(Store& store, const DhcpExclusion& filter, Order& order) {
  require_interface(store, text(filter.dev));
  Statement row = store.query("SELECT * FROM dhcp_exclusion WHERE dev = ? ORDER BY ip, netmask", filter.dev);
  answer_entries<DhcpExclusion>(row, order);
}

// ---- Leases ----

// A lease's file says when it ends, not when it began: that was as long before as leases now last.
void add_served_leases(Store& store, const std::string& dev, ListAnswer<DhcpLease>& answer) {
  const std::optional<Settings> settings = pool_of(store, dev);
  if (!settings) return;
  for (DhcpLease& lease : dnsmasq_leases(store)) {
    if (!has_network_for(*settings, {ntohl(lease.ip.value)})) continue;
    copy_text(lease.in_dev, dev);
    lease.state = kLeaseBound;
    lease.type = store.number("SELECT count(*) FROM dhcp_reservation WHERE dev = ? AND ip = ? AND mac = ?",
                              dev, lease.ip, lease.mac) != 0
                     ? kLeaseReserved
                     : 0;
    lease.lease = settings->leasetime;
    lease.start -= std::min(lease.start, lease.lease);
    answer.add(lease);
  }
}

void member_list(Store& store, const DhcpLeaseFilter& filter, Order& order) {
  const std::string_view word = text(filter.dev);
  ListAnswer<DhcpLease> answer(order);
  for (const std::string& dev : select_interfaces(store, word.empty() ? "all" : word)) {
    add_served_leases(store, dev, answer);
    Statement row = store.query(
        "SELECT hostname, ip, mac, state, type, in_dev, lease, unixepoch() - age AS start FROM dhcp_lease"
        "  WHERE in_dev = ? ORDER BY ip",
        dev);
    while (row.next()) {
      DhcpLease lease = {};
      row.read_fields(lease);
      answer.add(lease);
    }
  }
}

// ---- Switches ----

void bind(Store& store, DhcpBind& bind) {
  if (bind.operation != 0) {
    check_switch(bind.operation);
    check_switch(bind.value);
    set_setting(store, kModuleDhcp, "bind", bind.value);
  }
  bind.value = get_setting(store, kModuleDhcp, "bind");
}

uint32_t slot_offset(uint32_t slot) {
  return uint32_t{sizeof(DhcpDefense)} + slot * uint32_t{sizeof(DhcpTrustedMac)};
}

// Gives the whole list anew. To trust nobody would cut everybody off.
void defense_set(Store& store, const DhcpDefense& defense, Order& order) {
  check_switch(defense.en);
  refuse_unless(defense.mac_num <= kMaxTrustedMacs, kTableFull);
  refuse_unless(defense.en == 0 || defense.mac_num != 0, kEmptyList);
  set_setting(store, kModuleDhcp, "defense", defense.en);
  store.execute("DELETE FROM dhcp_trusted");
  for (uint32_t i = 0; i < defense.mac_num; ++i) {
    const auto slot = order.request<DhcpTrustedMac>(slot_offset(i));
    refuse_unless(is_host_mac(slot.mac), kBadMac);
    store.execute("INSERT OR IGNORE INTO dhcp_trusted (mac) VALUES (?)", slot.mac);
  }
}

void defense_get(Store& store, Order& order) {
  DhcpDefense defense = {};
  defense.en = get_setting(store, kModuleDhcp, "defense");
  defense.drop_num = get_setting(store, kModuleDhcp, "drop_num");
  Statement row = store.query("SELECT mac FROM dhcp_trusted ORDER BY id");
  while (row.next()) {
    DhcpTrustedMac slot = {};
    row.read(slot.mac);
    if (order.answer(slot, slot_offset(defense.mac_num))) ++defense.mac_num;
  }
  order.answer(defense);
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE dhcp_pool (
  dev TEXT PRIMARY KEY REFERENCES interface (dev) ON DELETE CASCADE,
  srv_ip INTEGER NOT NULL,
  dnss_1 INTEGER NOT NULL,
  dnss_2 INTEGER NOT NULL,
  dnss_3 INTEGER NOT NULL,
  start_addr_1 INTEGER NOT NULL,          -- 0: no such pool
  start_addr_2 INTEGER NOT NULL,
  start_addr_3 INTEGER NOT NULL,
  end_addr_1 INTEGER NOT NULL,
  end_addr_2 INTEGER NOT NULL,
  end_addr_3 INTEGER NOT NULL,
  snmask_1 INTEGER NOT NULL,
  snmask_2 INTEGER NOT NULL,
  snmask_3 INTEGER NOT NULL,
  gwaddr_1 INTEGER NOT NULL,
  gwaddr_2 INTEGER NOT NULL,
  gwaddr_3 INTEGER NOT NULL,
  filter_1 INTEGER NOT NULL,
  filter_2 INTEGER NOT NULL,
  filter_3 INTEGER NOT NULL,
  leasetime INTEGER NOT NULL,             -- seconds
  domain_name TEXT NOT NULL,
  option43_length INTEGER NOT NULL,
  option43 BLOB NOT NULL,
  dhcp_type INTEGER NOT NULL DEFAULT 0
) WITHOUT ROWID;
CREATE TABLE dhcp_reservation (
  dev TEXT NOT NULL REFERENCES interface (dev) ON DELETE CASCADE,
  ip INTEGER NOT NULL,
  mac BLOB NOT NULL,
  PRIMARY KEY (dev, mac),
  UNIQUE (dev, ip)
) WITHOUT ROWID;
CREATE TABLE dhcp_exclusion (
  dev TEXT NOT NULL REFERENCES interface (dev) ON DELETE CASCADE,
  ip INTEGER NOT NULL,
  netmask INTEGER NOT NULL,
  PRIMARY KEY (dev, ip, netmask)
) WITHOUT ROWID;
CREATE TABLE dhcp_trusted (id INTEGER PRIMARY KEY, mac BLOB NOT NULL UNIQUE);
CREATE TABLE dhcp_counter (               -- these are a lab's word
  dev TEXT PRIMARY KEY,
  rcv INTEGER NOT NULL,
  send INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TABLE dhcp_lease (
  ip INTEGER PRIMARY KEY,
  mac BLOB NOT NULL,
  hostname TEXT NOT NULL,
  in_dev TEXT NOT NULL,
  state INTEGER NOT NULL,
  type INTEGER NOT NULL,
  lease INTEGER NOT NULL,
  age INTEGER NOT NULL
))"};

constexpr Command kCommands[] = {
    {kDhcpAdd, kWrites, run_as<add>},
    {kDhcpDel, kWrites, run_as<del>},
    {kDhcpShow, kReads, run_as<show>},
    {kDhcpMemberList, kReads, run_as<member_list>},
    {kDhcpBind, kWrites, run_as<bind>},
    {kDhcpReserveAdd, kWrites, run_as<reserve>},
    {kDhcpReserveDel, kWrites, run_as<reserve_del>},
    {kDhcpReserveDelAll, kWrites, run_as<reserve_del_all>},
    {kDhcpReserveShow, kReads, run_as<reserve_show>},
    {kDhcpNotAssignAdd, kWrites, run_as<exclude>},
    {kDhcpNotAssignDel, kWrites, run_as<exclude_del>},
    {kDhcpNotAssignDelAll, kWrites, run_as<exclude_del_all>},
    {kDhcpNotAssignShow, kReads, run_as<exclude_show>},
    {kDhcpNewAdd, kWrites, run_as<new_add>},
    {kDhcpDefenseSet, kWrites, run_as<defense_set>},
    {kDhcpDefenseGet, kReads, run_as<defense_get>},
};

}  // namespace

const Module kDhcpModule = {kModuleDhcp, kCommands, kSchema, nullptr, follow_settings};

V4Range network_of(const Settings& settings, int pool) {
  const uint32_t mask = settings.snmask[pool].value;
  const uint32_t first = settings.gwaddr[pool].value & mask;
  return {{first}, {first | ~mask}};
}

bool has_network_for(const Settings& settings, HostIp4 ip) {
  bool is_found = false;
  each_pool(settings, [&](int pool) { is_found = is_found || contains(network_of(settings, pool), ip); });
  return is_found;
}

V4Range range_of(const DhcpExclusion& exclusion) {
  const uint32_t ip = ntohl(exclusion.ip.value);
  const uint32_t word = ntohl(exclusion.netmask.value);
  if (word == 0) return {{ip}, {ip}};
  if (is_mask(word)) return {{ip & word}, {ip | ~word}};
  return {{ip}, {word}};
}
