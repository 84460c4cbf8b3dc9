// Payloads of the general services' switches (module 1).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum SwitchCommand : uint32_t { kSourceRoute = 55, kPacketDelay = 62 };

struct SwitchValue {
  uint32_t is_set;  // 1 to set, 0 to get
  uint32_t value;

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("value", r.value);
  }
};
static_assert(sizeof(SwitchValue) == 8);
static_assert(is_described<SwitchValue>());
