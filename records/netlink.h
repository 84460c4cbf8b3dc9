// Payloads of the registration of processes that listen for the kernel's notices (module 74).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum NetlinkCommand : uint32_t { kNetlinkRegister = 1, kNetlinkList = 2 };

struct NetlinkListener {
  uint32_t pid;
  uint32_t is_registered;  // 1 to register, 0 to unregister

  static constexpr void each_field(auto& r, auto&& field) {
    field("pid", r.pid), field("is_registered", r.is_registered);
  }
};
static_assert(sizeof(NetlinkListener) == 8);
static_assert(is_described<NetlinkListener>());

struct NetlinkSlots {
  uint32_t listeners[16];  // process ids, 0 for none

  static constexpr void each_field(auto& r, auto&& field) { field("listeners", r.listeners); }
};
static_assert(sizeof(NetlinkSlots) == 64);
static_assert(is_described<NetlinkSlots>());
