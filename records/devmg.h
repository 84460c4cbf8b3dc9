// Payloads of the interface registry (module 2).
#pragma once

#include <cstddef>
#include <cstdint>

enum DevCommand : uint32_t {
  kDevAdd = 1,
  kDevDel = 2,
  kDevGet = 3,
  kDevSet = 4,
  kDevList = 5,
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
  uint8_t reserved[4];
  uint8_t arp;      // ARP binding state
  uint8_t jb_en;    // defence switch
  uint8_t wk_mode;  // 0 gateway, 1 router, 2 VPN
  uint8_t isp;      // line operator number
  uint8_t dev_id;   // the kernel's interface number
  uint8_t reserved2;
};
static_assert(sizeof(DevEntry) == 36 && offsetof(DevEntry, type) == 24 && offsetof(DevEntry, arp) == 30);

struct DevName {
  char dev[16];
};
static_assert(sizeof(DevName) == 16);

struct DevStat {
  char dev[16];
  uint64_t rx_broadcast;
  uint64_t rx_multicast;
  uint64_t rx_unicast;
  uint64_t tx_broadcast;
  uint64_t tx_multicast;
  uint64_t tx_unicast;
};
static_assert(sizeof(DevStat) == 64 && offsetof(DevStat, rx_broadcast) == 16);
