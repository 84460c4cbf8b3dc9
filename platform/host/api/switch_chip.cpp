// The switch chip's functions: each is one transaction on the state store, and leaves a record that it
// refuses as it was.
#include "platform/switch_chip.h"

#include "api/transact.h"
#include "modules/switch_chip.h"
#include "records/order.h"
#include "state/settings.h"

namespace {

enum Op : uint8_t { kDelete = 0, kSet = 1, kGet = 2, kClear = 3 };

constexpr uint32_t kMaxRegister = 0xffff;
constexpr uint32_t kMaxVid = 4094;
constexpr uint32_t kMaxFid = 15;
constexpr uint32_t kMaxPriority = 7;
constexpr uint32_t kMaxEfid = 7;
constexpr int32_t kMaxDelay = 7;
constexpr uint32_t kMaxTcpPort = 65535;
constexpr uint16_t kMinEtherType = 0x600;  // below it stands a length
constexpr int64_t kMaxEntries = 64;        // of access, of all kinds together
constexpr uint32_t kMinRate = 8;           // kbit/s, a step of the chip

void check_at_most(uint32_t value, uint32_t most) { refuse_unless(value <= most, kBadNumber); }
void check_ports(uint32_t mask) { refuse_unless((mask & ~kPortMask) == 0, kBadMask); }

template <typename Record>
int operate(Record* record, void (*work)(Store& store, Record& record)) {
  if (record == nullptr) return -1;
  Record copy = *record;
  const int result = transact(kWrites, [&](Store& store) {
    work(store, copy);
    return 0;
  });
  if (result == 0) *record = copy;
  return result;
}

// Most functions set or get.
bool is_set(uint8_t op) {
  refuse_unless(op == kSet || op == kGet, kBadMode);
  return op == kSet;
}
bool is_addition(uint8_t op) {
  refuse_unless(op == kSet || op == kDelete, kBadMode);
  return op == kSet;
}

template <typename Value>
void get_port_value(Store& store, const char* column, uint32_t port, Value& value) {
  value = static_cast<Value>(
      store.number((std::string("SELECT ") + column + " FROM switch_port WHERE port = ?").c_str(), port));
}

// ---- Registers ----

// Those that were never written are 0.
template <typename Value>
void use_register(Store& store, const std::string& table, uint8_t op, uint32_t addr, Value& value) {
  if (is_set(op)) {
    store.execute(("INSERT OR REPLACE INTO " + table + " VALUES (?, ?)").c_str(), addr, value);
  } else {
    value =
        static_cast<Value>(store.number(("SELECT value FROM " + table + " WHERE addr = ?").c_str(), addr));
  }
}

void use_register(Store& store, SwitchRegRecord& record) {
  check_at_most(record.addr, kMaxRegister);
  if (record.op == kSet) check_at_most(record.value, kMaxRegister);
  use_register(store, "switch_register", record.op, record.addr, record.value);
}

void use_phy(Store& store, SwitchPhyRecord& record) {
  use_register(store, "switch_phy_register", record.op, record.addr, record.value);
}

// ---- VLANs ----

// One without members is none.
void set_vlan(Store& store, const SwitchVlanRecord& record) {
  refuse_unless(record.vid >= 1 && record.vid <= kMaxVid, kBadVlan);
  check_ports(record.membermask);
  refuse_unless((record.untagmask & ~record.membermask) == 0, kBadMask);
  check_at_most(record.fid, kMaxFid);
  if (record.membermask == 0) {
    store.execute("DELETE FROM switch_vlan WHERE vid = ?", record.vid);
    return;
  }
  store.execute(
      "INSERT INTO switch_vlan VALUES (?, ?, ?, ?) ON CONFLICT (vid) DO UPDATE"
      "  SET membermask = excluded.membermask, untagmask = excluded.untagmask, fid = excluded.fid",
      record.vid, record.membermask, record.untagmask, record.fid);
}

void get_vlan(Store& store, SwitchVlanRecord& record) {
  Statement row = store.query("SELECT membermask, untagmask, fid FROM switch_vlan WHERE vid = ?", record.vid);
  refuse_unless(row.next(), kNoSuchEntry);
  row.read(record.membermask, record.untagmask, record.fid);
}

void use_vlan(Store& store, SwitchVlanRecord& record) {
  if (record.op == kClear) {
    store.execute("DELETE FROM switch_vlan");
  } else if (is_set(record.op)) {
    set_vlan(store, record);
  } else {
    get_vlan(store, record);
  }
}

// A port whose VLAN has gone has none, which reads as 0.
void use_pvid(Store& store, SwitchPvidRecord& record) {
  check_port(record.port);
  if (!is_set(record.op)) {
    get_port_value(store, "coalesce(pvid, 0)", record.port, record.pvid);
    get_port_value(store, "priority", record.port, record.priority);
    return;
  }
  check_at_most(record.priority, kMaxPriority);
  refuse_unless(store.number("SELECT count(*) FROM switch_vlan WHERE vid = ?", record.pvid) != 0, kBadVlan);
  store.execute("UPDATE switch_port SET pvid = ?, priority = ? WHERE port = ?", record.pvid, record.priority,
                record.port);
}

void use_efid(Store& store, SwitchEfidRecord& record) {
  check_port(record.port);
  if (!is_set(record.op)) return get_port_value(store, "efid", record.port, record.efid);
  check_at_most(record.efid, kMaxEfid);
  store.execute("UPDATE switch_port SET efid = ? WHERE port = ?", record.efid, record.port);
}

// ---- Ports ----

void set_port(Store& store, const PortStatusRecord& record) {
  constexpr uint8_t kNegotiated = 1;
  constexpr uint8_t kAsItIs = 2;
  refuse_unless(record.link <= 1, kBadSwitch);
  refuse_unless(record.autoneg <= kAsItIs, kBadMode);
  refuse_unless(is_switch_speed(record.speed) && record.duplex <= 1, kBadNumber);
  store.execute("UPDATE switch_port SET link = ? WHERE port = ?", record.link, record.port);
  if (record.link == 0 || record.autoneg == kAsItIs) return;
  store.execute("UPDATE switch_port SET autoneg = ? WHERE port = ?", record.autoneg, record.port);
  if (record.autoneg == kNegotiated) return;
  store.execute("UPDATE switch_port SET speed = ?, duplex = ? WHERE port = ?", record.speed, record.duplex,
                record.port);
}

void use_port(Store& store, PortStatusRecord& record) {
  check_port(record.port);
  if (is_set(record.op)) return set_port(store, record);
  const SwitchPortFacts state = switch_port_state(store, record.port);
  record.autoneg = switch_port_settings(store, record.port).autoneg;
  record.link = state.link;
  record.speed = state.speed;
  record.duplex = state.duplex;
}

void use_rate(Store& store, SwitchRateRecord& record) {
  check_port(record.port);
  refuse_unless(record.direction == 1 || record.direction == 2, kBadMode);
  const std::string column = record.direction == 1 ? "ingress_rate" : "egress_rate";
  if (!is_set(record.op)) return get_port_value(store, column.c_str(), record.port, record.rate);
  refuse_unless(record.rate >= kMinRate && record.rate <= kNoRateLimit, kBadNumber);
  store.execute(("UPDATE switch_port SET " + column + " = ? WHERE port = ?").c_str(), record.rate,
                record.port);
}

void use_delay(Store& store, SwitchDelayRecord& record) {
  check_port(record.port);
  if (!is_set(record.op)) {
    get_port_value(store, "tx_delay", record.port, record.tx);
    get_port_value(store, "rx_delay", record.port, record.rx);
    return;
  }
  for (const int32_t delay : {record.tx, record.rx}) {
    refuse_unless(delay >= 0 && delay <= kMaxDelay, kBadNumber);
  }
  store.execute("UPDATE switch_port SET tx_delay = ?, rx_delay = ? WHERE port = ?", record.tx, record.rx,
                record.port);
}

void use_mirror(Store& store, SwitchMirrorRecord& record) {
  const auto get = [&store](const char* name) { return get_setting(store, kModuleSwitchChip, name); };
  const auto set = [&store](const char* name, uint32_t value) {
    set_setting(store, kModuleSwitchChip, name, value);
  };
  if (!is_set(record.op)) {
    record.isolation = static_cast<uint8_t>(get(kMirrorIsolation));
    record.destination_port = get(kMirrorPort);
    record.tx_mask = get(kMirrorTxMask);
    record.rx_mask = get(kMirrorRxMask);
    return;
  }
  check_port(record.destination_port);
  check_ports(record.tx_mask);
  check_ports(record.rx_mask);
  check_switch(record.isolation);
  set(kMirrorIsolation, record.isolation);
  set(kMirrorPort, record.destination_port);
  set(kMirrorTxMask, record.tx_mask);
  set(kMirrorRxMask, record.rx_mask);
}

// ---- Counters ----

void print_counters(Store& store, uint32_t port) {
  const SwitchPortFacts state = switch_port_state(store, port);
  printf("port %u:", port);
  SwitchCounters::each_field(state.counters, [](const char* name, uint64_t counter) {
    printf(" %s %llu", name, static_cast<unsigned long long>(counter));
  });
  printf("\n");
}

void use_mib(Store& store, SwitchMibRecord& record) {
  constexpr uint8_t kPrint = 1;
  constexpr uint8_t kReset = 2;
  constexpr uint8_t kOnePort = 1;
  constexpr uint8_t kAllPorts = 2;
  refuse_unless(
      (record.op == kPrint || record.op == kReset) && (record.scope == kOnePort || record.scope == kAllPorts),
      kBadMode);
  if (record.scope == kOnePort) check_port(record.port);
  for (uint32_t port = 0; port < kSwitchPorts; ++port) {
    if (record.scope == kOnePort && port != record.port) continue;
    if (record.op == kPrint) {
      print_counters(store, port);
    } else {
      reset_switch_counters(store, port);
    }
  }
}

// ---- Access ----

void refuse_if_access_is_full(Store& store) {
  refuse_unless(
      store.number("SELECT (SELECT count(*) FROM switch_acl_mac) +"
                   "  (SELECT count(*) FROM switch_acl_port) + (SELECT count(*) FROM switch_acl_etype)") <=
          kMaxEntries,
      kTableFull);
}

void use_acl(Store& store, AclMacRecord& record) {
  if (!is_addition(record.add)) {
    refuse_if_none(store.execute("DELETE FROM switch_acl_mac WHERE mac_value = ?", record.mac_value));
    return;
  }
  check_switch(record.match);
  check_at_most(record.action, 1);
  check_ports(record.port_value);
  check_ports(record.port_mask);
  store.execute("INSERT OR REPLACE INTO switch_acl_mac VALUES (?, ?, ?, ?, ?, ?)", record.mac_value,
                record.mac_mask, record.match, record.port_value, record.port_mask, record.action);
  refuse_if_access_is_full(store);
}

void use_acl_port(Store& store, SwitchAclPortRecord& record) {
  refuse_unless(record.type == 1 || record.type == 2, kBadType);
  check_at_most(record.upper, kMaxTcpPort);
  refuse_unless(record.lower <= record.upper, kBadRange);
  if (is_addition(record.op)) {
    store.execute("INSERT OR IGNORE INTO switch_acl_port VALUES (?, ?, ?)", record.type, record.upper,
                  record.lower);
    refuse_if_access_is_full(store);
  } else {
    refuse_if_none(store.execute("DELETE FROM switch_acl_port WHERE type = ? AND upper = ? AND lower = ?",
                                 record.type, record.upper, record.lower));
  }
}

void use_acl_etype(Store& store, SwitchAclEtypeRecord& record) {
  refuse_unless(record.etype >= kMinEtherType, kBadType);
  if (is_addition(record.op)) {
    refuse_unless(record.port_mask != 0, kBadMask);
    store.execute("INSERT OR REPLACE INTO switch_acl_etype VALUES (?, ?)", record.etype, record.port_mask);
    refuse_if_access_is_full(store);
  } else {
    refuse_if_none(store.execute("DELETE FROM switch_acl_etype WHERE etype = ? AND port_mask = ?",
                                 record.etype, record.port_mask));
  }
}

// ---- The chip ----

void use_id(Store& store, SwitchIdRecord& record) {
  if (!is_set(record.op)) {
    record.id = get_setting(store, kModuleSwitchChip, kSwitchId);
    return;
  }
  check_at_most(record.id, INT32_MAX);
  set_setting(store, kModuleSwitchChip, kSwitchId, record.id);
}

}  // namespace

