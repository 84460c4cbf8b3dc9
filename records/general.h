// Payloads of the general services (module 1).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum GeneralCommand : uint32_t { kErrorInfo = 5, kMemoryReport = 7, kOspfRouterId = 72, kWatchdog = 73 };

struct ErrorInfo {
  uint32_t number;
  uint32_t mode;  // ErrorInfoMode; in the answer kErrorInfoPresent or anything else for no information
  char text[4096];

  static constexpr void each_field(auto& r, auto&& field) {
    field("number", r.number), field("mode", r.mode), field("text", r.text);
  }
};
static_assert(sizeof(ErrorInfo) == 4104 && offsetof(ErrorInfo, text) == 8);
static_assert(is_described<ErrorInfo>());

enum ErrorInfoMode : uint32_t {
  kErrorInfoRead = 0,
  kErrorInfoPresent = 1,
  kErrorInfoStore = 2,
  kErrorInfoErase = 3
};

struct WatchdogOrder {
  uint32_t action;  // WatchdogAction

  static constexpr void each_field(auto& r, auto&& field) { field("action", r.action); }
};
static_assert(sizeof(WatchdogOrder) == 4);
static_assert(is_described<WatchdogOrder>());

enum WatchdogAction : uint32_t { kWatchdogStart = 1, kWatchdogStop = 2, kWatchdogPing = 3 };

struct OspfRouterId {
  uint32_t is_set;
  Ip4 router_id;  // 0: the daemon chooses one

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("router_id", r.router_id);
  }
};
static_assert(sizeof(OspfRouterId) == 8 && offsetof(OspfRouterId, router_id) == 4);
static_assert(is_described<OspfRouterId>());
