// Payloads of IGMP (module 10, beside multi-line selection).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"
#include "records/list.h"

enum IgmpCommand : uint32_t { kIgmpShow = 17, kIgmpDebug = 19, kIgmpMode = 20 };

// The answer is a text in place of what follows the line's number.
struct IgmpShow {
  uint16_t wanid;

  static constexpr void each_field(auto& r, auto&& field) { field("wanid", r.wanid); }
};
static_assert(is_described<IgmpShow>());

constexpr uint32_t kIgmpRangeBytes = 10200;  // what an answer has room for

// Its ranges follow.
struct IgmpMode {
  uint32_t is_set;  // 1 to set, 0 to get
  uint32_t mode;
  uint32_t range_count;
  uint32_t range_bytes;  // to get: how many may be answered

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("mode", r.mode), field("range_count", r.range_count),
        field("range_bytes", r.range_bytes);
  }
  static constexpr void each_list(auto& r, auto&& list) { list("ranges", ListOf<V4Range>{r.range_count}); }
};
static_assert(sizeof(IgmpMode) == 16);
static_assert(is_described<IgmpMode>());

struct IgmpDebug {
  uint32_t en;

  static constexpr void each_field(auto& r, auto&& field) { field("en", r.en); }
};
static_assert(is_described<IgmpDebug>());
