// The switch chip, for its functions and for the lab. Its user ports come first, then those of the CPU.
#pragma once

#include <cstdint>
#include <optional>

#include "modules/checks.h"
#include "state/store.h"

constexpr uint32_t kUserPorts = 8;
constexpr uint32_t kSwitchPorts = kUserPorts + 2;
constexpr uint32_t kPortMask = (1 << kSwitchPorts) - 1;
constexpr uint32_t kNoRateLimit = 0xffff8;
constexpr uint32_t kSwitchSpeeds[] = {10, 100, 1000, 0, 2500};  // Mbit/s by their codes; 0 for none

// Settings of module 32.
constexpr const char* kSwitchId = "switch id";
constexpr const char* kMirrorPort = "mirror port";
constexpr const char* kMirrorTxMask = "mirror tx mask";
constexpr const char* kMirrorRxMask = "mirror rx mask";
constexpr const char* kMirrorIsolation = "mirror isolation";
constexpr const char* kOwnPhysAreOff = "the processor's PHYs are off";
constexpr const char* kChipPhysAreOff = "the chip's PHYs are off";

struct SwitchCounters {
  uint64_t in_octets;
  uint64_t in_frames;
  uint64_t in_errors;
  uint64_t in_dropped;
  uint64_t out_octets;
  uint64_t out_frames;
  uint64_t out_errors;
  uint64_t out_dropped;

  static constexpr void each_field(auto& r, auto&& field) {
    field("in_octets", r.in_octets), field("in_frames", r.in_frames), field("in_errors", r.in_errors),
        field("in_dropped", r.in_dropped), field("out_octets", r.out_octets),
        field("out_frames", r.out_frames), field("out_errors", r.out_errors),
        field("out_dropped", r.out_dropped);
  }
};

// What only a cable would tell of a port, or the interface of Linux that it stands for.
struct SwitchPortFacts {
  uint32_t port;
  char dev[16];
  uint8_t link;
  uint8_t speed;
  uint8_t duplex;
  SwitchCounters counters;

  static constexpr void each_field(auto& r, auto&& field) {
    field("port", r.port), field("dev", r.dev), field("link", r.link), field("speed", r.speed),
        field("duplex", r.duplex), field("", r.counters);
  }
};

// How a port's link is set.
struct SwitchPortSettings {
  uint8_t link;
  uint8_t autoneg;
  uint8_t speed;
  uint8_t duplex;

  static constexpr void each_field(auto& r, auto&& field) {
    field("link", r.link), field("autoneg", r.autoneg), field("speed", r.speed), field("duplex", r.duplex);
  }
};

inline void check_port(uint32_t port) { refuse_unless(port < kSwitchPorts, kBadNumber); }
inline bool is_switch_speed(uint8_t code) {
  return code < std::size(kSwitchSpeeds) && kSwitchSpeeds[code] != 0;
}

SwitchPortSettings switch_port_settings(Store& store, uint32_t port);

// Its link as it is, whatever is set; the counters since they were last reset.
SwitchPortFacts switch_port_state(Store& store, uint32_t port);

void reset_switch_counters(Store& store, std::optional<uint32_t> port);
