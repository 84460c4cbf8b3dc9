// devmg and arp: what they send and what they print.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/driver.h"

namespace {

const std::string kLongName = "a-very-long-interface-name";
const std::string kCutName = "a-very-long-int";

TEST(Devmg, Requests) {
  const Bytes eth0 = Bytes().text(0, "eth0");
  expect_setting({"devmg", "add", "eth0", "250"}, 2, 1, 1040, Bytes(eth0).u16(24, 250));
  expect_setting({"devmg", "add", kLongName, "65537"}, 2, 1, 1040, Bytes().text(0, kCutName).u16(24, 1));
  expect_setting({"devmg", "del", "eth0"}, 2, 2, 1040, eth0);
  expect_setting({"devmg", "set", "eth0", "1", "gateway", "3"}, 2, 4, 1040, Bytes(eth0).u8(31, 1).u8(33, 3));
  expect_setting({"devmg", "set", "eth0", "258", "router", "3"}, 2, 4, 1040,
                 Bytes(eth0).u8(31, 2).u8(32, 1).u8(33, 3));
  expect_setting({"devmg", "set", "eth0", "0", "vpn", "0"}, 2, 4, 1040, Bytes(eth0).u8(32, 2));
  expect_setting({"devmg", "set", "eth1", "1", "bridge", "3"}, 2, 4, 1040,
                 Bytes().text(0, "eth1").u8(31, 1).u8(33, 3));
  expect_setting({"devmg", "landev", "eth0"}, 2, 7, 1040, eth0);
  expect_setting({"devmg", "wandev", kLongName}, 2, 8, 1040, Bytes().text(0, kCutName));
  expect_setting({"devmg", "dev_get"}, 2, 9, 1040, Bytes());
  expect_setting({"devmg", "wan_done", ""}, 2, 10, 1040, Bytes());
}

TEST(Devmg, Rejected) {
  expect_rejected({"devmg", "add", "eth0"}, "dev type[lan:250,not:0]");
  expect_rejected({"devmg", "del"}, "dev");
  expect_rejected({"devmg", "set", "eth0", "1", "vpn"}, "dev jb_en wk_mode wan_isp");
  expect_rejected({"devmg", "get"}, "dev");
  for (const char* word : {"landev", "wandev", "wan_done", "dev_stat"})
    expect_rejected({"devmg", word}, "dev");
}

// An interface entry; its name fills the field, without a NUL.
Bytes interface_entry() {
  return Bytes()
      .text(0, "sixteen-letters!")
      .u32(16, 0xABCDEF01)
      .u32(20, 0x1043)
      .u16(24, 250)
      .hex(26, "ffffffff")
      .u8(30, 1)
      .u8(31, 2)
      .u8(32, 3)
      .u8(33, 255)
      .u8(34, 5)
      .u8(35, 0xff);
}

TEST(Devmg, Get) {
  const Outcome outcome = vek({"devmg", "get", "eth0"}, {{.payload = interface_entry()}});
  expect_order(outcome, 2, 3, 1040, Bytes().text(0, "eth0"));
  expect_end(outcome, 0,
             " dev:sixteen-letters! flags:0XABCDEF01  type: 250  arp:1  jb_en:2  wk_mode:3 isp:255  "
             "dev_flags:0X1043\n");
}

TEST(Devmg, List) {
  const std::string header = "dev\t\t flags\t type\t arp\t jb\t wk_mode\t isp\t dev_id\t dev_flags\n\n";
  const Bytes two = Bytes().u32(4, 2).at(8, interface_entry()).at(44, Bytes().text(0, "eth1").u8(34, 9));
  const Outcome outcome = vek({"devmg", "list"}, {{.payload = two}});
  expect_order(outcome, 2, 5, 0x400000, Bytes());
  expect_end(outcome, 0,
             header + "sixteen-letters! 0XABCDEF01\t 250\t 1\t 2\t 3\t 255\t 5\t 0X1043\n" +
                 "eth1             0X0\t 0\t 0\t 0\t 0\t 0\t 9\t 0X0\n");
  expect_end(vek({"devmg", "list"}, {{.payload = Bytes().u32(4, 0)}}), 0, header);
  expect_end(vek({"devmg", "list"}, {{.payload = Bytes(two).u32(4, 0xFFFFFFFF)}}), 0, header);
}

TEST(Devmg, ListEndsWithTheRecord) {
  // A count far beyond the record, and a header length that the kernel wrote over.
  const Outcome outcome =
      vek({"devmg", "list"}, {{.payload = Bytes().u32(4, 0x7FFFFFFF), .header = Bytes().u32(4, 0xFFFFFFFF)}});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 2 + (0x400000 - 16 - 8) / 36);
}

