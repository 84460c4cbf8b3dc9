// Payloads of ARP binding (module 3).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

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
  Ip4 ip;
  Ip4 check_ip;
  uint32_t deal_level;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("tm", r.tm), field("ip", r.ip), field("check_ip", r.check_ip),
        field("deal_level", r.deal_level);
  }
};
static_assert(sizeof(ArpSettings) == 32 && offsetof(ArpSettings, tm) == 16);
static_assert(is_described<ArpSettings>());

struct ArpBinding {
  Ip4 ip;
  Mac mac;
  uint16_t type;  // 1 to 4
  char dev[16];
  char name[32];

  static constexpr void each_field(auto& r, auto&& field) {
    field("ip", r.ip), field("mac", r.mac), field("type", r.type), field("dev", r.dev), field("name", r.name);
  }
};
static_assert(sizeof(ArpBinding) == 60 && offsetof(ArpBinding, dev) == 12 &&
              offsetof(ArpBinding, name) == 28);
static_assert(is_described<ArpBinding>());

struct ArpListFilter {
  Unused<36> unused;
  char dev[16];

  static constexpr void each_field(auto& r, auto&& field) { field("", r.unused), field("dev", r.dev); }
};
static_assert(offsetof(ArpListFilter, dev) == 36);
static_assert(is_described<ArpListFilter>());

struct ArpListEntry {
  Ip4 ip;
  Ip4 check_ip;
  Ip4 org_ip;
  Mac mac;
  Unused<6> unused;
  uint32_t type;
  char dev[16];
  Bits<uint32_t, 20> state;
  Unused<36> unused2;
  int32_t count;
  Unused<8> unused3;
  uint64_t del_time;

  static constexpr void each_field(auto& r, auto&& field) {
    field("ip", r.ip), field("check_ip", r.check_ip), field("org_ip", r.org_ip), field("mac", r.mac),
        field("", r.unused), field("type", r.type), field("dev", r.dev), field("state", r.state),
        field("", r.unused2), field("count", r.count), field("", r.unused3), field("del_time", r.del_time);
  }
};
static_assert(sizeof(ArpListEntry) == 104 && offsetof(ArpListEntry, type) == 24 &&
              offsetof(ArpListEntry, state) == 44 && offsetof(ArpListEntry, count) == 84 &&
              offsetof(ArpListEntry, del_time) == 96);
static_assert(is_described<ArpListEntry>());

struct ArpSwitch {
  uint32_t enable;

  static constexpr void each_field(auto& r, auto&& field) { field("enable", r.enable); }
};
static_assert(is_described<ArpSwitch>());

struct ArpDatabaseKey {
  Ip4 ip;
  char dev[16];

  static constexpr void each_field(auto& r, auto&& field) { field("ip", r.ip), field("dev", r.dev); }
};
static_assert(sizeof(ArpDatabaseKey) == 20);
static_assert(is_described<ArpDatabaseKey>());

struct ArpMacKey {
  Mac mac;
  Unused<2> unused;
  char dev[16];

  static constexpr void each_field(auto& r, auto&& field) {
    field("mac", r.mac), field("", r.unused), field("dev", r.dev);
  }
};
static_assert(sizeof(ArpMacKey) == 24 && offsetof(ArpMacKey, dev) == 8);
static_assert(is_described<ArpMacKey>());

struct ArpSearch {
  char dev[16];
  Ip4 first_ip;
  Ip4 last_ip;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("first_ip", r.first_ip), field("last_ip", r.last_ip);
  }
};
static_assert(sizeof(ArpSearch) == 24 && offsetof(ArpSearch, first_ip) == 16);
static_assert(is_described<ArpSearch>());
