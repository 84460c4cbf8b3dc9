// The lists that payloads carry: their elements, and the headers of those that have one. Each list stands in
// its payload without padding, so its elements need not be aligned.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

// User groups, type ids, interfaces, QoS channels.
struct NumberRange {
  uint16_t first;
  uint16_t last;

  static constexpr void each_field(auto& r, auto&& field) { field("first", r.first), field("last", r.last); }
};
static_assert(sizeof(NumberRange) == 4);
static_assert(is_described<NumberRange>());

// Identification numbers.
struct IdRange {
  uint32_t first;
  uint32_t last;

  static constexpr void each_field(auto& r, auto&& field) { field("first", r.first), field("last", r.last); }
};
static_assert(sizeof(IdRange) == 8);
static_assert(is_described<IdRange>());

struct V4Range {
  HostIp4 first;
  HostIp4 last;

  static constexpr void each_field(auto& r, auto&& field) { field("first", r.first), field("last", r.last); }
};
static_assert(sizeof(V4Range) == 8);
static_assert(is_described<V4Range>());

struct V6Range {
  Ip6 first;
  Ip6 last;

  static constexpr void each_field(auto& r, auto&& field) { field("first", r.first), field("last", r.last); }
};
static_assert(sizeof(V6Range) == 32);
static_assert(is_described<V6Range>());

// Header of a list; its v4_count IPv4 ranges and then its v6_count IPv6 ranges follow at once.
struct AddrRangeList {
  uint16_t v4_count;
  uint16_t v6_count;
  uint32_t bytes;  // of the ranges

  static constexpr void each_field(auto& r, auto&& field) {
    field("v4_count", r.v4_count), field("v6_count", r.v6_count), field("bytes", r.bytes);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("v4", ListOf<V4Range>{r.v4_count}), list("v6", ListOf<V6Range>{r.v6_count});
  }
};
static_assert(sizeof(AddrRangeList) == 8 && offsetof(AddrRangeList, bytes) == 4);
static_assert(is_described<AddrRangeList>());

// What was not understood in the text of a list stands in the list as an element that matches nothing: it
// ends before it starts, from the highest value to the lowest. Modules refuse it.
template <typename Element>
constexpr Element kNotUnderstood;
template <>
inline constexpr NumberRange kNotUnderstood<NumberRange> = {UINT16_MAX, 0};
template <>
inline constexpr IdRange kNotUnderstood<IdRange> = {UINT32_MAX, 0};
template <>
inline constexpr uint32_t kNotUnderstood<uint32_t> = UINT32_MAX;
template <>
inline constexpr V4Range kNotUnderstood<V4Range> = {{UINT32_MAX}, {0}};
template <>
inline constexpr V6Range kNotUnderstood<V6Range> = [] {
  V6Range range = {};
  for (uint8_t& byte : range.first.bytes) byte = 0xff;
  return range;
}();

// The hosts that a rule is for are IPv4 and IPv6 ranges when its type is this, else (with few exceptions)
// user groups.
constexpr uint8_t kHostRanges = 1;

// The lists of the hosts that a rule is for.
constexpr void each_host_list(uint8_t type, uint16_t address_count, uint16_t v6_count, auto&& list) {
  if (type == kHostRanges) {
    list("v4", ListOf<V4Range>{address_count}), list("v6", ListOf<V6Range>{v6_count});
  } else {
    list("groups", ListOf<NumberRange>{address_count});
  }
}

// Which ports of a protocol; platform/list.h has its text. Ports that do not matter are 0 to 65535.
struct ProtocolEntry {
  uint8_t protocol;  // number of IP, 0 for any
  uint8_t negated;
  Unused<2> unused;
  NumberRange source;
  NumberRange destination;

  static constexpr void each_field(auto& r, auto&& field) {
    field("protocol", r.protocol), field("negated", r.negated), field("", r.unused),
        field("source", r.source), field("destination", r.destination);
  }
};
static_assert(sizeof(ProtocolEntry) == 12 && offsetof(ProtocolEntry, source) == 4);
static_assert(is_described<ProtocolEntry>());

template <>
inline constexpr ProtocolEntry kNotUnderstood<ProtocolEntry> = {
    UINT8_MAX, 0, {}, kNotUnderstood<NumberRange>, kNotUnderstood<NumberRange>};

// The destination side of a rule; its IPv4 ranges, IPv6 ranges and protocol entries follow. "fei" is "not".
// All bytes are 0xff in one whose text was not understood.
struct IpPortBlock {
  uint8_t cl_type;
  uint8_t cl_type_fei;
  uint8_t dns_en;
  uint8_t dns_wanid;
  uint8_t dns_typeid;
  uint8_t dns_wanid_fei;
  uint8_t dns_typeid_fei;
  uint8_t dns_fei;
  uint16_t v4_count;
  uint16_t v6_count;
  uint16_t protocol_count;
  Unused<1> unused;
  uint8_t given;  // which of the numbers above were given, since 0 is one too: 1 class, 2 line, 4 type
  Unused<4> unused2;

  static constexpr void each_field(auto& r, auto&& field) {
    field("cl_type", r.cl_type), field("cl_type_fei", r.cl_type_fei), field("dns_en", r.dns_en),
        field("dns_wanid", r.dns_wanid), field("dns_typeid", r.dns_typeid),
        field("dns_wanid_fei", r.dns_wanid_fei), field("dns_typeid_fei", r.dns_typeid_fei),
        field("dns_fei", r.dns_fei), field("v4_count", r.v4_count), field("v6_count", r.v6_count),
        field("protocol_count", r.protocol_count), field("", r.unused), field("given", r.given),
        field("", r.unused2);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("v4", ListOf<V4Range>{r.v4_count}), list("v6", ListOf<V6Range>{r.v6_count}),
        list("protocols", ListOf<ProtocolEntry>{r.protocol_count});
  }
};
static_assert(sizeof(IpPortBlock) == 20 && offsetof(IpPortBlock, v4_count) == 8);
static_assert(is_described<IpPortBlock>());