TEST(Devmg, Counters) {
  const Bytes counters =
      Bytes().u64(16, 1).u64(24, 2).u64(32, UINT64_MAX).u64(40, 1ULL << 63).u64(48, 5).u64(56, 6);
  const Outcome outcome = vek({"devmg", "dev_stat", "eth0"}, {{.payload = counters}});
  expect_order(outcome, 2, 11, 1040, Bytes().text(0, "eth0"));
  expect_end(outcome, 0,
             "rx_broadcast:1,rx_multicast:2,rx_unicast:18446744073709551615\n"
             "tx_broadcast:9223372036854775808,tx_multicast:5,tx_unicast:6\n");
}

TEST(Arp, Settings) {
  const Bytes base = Bytes().text(0, "eth0").u32(16, 10).ip(20, "1.1.1.1").ip(24, "2.2.2.2");
  const auto level = [&](const char* word, uint32_t sent) {
    expect_setting({"arp", "set", "eth0", "10", "1.1.1.1", "2.2.2.2", word}, 3, 1, 1040,
                   Bytes(base).u32(28, sent));
  };
  level("100", 2);
  level("-5", 2);
  level("101", 1);
  level("200", 1);
  level("201", 0);
  expect_setting({"arp", "set", "eth0", "", "x", "", ""}, 3, 1, 1040, Bytes().text(0, "eth0").u32(28, 2));
  expect_rejected({"arp", "set", "eth0", "10", "1.1.1.1", "2.2.2.2"}, "dev tm ip check_ip zn_jb");
  expect_rejected({"arp", "get"}, "dev");

  const Outcome outcome =
      vek({"arp", "get", kLongName}, {{.payload = Bytes(base).u32(16, 0xFFFFFFFF).u32(28, 2)}});
  expect_order(outcome, 3, 2, 1040, Bytes().text(0, kCutName));
  expect_end(outcome, 0, " dev: eth0  tm: -1 ip:1.1.1.1  check_ip:2.2.2.2 deal_level:2\n");
}

TEST(Arp, Bindings) {
  const Bytes binding = Bytes().ip(0, "1.2.3.4").hex(4, "001122334455").u16(10, 4).text(12, "eth0");
  expect_setting({"arp", "add", "eth0", "1.2.3.4", "00:11:22:33:44:55", "4", "pc"}, 3, 3, 1040,
                 Bytes(binding).text(28, "pc"));
  expect_setting({"arp", "add", kLongName, "258", "00:11:22:33:44:55", "1", std::string(40, 'n')}, 3, 3, 1040,
                 Bytes()
                     .ip(0, "0.0.1.2")
                     .hex(4, "001122334455")
                     .u16(10, 1)
                     .text(12, kCutName)
                     .text(28, std::string(31, 'n')));
  expect_setting({"arp", "del", "eth0", "1.2.3.4"}, 3, 5, 1040, Bytes().ip(0, "1.2.3.4").text(12, "eth0"));
  expect_setting({"arp", "delall", "eth0"}, 3, 6, 1040, Bytes());
  expect_setting({"arp", "addall", "lan", "9"}, 3, 4, 1040, Bytes().text(12, "lan").u16(10, 9));

  const std::string usage = "dev ip mac type[1|2|3|4] name";
  for (const char* type : {"5", "0", "", "11", "1 ", "-1"}) {
    expect_rejected({"arp", "add", "eth0", "1.2.3.4", "00:11:22:33:44:55", type, "pc"}, usage);
  }
  expect_rejected({"arp", "add", "eth0", "1.2.3.4", "00:11:22:33:44", "1", "pc"}, usage);
  expect_rejected({"arp", "add", "eth0", "1.2.3.4", "00:11:22:33:44:55", "1"}, usage);
  expect_rejected({"arp", "add", "eth0"}, usage);
  expect_rejected({"arp", "add", "eth0", "%s%n"}, usage, "ip err:%s%n/n");
  expect_rejected({"arp", "del", "eth0", "0"}, "dev ip", "ip err:0/n");
  expect_rejected({"arp", "del", "eth0"}, "dev ip");
  expect_rejected({"arp", "addall", "lan"}, "dev[lan|wan] type[1|2|3|4]");
}

