// Payloads of the URL filter (module 82). Behind the fixed part of a rule follow the hosts that it is for.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"
#include "records/list.h"

enum UrlFilterCommand : uint32_t {
  kUrlFilterAdd = 1,
  kUrlFilterDel = 2,
  kUrlFilterDelAll = 3,
  kUrlFilterList = 4,
  kUrlFilterGlobal = 5,
};

struct UrlFilterRule {
  char name[64];
  uint8_t log;
  uint8_t act;
  uint8_t type;  // of the hosts
  Unused<1> unused;
  uint16_t prio;
  uint16_t address_count;
  uint16_t v6_count;
  uint16_t list_bytes;
  char url[256];  // part of the URLs meant, as it stands in them

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("log", r.log), field("act", r.act), field("type", r.type),
        field("", r.unused), field("prio", r.prio), field("address_count", r.address_count),
        field("v6_count", r.v6_count), field("list_bytes", r.list_bytes), field("url", r.url);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    each_host_list(r.type, r.address_count, r.v6_count, list);
  }
};
static_assert(sizeof(UrlFilterRule) == 332 && offsetof(UrlFilterRule, type) == 66 &&
              offsetof(UrlFilterRule, prio) == 68 && offsetof(UrlFilterRule, url) == 76);
static_assert(is_described<UrlFilterRule>());

struct UrlFilterSwitch {
  uint32_t acl;
  uint32_t block;

  static constexpr void each_field(auto& r, auto&& field) { field("acl", r.acl), field("block", r.block); }
};
static_assert(is_described<UrlFilterSwitch>());
