// The switch chip (module 32): its tables, what its ports see, and the two orders on its tables.
#include "modules/switch_chip.h"

#include <net/if.h>

#include <cstdio>

#include "linux/net.h"
#include "modules/general.h"
#include "modules/modules.h"
#include "platform/address.h"
#include "records/general.h"
#include "records/switch_chip.h"
#include "state/settings.h"

namespace {

constexpr const char* kSchema[] = {R"(
CREATE TABLE switch_register (addr INTEGER PRIMARY KEY, value INTEGER NOT NULL);
CREATE TABLE switch_phy_register (addr INTEGER PRIMARY KEY, value INTEGER NOT NULL);
CREATE TABLE switch_vlan (
  vid INTEGER PRIMARY KEY,
  membermask INTEGER NOT NULL,
  untagmask INTEGER NOT NULL,
  fid INTEGER NOT NULL
);
INSERT INTO switch_vlan VALUES (1, 0x3ff, 0x3ff, 0);
CREATE TABLE switch_port (
  port INTEGER PRIMARY KEY,
  pvid INTEGER DEFAULT 1 REFERENCES switch_vlan ON DELETE SET NULL,
  priority INTEGER NOT NULL DEFAULT 0,
  efid INTEGER NOT NULL DEFAULT 0,
  link INTEGER NOT NULL DEFAULT 1,
  autoneg INTEGER NOT NULL DEFAULT 1,
  speed INTEGER NOT NULL DEFAULT 2,
  duplex INTEGER NOT NULL DEFAULT 1,
  ingress_rate INTEGER NOT NULL DEFAULT 0xffff8,
  egress_rate INTEGER NOT NULL DEFAULT 0xffff8,
  tx_delay INTEGER NOT NULL DEFAULT 0,
  rx_delay INTEGER NOT NULL DEFAULT 0
);
WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 9)
  INSERT INTO switch_port (port) SELECT i FROM n;
CREATE TABLE switch_acl_mac (
  mac_value BLOB PRIMARY KEY,
  mac_mask BLOB NOT NULL,
  match INTEGER NOT NULL,
  port_value INTEGER NOT NULL,
  port_mask INTEGER NOT NULL,
  action INTEGER NOT NULL
);
CREATE TABLE switch_acl_port (
  type INTEGER NOT NULL,
  upper INTEGER NOT NULL,
  lower INTEGER NOT NULL,
  PRIMARY KEY (type, upper, lower)
) WITHOUT ROWID;
CREATE TABLE switch_acl_etype (etype INTEGER PRIMARY KEY, port_mask INTEGER NOT NULL);
CREATE TABLE switch_port_fact (
  port INTEGER PRIMARY KEY,
  dev TEXT NOT NULL,
  link INTEGER NOT NULL,
  speed INTEGER NOT NULL,
  duplex INTEGER NOT NULL,
  in_octets INTEGER NOT NULL,
  in_frames INTEGER NOT NULL,
  in_errors INTEGER NOT NULL,
  in_dropped INTEGER NOT NULL,
  out_octets INTEGER NOT NULL,
  out_frames INTEGER NOT NULL,
  out_errors INTEGER NOT NULL,
  out_dropped INTEGER NOT NULL
);
CREATE TABLE switch_counter_reset (
  port INTEGER PRIMARY KEY,
  in_octets INTEGER NOT NULL,
  in_frames INTEGER NOT NULL,
  in_errors INTEGER NOT NULL,
  in_dropped INTEGER NOT NULL,
  out_octets INTEGER NOT NULL,
  out_frames INTEGER NOT NULL,
  out_errors INTEGER NOT NULL,
  out_dropped INTEGER NOT NULL
))"};

// ---- Ports ----

uint8_t speed_code(uint32_t mbps) {
  size_t code = 0;
  for (size_t i = 0; i < std::size(kSwitchSpeeds); ++i) {
    if (kSwitchSpeeds[i] != 0 && kSwitchSpeeds[i] <= mbps) code = i;
  }
  return static_cast<uint8_t>(code);
}

