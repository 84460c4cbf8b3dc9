// Lists of address ranges, as many payloads carry them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

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

// Fills a list, IPv4 and IPv6 items mixed in one text, with room bytes for the ranges behind its header.
// False, with nothing written, when the text's items could need more than that.
bool fill_addr_ranges(AddrRangeList& list, size_t room, const char* text);

// Prints ranges that lie at `ranges` wholly inside the record, each with a comma behind it. Returns the bytes
// they take.
uint32_t print_addr_ranges(const void* ranges, uint16_t v4_count, uint16_t v6_count);
