// Payloads of the download-suffix filter (module 36). Behind the fixed part of a rule follow its suffixes,
// then the hosts that it is for.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"
#include "records/list.h"

enum PostfixFilterCommand : uint32_t {
  kPostfixFilterAdd = 1,
  kPostfixFilterDel = 2,
  kPostfixFilterList = 3,
  kPostfixFilterGlobal = 4,
};

// A suffix of full length has no NUL behind it.
struct Postfix {
  uint8_t length;
  char text[11];

  static constexpr void each_field(auto& r, auto&& field) {
    field("length", r.length), field("text", r.text);
  }
};
static_assert(sizeof(Postfix) == 12);
static_assert(is_described<Postfix>());

struct PostfixFilterRule {
  char name[64];
  uint8_t log;
  Unused<1> unused;
  uint8_t type;  // of the hosts
  Unused<1> unused2;
  uint16_t postfix_count;
  uint16_t address_count;
  uint16_t v6_count;
  uint16_t list_bytes;  // of the hosts alone

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("log", r.log), field("", r.unused), field("type", r.type),
        field("", r.unused2), field("postfix_count", r.postfix_count),
        field("address_count", r.address_count), field("v6_count", r.v6_count),
        field("list_bytes", r.list_bytes);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("postfixes", ListOf<Postfix>{r.postfix_count});
    each_host_list(r.type, r.address_count, r.v6_count, list);
  }
};
static_assert(sizeof(PostfixFilterRule) == 76 && offsetof(PostfixFilterRule, type) == 66 &&
              offsetof(PostfixFilterRule, postfix_count) == 68);
static_assert(is_described<PostfixFilterRule>());

struct PostfixFilterSwitch {
  uint32_t mode;  // 0 to 2
  uint32_t block;

  static constexpr void each_field(auto& r, auto&& field) { field("mode", r.mode), field("block", r.block); }
};
static_assert(is_described<PostfixFilterSwitch>());
