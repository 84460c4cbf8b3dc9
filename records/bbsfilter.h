// Payloads of the filter of words in forum posts (module 35).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum BbsFilterCommand : uint32_t {
  kBbsFilterAdd = 1,
  kBbsFilterDel = 2,
  kBbsFilterDelAll = 3,
  kBbsFilterList = 4,
  kBbsFilterGlobal = 5,
};

constexpr size_t kMaxBbsWord = 500;

// Its bytes follow.
struct BbsWord {
  uint16_t length;
  uint16_t type;
  Unused<4> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("length", r.length), field("type", r.type), field("", r.unused);
  }
  static constexpr void each_list(auto& r, auto&& list) { list("word", ListOf<char>{r.length}); }
};
static_assert(sizeof(BbsWord) == 8);
static_assert(is_described<BbsWord>());

struct BbsWordPlace {
  uint32_t data_offset;  // from the payload's start
  uint16_t data_length;
  uint16_t type;

  static constexpr void each_field(auto& r, auto&& field) {
    field("data_offset", r.data_offset), field("data_length", r.data_length), field("type", r.type);
  }
};
static_assert(sizeof(BbsWordPlace) == 8);
static_assert(is_described<BbsWordPlace>());

// The words lie behind their places, wherever these say.
struct BbsWordList {
  uint32_t item_cnt;
  uint32_t need_size;  // of a payload that holds all

  static constexpr void each_field(auto& r, auto&& field) {
    field("item_cnt", r.item_cnt), field("need_size", r.need_size);
  }
  static constexpr void each_list(auto& r, auto&& list) { list("places", ListOf<BbsWordPlace>{r.item_cnt}); }
};
static_assert(sizeof(BbsWordList) == 8);
static_assert(is_described<BbsWordList>());

struct BbsFilterSwitch {
  uint32_t acl;
  uint32_t log;
  uint32_t block;

  static constexpr void each_field(auto& r, auto&& field) {
    field("acl", r.acl), field("log", r.log), field("block", r.block);
  }
};
static_assert(is_described<BbsFilterSwitch>());
