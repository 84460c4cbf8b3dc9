// Reading and printing lists of address ranges.
#include "args/addr_range.h"

#include <arpa/inet.h>

#include <cstring>

#include "args/address_text.h"
#include "args/answer.h"
#include "args/lists.h"
#include "args/print.h"

namespace {

void print_range(const V4Range& range) {
  const AddressText first = ip_text(ntohl(range.first));
  if (range.first == range.last) {
    print("%s,", first.chars);
  } else {
    print("%s-%s,", first.chars, ip_text(ntohl(range.last)).chars);
  }
}

void print_range(const V6Range& range) {
  const AddressText first = ip6_text(range.first);
  if (memcmp(range.first, range.last, sizeof range.first) == 0) {
    print("%s,", first.chars);
  } else {
    print("%s-%s,", first.chars, ip6_text(range.last).chars);
  }
}

}  // namespace

bool fill_addr_ranges(AddrRangeList& list, size_t room, const char* text) {
  ListWriter ranges(&list + 1, room);
  const RangeCounts counts = ranges.add_addresses(text);
  if (!ranges.fits()) return false;
  list.v4_count = counts.v4;
  list.v6_count = counts.v6;
  list.bytes = ranges.bytes();
  return true;
}

uint32_t print_addr_ranges(const void* ranges, uint16_t v4_count, uint16_t v6_count) {
  const uint32_t bytes = v4_count * uint32_t{sizeof(V4Range)} + v6_count * uint32_t{sizeof(V6Range)};
  AnswerCursor cursor(ranges, bytes);
  print_addr_ranges(cursor, v4_count, v6_count);
  return bytes;
}

void print_addr_ranges(AnswerCursor& answer, uint16_t v4_count, uint16_t v6_count) {
  for (const V4Range& range : answer.entries<V4Range>(v4_count)) print_range(range);
  for (const V6Range& range : answer.entries<V6Range>(v6_count)) print_range(range);
}
