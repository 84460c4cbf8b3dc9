// qos, the engine's control: what it sends and what it prints.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/driver.h"

namespace {

std::vector<std::string> words_of(const std::string& text) {
  std::vector<std::string> words;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find(' ', at), text.size());
    words.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return words;
}

// Runs the words, split at blanks, and expects what was sent and, on standard output, what was printed.
void expect_exchange(const std::string& words, uint32_t command, uint32_t length, const Bytes& sent,
                     const Bytes& answer, const std::string& out) {
  SCOPED_TRACE(words);
  const Outcome outcome = vek(words_of("qos " + words), {{.payload = answer}});
  expect_order(outcome, 14, command, length, sent);
  expect_end(outcome, 0, out);
}

void expect_sent(const std::string& words, uint32_t command, const Bytes& sent) {
  expect_exchange(words, command, 1040, sent, Bytes(), "ok\n");
}

void expect_no_good(const std::string& words, const std::string& usage, const std::string& before = "") {
  expect_rejected(words_of("qos " + words), usage, before);
}

const std::string kSetUsage =
    "dev en(on|off) type[hi|type] up down up_fast down_fast up_skb down_skb up_ctskb down_ctskb ge_tm tcpwin "
    " hi_up hi_down";

TEST(Qos, Settings) {
  const std::string words = "set a-very-long-interface-name on type 4000000000 6 8 9 10 11 12 13 14";
  Bytes all = Bytes().text(0, "a-very-long-int").hex(16, "0101").u64(24, 4000000000).u64(32, 6).u16(20, 14);
  all.hex(40, "080009000c000d000a000b00");
  expect_sent(words, 1, all);
  expect_sent(words + " 15", 1, Bytes(all).u16(22, 15));
  expect_sent(words + " 15 70000", 1, Bytes(all).u16(22, 15).u32(52, 70000));
  expect_sent(words + " 15 70000 70001 x", 1, Bytes(all).u16(22, 15).u32(52, 70000).u32(56, 70001));
  expect_sent("set eth0 on hi 1 0 0 0 0 0 0 0 0", 1, Bytes().text(0, "eth0").u8(17, 1).u64(24, 1));
  expect_sent("set eth0 off type 1 2", 1, Bytes().text(0, "eth0"));
  for (const char* bad : {"set", "set eth0", "set eth0 1", "set eth0 on hi 1 2 3 4 5 6 7 8",
                          "set eth0 on tipe 1 2 3 4 5 6 7 8 9"}) {
    expect_no_good(bad, kSetUsage);
  }
  Bytes speed = Bytes().text(0, "eth0").u8(17, 1).u16(20, 4).u16(22, 1500).u64(24, 100).u64(32, 4000000000);
  speed.u16(40, 75).u16(42, 85).u16(44, 5).u16(46, 10).u16(48, 1000).u16(50, 2000).u32(52, 8).u32(56, 16);
  expect_sent("speed_set eth0 100 4000000000", 1, speed);
  expect_no_good("speed_set eth0 100", "dev up down");

  expect_exchange("get eth0", 2, 1040, Bytes().text(0, "eth0"),
                  Bytes(all).u64(24, UINT64_MAX).u16(22, 65535).u32(52, 70000).u32(56, 4000000000),
                  " en: 1\n type: type\n sp[up]: 18446744073709551615\n sp[down]: 6\n fast[up]: 8\n"
                  " fast[down]: 9\n root_skb_max[up]: 10\n root_skb_max[down]: 11\n ct_skb_max[up]: 12\n"
                  " ct_skb_max[down]: 13\n ge_tm: 14  tcpwin=65535\n hi_min_up: 70000  "
                  "hi_min_down=4000000000\n");
  EXPECT_NE(vek({"qos", "get", "eth0"}).out.find(" type: hi\n"), std::string::npos);
  expect_no_good("get", "dev");
}

