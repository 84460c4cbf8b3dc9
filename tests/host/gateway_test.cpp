// Orders as a caller of the gateway gives them, and the general services.
#include "host.h"
#include "record.h"

namespace {

using Gateway = HostTest;

TEST_F(Gateway, StaysWithinTheRecord) {
  EXPECT_EQ(Record(200, 1, 100).send(), "unknown module");
  EXPECT_EQ(Record(3, 99, 100).send(), "unknown command");
  EXPECT_NE(tesvel_order_opt_fun(Record(2, 5, 0).bytes.data(), 15), 0);
  EXPECT_NE(tesvel_order_opt_fun(nullptr, 100), 0);
  for (const uint32_t command : {3u, 4u, 5u}) {  // add, addall, del: 60 bytes each
    EXPECT_EQ(Record(3, command, 59).send(), "record does not hold what it says") << command;
  }
  Record name_fills_its_field(2, 1, 36);
  memcpy(&name_fills_its_field.bytes[16], "sixteen_letters_", 16);
  EXPECT_EQ(name_fills_its_field.send(), "bad name");

  ok({"devmg add lan0 250", "devmg add lan1 250", "devmg add lan2 250"});
  Record list(2, 5, 8 + 2 * 36 + 35);
  EXPECT_EQ(list.send(), "");
  EXPECT_EQ(list.bytes[16 + 4], 2);
  EXPECT_STREQ(reinterpret_cast<char*>(&list.bytes[16 + 8 + 36]), "lan1");
  EXPECT_EQ(list.bytes[16 + 8 + 72], 0);
  Record no_room(2, 5, 6);
  EXPECT_EQ(no_room.send(), "");
  EXPECT_EQ(no_room.bytes[16], 0);
}

TEST_F(Gateway, AFailedExchangeLeavesTheRecordAlone) {
  ok({"devmg add lan0 250"});
  sql("PRAGMA application_id = 1");
  Record get(2, 3, 36);
  memcpy(&get.bytes[16], "lan0", 5);
  const Record before = get;
  EXPECT_NE(tesvel_order_opt_fun(get.bytes.data(), get.length), 0);
  EXPECT_EQ(get.bytes, before.bytes);
}

TEST_F(Gateway, KeepsErrorInformation) {
  for (const char* words : {"errinfo 5", "errinfo 5 five", "errinfo erase none"}) shows(words, "not info\n");
  shows("errinfo 5", unfolded("five\nsid:66 69 76 65 {00 }*28"));
  begins("errinfo", "none\n");  // a text to keep under number 0
  for (const char* words : {"errinfo erase", "errinfo 5"}) shows(words, "not info\n");
  insert(2, 256, "error_info SELECT i, 'x'");
  ok({"malloc"});  // a report of a module takes no text's place
  begins("errinfo 1", "memory: total ");
  shows("errinfo 1 x", "not info\n");
  refused("table full", {"errinfo 257 x"});
  ok({"malloc"});
  begins("errinfo 1", "x\n");
}

}  // namespace
