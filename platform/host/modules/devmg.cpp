// The interface registry (module 2). Other modules keep what they have for an interface in tables that refer
// to it, so that it goes with the interface.
#include "modules/devmg.h"

#include <net/if.h>

#include <algorithm>

#include "linux/net.h"
#include "modules/checks.h"
#include "modules/dnsmasq.h"
#include "modules/modules.h"
#include "modules/rule.h"
#include "records/devmg.h"

namespace {

constexpr int kMaxInterfaces = 64;
constexpr uint16_t kTypeNone = 0;
constexpr uint16_t kTypeLan = 250;
constexpr uint8_t kMaxWorkMode = 2;

// Registers the interface under the lowest number that is free, or gives a registered one its type anew; its
// settings stay, and so does a line.
void register_interface(Store& store, std::string_view dev, uint16_t type) {
  refuse_unless(is_interface_name(dev), kBadName);
  store.execute(
      "INSERT INTO interface (dev_id, dev, type, flags) VALUES ("
      "  (SELECT min(id) + 1 FROM (SELECT 0 AS id UNION ALL SELECT dev_id FROM interface)"
      "   WHERE id + 1 NOT IN (SELECT dev_id FROM interface)), ?1, ?2, ?3) "
      "ON CONFLICT (dev) DO UPDATE SET type = excluded.type, flags = excluded.flags WHERE NOT flags & ?4",
      dev, type, type == kTypeLan ? kInterfaceLan : 0, kInterfaceWan);
  refuse_if_full(store, "interface", kMaxInterfaces);
}

bool is_line(Store& store, std::string_view dev) {
  return store.number("SELECT count(*) FROM line WHERE dev = ?", dev) != 0;
}

// A line is no LAN by the way: who means it says so with the order that is for it.
void add(Store& store, const DevEntry& entry) {
  refuse_unless(entry.type == kTypeNone || entry.type == kTypeLan, kBadType);
  refuse_unless(entry.type == kTypeNone || !is_line(store, text(entry.dev)), kInUse);
  register_interface(store, text(entry.dev), entry.type);
}

// What is kept for the interface goes with it, and so does what is kept for its line, except for rules that
// send traffic there: these go first.
void del(Store& store, const DevEntry& entry) {
  require_interface(store, text(entry.dev));
  refuse_unless(!is_routed_over(store, text(entry.dev)), kInUse);
  store.execute("DELETE FROM interface WHERE dev = ?", entry.dev);
}

void set(Store& store, const DevEntry& entry) {
  require_interface(store, text(entry.dev));
  check_switch(entry.jb_en);
  refuse_unless(entry.wk_mode <= kMaxWorkMode, kBadMode);
  store.execute("UPDATE interface SET jb_en = :jb_en, wk_mode = :wk_mode, isp = :isp WHERE dev = :dev",
                entry);
}

// The entry of one interface, or for an empty name those of all. The ARP state is whether anything is bound.
Statement entries(Store& store, std::string_view dev) {
  return store.query(
      "SELECT dev, dev_id, type, flags, jb_en, wk_mode, isp,"
      "  EXISTS (SELECT 1 FROM arp_binding WHERE arp_binding.dev = interface.dev) AS arp "
      "FROM interface WHERE ?1 = '' OR dev = ?1 ORDER BY dev_id",
      dev);
}

DevEntry read_entry(const Statement& row, const std::vector<Interface>& machine) {
  DevEntry entry = {};
  row.read_fields(entry);
  const auto found = std::ranges::find(machine, text(entry.dev), &Interface::dev);
  if (found != machine.end()) entry.dev_flags = found->flags;
  return entry;
}

void get(Store& store, DevEntry& entry) {
  require_interface(store, text(entry.dev));
  Statement row = entries(store, text(entry.dev));
  row.next();
  entry = read_entry(row, linux_interfaces());
}

void list(Store& store, Order& order) {
  ListAnswer<DevEntry> answer(order);
  const std::vector<Interface> machine = linux_interfaces();
  for (Statement row = entries(store, ""); row.next();) answer.add(read_entry(row, machine));
}

// An interface is on one side only: becoming one takes the other mark away, and the line with its state. What
// an interface is already it stays as it is.
void mark(Store& store, std::string_view dev, uint16_t type, uint32_t flag) {
  require_interface(store, dev);
  store.execute("UPDATE interface SET type = ?1, flags = ?2 WHERE dev = ?3 AND NOT flags & ?2", type, flag,
                dev);
}

// As with the interface's deletion, rules that send traffic over its line go first.
void mark_lan(Store& store, const DevName& name) {
  refuse_unless(!is_routed_over(store, text(name.dev)), kInUse);
  mark(store, text(name.dev), kTypeLan, kInterfaceLan);
}

void mark_wan(Store& store, const DevName& name) { mark(store, text(name.dev), kTypeNone, kInterfaceWan); }

// Brings the interfaces of the machine into the registry; those registered stay as they are.
void read_machine(Store& store) {
  for (const Interface& interface : linux_interfaces()) {
    if ((interface.flags & IFF_LOOPBACK) == 0 &&
        store.number("SELECT count(*) FROM interface WHERE dev = ?", interface.dev) == 0) {
      register_interface(store, interface.dev, kTypeNone);
    }
  }
}

// The line behind a WAN interface is set up.
void wan_done(Store& store, const DevName& name) {
  require_interface(store, text(name.dev));
  refuse_if_none(store.execute("UPDATE interface SET flags = flags | ? WHERE dev = ? AND flags & ?",
                               kInterfaceLineUp, name.dev, kInterfaceWan),
                 kNotALine);
}

// Linux counts incoming multicast apart, but neither broadcast nor outgoing multicast: those are 0 here and
// count as unicast.
void stat(Store& store, DevStat& stat) {
  const std::string_view dev = text(stat.dev);
  require_interface(store, dev);
  const rtnl_link_stats64 counters = linux_interface(dev).value_or(Interface{}).counters;
  stat.rx_broadcast = 0;
  stat.rx_multicast = counters.multicast;
  stat.rx_unicast = counters.rx_packets > stat.rx_multicast ? counters.rx_packets - stat.rx_multicast : 0;
  stat.tx_broadcast = 0;
  stat.tx_multicast = 0;
  stat.tx_unicast = counters.tx_packets;
}

// Whether an interface takes PPPoE clients, and nobody else.
void pppoe(Store& store, DevPppoe& pppoe) {
  require_interface(store, text(pppoe.dev));
  if (pppoe.mode == DevPppoe::kSet) {
    check_switch(pppoe.en);
    check_switch(pppoe.only);
    store.execute("UPDATE interface SET pppoe_en = :en, pppoe_only = :only WHERE dev = :dev", pppoe);
    return;
  }
  refuse_unless(pppoe.mode == DevPppoe::kGet, kBadMode);
  Statement row = store.query("SELECT pppoe_en, pppoe_only FROM interface WHERE dev = ?", pppoe.dev);
  if (row.next()) row.read(pppoe.en, pppoe.only);
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE interface (
  dev_id INTEGER PRIMARY KEY,
  dev TEXT NOT NULL UNIQUE,
  type INTEGER NOT NULL,
  flags INTEGER NOT NULL,
  jb_en INTEGER NOT NULL DEFAULT 0,
  wk_mode INTEGER NOT NULL DEFAULT 0,
  isp INTEGER NOT NULL DEFAULT 0
))",
                                   R"(
ALTER TABLE interface ADD COLUMN pppoe_en INTEGER NOT NULL DEFAULT 0;
ALTER TABLE interface ADD COLUMN pppoe_only INTEGER NOT NULL DEFAULT 0)"};

