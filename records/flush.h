// Payload of the flush target (module 7).
#pragma once

#include <cstdint>

#include "records/field.h"

enum FlushCommand : uint32_t { kFlush = 12 };

struct FlushRequest {
  uint32_t number;

  static constexpr void each_field(auto& r, auto&& field) { field("number", r.number); }
};
static_assert(is_described<FlushRequest>());