TEST(Qos, State) {
  Bytes answer;
  for (uint32_t offset = 32; offset < 176; offset += 8) answer.u64(offset, offset << 10 | 1023);
  for (const uint32_t packets : {88, 104, 120, 136, 152, 168}) answer.u64(packets, packets);
  answer.u32(176, 0xFFFFFFFF).u32(180, 180).u64(184, 184).u64(192, UINT64_MAX);
  const std::string out =
      "  sp_max[up]: 184\n  sp_max[down]: 18446744073709551615\n  sp[up]: 32k/s\n  sp[down]: 40k/s\n"
      "  sp_qos[up]: 64k/s\n  sp_qos[down]: 72k/s\n  sp_drop[up]: 48k/s\n  sp_drop[down]: 56k/s\n"
      "  count[up]: 80k\n  count_skb[up]: 88\n  count[down]: 96k\n  count_skb[down]: 104\n"
      "  count_qos[up]: 144k\n  count_qos_skb[up]: 152\n  count_qos[down]: 160k\n  count_qos_skb[down]: 168\n"
      "  count_drop[up]: 112k\n  count_drop_skb[up]: 120\n  count_drop[down]: 128k\n"
      "  count_drop_skb[down]: 136\n  skb_num[up]: -1\n  skb_num[down]: 180\n\n";
  expect_exchange("state eth0 300", 3, 2064, Bytes().text(0, "eth0").u8(18, 44), answer,
                  "dev:eth0, iptype:44\n" + out);
  expect_exchange("state a-very-long-interface-name", 3, 2064, Bytes().text(0, "a-very-long-int"), answer,
                  "dev:a-very-long-int, iptype:0\n" + out);
  expect_no_good("state", "dev");
  expect_end(vek({"qos", "state", "eth0"}, {{.result = 3}}), 3, "dev:eth0, iptype:0\n",
             "err:no such entry \n");  // what was asked for stands above the report
}

TEST(Qos, GlobalLimits) {
  const std::string usage =
      "hup hdown ctnum1 ctnum2 tcpwin ctunum1 ctunum2 hi_wait_tm ct_wait_tm sqos_limit_num sqos_ct_limit_num";
  Bytes sent = Bytes().u32(0, 3).u32(4, 4).u32(8, 5).u32(12, 6).u32(24, 7).u32(16, 8).u32(20, 9);
  sent.u32(28, 10).u32(32, 11).u32(36, 12).u32(40, 13);
  expect_sent("ext_set 3 4 5 6 7 8 9 10 11 12 13", 17, sent);
  expect_no_good("ext_set 3 4 5 6 7 8 9 10 11 12", usage);
  expect_exchange("ext_get", 18, 1040, Bytes(), Bytes(sent).u32(40, 0xFFFFFFFF),
                  "hi_up:3  hi_down:4\nct_num1:5  ct_num2:6\ntcpwin:7\nct_udp_num1:8  ct_udp_num2:9\n"
                  "hi_wait_tm2:10  ct_wait_tm2:11\nsqos_limit_num:12  sqos_ct_limit_num:-1\n");
  expect_sent("level 4000000000", 19, Bytes().u32(0, 4000000000));
  expect_no_good("level", "level");
  expect_sent("debug", 16, Bytes());
  expect_sent("sb_tj_init", 32, Bytes());

  const Bytes limit = Bytes().u32(4, 1).u32(8, 2).u32(12, 0xFFFFFFFF);
  expect_exchange("ggvpn set 7", 30, 1040, Bytes().u32(0, 1).u32(4, 7), limit, "limit:1,up:2,down:-1\n");
  expect_exchange("ggvpn put 7", 30, 1040, Bytes(), limit, "limit:1,up:2,down:-1\n");
  expect_no_good("ggvpn set", "set/get limit");
  expect_no_good("ggvpn", "set/get limit");

  const Bytes single = Bytes().u32(0, 1).u32(4, 5).u32(8, 6).u32(12, 7);
  expect_exchange("single_ct set 5 6 7", 31, 1040, single, Bytes(single).u32(8, 8), "up:8,down:7\n");
  expect_exchange("single_ct get 5", 31, 1040, Bytes().u32(4, 5), single, "up:6,down:7\n");
  expect_no_good("single_ct set 5 6", "set/get iface up down");
  expect_no_good("single_ct get", "set/get iface up down");

  expect_exchange("speed_limit set on", 34, 1040, Bytes().u32(0, 1), Bytes(), "speed limit on\n");
  expect_exchange("speed_limit set off", 34, 1040, Bytes().u32(0, 1).u32(4, 1), Bytes().u32(4, 0x100),
                  "speed limit off\n");
  expect_exchange("speed_limit get", 34, 1040, Bytes(), Bytes(), "speed limit on\n");
  for (const char* bad : {"speed_limit", "speed_limit set", "speed_limit set 1"}) {
    expect_no_good(bad, "set/get on/off");
  }
}

