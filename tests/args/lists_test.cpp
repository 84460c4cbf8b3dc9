// Lists that no command line can ask for, beside garbage that must survive.
#include "args/lists.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/list.h"

namespace {

// The bytes that a block takes of a room of that size; -1 when it does not fit, and nothing is written.
int block_bytes(size_t size, ListReader read, const std::string& text) {
  std::vector<uint8_t> bytes(size + 64, 0xEE);
  ListWriter writer(bytes.data(), size);
  const int count = writer.add_block(read, text.c_str());
  const size_t left = std::ranges::count(bytes, 0xEE);
  EXPECT_GE(left, writer.fits() ? 64 : bytes.size());
  return writer.fits() ? count : -1;
}

TEST(ListWriter, UnknownItemsGetTheRoomOfTheLargest) {
  const ListReader fill = [](void* out, const char*) {
    memset(out, 1, 84);
    return 84;
  };
  EXPECT_EQ(block_bytes(84, fill, "a+b"), 84);
  EXPECT_EQ(block_bytes(83, fill, "a+b"), -1);
}

TEST(ListWriter, ABlockIsNoLongerThanItsLengthField) {
  std::string text = "ip=::1";
  for (int i = 1; i < 2047; ++i) text += ",::1";
  EXPECT_EQ(block_bytes(102400, get_ipport_str, text), 20 + 32 * 2047);
  EXPECT_EQ(block_bytes(102400, get_ipport_str, text + ",::1"), -1);
}

}  // namespace
