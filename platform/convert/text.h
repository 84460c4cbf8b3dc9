// What the conversions share: pieces of text, strict parsers for single values, and the reader of comma
// lists.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "records/list.h"

#pragma GCC visibility push(hidden)  // not the library's face

namespace convert {

constexpr bool is_blank(char c) { return c == ' ' || c == '\t'; }

// The value of a hexadecimal digit, 16 for any other character: above every base.
constexpr unsigned digit_value(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? static_cast<unsigned>(lower - 'a') + 10 : 16;
}

inline std::string_view view(const char* text) { return text == nullptr ? std::string_view() : text; }

// The pieces of a view are made by hand: substr, and starts_with through it, can throw, and this code has no
// C++ runtime.
inline std::string_view first_of(std::string_view text, size_t length) { return {text.data(), length}; }
inline std::string_view after(std::string_view text, size_t length) {
  return {text.data() + length, text.size() - length};
}

inline std::string_view trim(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

inline bool take_prefix(std::string_view& text, std::string_view prefix) {
  if (text.size() < prefix.size() || first_of(text, prefix.size()) != prefix) return false;
  text.remove_prefix(prefix.size());
  return true;
}

// A text cut at the first of some separators: '\0' and an empty tail when there is none.
struct Cut {
  std::string_view head;
  char separator;
  std::string_view tail;
};

inline Cut cut_at(std::string_view text, std::string_view separators) {
  const size_t at = text.find_first_of(separators);
  if (at == std::string_view::npos) return {trim(text), '\0', {}};
  return {trim(first_of(text, at)), text[at], trim(after(text, at + 1))};
}

// Takes the next item off a list.
inline std::string_view next_item(std::string_view& list, char separator = ',') {
  const Cut cut = cut_at(list, {&separator, 1});
  list = cut.tail;
  return cut.head;
}

// Digits and nothing else, no larger than Number holds.
template <typename Number>
bool parse_number(std::string_view text, Number& number, int base = 10) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  return error == std::errc() && stop == end;
}

// As parse_number, with a "0x" in front or not: a number that can only be hexadecimal.
inline bool parse_hex(std::string_view text, uint32_t& number) {
  if (!take_prefix(text, "0x")) take_prefix(text, "0X");
  return parse_number(text, number, 16);
}

// The strict forms of the addresses; an IPv4 address in host byte order. On failure the destination is
// undefined.
bool parse_ip4(std::string_view text, uint32_t& address);
bool parse_ip6(std::string_view text, Ip6& address);

// One value, or two with '-' between. Whoever asked for the range finds that it ends before it starts.
template <typename Range, typename Parse>
bool parse_range(std::string_view text, Range& range, Parse parse) {
  const Cut cut = cut_at(text, "-");
  if (!parse(cut.head, range.first)) return false;
  if (cut.separator == '\0') {
    range.last = range.first;
    return true;
  }
  return parse(cut.tail, range.last);
}

inline bool parse_number_range(std::string_view text, NumberRange& range) {
  return parse_range(text, range,
                     [](std::string_view end, uint16_t& value) { return parse_number(end, value); });
}

bool parse_ip4_range(std::string_view item, V4Range& range);
bool parse_ip6_range(std::string_view item, V6Range& range);

// Which of the two readers of addresses an item is for, whether that understands it or not. "0" is how
// commands say that there is none.
inline bool is_ip6_item(std::string_view item) { return item.find(':') != std::string_view::npos; }
inline bool is_ip4_item(std::string_view item) { return !is_ip6_item(item) && item != "0"; }

// Counts travel as 16 bits, so no list is longer.
constexpr int kMaxCount = 65535;

inline bool is_any_item(std::string_view) { return true; }

// Writes an element for every item of a comma list that is not empty and `is_ours`, and returns how many. One
// that `parse` does not understand, and the last where the list goes on behind what a count can say, is the
// element that stands for this. Fewer than that are wanted by who reads no further.
template <typename Element, typename Parse>
int read_list(void* destination, std::string_view list, Parse parse,
              bool (*is_ours)(std::string_view) = is_any_item, int most = kMaxCount) {
  auto* out = static_cast<unsigned char*>(destination);
  int count = 0;
  while (!list.empty()) {
    const std::string_view item = next_item(list);
    if (item.empty() || !is_ours(item)) continue;
    const bool has_room = count < most;
    if (!has_room && most < kMaxCount) break;
    Element element;
    if (!has_room || !parse(item, element)) element = kNotUnderstood<Element>;
    if (has_room) ++count;
    if (count > 0)
      std::memcpy(out + sizeof element * static_cast<size_t>(count - 1), &element, sizeof element);
  }
  return count;
}

}  // namespace convert

#pragma GCC visibility pop
