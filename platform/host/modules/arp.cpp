// ARP binding (module 3): settings of an interface, the bindings, and the database of addresses learnt, from
// which bindings can be made in bulk. Tables keep addresses as numbers, so that they sort and compare.
#include "records/arp.h"

#include <arpa/inet.h>

#include "linux/net.h"
#include "modules/checks.h"
#include "modules/devmg.h"
#include "modules/general.h"
#include "modules/modules.h"
#include "state/settings.h"

namespace {

constexpr int kMaxBindings = 4096;
constexpr int kMaxLearnt = 4096;
constexpr uint32_t kMaxDealLevel = 2;
constexpr const char* kDisonline = "disonline";

// Bits of a listed entry's state.
constexpr uint32_t kStateByHand = 1;
constexpr uint32_t kStateInBulk = 2;

void set(Store& store, const ArpSettings& settings) {
  require_interface(store, text(settings.dev));
  refuse_unless(settings.deal_level <= kMaxDealLevel, kBadNumber);
  store.put("arp_settings", settings);
}

// All zero for an interface whose settings were never set.
void get(Store& store, ArpSettings& settings) {
  require_interface(store, text(settings.dev));
  Statement row = store.query("SELECT * FROM arp_settings WHERE dev = ?", settings.dev);
  ArpSettings kept = {};
  copy_text(kept.dev, text(settings.dev));
  if (row.next()) row.read_fields(kept);
  settings = kept;
}

void check_type(uint16_t type) { refuse_unless(type >= 1 && type <= 4, kBadType); }

// Binding a bound address again replaces its binding.
void add(Store& store, const ArpBinding& binding) {
  require_interface(store, text(binding.dev));
  check_type(binding.type);
  refuse_unless(is_host_ip(binding.ip), kBadAddress);
  refuse_unless(is_host_mac(binding.mac), kBadMac);
  check_text(text(binding.name));
  store.put("arp_binding", binding, Column{"state", kStateByHand});
  refuse_if_full(store, "arp_binding", kMaxBindings);
}

void del(Store& store, const ArpBinding& binding) {
  require_interface(store, text(binding.dev));
  refuse_if_none(store.execute("DELETE FROM arp_binding WHERE dev = ? AND ip = ?", binding.dev, binding.ip));
}

void del_all(Store& store) { store.execute("DELETE FROM arp_binding"); }

void del_mac(Store& store, const ArpMacKey& key) {
  require_interface(store, text(key.dev));
  refuse_if_none(store.execute("DELETE FROM arp_binding WHERE dev = ? AND mac = ?", key.dev, key.mac));
}

// Takes what Linux knows of an interface's neighbours, first to last address, into the database.
void learn(Store& store, std::string_view dev, uint32_t first, uint32_t last) {
  for (const Neighbour& neighbour : linux_neighbours()) {
    const uint32_t ip = ntohl(neighbour.ip4().value);
    if (neighbour.dev != dev || ip == 0 || ip < first || ip > last) continue;
    store.execute("INSERT OR REPLACE INTO arp_learnt VALUES (?, ?, ?)", dev, ip, neighbour.mac);
  }
  refuse_if_full(store, "arp_learnt", kMaxLearnt);
}

// The range is a network's, from its first address to its last. Finding nobody is no error: the order is to
// look.
void search(Store& store, const ArpSearch& range) {
  require_interface(store, text(range.dev));
  check_mask({~(range.first_ip.value ^ range.last_ip.value)});
  learn(store, text(range.dev), ntohl(range.first_ip.value), ntohl(range.last_ip.value));
}

void database_del(Store& store, const ArpDatabaseKey& key) {
  require_interface(store, text(key.dev));
  refuse_if_none(store.execute("DELETE FROM arp_learnt WHERE dev = ? AND ip = ?", key.dev, key.ip));
}

// Binds all that is known on the interfaces named and not bound yet.
void add_all(Store& store, const ArpBinding& bulk) {
  check_type(bulk.type);
  for (const std::string& dev : select_interfaces(store, text(bulk.dev))) {
    learn(store, dev, 0, UINT32_MAX);
    store.execute(
        "INSERT OR IGNORE INTO arp_binding SELECT dev, ip, mac, ?, '', ? FROM arp_learnt WHERE dev = ?",
        bulk.type, kStateInBulk, dev);
  }
  refuse_if_full(store, "arp_binding", kMaxBindings);
}

// The empty word lists the bindings of every interface, as "all" does. The address that a binding was made
// for is the bound one.
void list(Store& store, const ArpListFilter& filter, Order& order) {
  const std::string_view word = text(filter.dev);
  ListAnswer<ArpListEntry> answer(order);
  for (const std::string& dev : select_interfaces(store, word.empty() ? "all" : word)) {
    Statement row = store.query(
        "SELECT binding.ip, binding.ip AS org_ip, coalesce(check_ip, 0) AS check_ip, mac, dev, type, state "
        "FROM arp_binding AS binding LEFT JOIN arp_settings USING (dev) WHERE dev = ? ORDER BY binding.ip",
        dev);
    while (row.next()) {
      ArpListEntry entry = {};
      row.read_fields(entry);
      answer.add(entry);
    }
  }
}

void disonline_set(Store& store, const ArpSwitch& disonline) {
  check_switch(disonline.enable);
  set_setting(store, kModuleArp, kDisonline, disonline.enable);
}

void disonline_get(Store& store, ArpSwitch& disonline) {
  disonline.enable = get_setting(store, kModuleArp, kDisonline);
}

// Leaves a report where errinfo finds it.
void debug(Store& store) {
  const auto count = [&store](const char* sql) { return std::to_string(store.number(sql)); };
  store_report(store, kModuleArp,
               "arp: " + count("SELECT count(*) FROM arp_binding") + " bindings, " +
                   count("SELECT count(*) FROM arp_learnt") + " addresses learnt, settings of " +
                   count("SELECT count(*) FROM arp_settings") + " interfaces");
}

void forget_learnt(Store& store) { store.execute("DELETE FROM arp_learnt"); }

constexpr const char* kSchema[] = {R"(
CREATE TABLE arp_settings (
  dev TEXT PRIMARY KEY REFERENCES interface (dev) ON DELETE CASCADE,
  tm INTEGER NOT NULL,
  ip INTEGER NOT NULL,
  check_ip INTEGER NOT NULL,
  deal_level INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TABLE arp_binding (
  dev TEXT NOT NULL REFERENCES interface (dev) ON DELETE CASCADE,
  ip INTEGER NOT NULL,
  mac BLOB NOT NULL,
  type INTEGER NOT NULL,
  name TEXT NOT NULL,
  state INTEGER NOT NULL,
  PRIMARY KEY (dev, ip)
) WITHOUT ROWID;
CREATE TABLE arp_learnt (
  dev TEXT NOT NULL REFERENCES interface (dev) ON DELETE CASCADE,
  ip INTEGER NOT NULL,
  mac BLOB NOT NULL,
  PRIMARY KEY (dev, ip)
) WITHOUT ROWID)"};

constexpr Command kCommands[] = {
    {kArpSet, kWrites, run_as<set>},
    {kArpGet, kReads, run_as<get>},
    {kArpAdd, kWrites, run_as<add>},
    {kArpAddAll, kWrites, run_as<add_all>},
    {kArpDel, kWrites, run_as<del>},
    {kArpDelAll, kWrites, run_as<del_all>},
    {kArpList, kReads, run_as<list>},
    {kArpDebug, kWrites, run_as<debug>},
    {kArpDisonlineSet, kWrites, run_as<disonline_set>},
    {kArpDisonlineGet, kReads, run_as<disonline_get>},
    {kArpDatabaseDel, kWrites, run_as<database_del>},
    {kArpSearch, kWrites, run_as<search>},
    {kArpDelMac, kWrites, run_as<del_mac>},
};

}  // namespace

const Module kArpModule = {kModuleArp, kCommands, kSchema, forget_learnt};