constexpr Command kCommands[] = {
    {kDevAdd, kWrites, run_as<add>},          {kDevDel, kWrites, run_as<del>},
    {kDevSet, kWrites, run_as<set>},          {kDevGet, kReads, run_as<get>},
    {kDevList, kReads, run_as<list>},         {kDevLan, kWrites, run_as<mark_lan>},
    {kDevWan, kWrites, run_as<mark_wan>},     {kDevRead, kWrites, run_as<read_machine>},
    {kDevWanDone, kWrites, run_as<wan_done>}, {kDevStat, kReads, run_as<stat>},
    {kDevPppoe, kWrites, run_as<pppoe>},
};

}  // namespace

const Module kDevmgModule = {kModuleDevmg, kCommands, kSchema, nullptr, follow_settings};

void require_interface(Store& store, std::string_view dev) {
  refuse_unless(store.number("SELECT count(*) FROM interface WHERE dev = ?", dev) != 0, kUnknownInterface);
}

std::vector<std::string> select_interfaces(Store& store, std::string_view word) {
  const bool is_group = word == "lan" || word == "wan" || word == "all";
  if (!is_group) require_interface(store, word);
  Statement row = store.query(
      "SELECT dev FROM interface WHERE ?1 = 'all' OR (?1 = 'lan' AND flags & ?2) OR (?1 = 'wan' AND flags & "
      "?3)"
      "  OR (?1 NOT IN ('all', 'lan', 'wan') AND dev = ?1) ORDER BY dev_id",
      word, kInterfaceLan, kInterfaceWan);
  std::vector<std::string> devs;
  while (row.next()) row.read(devs.emplace_back());
  return devs;
}