// The link and the counters of the interface; of one that has gone, no link and none.
void read_interface(SwitchPortFacts& facts) {
  const std::string dev(text(facts.dev));
  facts.link = 0;
  facts.counters = {};
  const std::optional<Interface> interface = linux_interface(dev);
  if (!interface) return;
  constexpr uint32_t kUp = IFF_UP | IFF_RUNNING;
  const LinkSpeed speed = linux_link_speed(dev).value_or(LinkSpeed{1000, true});
  const rtnl_link_stats64& counters = interface->counters;
  facts.link = (interface->flags & kUp) == kUp ? 1 : 0;
  facts.speed = speed_code(speed.mbps);
  facts.duplex = speed.is_full_duplex ? 1 : 0;
  facts.counters = {counters.rx_bytes, counters.rx_packets, counters.rx_errors, counters.rx_dropped,
                    counters.tx_bytes, counters.tx_packets, counters.tx_errors, counters.tx_dropped};
}

// As the cable has it. Nothing is plugged into the user ports; the CPU's are always connected.
SwitchPortFacts read_facts(Store& store, uint32_t port) {
  SwitchPortFacts facts = {};
  facts.port = port;
  facts.link = port < kUserPorts ? 0 : 1;
  facts.speed = speed_code(1000);
  facts.duplex = 1;
  Statement row = store.query("SELECT * FROM switch_port_fact WHERE port = ?", port);
  if (row.next()) row.read_fields(facts);
  if (facts.dev[0] != '\0') read_interface(facts);
  return facts;
}

// Without what had been counted at the last reset. A counter that has begun anew since then is as it is.
void subtract_reset(Store& store, SwitchPortFacts& facts) {
  Statement row = store.query("SELECT * FROM switch_counter_reset WHERE port = ?", facts.port);
  if (!row.next()) return;
  SwitchPortFacts reset = {};
  row.read_fields(reset);
  uint64_t before[8];
  size_t index = 0;
  SwitchCounters::each_field(reset.counters,
                             [&](const char*, uint64_t counter) { before[index++] = counter; });
  index = 0;
  SwitchCounters::each_field(facts.counters, [&](const char*, uint64_t& counter) {
    if (counter >= before[index]) counter -= before[index];
    ++index;
  });
}

// ---- Orders ----

class Report {
 public:
  template <typename... Values>
  void add(const char* format, Values... values) {
    char line[128];
    snprintf(line, sizeof line, format, values...);
    constexpr size_t kRoom = sizeof(ErrorInfo::text) - sizeof kCut;
    is_cut_ = is_cut_ || text_.size() + strlen(line) > kRoom;
    if (!is_cut_) text_ += line;
  }
  std::string text() const { return is_cut_ ? text_ + kCut : text_; }

 private:
  static constexpr char kCut[] = "...\n";
  std::string text_;
  bool is_cut_ = false;
};

void report_ports(Store& store, Report& report) {
  Statement row = store.query(
      "SELECT port, coalesce(pvid, 0), priority, efid, ingress_rate, egress_rate, tx_delay, rx_delay"
      "  FROM switch_port ORDER BY port");
  for (uint32_t v[8]; row.next();) {
    row.read(v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]);
    const SwitchPortFacts state = switch_port_state(store, v[0]);
    report.add("port %u: link %s, pvid %u, priority %u, efid %u, rates %u %u, delays %u %u\n", v[0],
               state.link != 0 ? std::to_string(kSwitchSpeeds[state.speed]).c_str() : "down", v[1], v[2],
               v[3], v[4], v[5], v[6], v[7]);
  }
}