TEST(Qos, WaitTimes) {
  const std::string usage = "set/get H/H H/N H/L N/H N/N N/L L/H L/N L/L";
  const std::string out = "H/H  5\nH/N  4\nH/L  6\nN/H  2\nN/N  1\nN/L  3\nL/H  8\nL/N  7\nL/L  -1\n";
  Bytes answer;
  for (uint32_t word = 1; word < 9; ++word) answer.u32(4 * word, word);
  answer.u32(36, 0xFFFFFFFF);
  Bytes sent = Bytes().u32(0, 1).u32(20, 11).u32(16, 12).u32(24, 13).u32(8, 14).u32(4, 15).u32(12, 16);
  sent.u32(32, 17).u32(28, 18).u32(36, 19);
  expect_exchange("queue_wait set 11 12 13 14 15 16 17 18 19", 35, 1040, sent, answer, out);
  expect_exchange("queue_wait get 11 12", 35, 1040, Bytes(), answer, out);
  expect_no_good("queue_wait set 11 12 13 14 15 16 17 18", usage);
  expect_no_good("queue_wait", usage);
}

TEST(Qos, SpeedValues) {
  const uint32_t length = 102400 + 16;
  Bytes everywhere = Bytes().u32(0, 1);
  for (uint32_t offset = 8; offset < 264; ++offset) everywhere.u8(offset, 0x2c);
  expect_exchange("ws_sp_val set 300", 37, length, everywhere, Bytes().u32(4, 255).u8(263, 77),
                  "sp_val 77\n");
  expect_exchange("ws_sp_val get", 37, length, Bytes(), Bytes().u8(8, 255), "sp_val 255\n");
  expect_no_good("ws_sp_val set", "set/get [0-99]");
  expect_no_good("ws_sp_val", "set/get [0-99]");

  const auto line = [&](const std::string& words, const Bytes& sent, const std::string& value) {
    expect_exchange("ws_sp_wan_val " + words, 40, length, sent, Bytes(), "sp_val " + value + "\n");
  };
  line("set 3 50", Bytes().u32(0, 1).u32(4, 3).u8(11, 50), "50");
  line("get 3", Bytes().u32(4, 3), "0");
  // Beyond the table, on the record's last byte, and beyond the record.
  line("set 300 50", Bytes().u32(0, 1).u32(4, 300).u8(308, 50), "50");
  line("set 102391 50", Bytes().u32(0, 1).u32(4, 102391).u8(102399, 50), "50");
  line("set 102392 50", Bytes().u32(0, 1).u32(4, 102392), "0");
  for (const char* index : {"4294967288", "-1"}) {  // these would come round to the record's beginning
    const Bytes sent = Bytes().u32(0, 1).u32(4, index[0] == '-' ? 0xFFFFFFFF : 0xFFFFFFF8);
    line(std::string("set ") + index + " 50", sent, "0");
  }
  expect_no_good("ws_sp_wan_val set 3", "set/get wanid [0-99]");
  expect_no_good("ws_sp_wan_val get", "set/get wanid [0-99]");

  const std::string usage = "set/get devname [up 0-99] [down 0-99]";
  const Bytes no_queue = Bytes().text(0, "sixteen-letters!").u32(16, 1).u32(20, 5).u32(24, 0xFFFFFFFF);
  const std::string out = "devname sixteen-letters! sp_val up 5 down -1\n";
  expect_exchange("noqueue_sp_val set sixteen-letters! 5 6", 38, 1040,
                  Bytes().text(0, "sixteen-letters").u32(16, 1).u32(20, 5).u32(24, 6), no_queue, out);
  expect_exchange("noqueue_sp_val get eth0 5 6", 38, 1040, Bytes().text(0, "eth0"), no_queue, out);
  expect_exchange("noqueue_sp_val get", 38, 1040, Bytes(), no_queue, out);
  expect_no_good("noqueue_sp_val set eth0 5", usage);
  expect_no_good("noqueue_sp_val", usage);
}

