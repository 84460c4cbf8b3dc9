// Payloads of the steering of wireless clients (module 1). The first word of each record is 1 to set and 0 to
// get.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum WirelessCommand : uint32_t {
  kApBalancedNum = 9,
  kApBalancedTrys = 10,
  kApRssi = 12,
  kApServer = 25,
  kApRssi5g = 54,
  kApRssi3w = 56,
  kPrio5gConf = 63,
  kPrio5gDebug = 64,
};

struct ApServerMode {
  uint32_t is_set;
  uint32_t en;
  uint32_t mode;
  uint32_t debug;

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("en", r.en), field("mode", r.mode), field("debug", r.debug);
  }
};
static_assert(sizeof(ApServerMode) == 16);
static_assert(is_described<ApServerMode>());

// Balancing has a use for the first 5, the networks' preference for the first 8.
struct ApValues {
  uint32_t is_set;
  uint32_t values[16];

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("values", r.values);
  }
};
static_assert(sizeof(ApValues) == 68);
static_assert(is_described<ApValues>());

struct ApThreshold {
  uint32_t is_set;
  int8_t rssi;  // dBm
  Unused<3> unused;
  uint32_t interval;
  uint32_t drop;
  uint32_t balance;
  uint32_t led;
  uint32_t macfilter;
  uint32_t rate;

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("rssi", r.rssi), field("", r.unused), field("interval", r.interval),
        field("drop", r.drop), field("balance", r.balance), field("led", r.led),
        field("macfilter", r.macfilter), field("rate", r.rate);
  }
};
static_assert(sizeof(ApThreshold) == 32 && offsetof(ApThreshold, interval) == 8 &&
              offsetof(ApThreshold, rate) == 28);
static_assert(is_described<ApThreshold>());

struct ApDebugMac {
  uint32_t is_set;
  Mac mac;
  Unused<2> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("mac", r.mac), field("", r.unused);
  }
};
static_assert(sizeof(ApDebugMac) == 12);
static_assert(is_described<ApDebugMac>());
