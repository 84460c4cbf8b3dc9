// The lists that payloads carry: their elements, and the headers of those that have one. Each list stands in
// its payload without padding, so its elements need not be aligned.
#pragma once

#include <cstddef>
#include <cstdint>

// User groups, type ids, interfaces, QoS channels.
struct NumberRange {
  uint16_t first;
  uint16_t last;
};
static_assert(sizeof(NumberRange) == 4);

// Identification numbers.
struct IdRange {
  uint32_t first;
  uint32_t last;
};
static_assert(sizeof(IdRange) == 8);

struct V4Range {
  uint32_t first;  // host byte order, so that the ends compare as numbers
  uint32_t last;
};
static_assert(sizeof(V4Range) == 8);

struct V6Range {
  uint8_t first[16];
  uint8_t last[16];
};
static_assert(sizeof(V6Range) == 32);

// Header of a list; its v4_count IPv4 ranges and then its v6_count IPv6 ranges follow at once.
struct AddrRangeList {
  uint16_t v4_count;
  uint16_t v6_count;
  uint32_t bytes;  // of the ranges
};
static_assert(sizeof(AddrRangeList) == 8 && offsetof(AddrRangeList, bytes) == 4);

// The hosts that a rule is for are IPv4 and IPv6 ranges when its type is this, else (with few exceptions)
// user groups.
constexpr uint8_t kHostRanges = 1;

// The destination side of a rule; its IPv4 ranges, IPv6 ranges and protocol entries follow. "fei" is "not".
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
  uint8_t platform[6];  // the platform library's own
};
static_assert(sizeof(IpPortBlock) == 20 && offsetof(IpPortBlock, v4_count) == 8);

constexpr uint32_t kProtocolEntrySize = 12;  // the platform library reads, writes and prints what is inside