TEST(Qos, Buffers) {
  Bytes host = Bytes().ip(0, "1.2.3.4").hex(4, "040506ffa8a9aaab").u32(32, 0xFFFFFFFF);
  for (const uint32_t at : {12, 16, 20, 24, 28}) host.u32(at, at);
  const std::string host_line = "01020304 [ 28 , -1 ][ 12 , 16 ] [ 20 , 24 ] [5,4]  6 [a8,a9][aa,ab]\n";
  const auto report = [&](uint32_t up, uint32_t down) {
    Bytes bytes = Bytes().text(0, "ppp0").u32(16, up).u32(20, down).u32(24, 100).u32(28, 200).u32(32, 32);
    bytes.u32(36, 36).hex(40, "ffff0200");
    return bytes.at(44, host).at(80, Bytes(host).ip(0, "255.0.0.1"));
  };
  const auto expected = [&](const std::string& device, const std::string& check) {
    return "skb_head:32 skb_data:36\ndev_skb[ " + device + " ]\nno_queue[ 100, 200 ]\n" +
           "ipaddr ct_skb[ ]  hi_skb[ ] hi_udp_skb[ ][dev_prio,hi_prio] is_udp ct_err[ ] hi_err[ ] \n" +
           check + host_line + "ff000001" + host_line.substr(8);
  };
  const Surroundings names = {.script = "answer tvl_get_wan_name 1 70707030\n"};
  const Outcome outcome = vek({"qos", "skb", "120"}, {{.payload = report(156, 198)}}, names);
  EXPECT_EQ(outcome.calls, std::vector<std::string>{"tvl_get_wan_name 120"});
  expect_order(outcome, 14, 26, 204816, Bytes().text(0, "ppp0"));
  expect_end(outcome, 0, expected("156, 198", ""));
  expect_end(vek({"qos", "skb", "0"}, {{.payload = report(157, 0)}}, names), 0,
             expected("157, 0", "ct_up_zong:156  so->skb_num[0]=157\nct_down_zong:198 so->skb_num[1]=0\n"));

  const Outcome cut = vek({"qos", "skb", "0"}, {{.payload = Bytes().u16(42, 65535)}}, names);
  EXPECT_EQ(std::count(cut.out.begin(), cut.out.end(), '\n'), 4 + (204800 - 44) / 36);
}

TEST(Qos, NamesOfLines) {
  const Surroundings link = {.script =
                                 "answer tvl_vpnget 1 6b6579\n"
                                 "answer nvram_get:key 1 612d766572792d6c6f6e672d6e616d65\n"};
  const Outcome outcome = vek({"qos", "skb", "121"}, {}, link);
  EXPECT_EQ(outcome.calls, (std::vector<std::string>{"tvl_vpnget vpn_link 0", "nvram_get key"}));
  expect_order(outcome, 14, 26, 204816, Bytes().text(0, "a-very-long-nam"));

  expect_no_good("skb", "waniface");
  expect_no_good("skb 5", "waniface", "not iface name\n");
  expect_no_good("skb 4294967295", "waniface", "not iface name\n");
  const Outcome nameless = vek({"qos", "skb", "5"}, {}, {.script = "answer tvl_get_wan_name 1\n"});
  EXPECT_TRUE(nameless.orders.empty());
  EXPECT_EQ(nameless.out, "not iface name\ngo to help\n");
}

TEST(Qos, Lists) {
  const Bytes device = Bytes().text(0, "sixteen-letters!").u32(16, 7).u32(20, 8).u32(24, 0xFFFFFFFF);
  const Bytes report = Bytes().u32(0, 1).u32(4, 2).u32(8, 3).u32(12, 4).hex(16, "ffff0200").at(20, device);
  expect_exchange("devinfo", 27, 204816, Bytes(), Bytes(report).at(48, Bytes().text(0, "ppp1")),
                  "skb_head:3 skb_data:4\ndev_skb[ 1, 2 ]\niface [up,down] devname \n"
                  "7 [ 8 , -1 ] sixteen-letters! \n0 [ 0 , 0 ] ppp1 \nend \n");
  const Outcome cut = vek({"qos", "devinfo"}, {{.payload = Bytes().u16(18, 65535)}});
  EXPECT_EQ(std::count(cut.out.begin(), cut.out.end(), '\n'), 4 + (204800 - 20) / 28);

  const Bytes rule =
      Bytes().u32(0, 4).ip(4, "1.2.3.4").u32(20, 20).u32(24, 4000000024).u32(28, 28).u32(32, 32);
  expect_exchange("ip_rule_list", 33, 102416, Bytes(),
                  Bytes().u32(4, 2).at(8, rule).at(44, Bytes().u32(0, 6).hex(4, "fd").u8(19, 1)),
                  "num: 2\nip:1.2.3.4 up:20KB down:4000000024KB max_up:28 max_down:32\n"
                  "ip:fd00::1 up:0KB down:0KB max_up:0 max_down:0\n");
  expect_exchange("ip_rule_list", 33, 102416, Bytes(), Bytes().u32(4, 0xFFFFFFFF).at(8, rule), "num: -1\n");
}

// A word that only the usage knows.
TEST(Qos, UnknownSubCommands) {
  const Outcome outcome = vek({"qos", "speed_coeff"});
  EXPECT_TRUE(outcome.orders.empty());
  EXPECT_TRUE(outcome.err.starts_with(" qos\tset get state "));
  EXPECT_EQ(outcome.status, 1);
}

}  // namespace
