// The readers of comma lists, and the lists that become bit sets.
#include "platform/list.h"

#include <algorithm>
#include <bit>

#include "text.h"

namespace convert {

namespace {

// How many leading one bits a mask has; false for any other number.
bool mask_bits(uint32_t mask, uint8_t& bits) {
  bits = static_cast<uint8_t>(std::countl_one(mask));
  return mask == (bits == 0 ? 0 : UINT32_MAX << (32 - bits));
}

}  // namespace

bool parse_ip4_range(std::string_view item, V4Range& range) {
  const Cut cut = cut_at(item, "/");
  if (cut.separator == '\0') {
    return parse_range(item, range,
                       [](std::string_view end, HostIp4& address) { return parse_ip4(end, address.value); });
  }
  uint32_t mask;
  uint8_t bits;
  if (!parse_ip4(cut.head, range.first.value)) return false;
  if (parse_ip4(cut.tail, mask) ? !mask_bits(mask, bits) : !parse_number(cut.tail, bits) || bits > 32) {
    return false;
  }
  const uint32_t host_bits = bits == 32 ? 0 : UINT32_MAX >> bits;
  range.first.value &= ~host_bits;
  range.last.value = range.first.value | host_bits;
  return true;
}

bool parse_ip6_range(std::string_view item, V6Range& range) {
  const Cut cut = cut_at(item, "/");
  if (cut.separator == '\0') return parse_range(item, range, parse_ip6);
  uint8_t bits;
  if (!parse_ip6(cut.head, range.first) || !parse_number(cut.tail, bits) || bits > 128) return false;
  for (int i = 0; i < 16; ++i) {
    const auto host_bits = static_cast<uint8_t>(0xff >> std::clamp(bits - 8 * i, 0, 8));
    uint8_t& first = range.first.bytes[i];
    first = static_cast<uint8_t>(first & ~host_bits);
    range.last.bytes[i] = static_cast<uint8_t>(first | host_bits);
  }
  return true;
}

}  // namespace convert

namespace {

using convert::read_list;
using convert::view;

bool parse_id_range(std::string_view item, IdRange& range) {
  return convert::parse_range(item, range, convert::parse_hex);
}

bool parse_u32(std::string_view item, uint32_t& number) {
  const bool is_hex = convert::take_prefix(item, "0x") || convert::take_prefix(item, "0X");
  return convert::parse_number(item, number, is_hex ? 16 : 10);
}

int read_number_ranges(void* ranges, const char* text) {
  return read_list<NumberRange>(ranges, view(text), convert::parse_number_range);
}

void set_bit(unsigned char* set, unsigned id) {
  uint64_t word;
  unsigned char* place = set + id / 64 * sizeof word;
  std::memcpy(&word, place, sizeof word);
  word |= uint64_t{1} << id % 64;
  std::memcpy(place, &word, sizeof word);
}

template <typename BitOf>
void fill_bits(void* bits, const char* text, int last_word, BitOf bit_of) {
  if (last_word < 0) return;
  auto* set = static_cast<unsigned char*>(bits);
  const size_t size = (static_cast<size_t>(last_word) + 1) * sizeof(uint64_t);
  std::memset(set, 0, size);
  for (std::string_view list = view(text); !list.empty();) {
    const std::string_view item = convert::next_item(list);
    if (item.empty()) continue;
    NumberRange range;
    if (!convert::parse_number_range(item, range) || range.first > range.last ||
        bit_of(range.last) >= size * 8) {
      std::memset(set, 0, size);
      return;
    }
    for (unsigned id = range.first; id <= range.last; ++id) set_bit(set, bit_of(id));
  }
}

}  // namespace

int get_iplist_str_max(void* ranges, const char* text, int most) {
  return read_list<V4Range>(ranges, view(text), convert::parse_ip4_range, convert::is_ip4_item,
                            std::min(most, convert::kMaxCount));
}

int get_iplist_str(void* ranges, const char* text) {
  return get_iplist_str_max(ranges, text, convert::kMaxCount);
}

int get_ip6list_str(void* ranges, const char* text) {
  return read_list<V6Range>(ranges, view(text), convert::parse_ip6_range, convert::is_ip6_item);
}

int get_user_group_str(void* ranges, const char* text) { return read_number_ranges(ranges, text); }

int get_typeid_str(void* ranges, const char* text) { return read_number_ranges(ranges, text); }

int get_devlist_str(void* ranges, const char* text) { return read_number_ranges(ranges, text); }

int get_qosthdid_str(void* ranges, const char* text) { return read_number_ranges(ranges, text); }

int get_shibie_ips_str(void* ranges, const char* text) {
  return read_list<IdRange>(ranges, view(text), parse_id_range);
}

int get_u32_str(void* numbers, const char* text) {
  return read_list<uint32_t>(numbers, view(text), parse_u32);
}

int split_string(char* text, char separator, char** pieces, int most) {
  if (text == nullptr || *text == '\0') return 0;
  int count = 0;
  while (text != nullptr && count < most) {
    pieces[count++] = text;
    text = strchr(text, separator);
    if (text != nullptr) *text++ = '\0';
  }
  return count;
}

void rule_set_bits(void* bits, const char* text, int last_word) {
  fill_bits(bits, text, last_word, [](unsigned id) { return id; });
}

void wans_set_bits(void* bits, const char* text, int last_word) {
  // The line numbers of the multi-line rules: 120 is the last that is counted from one.
  fill_bits(bits, text, last_word, [](unsigned line) { return line <= 120 ? line + 1 : line; });
}
