// Payloads of the POST filter (module 37). Behind the fixed part of a rule follow the hosts that it is for.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"
#include "records/list.h"

enum PostForbidCommand : uint32_t {
  kPostForbidAdd = 1,
  kPostForbidDel = 2,
  kPostForbidList = 3,
  kPostForbidGlobal = 4,
};

struct PostForbidRule {
  char name[64];
  uint8_t log;
  Unused<1> unused;
  uint8_t type;  // of the hosts
  Unused<1> unused2;
  uint16_t address_count;
  uint16_t v6_count;
  uint32_t list_bytes;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("log", r.log), field("", r.unused), field("type", r.type),
        field("", r.unused2), field("address_count", r.address_count), field("v6_count", r.v6_count),
        field("list_bytes", r.list_bytes);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    each_host_list(r.type, r.address_count, r.v6_count, list);
  }
};
static_assert(sizeof(PostForbidRule) == 76 && offsetof(PostForbidRule, type) == 66 &&
              offsetof(PostForbidRule, address_count) == 68 && offsetof(PostForbidRule, list_bytes) == 72);
static_assert(is_described<PostForbidRule>());

struct PostForbidSwitch {
  uint32_t mode;  // 0 to 2

  static constexpr void each_field(auto& r, auto&& field) { field("mode", r.mode); }
};
static_assert(is_described<PostForbidSwitch>());
