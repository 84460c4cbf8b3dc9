// Payloads of the interface registry (module 2).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum DevCommand : uint32_t {
  kDevAdd = 1,
  kDevDel = 2,
  kDevGet = 3,
  kDevSet = 4,
  kDevList = 5,
  kDevPppoe = 6,
  kDevLan = 7,
  kDevWan = 8,
  kDevRead = 9,
  kDevWanDone = 10,
  kDevStat = 11,
};

struct DevEntry {
  char dev[16];
  uint32_t flags;
  uint32_t dev_flags;  // the kernel's own interface flags
  uint16_t type;       // 250 LAN, 0 none
  Unused<4> reserved;
  uint8_t arp;      // ARP binding state
  uint8_t jb_en;    // defence switch
  uint8_t wk_mode;  // 0 gateway, 1 router, 2 VPN
  uint8_t isp;      // line operator number
  uint8_t dev_id;   // the kernel's interface number
  Unused<1> reserved2;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("flags", r.flags), field("dev_flags", r.dev_flags), field("type", r.type),
        field("", r.reserved), field("arp", r.arp), field("jb_en", r.jb_en), field("wk_mode", r.wk_mode),
        field("isp", r.isp), field("dev_id", r.dev_id), field("", r.reserved2);
  }
};
static_assert(sizeof(DevEntry) == 36 && offsetof(DevEntry, type) == 24 && offsetof(DevEntry, arp) == 30);
static_assert(is_described<DevEntry>());

struct DevName {
  char dev[16];

  static constexpr void each_field(auto& r, auto&& field) { field("dev", r.dev); }
};
static_assert(sizeof(DevName) == 16);
static_assert(is_described<DevName>());

struct DevStat {
  char dev[16];
  uint64_t rx_broadcast;
  uint64_t rx_multicast;
  uint64_t rx_unicast;
  uint64_t tx_broadcast;
  uint64_t tx_multicast;
  uint64_t tx_unicast;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("rx_broadcast", r.rx_broadcast), field("rx_multicast", r.rx_multicast),
        field("rx_unicast", r.rx_unicast), field("tx_broadcast", r.tx_broadcast),
        field("tx_multicast", r.tx_multicast), field("tx_unicast", r.tx_unicast);
  }
};
static_assert(sizeof(DevStat) == 64 && offsetof(DevStat, rx_broadcast) == 16);
static_assert(is_described<DevStat>());

// Whether an interface takes PPPoE clients.
struct DevPppoe {
  enum Mode : uint32_t { kSet = 1, kGet = 2 };

  uint32_t mode;  // Mode
  char dev[16];
  uint32_t en;
  uint32_t only;  // takes no other hosts

  static constexpr void each_field(auto& r, auto&& field) {
    field("mode", r.mode), field("dev", r.dev), field("en", r.en), field("only", r.only);
  }
};
static_assert(sizeof(DevPppoe) == 28 && offsetof(DevPppoe, en) == 20);
static_assert(is_described<DevPppoe>());
