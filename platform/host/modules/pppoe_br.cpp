// PPPoE bridging (module 41): the LAN devices, the two WAN devices that they are bridged out over with their
// VLANs, and further WAN devices. How the WAN devices do, and whose MAC address stands for whose, only
// packets would tell: that is the lab's word.
#include "records/pppoe_br.h"

#include "modules/checks.h"
#include "modules/devmg.h"
#include "modules/general.h"
#include "modules/modules.h"
#include "state/settings.h"

namespace {

constexpr uint16_t kMaxVlan = 4094;  // 4095 is reserved
constexpr const char* kNone = "none";

void check_vlan_range(uint16_t start, uint16_t end) {
  refuse_unless(start <= kMaxVlan && end <= kMaxVlan && (start != 0 || end == 0), kBadVlan);
  refuse_unless(end == 0 || start <= end, kBadRange);
}

// There is no inner tag without an outer one, and no tag without a device.
void set_out(Store& store, int place, const PppoeBridgeOut& out) {
  check_vlan_range(out.vlan_start, out.vlan_end);
  check_vlan_range(out.vlan2_start, out.vlan2_end);
  refuse_unless(out.vlan_start != 0 || out.vlan2_start == 0, kBadVlan);
  const std::string_view dev = text(out.name);
  if (dev.empty() || dev == kNone) return refuse_unless(out.vlan_start == 0, kUnknownInterface);
  require_interface(store, dev);
  refuse_unless(store.number("SELECT count(*) FROM pppoe_br_lan WHERE dev = ?", dev) == 0, kInUse);
  store.execute(
      "INSERT INTO pppoe_br_out VALUES (:place, :name, :vlan_start, :vlan_end, :vlan2_start, :vlan2_end)",
      Column{"place", place}, out);
}

void more_add(Store& store, const PppoeBridgeMore& more) {
  require_interface(store, text(more.name));
  store.execute("INSERT OR IGNORE INTO pppoe_br_more VALUES (:name, :id)", more);
  refuse_if_full(store, "pppoe_br_more", kMaxPppoeBridgeMore);
}

void more_del(Store& store, const PppoeBridgeMore& more) {
  refuse_if_none(store.execute("DELETE FROM pppoe_br_more WHERE name = :name AND id = :id", more));
}

void more_del_all(Store& store) { store.execute("DELETE FROM pppoe_br_more"); }

// The order states all of the setting, so that all lists are new.
void set(Store& store, const PppoeBridgeConfig& config, Order& order) {
  check_switch(config.en);
  check_switch(config.en_more);
  refuse_unless(config.time <= INT32_MAX, kBadNumber);
  refuse_unless(config.lan_count <= kMaxPppoeBridgeLan && config.more_count <= kMaxPppoeBridgeMore,
                kBadRecord);
  set_setting(store, kModulePppoeBridge, "en", config.en);
  set_setting(store, kModulePppoeBridge, "en_more", config.en_more);
  set_setting(store, kModulePppoeBridge, "time", config.time);
  set_setting(store, kModulePppoeBridge, "hi_jh", config.hi_jh);

  store.execute("DELETE FROM pppoe_br_lan");
  for (uint32_t i = 0; i < config.lan_count; ++i) {
    require_interface(store, text(config.lan[i]));
    store.execute("INSERT OR IGNORE INTO pppoe_br_lan VALUES (?)", config.lan[i]);
  }
  store.execute("DELETE FROM pppoe_br_out");
  for (int place = 0; place < 2; ++place) set_out(store, place, config.out[place]);
  more_del_all(store);
  for (uint32_t i = 0; i < config.more_count; ++i) {
    const auto offset = static_cast<uint32_t>(sizeof config + i * sizeof(PppoeBridgeMore));
    more_add(store, order.request<PppoeBridgeMore>(offset));
  }
}

void get(Store& store, const PppoeBridgeConfig&, Order& order) {
  PppoeBridgeConfig config = {};
  config.en = get_setting(store, kModulePppoeBridge, "en");
  config.en_more = get_setting(store, kModulePppoeBridge, "en_more");
  config.time = get_setting(store, kModulePppoeBridge, "time");
  config.hi_jh = get_setting(store, kModulePppoeBridge, "hi_jh");
  Statement lan = store.query("SELECT dev FROM pppoe_br_lan ORDER BY rowid");
  while (config.lan_count < kMaxPppoeBridgeLan && lan.next()) lan.read(config.lan[config.lan_count++]);

  for (PppoeBridgeOut& out : config.out) copy_text(out.name, kNone);
  Statement row = store.query(
      "SELECT place, name, vlan_start, vlan_end, vlan2_start, vlan2_end, state, times "
      "FROM pppoe_br_out LEFT JOIN pppoe_br_out_fact USING (name)");
  while (row.next()) {
    int place;
    PppoeBridgeOut out = {};
    row.read(place, out.name, out.vlan_start, out.vlan_end, out.vlan2_start, out.vlan2_end, out.state,
             out.times);
    config.out[place] = out;
  }
  order.answer(config);

  ListAnswer<PppoeBridgeMore> answer(order, offsetof(PppoeBridgeConfig, more_count), sizeof config);
  Statement more = store.query("SELECT * FROM pppoe_br_more");
  while (more.next()) {
    PppoeBridgeMore entry = {};
    more.read_fields(entry);
    answer.add(entry);
  }
}

// The command answers nothing but its result, so the entries, those of one device or for an empty name all,
// go where errinfo finds them.
void more_get(Store& store, const PppoeBridgeMore& request) {
  std::string report;
  Statement row = store.query("SELECT name, id FROM pppoe_br_more WHERE ?1 = '' OR name = ?1", request.name);
  while (row.next()) {
    std::string name;
    uint32_t id;
    row.read(name, id);
    report += (report.empty() ? "more wan: " : ",") + name + ":" + std::to_string(id);
  }
  refuse_unless(!report.empty(), kNoSuchEntry);
  store_report(store, kModulePppoeBridge, report);
}

void list_macs(Store& store, Order& order) {
  ListAnswer<PppoeBridgeMac> answer(order);
  Statement row = store.query("SELECT * FROM pppoe_br_mac");
  while (row.next()) {
    PppoeBridgeMac entry = {};
    row.read_fields(entry);
    answer.add(entry);
  }
}

// The hosts whose frames come with a tag.
void list_vlan_ids(Store& store, Order& order) {
  ListAnswer<PppoeBridgeVlanId> answer(order);
  Statement row = store.query(
      "SELECT lan_mac AS mac, vlanid AS id, coalesce(dev_id, 0) AS dev "
      "FROM pppoe_br_mac LEFT JOIN interface ON interface.dev = in_dev WHERE vlanid <> 0 ORDER BY lan_mac");
  while (row.next()) {
    PppoeBridgeVlanId entry = {};
    row.read_fields(entry);
    answer.add(entry);
  }
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE pppoe_br_lan (
  dev TEXT NOT NULL UNIQUE REFERENCES interface (dev) ON DELETE CASCADE
);
CREATE TABLE pppoe_br_out (
  place INTEGER PRIMARY KEY CHECK (place IN (0, 1)),
  name TEXT NOT NULL REFERENCES interface (dev) ON DELETE CASCADE,
  vlan_start INTEGER NOT NULL,
  vlan_end INTEGER NOT NULL,
  vlan2_start INTEGER NOT NULL,
  vlan2_end INTEGER NOT NULL
);
CREATE TABLE pppoe_br_more (
  name TEXT NOT NULL REFERENCES interface (dev) ON DELETE CASCADE,
  id INTEGER NOT NULL,
  PRIMARY KEY (name, id)
) WITHOUT ROWID;
CREATE TABLE pppoe_br_out_fact (          -- this and the next: what a lab says
  name TEXT PRIMARY KEY,
  state INTEGER NOT NULL,
  times INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TABLE pppoe_br_mac (
  lan_mac BLOB PRIMARY KEY,
  wan_mac BLOB NOT NULL,
  init_wanid INTEGER NOT NULL,
  flag INTEGER NOT NULL,
  changed INTEGER NOT NULL,
  set_wanid INTEGER NOT NULL,
  in_dev TEXT NOT NULL,
  vlanid INTEGER NOT NULL,
  vlanid2 INTEGER NOT NULL,
  ltm INTEGER NOT NULL
) WITHOUT ROWID)"};

constexpr Command kCommands[] = {
    {kPppoeBridgeSet, kWrites, run_as<set>},
    {kPppoeBridgeGet, kReads, run_as<get>},
    {kPppoeBridgeVlanIds, kReads, run_as<list_vlan_ids>},
    {kPppoeBridgeMoreAdd, kWrites, run_as<more_add>},
    {kPppoeBridgeMoreDel, kWrites, run_as<more_del>},
    {kPppoeBridgeMoreGet, kWrites, run_as<more_get>},
    {kPppoeBridgeMacs, kReads, run_as<list_macs>},
    {kPppoeBridgeMoreDelAll, kWrites, run_as<more_del_all>},
};

}  // namespace

const Module kPppoeBridgeModule = {kModulePppoeBridge, kCommands, kSchema};
