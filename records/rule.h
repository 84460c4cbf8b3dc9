// Payloads of the rule tables (module 11). Behind the fixed part of each rule follow its lists, in the order
// in which their counts stand in it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"
#include "records/list.h"

enum RuleCommand : uint32_t {
  kAccDefaultSet = 7,
  kAccDefaultGet = 8,
  kAccAdd = 9,
  kAccDel = 10,
  kAccDelAll = 11,
  kAccList = 12,
  kMrouteAdd = 13,
  kMrouteDel = 14,
  kMrouteDelAll = 15,
  kMrouteList = 16,
  kFilterAdd = 20,
  kFilterDel = 21,
  kFilterList = 22,
  kWhitelistAdd = 39,
  kWhitelistDel = 40,
  kWhitelistDelAll = 41,
  kWhitelistList = 42,
  kMrouteHit = 51,
  kMrouteHitDel = 52,
};

constexpr uint8_t kRuleMac = 4;  // the type of an access rule for one MAC address; no list of hosts then

struct AccRule {
  char name[64];
  Unused<32> unused;
  uint16_t prio;
  Unused<1> unused2;
  uint8_t act;  // 1 drops, 0 accepts
  uint8_t log;
  Unused<2> unused3;
  uint8_t thd_type;
  uint8_t type;  // of the hosts
  Unused<3> unused4;
  Mac mac;
  Unused<6> unused5;
  uint16_t thd_count;      // type-id pairs
  uint16_t address_count;  // IPv4 ranges or user groups
  uint16_t v6_count;
  uint16_t ipport_bytes;  // 0: no destination block
  uint32_t list_bytes;    // of all lists

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("", r.unused), field("prio", r.prio), field("", r.unused2),
        field("act", r.act), field("log", r.log), field("", r.unused3), field("thd_type", r.thd_type),
        field("type", r.type), field("", r.unused4), field("mac", r.mac), field("", r.unused5),
        field("thd_count", r.thd_count), field("address_count", r.address_count),
        field("v6_count", r.v6_count), field("ipport_bytes", r.ipport_bytes),
        field("list_bytes", r.list_bytes);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("thd", ListOf<NumberRange>{r.thd_count});
    if (r.type != kRuleMac) each_host_list(r.type, r.address_count, r.v6_count, list);
    list("destination", ListOf<IpPortBlock>{r.ipport_bytes != 0});
  }
};
static_assert(sizeof(AccRule) == 132 && offsetof(AccRule, prio) == 96 && offsetof(AccRule, act) == 99 &&
              offsetof(AccRule, thd_type) == 103 && offsetof(AccRule, mac) == 108 &&
              offsetof(AccRule, thd_count) == 120 && offsetof(AccRule, list_bytes) == 128);
static_assert(is_described<AccRule>());

struct AccDefault {
  uint32_t action;  // 0 off, 1 accept, 2 drop

  static constexpr void each_field(auto& r, auto&& field) { field("action", r.action); }
};
static_assert(is_described<AccDefault>());
constexpr uint32_t kMaxAccDefault = 2;

struct WhitelistEntry {
  char name[64];
  uint8_t type;
  Unused<3> unused;
  uint16_t address_count;
  uint16_t v6_count;
  uint16_t ipport_bytes;
  Unused<2> unused2;
  uint32_t list_bytes;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("type", r.type), field("", r.unused),
        field("address_count", r.address_count), field("v6_count", r.v6_count),
        field("ipport_bytes", r.ipport_bytes), field("", r.unused2), field("list_bytes", r.list_bytes);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    each_host_list(r.type, r.address_count, r.v6_count, list);
    list("destination", ListOf<IpPortBlock>{r.ipport_bytes != 0});
  }
};
static_assert(sizeof(WhitelistEntry) == 80 && offsetof(WhitelistEntry, type) == 64 &&
              offsetof(WhitelistEntry, address_count) == 68 && offsetof(WhitelistEntry, list_bytes) == 76);
static_assert(is_described<WhitelistEntry>());

struct MrouteRule {
  char name[64];
  Unused<32> unused;
  uint16_t prio;
  Unused<1> unused2;
  uint8_t log;
  Unused<3> unused3;
  uint8_t thd_type;
  uint8_t no_change;
  uint8_t rule_type;     // the kernel's
  uint8_t delall_which;  // only in the request that deletes all
  Unused<1> unused4;
  uint16_t wans[256];  // 0 to 120 counted from one, larger numbers as they are: 0 ends the list
  uint16_t thd_count;
  uint16_t address_count;
  uint16_t v6_count;
  uint16_t shibie_count;
  uint16_t ipport_bytes;
  uint8_t type;
  Unused<1> unused5;
  uint32_t list_bytes;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("", r.unused), field("prio", r.prio), field("", r.unused2),
        field("log", r.log), field("", r.unused3), field("thd_type", r.thd_type),
        field("no_change", r.no_change), field("rule_type", r.rule_type),
        field("delall_which", r.delall_which), field("", r.unused4), field("wans", r.wans),
        field("thd_count", r.thd_count), field("address_count", r.address_count),
        field("v6_count", r.v6_count), field("shibie_count", r.shibie_count),
        field("ipport_bytes", r.ipport_bytes), field("type", r.type), field("", r.unused5),
        field("list_bytes", r.list_bytes);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("thd", ListOf<NumberRange>{r.thd_count});
    each_host_list(r.type, r.address_count, r.v6_count, list);
    list("shibie", ListOf<IdRange>{r.shibie_count});
    list("destination", ListOf<IpPortBlock>{r.ipport_bytes != 0});
  }
};
static_assert(sizeof(MrouteRule) == 636 && offsetof(MrouteRule, prio) == 96 &&
              offsetof(MrouteRule, thd_type) == 103 && offsetof(MrouteRule, wans) == 108 &&
              offsetof(MrouteRule, thd_count) == 620 && offsetof(MrouteRule, type) == 630 &&
              offsetof(MrouteRule, list_bytes) == 632);
static_assert(is_described<MrouteRule>());

struct FilterRule {
  char name[32];
  uint16_t prio;
  uint8_t hi_type;
  uint8_t log;
  uint8_t act;
  uint8_t gid;
  uint16_t id_count;  // type-id pairs

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("prio", r.prio), field("hi_type", r.hi_type), field("log", r.log),
        field("act", r.act), field("gid", r.gid), field("id_count", r.id_count);
  }
  static constexpr void each_list(auto& r, auto&& list) { list("ids", ListOf<NumberRange>{r.id_count}); }
};
static_assert(sizeof(FilterRule) == 40 && offsetof(FilterRule, prio) == 32 &&
              offsetof(FilterRule, gid) == 37);
static_assert(is_described<FilterRule>());

// The list asks for a group in another byte than the rules have theirs.
struct FilterListRequest {
  Unused<45> unused;
  uint8_t gid;

  static constexpr void each_field(auto& r, auto&& field) { field("", r.unused), field("gid", r.gid); }
};
static_assert(offsetof(FilterListRequest, gid) == 45);
static_assert(is_described<FilterListRequest>());

struct RuleName {
  char name[64];

  static constexpr void each_field(auto& r, auto&& field) { field("name", r.name); }
};
static_assert(is_described<RuleName>());

struct RuleHitEntry {
  char name[64];
  uint64_t hits;

  static constexpr void each_field(auto& r, auto&& field) { field("name", r.name), field("hits", r.hits); }
};
static_assert(sizeof(RuleHitEntry) == 72 && offsetof(RuleHitEntry, hits) == 64);
static_assert(is_described<RuleHitEntry>());
