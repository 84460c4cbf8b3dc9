// Numbers from argument words: whatever is typed gives some value, and never a small one for a large one.
#include <algorithm>

#include "platform/address.h"
#include "text.h"

namespace {

using convert::digit_value;

bool has_hex_prefix(const char* text) {
  return text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && digit_value(text[2]) < 16;
}

uint32_t read_number(const char* text, unsigned base, bool takes_prefix) {
  if (text == nullptr) return 0;
  while (convert::is_blank(*text)) ++text;
  const bool negative = *text == '-';
  if (negative) ++text;
  if (takes_prefix && has_hex_prefix(text)) {
    text += 2;
    base = 16;
  }
  const uint64_t limit = negative ? uint64_t{1} << 31 : UINT32_MAX;
  uint64_t value = 0;
  for (; digit_value(*text) < base; ++text) value = std::min(value * base + digit_value(*text), limit);
  return static_cast<uint32_t>(negative ? 0 - value : value);
}

}  // namespace

uint32_t J_atoi(const char* text) { return read_number(text, 10, true); }

uint32_t J_ato10(const char* text) { return read_number(text, 10, false); }

uint32_t J_atohx16(const char* text) { return read_number(text, 16, true); }
