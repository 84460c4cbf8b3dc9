// Reading and printing lists of address ranges.
#include "args/addr_range.h"

#include <arpa/inet.h>

#include <cstring>

#include "args/address_text.h"
#include "args/print.h"
#include "platform/list.h"

namespace {

// The most that the platform's readers can write for a text: one range an item. Only IPv6 items hold a colon.
size_t most_bytes(std::string_view text) {
  size_t bytes = 0;
  while (!text.empty()) {
    const std::string_view item = text.substr(0, text.find(','));
    bytes += item.find(':') != item.npos ? sizeof(V6Range) : sizeof(V4Range);
    text.remove_prefix(std::min(item.size() + 1, text.size()));
  }
  return bytes;
}

}  // namespace

bool fill_addr_ranges(AddrRangeList& list, size_t room, const char* text) {
  if (most_bytes(text) > room) return false;
  auto* ranges = reinterpret_cast<uint8_t*>(&list + 1);
  // The readers take no room argument; the check above is what keeps them inside.
  list.v4_count = static_cast<uint16_t>(get_iplist_str(ranges, text));
  list.v6_count = static_cast<uint16_t>(get_ip6list_str(ranges + list.v4_count * sizeof(V4Range), text));
  list.bytes = static_cast<uint32_t>(list.v4_count * sizeof(V4Range) + list.v6_count * sizeof(V6Range));
  return true;
}

uint32_t print_addr_ranges(const void* ranges, uint16_t v4_count, uint16_t v6_count) {
  const auto* at = static_cast<const uint8_t*>(ranges);
  for (unsigned i = 0; i < v4_count; ++i, at += sizeof(V4Range)) {
    V4Range range;
    memcpy(&range, at, sizeof range);
    const AddressText first = ip_text(ntohl(range.first));
    if (range.first == range.last) {
      print("%s,", first.chars);
    } else {
      print("%s-%s,", first.chars, ip_text(ntohl(range.last)).chars);
    }
  }
  for (unsigned i = 0; i < v6_count; ++i, at += sizeof(V6Range)) {
    V6Range range;
    memcpy(&range, at, sizeof range);
    const AddressText first = ip6_text(range.first);
    if (memcmp(range.first, range.last, sizeof range.first) == 0) {
      print("%s,", first.chars);
    } else {
      print("%s-%s,", first.chars, ip6_text(range.last).chars);
    }
  }
  return static_cast<uint32_t>(at - static_cast<const uint8_t*>(ranges));
}
