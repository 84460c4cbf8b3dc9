// The set bits of a word as a text to print: print("[%s]", bits_text(flags, 32).chars).
#pragma once

#include <cstdint>

struct BitsText {
  char chars[32 * 3 + 1] = {};
};

// The numbers of the bits that are set among the first `count`, 32 at the most, each with a '|' behind it.
inline BitsText bits_text(uint64_t bits, int count) {
  BitsText text;
  char* out = text.chars;
  for (int bit = 0; bit < count; ++bit) {
    if ((bits >> bit & 1) == 0) continue;
    if (bit >= 10) *out++ = static_cast<char>('0' + bit / 10);
    *out++ = static_cast<char>('0' + bit % 10);
    *out++ = '|';
  }
  return text;
}
