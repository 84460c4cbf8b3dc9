// Payloads of the MAC memory of logged-in users (module 62).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum MacUserCommand : uint32_t {
  kMacUserSet = 1,
  kMacUserGet = 2,
  kMacUserList = 3,
  kMacUserMacDel = 5,
  kMacUserIdDel = 6,
  kMacUserInit = 7,
};

struct MacUserSetting {
  uint32_t enable;
  Unused<4> unused;
  uint64_t timeout;  // seconds

  static constexpr void each_field(auto& r, auto&& field) {
    field("enable", r.enable), field("", r.unused), field("timeout", r.timeout);
  }
};
static_assert(sizeof(MacUserSetting) == 16 && offsetof(MacUserSetting, timeout) == 8);
static_assert(is_described<MacUserSetting>());

struct MacUserEntry {
  uint64_t last;  // seconds since the host was seen
  Mac mac;
  Unused<6> unused;
  uint32_t userid;
  Unused<4> unused2;
  int32_t card_type;

  static constexpr void each_field(auto& r, auto&& field) {
    field("last", r.last), field("mac", r.mac), field("", r.unused), field("userid", r.userid),
        field("", r.unused2), field("card_type", r.card_type);
  }
};
static_assert(sizeof(MacUserEntry) == 32 && offsetof(MacUserEntry, mac) == 8 &&
              offsetof(MacUserEntry, userid) == 20 && offsetof(MacUserEntry, card_type) == 28);
static_assert(is_described<MacUserEntry>());
