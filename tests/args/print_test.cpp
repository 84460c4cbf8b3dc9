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

#define EXPECT_AS_PRINTF(format, ...) \
  EXPECT_EQ(captured([] { print(format, __VA_ARGS__); }), captured([] { printf(format, __VA_ARGS__); }))

TEST(Print, NumbersAsPrintf) {
  EXPECT_AS_PRINTF("%d %d %d|", 0, INT_MIN, INT_MAX);
  EXPECT_AS_PRINTF("%d %u %x|", UINT_MAX, UINT_MAX, INT_MIN);
  EXPECT_AS_PRINTF("%lu %ld %lx|", ULONG_MAX, LONG_MIN, LONG_MIN);
  EXPECT_AS_PRINTF("%llu %zu|", ULLONG_MAX, sizeof(int));
  EXPECT_AS_PRINTF("%08x %04x %02x %02X %2x %X %08lX|", 0xABCu, 0x12345u, 7u, 0xABu, 0xAu, 0xBEEFu, 0xBEEFul);
  EXPECT_AS_PRINTF("[%5d][%-5d][%05d][%-3d][%3lu][%6d]", -42, -42, -42, 1234, 7ul, -123456);
  EXPECT_AS_PRINTF("%d %d %x|", static_cast<int8_t>(-75), static_cast<uint16_t>(65535),
                   static_cast<int8_t>(-1));
  EXPECT_AS_PRINTF("%c%c|", 'x', '\0');
}

TEST(Print, NumbersOfEveryLength) {
  uint64_t power = 1;
  for (int digits = 1; digits <= 20; ++digits, power *= 10) {
    for (const uint64_t number : {power - 1, power, power + power / 2}) {
      const auto low = static_cast<int32_t>(number);
      EXPECT_EQ(captured([&] { print("%lu %ld %lx %d|", number, number, number, low); }),
                captured([&] { printf("%lu %ld %lx %d|", number, number, number, low); }));
    }
  }
}

TEST(Print, TextsAsPrintf) {
  EXPECT_AS_PRINTF("[%s][%-16s][%3s][%-3s][%20s]", "abc", "lan0", "abcdef", "", "right");
  const std::string long_text(5000, 'y');
  EXPECT_EQ(captured([&] { print("a%sb%sc\n", long_text.c_str(), "d"); }), "a" + long_text + "bdc\n");
  // Pieces of every length, up to and across the end of what one call gathers.
  for (size_t length = 0; length < 5000; length += length < 70 || length % 2048 > 2040 ? 1 : 7) {
    const std::string text = long_text.substr(0, length);
    EXPECT_EQ(captured([&] { print("%s%d%5d-%s", text.c_str(), 12345, 6, text.c_str()); }),
              text + "12345    6-" + text);
  }
  const char* missing = nullptr;
  EXPECT_EQ(captured([&] { print("%s", missing); }), "(null)");
}

TEST(Print, FieldsEndAtTheirNulOrWithTheirRoom) {
  struct {
    char name[4] = {'a', 'b', 'c', 'd'};
    char behind[4] = {'e', 0, 'f', 0};
  } record;
  EXPECT_EQ(captured([&] { print("[%s][%s][%-6s]", record.name, record.behind, record.name); }),
            "[abcd][e][abcd  ]");
}

}  // namespace
