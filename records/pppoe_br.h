// Payloads of PPPoE bridging (module 41): LAN devices out over two WAN devices, with VLAN tags.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum PppoeBridgeCommand : uint32_t {
  kPppoeBridgeSet = 1,
  kPppoeBridgeGet = 2,
  kPppoeBridgeVlanIds = 13,
  kPppoeBridgeMoreAdd = 14,
  kPppoeBridgeMoreDel = 15,
  kPppoeBridgeMoreGet = 16,
  kPppoeBridgeMacs = 19,
  kPppoeBridgeMoreDelAll = 20,
};

constexpr uint32_t kMaxPppoeBridgeLan = 128;
constexpr uint32_t kMaxPppoeBridgeMore = 254;

// A VLAN range without an end is a single VLAN; without a start there is no tag.
struct PppoeBridgeOut {
  char name[16];  // "none" for no device
  uint16_t vlan_start;
  uint16_t vlan_end;
  uint16_t vlan2_start;  // of the inner tag
  uint16_t vlan2_end;
  uint32_t state;  // this and the next: only in an answer
  uint32_t times;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("vlan_start", r.vlan_start), field("vlan_end", r.vlan_end),
        field("vlan2_start", r.vlan2_start), field("vlan2_end", r.vlan2_end), field("state", r.state),
        field("times", r.times);
  }
};
static_assert(sizeof(PppoeBridgeOut) == 32 && offsetof(PppoeBridgeOut, state) == 24);
static_assert(is_described<PppoeBridgeOut>());

// A further WAN device.
struct PppoeBridgeMore {
  char name[16];
  uint16_t id;
  Unused<2> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("id", r.id), field("", r.unused);
  }
};
static_assert(sizeof(PppoeBridgeMore) == 20);
static_assert(is_described<PppoeBridgeMore>());

struct PppoeBridgeConfig {
  uint32_t en;
  uint32_t en_more;
  uint32_t time;
  uint32_t hi_jh;
  uint32_t lan_count;
  char lan[kMaxPppoeBridgeLan][16];
  Unused<32> unused;
  PppoeBridgeOut out[2];
  uint32_t more_count;

  static constexpr void each_field(auto& r, auto&& field) {
    field("en", r.en), field("en_more", r.en_more), field("time", r.time), field("hi_jh", r.hi_jh),
        field("lan_count", r.lan_count), field("lan", r.lan), field("", r.unused), field("out", r.out),
        field("more_count", r.more_count);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("more", ListOf<PppoeBridgeMore>{r.more_count});
  }
};
static_assert(sizeof(PppoeBridgeConfig) == 2168 && offsetof(PppoeBridgeConfig, lan) == 20 &&
              offsetof(PppoeBridgeConfig, out) == 2100 && offsetof(PppoeBridgeConfig, more_count) == 2164);
static_assert(is_described<PppoeBridgeConfig>());

// The VLAN that a host's frames came in with.
struct PppoeBridgeVlanId {
  Mac mac;
  uint16_t id;
  uint16_t dev;  // the interface's number
  Unused<2> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("mac", r.mac), field("id", r.id), field("dev", r.dev), field("", r.unused);
  }
};
static_assert(sizeof(PppoeBridgeVlanId) == 12);
static_assert(is_described<PppoeBridgeVlanId>());

// Which WAN MAC address stands for a host's.
struct PppoeBridgeMac {
  Mac lan_mac;
  Mac wan_mac;
  uint8_t init_wanid;
  uint8_t flag;
  uint8_t changed;
  uint8_t set_wanid;
  char in_dev[16];
  uint16_t vlanid;
  uint16_t vlanid2;
  Unused<4> unused;
  uint64_t ltm;

  static constexpr void each_field(auto& r, auto&& field) {
    field("lan_mac", r.lan_mac), field("wan_mac", r.wan_mac), field("init_wanid", r.init_wanid),
        field("flag", r.flag), field("changed", r.changed), field("set_wanid", r.set_wanid),
        field("in_dev", r.in_dev), field("vlanid", r.vlanid), field("vlanid2", r.vlanid2),
        field("", r.unused), field("ltm", r.ltm);
  }
};
static_assert(sizeof(PppoeBridgeMac) == 48 && offsetof(PppoeBridgeMac, in_dev) == 16 &&
              offsetof(PppoeBridgeMac, vlanid) == 32 && offsetof(PppoeBridgeMac, ltm) == 40);
static_assert(is_described<PppoeBridgeMac>());
