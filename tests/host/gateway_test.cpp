// Orders as a caller of the gateway gives them, and the general services.
#include <array>
#include <cstring>

#include "host.h"
#include "platform/order.h"

namespace {

using Gateway = HostTest;

// A record of 16 header bytes and a payload, with bytes behind it that nobody may touch.
struct Record {
  Record(uint32_t module, uint32_t command, uint32_t payload_size) : length(16 + payload_size), bytes{} {
    const uint32_t header[] = {module, length, 0, command};
    memcpy(bytes.data(), header, sizeof header);
    memset(&bytes[length], 0xee, bytes.size() - length);
  }
  uint32_t send() {
    EXPECT_EQ(tesvel_order_opt_fun(bytes.data(), length), 0);
    for (size_t i = length; i < bytes.size(); ++i) EXPECT_EQ(bytes[i], 0xee) << i;
    return word(8);
  }
  uint32_t word(size_t offset) const {
    uint32_t value;
    memcpy(&value, &bytes[offset], sizeof value);
    return value;
  }
  uint32_t length;
  alignas(8) std::array<uint8_t, 512> bytes;
};

const char* text_of(uint32_t result) { return result < 52 ? tvlret_err_str[result] : nullptr; }

TEST_F(Gateway, RefusesWhatItDoesNotKnow) {
  EXPECT_STREQ(text_of(Record(200, 1, 100).send()), "unknown module");
  EXPECT_STREQ(text_of(Record(3, 99, 100).send()), "unknown command");
  Record headless(2, 5, 0);
  EXPECT_NE(tesvel_order_opt_fun(headless.bytes.data(), 15), 0);
  EXPECT_NE(tesvel_order_opt_fun(nullptr, 100), 0);
}

TEST_F(Gateway, StaysWithinTheRecord) {
  expect_ok("devmg add lan0 250");
  expect_ok("devmg add lan1 250");
  expect_ok("devmg add lan2 250");
  for (const uint32_t command : {3u, 4u, 5u}) {  // add, addall, del: 60 bytes each
    EXPECT_STREQ(text_of(Record(3, command, 59).send()), "bad value") << command;
  }
  Record name_fills_its_field(2, 1, 36);
  memcpy(&name_fills_its_field.bytes[16], "sixteen_letters_", 16);
  EXPECT_STREQ(text_of(name_fills_its_field.send()), "bad name");

  Record list(2, 5, 8 + 2 * 36 + 35);
  EXPECT_EQ(list.send(), 0u);
  EXPECT_EQ(list.word(16 + 4), 2u);
  EXPECT_STREQ(reinterpret_cast<char*>(&list.bytes[16 + 8 + 36]), "lan1");
  EXPECT_EQ(list.bytes[16 + 8 + 72], 0);
  Record no_room(2, 5, 6);
  EXPECT_EQ(no_room.send(), 0u);
  EXPECT_EQ(no_room.word(16), 0u);
}

TEST_F(Gateway, AFailedExchangeLeavesTheRecordAlone) {
  expect_ok("devmg add lan0 250");
  sql("state.db", "PRAGMA application_id = 1");
  Record get(2, 3, 36);
  memcpy(&get.bytes[16], "lan0", 5);
  const Record before = get;
  EXPECT_NE(tesvel_order_opt_fun(get.bytes.data(), get.length), 0);
  EXPECT_EQ(get.bytes, before.bytes);
}

TEST_F(Gateway, KeepsErrorInformation) {
  expect_out("errinfo 5", "not info\n");
  expect_out("errinfo 5 five", "not info\n");
  expect_out("errinfo erase none", "not info\n");  // a text to keep under number 0
  std::string five = "five\nsid:66 69 76 65 ";
  for (int i = 4; i < 32; ++i) five += "00 ";
  expect_out("errinfo 5", five);
  EXPECT_TRUE(vek("errinfo").out.starts_with("none\n"));
  expect_out("errinfo erase", "not info\n");
  expect_out("errinfo 5", "not info\n");
  for (int i = 0; i < 256; ++i) expect_out("errinfo " + std::to_string(i) + " x", "not info\n");
  expect_refused("errinfo 256 x", "table full");

  expect_out("errinfo erase", "not info\n");
  expect_ok("malloc");
  EXPECT_TRUE(vek("errinfo 1").out.starts_with("memory: total "));
}

}  // namespace
