// Lists of address ranges: from text into a payload of a given room, and back.
#include "args/addr_range.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct ListInRoom {
  explicit ListInRoom(size_t room) : bytes(sizeof(AddrRangeList) + room + 1, 0xEE) {}
  AddrRangeList& list() { return *reinterpret_cast<AddrRangeList*>(bytes.data()); }
  const uint8_t* ranges() { return bytes.data() + sizeof(AddrRangeList); }
  std::vector<uint8_t> bytes;  // one more than the list has, to see a step beyond it
};

std::string printed(ListInRoom& storage) {
  testing::internal::CaptureStdout();
  const uint32_t consumed =
      print_addr_ranges(storage.ranges(), storage.list().v4_count, storage.list().v6_count);
  fflush(stdout);
  EXPECT_EQ(consumed, storage.list().bytes);
  return testing::internal::GetCapturedStdout();
}

TEST(AddrRanges, MixedListsComeBackIpv4First) {
  ListInRoom storage(80);
  ASSERT_TRUE(fill_addr_ranges(storage.list(), 80, "fd00::1-fd00::9, 10.0.0.1,10.0.0.5-10.0.0.9,fd00::2"));
  EXPECT_EQ(storage.list().v4_count, 2);
  EXPECT_EQ(storage.list().v6_count, 2);
  EXPECT_EQ(storage.list().bytes, 80u);
  const uint8_t first[] = {1, 0, 0, 10, 1, 0, 0, 10};  // host order: the ends compare as numbers
  EXPECT_EQ(memcmp(storage.ranges(), first, sizeof first), 0);
  EXPECT_EQ(printed(storage), "10.0.0.1,10.0.0.5-10.0.0.9,fd00::1-fd00::9,fd00::2,");
  EXPECT_EQ(storage.bytes.back(), 0xEE);
}

TEST(AddrRanges, ListsWithoutAnAddressAreLegal) {
  for (const char* text : {"", ",", "none", "1.2.3,300.1.1.1,fe80:::1"}) {
    ListInRoom storage(80);
    ASSERT_TRUE(fill_addr_ranges(storage.list(), 80, text)) << text;
    EXPECT_EQ(printed(storage), "") << text;
    EXPECT_EQ(storage.list().bytes, 0u);
  }
}

TEST(AddrRanges, NothingIsWrittenWhereTheListMayNotFit) {
  for (const char* text : {"10.0.0.1,10.0.0.2", "10.0.0.1,10.0.0.2,"}) {
    ListInRoom storage(16);
    EXPECT_TRUE(fill_addr_ranges(storage.list(), 16, text)) << text;
    EXPECT_EQ(printed(storage), "10.0.0.1,10.0.0.2,");
  }
  for (const char* text : {"10.0.0.1,10.0.0.2,10.0.0.3", "fd00::1"}) {
    ListInRoom storage(16);
    const std::vector<uint8_t> before = storage.bytes;
    EXPECT_FALSE(fill_addr_ranges(storage.list(), 16, text)) << text;
    EXPECT_EQ(storage.bytes, before) << text;
  }
}

}  // namespace
