// Payloads of the rule tables (module 11). Behind the fixed part of each rule follow its lists, in the order
// in which their counts stand in it.
#pragma once

#include <cstddef>
#include <cstdint>

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
  uint8_t unused[32];
  uint16_t prio;
  uint8_t unused2;
  uint8_t act;  // 1 drops, 0 accepts
  uint8_t log;
  uint8_t unused3[2];
  uint8_t thd_type;
  uint8_t type;  // of the hosts
  uint8_t unused4[3];
  uint8_t mac[6];
  uint8_t unused5[6];
  uint16_t thd_count;      // type-id pairs
  uint16_t address_count;  // IPv4 ranges or user groups
  uint16_t v6_count;
  uint16_t ipport_bytes;  // 0: no destination block
  uint32_t list_bytes;    // of all lists
};
static_assert(sizeof(AccRule) == 132 && offsetof(AccRule, prio) == 96 && offsetof(AccRule, act) == 99 &&
              offsetof(AccRule, thd_type) == 103 && offsetof(AccRule, mac) == 108 &&
              offsetof(AccRule, thd_count) == 120 && offsetof(AccRule, list_bytes) == 128);

struct AccDefault {
  uint32_t action;  // 0 off, 1 accept, 2 drop
};
constexpr uint32_t kMaxAccDefault = 2;

struct WhitelistEntry {
  char name[64];
  uint8_t type;
  uint8_t unused[3];
  uint16_t address_count;
  uint16_t v6_count;
  uint16_t ipport_bytes;
  uint8_t unused2[2];
  uint32_t list_bytes;
};
static_assert(sizeof(WhitelistEntry) == 80 && offsetof(WhitelistEntry, type) == 64 &&
              offsetof(WhitelistEntry, address_count) == 68 && offsetof(WhitelistEntry, list_bytes) == 76);

struct MrouteRule {
  char name[64];
  uint8_t unused[32];
  uint16_t prio;
  uint8_t unused2;
  uint8_t log;
  uint8_t unused3[3];
  uint8_t thd_type;
  uint8_t no_change;
  uint8_t rule_type;     // the kernel's
  uint8_t delall_which;  // only in the request that deletes all
  uint8_t unused4;
  uint16_t wans[256];  // 0 to 120 counted from one, larger numbers as they are: 0 ends the list
  uint16_t thd_count;
  uint16_t address_count;
  uint16_t v6_count;
  uint16_t shibie_count;
  uint16_t ipport_bytes;
  uint8_t type;
  uint8_t unused5;
  uint32_t list_bytes;
};
static_assert(sizeof(MrouteRule) == 636 && offsetof(MrouteRule, prio) == 96 &&
              offsetof(MrouteRule, thd_type) == 103 && offsetof(MrouteRule, wans) == 108 &&
              offsetof(MrouteRule, thd_count) == 620 && offsetof(MrouteRule, type) == 630 &&
              offsetof(MrouteRule, list_bytes) == 632);

struct FilterRule {
  char name[32];
  uint16_t prio;
  uint8_t hi_type;
  uint8_t log;
  uint8_t act;
  uint8_t gid;
  uint16_t id_count;  // type-id pairs
};
static_assert(sizeof(FilterRule) == 40 && offsetof(FilterRule, prio) == 32 &&
              offsetof(FilterRule, gid) == 37);

// The list asks for a group in another byte than the rules have theirs.
struct FilterListRequest {
  uint8_t unused[45];
  uint8_t gid;
};
static_assert(offsetof(FilterListRequest, gid) == 45);

struct RuleName {
  char name[64];
};

struct RuleHitEntry {
  char name[64];
  uint64_t hits;
};
static_assert(sizeof(RuleHitEntry) == 72 && offsetof(RuleHitEntry, hits) == 64);