void report_access(Store& store, Report& report) {
  Statement mac =
      store.query("SELECT mac_value, mac_mask, match, port_value, port_mask, action FROM switch_acl_mac");
  while (mac.next()) {
    Mac value;
    Mac mask;
    uint32_t v[4];
    mac.read(value, mask, v[0], v[1], v[2], v[3]);
    char text[2][18];
    report.add("acl: %s %s/%s, ports 0x%x/0x%x, action %u\n", v[0] == 0 ? "smac" : "dmac",
               MacToStr(text[0], &value), MacToStr(text[1], &mask), v[1], v[2], v[3]);
  }
  Statement port = store.query("SELECT type, lower, upper FROM switch_acl_port");
  for (uint32_t v[3]; port.next();) {
    port.read(v[0], v[1], v[2]);
    report.add("acl_port: %s %u-%u\n", v[0] == 1 ? "sport" : "dport", v[1], v[2]);
  }
  Statement etype = store.query("SELECT etype, port_mask FROM switch_acl_etype");
  for (uint32_t v[2]; etype.next();) {
    etype.read(v[0], v[1]);
    report.add("acl_etype: 0x%04x, ports 0x%x\n", v[0], v[1]);
  }
}

// The command answers nothing but its result, so the report goes where errinfo finds it.
void dump(Store& store) {
  const auto setting = [&store](const char* name) { return get_setting(store, kModuleSwitchChip, name); };
  Report report;
  const auto phys = [&setting](const char* are_off) { return setting(are_off) != 0 ? "off" : "on"; };
  report.add("switch: id %u, PHYs %s, the processor's own %s\n", setting(kSwitchId), phys(kChipPhysAreOff),
             phys(kOwnPhysAreOff));
  report.add("mirror: port %u, rx 0x%x, tx 0x%x, isolation %u\n", setting(kMirrorPort),
             setting(kMirrorRxMask), setting(kMirrorTxMask), setting(kMirrorIsolation));
  report_ports(store, report);
  report_access(store, report);
  Statement row = store.query("SELECT vid, membermask, untagmask, fid FROM switch_vlan");
  for (uint32_t v[4]; row.next();) {
    row.read(v[0], v[1], v[2], v[3]);
    report.add("vlan %u: members 0x%x, untagged 0x%x, fid %u\n", v[0], v[1], v[2], v[3]);
  }
  store_report(store, kModuleSwitchChip, report.text());
}

void clear_tables(Store& store) {
  for (const char* table : {"switch_acl_mac", "switch_acl_port", "switch_acl_etype"}) {
    store.execute((std::string("DELETE FROM ") + table).c_str());
  }
  reset_switch_counters(store, std::nullopt);
}

constexpr Command kCommands[] = {
    {kSwitchDump, kWrites, run_as<dump>},
    {kSwitchClear, kWrites, run_as<clear_tables>},
};

}  // namespace

const Module kSwitchChipModule = {kModuleSwitchChip, kCommands, kSchema};

SwitchPortSettings switch_port_settings(Store& store, uint32_t port) {
  SwitchPortSettings settings = {};
  Statement row = store.query("SELECT link, autoneg, speed, duplex FROM switch_port WHERE port = ?", port);
  if (row.next()) row.read_fields(settings);
  return settings;
}

SwitchPortFacts switch_port_state(Store& store, uint32_t port) {
  const SwitchPortSettings settings = switch_port_settings(store, port);
  SwitchPortFacts facts = read_facts(store, port);
  subtract_reset(store, facts);
  const bool has_phy = port < kUserPorts;
  if (settings.link == 0 || (has_phy && get_setting(store, kModuleSwitchChip, kChipPhysAreOff) != 0)) {
    facts.link = 0;
  }
  // The other end follows what is forced; an interface of Linux is asked, not set.
  if (settings.autoneg == 0 && facts.dev[0] == '\0') {
    facts.speed = settings.speed;
    facts.duplex = settings.duplex;
  }
  return facts;
}

void reset_switch_counters(Store& store, std::optional<uint32_t> port) {
  for (uint32_t each = port.value_or(0); each < (port ? *port + 1 : kSwitchPorts); ++each) {
    store.put("switch_counter_reset", Column{"port", each}, read_facts(store, each).counters);
  }
}