TEST(Arp, SwitchesAndKeys) {
  expect_setting({"arp", "disonline_set", "7"}, 3, 13, 1040, Bytes().u32(0, 7));
  expect_rejected({"arp", "disonline_set"}, "en[0|1]");
  const Outcome outcome = vek({"arp", "disonline_get"}, {{.payload = Bytes().u32(0, 3)}});
  expect_order(outcome, 3, 14, 1040, Bytes());
  expect_end(outcome, 0, " enable:3\n");

  expect_setting({"arp", "db_del", "eth0", "1.2.3.4"}, 3, 15, 1040, Bytes().ip(0, "1.2.3.4").text(4, "eth0"));
  expect_setting({"arp", "db_del", kLongName, "none"}, 3, 15, 1040, Bytes().text(4, kCutName));
  expect_rejected({"arp", "db_del", "eth0"}, "dev ip");
  expect_setting({"arp", "del_mac", "eth0", "a0:11:22:33:44:55"}, 3, 17, 1040,
                 Bytes().hex(0, "a01122334455").text(8, "eth0"));
  expect_setting({"arp", "del_mac", "eth0", "none"}, 3, 17, 1040, Bytes().text(8, "eth0"));
  expect_rejected({"arp", "del_mac", "eth0"}, "dev mac");
  expect_setting({"arp", "debug"}, 3, 12, 1040, Bytes());
  expect_setting({"arp", "search", "eth0", "192.168.1.77", "255.255.255.0"}, 3, 16, 1040,
                 Bytes().text(0, "eth0").ip(16, "192.168.1.0").ip(20, "192.168.1.255"));
  expect_rejected({"arp", "search", "eth0", "192.168.1.77", "0.0.0.0"}, "dev ip mask");
  expect_rejected({"arp", "search", "eth0", "x", "255.255.255.0"}, "dev ip mask");
  expect_rejected({"arp", "search", "eth0", "1.1.1.1"}, "dev ip mask");
}

TEST(Arp, List) {
  const std::string header =
      "ip \t\t check_ip \t\t org_ip \t \t mac \t \t dev \t  type \t state \t del_time\n";
  const Bytes entry = Bytes()
                          .ip(0, "1.2.3.4")
                          .ip(4, "5.6.7.8")
                          .ip(8, "255.255.255.255")
                          .hex(12, "a0b1c2d3e4f5")
                          .hex(18, "ffffffffffff")
                          .u32(24, 4000000000)
                          .text(28, "sixteen-letters!")
                          .u32(44, 0xFFF80005)
                          .u32(84, 0xFFFFFFFF)
                          .u64(96, UINT64_MAX);
  const Outcome outcome = vek({"arp", "list", kLongName}, {{.payload = Bytes().u32(4, 2).at(8, entry)}});
  expect_order(outcome, 3, 8, 0x400000, Bytes().text(36, kCutName));
  expect_end(
      outcome, 0,
      header +
          "1.2.3.4\t5.6.7.8\t255.255.255.255\ta0:b1:c2:d3:e4:f5\tsixteen-letters!\t4000000000\t4294443013"
          "[0|2|19|]-1\t18446744073709551615\n"
          "0.0.0.0\t0.0.0.0\t0.0.0.0\t00:00:00:00:00:00\t\t0\t0[]0\t0\n");
  expect_end(vek({"arp", "list", "eth0"}, {{.payload = Bytes().u32(4, 0x80000000).at(8, entry)}}), 0, header);
  expect_rejected({"arp", "list"}, "dev");

  const Outcome cut = vek({"arp", "list", "eth0"}, {{.payload = Bytes().u32(4, 0x7FFFFFFF)}});
  EXPECT_EQ(std::count(cut.out.begin(), cut.out.end(), '\n'), 1 + (0x400000 - 16 - 8) / 104);
}

}  // namespace
