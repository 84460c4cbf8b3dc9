// Lists written within their room, where the command line cannot go: beside garbage that must survive.
#include "args/lists.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/list.h"

namespace {

struct Room {
  explicit Room(size_t size) : bytes(size + 64, 0xEE), writer(bytes.data(), size) {}
  bool is_untouched_from(size_t offset) const {
    for (size_t i = offset; i < bytes.size(); ++i) {
      if (bytes[i] != 0xEE) return false;
    }
    return true;
  }
  std::vector<uint8_t> bytes;
  ListWriter writer;
};

TEST(ListWriter, ATextThatMayNotFitEndsIt) {
  Room room(12);
  EXPECT_EQ(room.writer.add<NumberRange>(get_typeid_str, "1,,2-3,"), 2);
  EXPECT_TRUE(room.is_untouched_from(8));
  EXPECT_EQ(room.writer.add<IdRange>(get_shibie_ips_str, "1"), 0);
  EXPECT_FALSE(room.writer.fits());
  EXPECT_EQ(room.writer.add<NumberRange>(get_typeid_str, "4"), 0) << "a list must not take another's place";
  EXPECT_TRUE(room.is_untouched_from(8));
  EXPECT_EQ(room.writer.bytes(), 8U);
}

TEST(ListWriter, BlocksByWhatTheirItemsCanNeed) {
  const struct {
    const char* text;
    size_t size;
  } cases[] = {{"", 0},
               {"dns=any", 20},
               {"not-class=1+dns=line:1,type:2", 20},
               {"ip=1.1.1.1,,fd00::1,+not-proto=tcp:1:2,udp,", 20 + 8 + 32 + 24},
               {"proto=icmp+ip=::1,::2", 20 + 12 + 64}};
  for (const auto& c : cases) {
    Room exact(c.size);
    EXPECT_EQ(exact.writer.add_block(get_ipport_str, c.text), c.size) << c.text;
    EXPECT_TRUE(exact.writer.fits()) << c.text;
    EXPECT_TRUE(exact.is_untouched_from(c.size)) << c.text;
    if (c.size == 0) continue;
    Room less(c.size - 1);
    EXPECT_EQ(less.writer.add_block(get_ipport_str, c.text), 0) << c.text;
    EXPECT_FALSE(less.writer.fits()) << c.text;
    EXPECT_TRUE(less.is_untouched_from(0)) << c.text;
  }
  // Items of whatever a platform library may know beside these get the room of the largest.
  const ListReader fill = [](void* out, const char*) {
    memset(out, 1, 84);
    return 84;
  };
  Room other(84);
  EXPECT_EQ(other.writer.add_block(fill, "a+b"), 84);
  Room too_small(83);
  EXPECT_EQ(too_small.writer.add_block(fill, "a+b"), 0);
  EXPECT_TRUE(too_small.is_untouched_from(0));
}

TEST(ListWriter, ABlockIsNoLongerThanItsLengthField) {
  std::string text = "ip=::1";
  for (int i = 1; i < 2047; ++i) text += ",::1";
  Room room(102400);
  EXPECT_EQ(room.writer.add_block(get_ipport_str, text.c_str()), 20 + 32 * 2047);
  EXPECT_EQ(room.writer.add_block(get_ipport_str, (text + ",::1").c_str()), 0);
  EXPECT_FALSE(room.writer.fits());
}

}  // namespace
