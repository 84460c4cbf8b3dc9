// Payloads of ARP binding (module 3). Single IPv4 addresses are in network byte order.
#pragma once

#include <cstddef>
#include <cstdint>

enum ArpCommand : uint32_t {
  kArpSet = 1,
  kArpGet = 2,
  kArpAdd = 3,
  kArpAddAll = 4,
  kArpDel = 5,
  kArpDelAll = 6,
  kArpList = 8,
  kArpDebug = 12,
  kArpDisonlineSet = 13,
  kArpDisonlineGet = 14,
  kArpDatabaseDel = 15,
  kArpSearch = 16,
  kArpDelMac = 17,
};

struct ArpSettings {
  char dev[16];
  uint32_t tm;
  uint32_t ip;
  uint32_t check_ip;
  uint32_t deal_level;
};
static_assert(sizeof(ArpSettings) == 32 && offsetof(ArpSettings, tm) == 16);

struct ArpBinding {
  uint32_t ip;
  uint8_t mac[6];
  uint16_t type;  // 1 to 4
  char dev[16];
  char name[32];
};
static_assert(sizeof(ArpBinding) == 60 && offsetof(ArpBinding, dev) == 12 &&
              offsetof(ArpBinding, name) == 28);

struct ArpListFilter {
  uint8_t unused[36];
  char dev[16];
};
static_assert(offsetof(ArpListFilter, dev) == 36);

struct ArpListEntry {
  uint32_t ip;
  uint32_t check_ip;
  uint32_t org_ip;
  uint8_t mac[6];
  uint8_t unused[6];
  uint32_t type;
  char dev[16];
  uint32_t state;  // bits 0 to 19
  uint8_t unused2[36];
  int32_t count;
  uint8_t unused3[8];
  uint64_t del_time;
};
static_assert(sizeof(ArpListEntry) == 104 && offsetof(ArpListEntry, type) == 24 &&
              offsetof(ArpListEntry, state) == 44 && offsetof(ArpListEntry, count) == 84 &&
              offsetof(ArpListEntry, del_time) == 96);

struct ArpSwitch {
  uint32_t enable;
};

struct ArpDatabaseKey {
  uint32_t ip;
  char dev[16];
};
static_assert(sizeof(ArpDatabaseKey) == 20);

struct ArpMacKey {
  uint8_t mac[6];
  uint8_t unused[2];
  char dev[16];
};
static_assert(sizeof(ArpMacKey) == 24 && offsetof(ArpMacKey, dev) == 8);

struct ArpSearch {
  char dev[16];
  uint32_t first_ip;
  uint32_t last_ip;
};
static_assert(sizeof(ArpSearch) == 24 && offsetof(ArpSearch, first_ip) == 16);
