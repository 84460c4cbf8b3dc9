// Byte strings from text: hexadecimal and base64.
#include <algorithm>

#include "platform/address.h"
#include "text.h"

namespace {

using convert::digit_value;

bool is_pair_separator(char c) { return c == ':' || c == '-' || convert::is_blank(c); }

// The value of a base64 digit, 64 for any other character.
constexpr unsigned base64_value(char c) {
  if (c >= 'A' && c <= 'Z') return static_cast<unsigned>(c - 'A');
  if (c >= 'a' && c <= 'z') return static_cast<unsigned>(c - 'a') + 26;
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0') + 52;
  if (c == '+') return 62;
  return c == '/' ? 63 : 64;
}

}  // namespace

int string_to_hex(const char* text, void* destination, int most) {
  auto* out = static_cast<uint8_t*>(destination);
  std::string_view rest = convert::view(text);
  int count = 0;
  while (!rest.empty() && count < most) {
    if (count > 0 && rest.size() > 1 && is_pair_separator(rest[0])) rest.remove_prefix(1);
    const unsigned high = digit_value(rest[0]);
    const unsigned low = rest.size() > 1 ? digit_value(rest[1]) : 16;
    if (high > 15 || low > 15) {
      std::fill_n(out, count, uint8_t{0});
      return 0;
    }
    out[count++] = static_cast<uint8_t>(high << 4 | low);
    rest.remove_prefix(2);
  }
  return count;
}

int base64_decode2(const char* text, void* destination, int length, int room) {
  if (text == nullptr || length < 0 || room < 0) return 0;
  const std::string_view encoded(text, strnlen(text, static_cast<size_t>(length)));
  size_t digits = 0;
  size_t padding = 0;
  for (const char c : encoded) {
    if (convert::is_blank(c)) continue;
    if (c != '=' && (padding > 0 || base64_value(c) == 64)) return 0;
    ++(c == '=' ? padding : digits);
  }
  // A last digit without a partner holds no whole byte.
  const bool is_whole = digits % 4 != 1 && padding <= 2 && (padding == 0 || (digits + padding) % 4 == 0);
  const size_t count = digits * 3 / 4;
  if (!is_whole || count > static_cast<size_t>(room)) return 0;

  auto* out = static_cast<uint8_t*>(destination);
  unsigned bits = 0;
  int held = 0;  // how many of the low bits are not written yet
  for (const char c : encoded) {
    if (base64_value(c) == 64) continue;
    bits = bits << 6 | base64_value(c);
    held += 6;
    if (held >= 8) {
      held -= 8;
      *out++ = static_cast<uint8_t>(bits >> held);
    }
  }
  return static_cast<int>(count);
}