#pragma GCC visibility push(default)

int rtl8367_reg_opt(SwitchRegRecord* record, int) { return operate<SwitchRegRecord>(record, use_register); }
int rtl8367_phy_opt(SwitchPhyRecord* record) { return operate(record, use_phy); }
int rtl8367_vlan_opt(SwitchVlanRecord* record) { return operate(record, use_vlan); }
int rtl8367_pvid_opt(SwitchPvidRecord* record) { return operate(record, use_pvid); }
int rtl8367_efid_opt(SwitchEfidRecord* record) { return operate(record, use_efid); }
int rtl8367_port_opt(PortStatusRecord* record, int) { return operate(record, use_port); }
int rtl8367_mirror_opt(SwitchMirrorRecord* record) { return operate(record, use_mirror); }
int rtl8367_mib_opt(SwitchMibRecord* record) { return operate(record, use_mib); }
int rtl8367_acl_opt(AclMacRecord* record) { return operate(record, use_acl); }
int rtl8367_acl_port_opt(SwitchAclPortRecord* record) { return operate(record, use_acl_port); }
int rtl8367_acl_etype_opt(SwitchAclEtypeRecord* record) { return operate(record, use_acl_etype); }
int rtl8367_rate_ctl_opt(SwitchRateRecord* record) { return operate(record, use_rate); }
int rtl8367_delay_opt(SwitchDelayRecord* record) { return operate(record, use_delay); }
int rtl8367_switch_id_opt(SwitchIdRecord* record) { return operate(record, use_id); }

int turn_on_phy(int on, int chip_type) {
  constexpr int kBoth = 3;
  return transact(kWrites, [=](Store& store) {
    refuse_unless(on == 0 || on == 1, kBadSwitch);
    refuse_unless(chip_type >= 1 && chip_type <= kBoth, kBadType);
    const uint32_t is_off = on == 0 ? 1 : 0;
    if (chip_type != 2) set_setting(store, kModuleSwitchChip, kOwnPhysAreOff, is_off);
    if (chip_type != 1) set_setting(store, kModuleSwitchChip, kChipPhysAreOff, is_off);
    return 0;
  });
}

#pragma GCC visibility pop
