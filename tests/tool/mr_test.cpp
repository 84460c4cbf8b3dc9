// mr: what it sends and what it prints.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/driver.h"

namespace {

std::vector<std::string> mr(std::vector<std::string> words) {
  words.insert(words.begin(), "mr");
  return words;
}

void expect_sent(const std::vector<std::string>& words, uint32_t command, const Bytes& payload) {
  expect_setting(mr(words), 10, command, 1040, payload);
}

TEST(Mr, Modes) {
  expect_sent({"mode", "hi", "9", "5"}, 2, Bytes().u32(0, 1).u32(16, 5));
  expect_sent({"mode", "ct", "9", "0"}, 2, Bytes().u32(0, 2));
  expect_sent({"mode", "flow", "", "7"}, 2, Bytes().u32(0, 3).u32(16, 7));
  expect_sent({"mode", "zn", "70000", "4000000000"}, 2, Bytes().u32(0, 4).u32(12, 70000).u32(16, 4000000000));
  expect_rejected({"mr", "mode", "hi", "0"}, "type[hi,ct]");
  expect_rejected({"mr", "mode", "rr", "0", "0"}, "type[hi,ct]");
  expect_sent({"onlywan", "1", "2"}, 3, Bytes().u32(4, 1).u32(8, 2));
  expect_rejected({"mr", "onlywan", "1"}, "en[0,1] tcp[0,1]");

  const Bytes mode = Bytes().u32(0, 4).u32(4, 1).u32(8, 2).u32(12, 0xFFFFFFFF).u32(16, 5);
  const Outcome outcome = vek({"mr", "get"}, {{.payload = mode}});
  expect_order(outcome, 10, 4, 1040, Bytes());
  expect_end(outcome, 0, "type:4,onlywan:1 onlywan_tcp:2 zn_val:-1 ct_rule_name:5\n");
}

TEST(Mr, Balancing) {
  const std::string usage = "wanid en[1:on] host_num wan_proto ppp_demand ct_num";
  const Bytes line = Bytes().u8(1, 1).u8(4, 3).u8(6, 2).u16(8, 258).u32(72, 70000);
  for (const bool has_count : {false, true}) {
    std::vector<std::string> words = {"mr", "jh", "258", "1", "70000", "pppoe", "2"};
    if (has_count) words.push_back("70001");
    const Outcome outcome = vek(words, {}, {.script = "answer vek_get_wan_proto 3\n"});
    EXPECT_EQ(outcome.calls, std::vector<std::string>{"vek_get_wan_proto pppoe"});
    expect_order(outcome, 10, 1, 1040, Bytes(line).u32(76, has_count ? 70001 : 0));
    expect_end(outcome, 0, "ok\n");
  }
  expect_rejected({"mr", "jh", "2", "1", "50", "pppoe"}, usage);

  expect_sent({"flow", "2", "1"}, 1, Bytes().u8(0, 6).u16(8, 2).u8(10, 1));
  expect_rejected({"mr", "flow", "2"}, "wanid flow_limit[1:on]");
  expect_sent({"val", "65538", "4000000000", "257"}, 1,
              Bytes().u8(0, 1).u8(3, 1).u16(8, 2).u64(24, 4000000000));
  expect_rejected({"mr", "val", "2", "100"}, "wanid val is_qosval(1:en)");
  expect_sent({"zc_stop", "3"}, 1, Bytes().u8(0, 5).u16(8, 3));
  expect_rejected({"mr", "zc_stop"}, "wanid");
}

TEST(Mr, DnsServers) {
  Bytes sent = Bytes().u8(0, 3).u16(8, 2).u32(140, 9).ip(80, "1.1.1.1").ip(88, "3.3.3.3");
  sent.hex(92, "fd000000000000000000000000000001").hex(124, "fd000000000000000000000000000003");
  expect_sent({"dns", "2", "9", "1.1.1.1,x,3.3.3.3:53,4.4.4.4", "fd00::1,,fd00::3"}, 1, sent);
  expect_sent({"dns", "2", "0", "", ""}, 1, Bytes().u8(0, 3).u16(8, 2));
  // A list is read as far as 127 characters.
  const std::string long_list = std::string(118, ' ') + ",1.1.1.1,2.2.2.2";
  expect_sent({"dns", "2", "0", long_list, std::string(300, ',')}, 1,
              Bytes().u8(0, 3).u16(8, 2).ip(84, "1.1.1.1"));
  expect_rejected({"mr", "dns", "2", "0", "1.1.1.1"}, "wanid prio dns4 dns6");
}

// The words of zc with a list of targets.
std::vector<std::string> zc(const std::string& targets) {
  return {"zc", "2", "1", "2", "258", "65535", "7", "10.0.0.1", targets, "1", "9", "", "", ""};
}

TEST(Mr, Detection) {
  Bytes line = Bytes().u8(0, 2).u16(8, 2).hex(152, "010201").u16(156, 258).u16(158, 65535).u64(160, 7);
  line.ip(168, "10.0.0.1").hex(335, "0109");
  const Bytes given = Bytes(line).u8(155, 1);
  expect_sent(zc("0"), 1, line);
  expect_sent(zc(""), 1, line);
  expect_sent(zc("1.1.1.1$a.example.com$0"), 1, Bytes(given).ip(176, "1.1.1.1").text(236, "a.example.com"));
  expect_sent(zc("a$$1.1.1.1"), 1, Bytes(given).text(188, "a"));
  expect_sent(zc("a,b$0.0.0.0$1.1.1.1$2.2.2.2"), 1,
              Bytes(given).text(188, "a,b").text(236, "0.0.0.0").ip(184, "1.1.1.1"));
  const std::string name(60, 'n');
  Bytes names = given;
  for (const size_t slot : {188, 236, 284}) names.text(slot, name.substr(0, 47));
  expect_sent(zc(name + "$" + name + "$" + name), 1, names);

  const std::vector<std::string> others = {"zc", "2", "0", "1", "0",  "0",       "0",
                                           "",   "0", "0", "0", name, "1.2.3.4", "5.6.7.8"};
  Bytes sent = Bytes().u8(0, 2).u16(8, 2).u8(153, 1).ip(172, "5.6.7.8").ip(372, "1.2.3.4");
  expect_sent(others, 1, sent.text(340, name.substr(0, 31)));
  std::vector<std::string> short_words = mr(zc("0"));
  short_words.pop_back();
  expect_rejected(short_words, "wanid en(0 1) act(1 2) tm times sd gw srv 3g_enable");
}

TEST(Mr, Routes) {
  expect_sent({"lr_add", "1", "258", "0", "0.0.0.0", "10.0.0.0", "255.0.0.0"}, 6,
              Bytes().ip(8, "10.0.0.0").ip(12, "255.0.0.0").u16(16, 258).u16(18, 1));
  expect_sent({"lr_add", "1", "0", "1.2.3.4", "255.255.255.255", "5.6.7.8", "0"}, 6,
              Bytes().ip(0, "1.2.3.4").ip(4, "255.255.255.255").ip(8, "5.6.7.8").u16(18, 1));
  expect_sent({"lr_del", "1"}, 7, Bytes().u16(18, 1));
  const std::string usage = "wanid prio src srcmask dst dstmask";
  expect_rejected({"mr", "lr_add", "1", "1", "0", "0", "0", "0"}, usage);
  expect_rejected({"mr", "lr_add", "1", "1", "1.2.3.4", "0", "0", "255.0.0.0"}, usage);
  expect_rejected({"mr", "lr_add", "1", "1", "1.2.3.4", "255.0.0.0", "0"}, usage);
  expect_rejected({"mr", "lr_add"}, usage);
  expect_rejected({"mr", "lr_del"}, "wanid");

  const std::string header = "wanid prio src \t srcmask \t dst \t dstmask\n\n";
  Bytes route = Bytes().ip(0, "1.2.3.4").ip(4, "5.6.7.8").ip(8, "9.10.11.12").ip(12, "13.14.15.16");
  route.u16(16, 65535).u16(18, 7);
  const Outcome outcome =
      vek({"mr", "lr_list"}, {{.payload = Bytes().u32(4, 2).at(8, route).at(32, Bytes().u16(18, 9))}});
  expect_order(outcome, 10, 8, 0x400000, Bytes());
  expect_end(outcome, 0,
             "num: 2\n" + header +
                 "wanid:7  prio:65535  src:1.2.3.4  srcmask:5.6.7.8  dst:9.10.11.12  dstmask:13.14.15.16\n"
                 "wanid:9  prio:0  src:0.0.0.0  srcmask:0.0.0.0  dst:0.0.0.0  dstmask:0.0.0.0\n");
  expect_end(vek({"mr", "lr_list"}, {{.payload = Bytes().u32(4, 0xFFFFFFFE).at(8, route)}}), 0,
             "num: -2\n" + header);
}

TEST(Mr, Ipv6) {
  expect_sent({"dns_cache"}, 18, Bytes());
  expect_sent({"ipv6", "258", "259"}, 22, Bytes().u16(0, 258).u8(4, 3));
  expect_rejected({"mr", "ipv6", "1"}, "id state");
  const Bytes ula = Bytes().u16(0, 1).hex(4, "fd00");
  expect_sent({"ipv6_ula", "1", "fd00::"}, 25, Bytes(ula).u16(2, 60));
  expect_sent({"ipv6_ula", "1", "fd00::/0"}, 25, Bytes(ula).u16(2, 60));
  expect_sent({"ipv6_ula", "1", "fd00::/48/9"}, 25, Bytes(ula).u16(2, 48));
  expect_sent({"ipv6_ula", "1", "fd00"}, 25, Bytes().u16(0, 1).u16(2, 60));
  expect_rejected({"mr", "ipv6_ula", "1"}, "id ula");
}

const std::string kListHeader = "wanid jh state  val is_qosval hi_num ct_num dns_prio false_tm\n";

// An entry with another value in every field.
Bytes line_entry() {
  Bytes entry = Bytes().hex(0, "ffc9cacbcccdcecf").u16(8, 60008).hex(10, "d2ff").u32(12, 0xFFFFFFFF);
  for (const uint32_t at : {16, 20, 24, 80, 84, 176}) entry.u32(at, 1000 + at);
  for (const uint32_t at : {40, 48, 56, 64, 72}) entry.u64(at, 1000 + at);
  for (const uint32_t at : {148, 152, 156}) entry.u32(at, 4000000000 + at);
  entry.u64(32, UINT64_MAX)
      .ip(88, "0.0.0.88")
      .ip(96, "0.0.0.96")
      .hex(160, "fd000000000000000000000000000160");
  entry.hex(100, "01000000000000000000000000000100").hex(132, "01000000000000000000000000000132");
  entry.hex(192, "c0c1ffff").u16(196, 60196).u16(198, 60198).u64(200, UINT64_MAX - 1).ip(208, "0.0.0.208");
  entry.ip(212, "9.9.9.9").ip(216, "0.0.0.216").text(228, "not shown beside an address");
  entry.text(276, std::string(48, 'm')).hex(372, "acadaeaf").hex(376, std::string(80, 'f'));
  return entry;
}

const std::string kLineBlock =
    "\nwanid:60008 wan_proto:204 ppp_demand:206 jh:201  host_num:1080 ct_limit_num:1084  hi:-1[1016/1020]  "
    "ct:1024  dns_pri:4000000148  change_id:205\n"
    "\t state_v4:202 state_v6:207 val:18446744073709551615 chk_qosval:203 false_tm:4000000152 hi_val:1040 "
    "ct_val:1048 qos_val:1056 qos_speed:1064/1072\n"
    "\t dnsip4: 0.0.0.88,0.0.0.0,0.0.0.96, dnsip6: 100::100,::,100::132,\n\t ula: fd00::160/1176,\n"
    "\t zc: en=192  act=193  tm=60196  times=60198  sd=18446744073709551614  gw=0.0.0.208  state=172 "
    "trys=173 ret_state=174 3g=175 srv=0.0.0.216," +
    std::string(48, 'm') + ",\n\t flow_limit:210, create_tm:4000000156 \n";

TEST(Mr, List) {
  const std::string header = "wanid jh state  val is_qosval hi_num ct_num dns_prio false_tm\n";
  const Bytes two = Bytes().u32(4, 2).at(8, line_entry()).at(8 + 416, line_entry());
  for (const char* word : {"list", "ws_list"}) {
    const Outcome outcome = vek({"mr", word}, {{.payload = two}});
    expect_order(outcome, 10, 23, 0x400000, Bytes());
    expect_end(outcome, 0, "num: 2\n" + header + kLineBlock + kLineBlock + "\n");
  }
  expect_end(vek({"mr", "list"}, {{.payload = Bytes(two).u32(4, 0xFFFFFFFF)}}), 0,
             "num: -1\n" + header + "\n");
  const Outcome cut = vek({"mr", "list"}, {{.payload = Bytes().u32(4, 0x7FFFFFFF)}});
  EXPECT_EQ(std::count(cut.out.begin(), cut.out.end(), '\n'), 3 + 7 * ((0x400000 - 16 - 8) / 416));
}

}  // namespace
