// print beside the C library's printf, on the conversions that the output formats use.
#include "args/print.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <string>

namespace {

template <typename Print>
std::string captured(Print print_it) {
  testing::internal::CaptureStdout();
  print_it();
  fflush(stdout);
  return testing::internal::GetCapturedStdout();
}

#define EXPECT_AS_PRINTF(...) \
  EXPECT_EQ(captured([&] { print(__VA_ARGS__); }), captured([&] { printf(__VA_ARGS__); }))

TEST(Print, NumbersOfEveryLength) {
  uint64_t power = 1;
  for (int digits = 1; digits <= 20; ++digits, power *= 10) {
    for (const uint64_t number : {power - 1, power, power + power / 2, 0 - power}) {
      const auto low = static_cast<int32_t>(number);
      EXPECT_AS_PRINTF("%d %u %x %lu %ld %lx %llu %zu|", low, low, low, number, number, number, 0ull + number,
                       sizeof low);
      EXPECT_AS_PRINTF("[%5d][%-5d][%05d][%08x][%04x][%2x][%02X][%X][%08lX][%3lu]", low, low, low, low, low,
                       low, low, low, number, number);
    }
  }
  EXPECT_AS_PRINTF("%d %d %d %d %x %c%c|", INT_MIN, UINT_MAX, static_cast<int8_t>(-75),
                   static_cast<uint16_t>(65535), static_cast<int8_t>(-1), 'x', '\0');
}

TEST(Print, TextsOfEveryLength) {
  const char* missing = nullptr;
  EXPECT_EQ(captured([&] {
              print("[%s][%-16s][%3s][%-3s][%6s]%s", "abc", "lan0", "abcdef", "", "right", missing);
            }),
            "[abc][lan0            ][abcdef][   ][ right](null)");
  // Up to and across the end of what one call gathers.
  for (size_t length = 0; length < 5000; length += length < 70 || length % 2048 > 2040 ? 1 : 7) {
    const std::string text(length, 'y');
    EXPECT_AS_PRINTF("%s%d%5d-%s", text.c_str(), 12345, 6, text.c_str());
  }
  struct {  // texts that end with their fields
    char name[4] = {'a', 'b', 'c', 'd'};
    char behind[4] = {'e', 0, 'f', 0};
  } record;
  EXPECT_EQ(captured([&] { print("[%s][%s][%-6s]", record.name, record.behind, record.name); }),
            "[abcd][e][abcd  ]");
}

}  // namespace
