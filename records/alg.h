// Payload of the application-level gateways (module 11, beside its rules).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

constexpr uint32_t kRuleAlg = 34;  // a command of the module

struct AlgSettings {
  uint32_t is_set;       // 1 to set, 0 to get
  uint8_t gateways[10];  // ftp, tftp, rtsp, pptp, l2tp, ipsec, sip, h323, snmp, irc
  Unused<2> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("gateways", r.gateways), field("", r.unused);
  }
};
static_assert(sizeof(AlgSettings) == 16 && offsetof(AlgSettings, gateways) == 4);
static_assert(is_described<AlgSettings>());
