// Payloads of the attack defence: its switch (module 12), and its limits and profiles (module 56).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"
#include "records/list.h"

enum DdosFyCommand : uint32_t { kDdosFySet = 1, kDdosFyMacSet = 3, kDdosFyMacGet = 4 };

enum DdosCommand : uint32_t {
  kDdosMacSet = 1,
  kDdosMacGet = 2,
  kDdosWanAttack = 3,
  kProtectSet = 4,
  kProtectDevGet = 5,
  kProtectDel = 6,
  kProtectDelAll = 7,
  kProtectList = 8,
  kLanProtectSet = 10,
  kLanProtectGet = 11,
  kProtectClear = 12,
};

struct DdosFySettings {
  uint32_t fy_en;
  uint32_t fy_type;
  uint32_t fy_rule;
  uint32_t more[3];
  Mac mac;
  Unused<2> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("fy_en", r.fy_en), field("fy_type", r.fy_type), field("fy_rule", r.fy_rule), field("more", r.more),
        field("mac", r.mac), field("", r.unused);
  }
};
static_assert(sizeof(DdosFySettings) == 32 && offsetof(DdosFySettings, mac) == 24);
static_assert(is_described<DdosFySettings>());

// Hosts that the defence lets be.
struct ExemptMac {
  Mac mac;
  Unused<2> unused;

  static constexpr void each_field(auto& r, auto&& field) { field("mac", r.mac), field("", r.unused); }
};
static_assert(sizeof(ExemptMac) == 8);
static_assert(is_described<ExemptMac>());

struct ExemptMacList {
  uint16_t count;
  Unused<2> unused;

  static constexpr void each_field(auto& r, auto&& field) { field("count", r.count), field("", r.unused); }
  static constexpr void each_list(auto& r, auto&& list) { list("macs", ListOf<ExemptMac>{r.count}); }
};
static_assert(sizeof(ExemptMacList) == 4);
static_assert(is_described<ExemptMacList>());

struct WanAttack {
  uint32_t is_set;  // 1 to set, 0 to get
  uint32_t en;
  uint32_t limit;

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("en", r.en), field("limit", r.limit);
  }
};
static_assert(sizeof(WanAttack) == 12);
static_assert(is_described<WanAttack>());

constexpr int kAttackChecks = 18;

enum RateCheck : uint8_t {
  kRateArp,
  kRateIpScan,
  kRatePortScan,
  kRateIcmp,
  kRateUdp,
  kRateSynDst,
  kRateSynSrc,
  kRateDns,
  kRateChecks,
};

struct RateLimit {
  uint32_t max;   // 0: the check is off
  uint32_t time;  // 0: the module's own

  static constexpr void each_field(auto& r, auto&& field) { field("max", r.max), field("time", r.time); }
};
static_assert(is_described<RateLimit>());

// The protection of a device, which has one profile at the most. Its lists follow: groups of destinations,
// and areas of sources, which no word sets.
struct ProtectProfile {
  char name[64];
  char dev[16];
  uint16_t d_ip_count;
  uint16_t s_area_count;
  uint8_t log;
  uint8_t block;
  uint8_t enable[kAttackChecks];
  RateLimit rate[kRateChecks];  // by RateCheck
  uint64_t hits;                // only in the answer

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("dev", r.dev), field("d_ip_count", r.d_ip_count),
        field("s_area_count", r.s_area_count), field("log", r.log), field("block", r.block),
        field("enable", r.enable), field("rate", r.rate), field("hits", r.hits);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("d_ips", ListOf<NumberRange>{r.d_ip_count}), list("s_areas", ListOf<NumberRange>{r.s_area_count});
  }
};
static_assert(sizeof(ProtectProfile) == 176 && offsetof(ProtectProfile, d_ip_count) == 80 &&
              offsetof(ProtectProfile, log) == 84 && offsetof(ProtectProfile, enable) == 86 &&
              offsetof(ProtectProfile, rate) == 104 && offsetof(ProtectProfile, hits) == 168);
static_assert(is_described<ProtectProfile>());

// A profile is set by halves; the other one stays as it was.
enum ProtectHalf : uint32_t {
  kProtectRates = 1,   // log, block, rates and lists
  kProtectChecks = 2,  // the attack checks that are enabled
};

struct ProtectSetting {
  uint32_t half;  // ProtectHalf
  Unused<4> unused;
  ProtectProfile profile;

  static constexpr void each_field(auto& r, auto&& field) {
    field("half", r.half), field("", r.unused), field("profile", r.profile);
  }
  static constexpr void each_list(auto& r, auto&& list) { ProtectProfile::each_list(r.profile, list); }
};
static_assert(sizeof(ProtectSetting) == 184 && offsetof(ProtectSetting, profile) == 8);
static_assert(is_described<ProtectSetting>());

// Its lists follow: areas of sources, their addresses, and addresses that are let be.
struct LanProtect {
  uint32_t en;
  uint32_t type;
  uint32_t max_tcp_conns;
  uint32_t max_pkt_count;
  uint32_t defen_time;
  uint32_t log;
  uint32_t little_len;
  uint16_t src_area_count;
  uint16_t src_v4_count;
  uint16_t src_v6_count;
  uint16_t exclude_v4_count;
  uint16_t exclude_v6_count;
  Unused<2> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("en", r.en), field("type", r.type), field("max_tcp_conns", r.max_tcp_conns),
        field("max_pkt_count", r.max_pkt_count), field("defen_time", r.defen_time), field("log", r.log),
        field("little_len", r.little_len), field("src_area_count", r.src_area_count),
        field("src_v4_count", r.src_v4_count), field("src_v6_count", r.src_v6_count),
        field("exclude_v4_count", r.exclude_v4_count), field("exclude_v6_count", r.exclude_v6_count),
        field("", r.unused);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("src_areas", ListOf<NumberRange>{r.src_area_count}), list("src_v4", ListOf<V4Range>{r.src_v4_count}),
        list("src_v6", ListOf<V6Range>{r.src_v6_count}),
        list("exclude_v4", ListOf<V4Range>{r.exclude_v4_count}),
        list("exclude_v6", ListOf<V6Range>{r.exclude_v6_count});
  }
};
static_assert(sizeof(LanProtect) == 40 && offsetof(LanProtect, src_area_count) == 28);
static_assert(is_described<LanProtect>());
