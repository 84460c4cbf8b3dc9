// Payloads of the limits on connections (module 11, beside the rule tables).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"
#include "records/list.h"

enum LimitCommand : uint32_t {
  kLimitRuleSet = 1,
  kLimitRuleList = 2,
  kLimitDefaultsSet = 3,
  kLimitDefaultsGet = 4,
};

enum LimitType : uint8_t { kLimitCount = 1, kLimitRate = 2 };  // "ct", "ddos"
enum LimitAction : uint8_t { kLimitAdd = 1, kLimitDel = 2 };

// Rules are for all protocols, for one, or for one and each of its pairs of address and port.
enum ProtocolClass : uint8_t {
  kClassAll,
  kClassTcp,
  kClassUdp,
  kClassIcmp,  // this and the next: only defaults
  kClassOther,
  kClassTcpIpPort,
  kClassUdpIpPort,
  kClassCount,
};
constexpr bool is_rule_class(uint8_t prot) {
  return prot < kClassCount && prot != kClassIcmp && prot != kClassOther;
}

// The list of the hosts that the rule is for follows.
struct LimitRule {
  char name[64];
  uint8_t type;    // LimitType
  uint8_t action;  // LimitAction
  Unused<1> unused;
  uint8_t prot;  // ProtocolClass
  uint8_t kind;  // of the hosts
  Unused<3> unused2;
  uint32_t max;
  uint32_t tm;  // in which a rate has its max
  uint16_t list_count;
  uint16_t v6_count;  // these limits know IPv4 alone
  uint32_t list_bytes;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("type", r.type), field("action", r.action), field("", r.unused),
        field("prot", r.prot), field("kind", r.kind), field("", r.unused2), field("max", r.max),
        field("tm", r.tm), field("list_count", r.list_count), field("v6_count", r.v6_count),
        field("list_bytes", r.list_bytes);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    each_host_list(r.kind, r.list_count, r.v6_count, list);
  }
};
static_assert(sizeof(LimitRule) == 88 && offsetof(LimitRule, prot) == 67 && offsetof(LimitRule, max) == 72 &&
              offsetof(LimitRule, list_count) == 80 && offsetof(LimitRule, list_bytes) == 84);
static_assert(is_described<LimitRule>());

// The type stands where the first rule of the answer has its own.
struct LimitListRequest {
  Unused<72> unused;
  uint8_t type;

  static constexpr void each_field(auto& r, auto&& field) { field("", r.unused), field("type", r.type); }
};
static_assert(offsetof(LimitListRequest, type) == 72);
static_assert(is_described<LimitListRequest>());

// What holds for the hosts that no rule is for, by protocol class; 0 is no limit.
struct LimitDefaults {
  uint32_t ct_max[kClassCount];
  uint32_t ddos_time[kClassCount];
  uint32_t ddos_max[kClassCount];

  static constexpr void each_field(auto& r, auto&& field) {
    field("ct_max", r.ct_max), field("ddos_time", r.ddos_time), field("ddos_max", r.ddos_max);
  }
};
static_assert(sizeof(LimitDefaults) == 84 && offsetof(LimitDefaults, ddos_time) == 28 &&
              offsetof(LimitDefaults, ddos_max) == 56);
static_assert(is_described<LimitDefaults>());
