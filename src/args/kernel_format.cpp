// Formats of the kernel, a conversion at a time by the C library's printf.
#include "args/kernel_format.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

// Writes what one conversion comes to, and returns what follows it.
const char* print_conversion(const char* percent, const char* end) {
  constexpr int kMaxWidth = 4096;  // no more than the longest text: a width is no way to flood the reader
  constexpr std::string_view kFlags = "-+ #0'";
  constexpr std::string_view kLengths = "hlLqjzt";
  const char* at = percent + 1;
  const auto is_digit = [&] { return at < end && *at >= '0' && *at <= '9'; };
  const auto read_number = [&] {  // '*' takes its number from a zero argument
    int number = 0;
    if (at < end && *at == '*') ++at;
    for (; is_digit(); ++at) number = std::min(number * 10 + (*at - '0'), kMaxWidth);
    return number;
  };

  const char* after_position = at;
  while (after_position < end && *after_position >= '0' && *after_position <= '9') ++after_position;
  if (after_position > at && after_position < end && *after_position == '$') at = after_position + 1;

  char conversion[16] = "%";
  size_t length = 1;
  for (; at < end && kFlags.find(*at) != kFlags.npos; ++at) {
    if (memchr(conversion, *at, length) == nullptr) conversion[length++] = *at;
  }
  conversion[length++] = '*';
  const int width = read_number();
  int precision = -1;
  if (at < end && *at == '.') {
    ++at;
    precision = read_number();
  }
  conversion[length++] = '.';
  conversion[length++] = '*';
  while (at < end && kLengths.find(*at) != kLengths.npos) ++at;
  const char type = at < end ? *at++ : '\0';
  conversion[length++] = type;
  conversion[length] = '\0';

  switch (type) {
    case '%':
      putchar('%');
      break;
    case 'n':
      break;
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
    case 'c':
      printf(conversion, width, precision, 0);
      break;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
      printf(conversion, width, precision, 0.0);
      break;
    case 's':
      printf(conversion, width, precision, "(null)");
      break;
    case 'm':
      printf("%*.*s", width, precision, strerror(0));
      break;
    case 'p':
      printf(conversion, width, precision, nullptr);
      break;
    default:
      fwrite(percent, 1, static_cast<size_t>(at - percent), stdout);
  }
  return at;
}

}  // namespace

void print_kernel_format(const char* text, size_t length) {
  const char* const end = text + length;
  while (text < end) {
    const auto* percent = static_cast<const char*>(memchr(text, '%', static_cast<size_t>(end - text)));
    const char* literal_end = percent == nullptr ? end : percent;
    fwrite(text, 1, static_cast<size_t>(literal_end - text), stdout);
    text = percent == nullptr ? end : print_conversion(percent, end);
  }
}
