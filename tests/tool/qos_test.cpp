// qos, the engine's control: what it sends and what it prints.
#include <algorithm>

#include "tool/driver.h"

namespace {

TEST(Qos, Settings) {
  const std::string words = "qos set a-very-long-interface-name on type 4000000000 6 8 9 10 11 12 13 14";
  const std::string all =
      "0:text a-very-long-int 16:u8 1 1 20:u16 14 24:u64 4000000000 6 40:u16 8 9 12 13 10 11 ";
  sends(words, {14, 1}, all);
  sends(words + " 15", {14, 1}, all + "22:u16 15");
  sends(words + " 15 70000 70001 x", {14, 1}, all + "22:u16 15 52:u32 70000 70001");
  sends("qos set eth0 on hi 1 0 0 0 0 0 0 0 0", {14, 1}, "0:text eth0 17:u8 1 24:u64 1");
  sends("qos set eth0 off type 1 2", {14, 1}, "0:text eth0");
  rejects(
      "dev en(on|off) type[hi|type] up down up_fast down_fast up_skb down_skb up_ctskb down_ctskb ge_tm "
      "tcpwin  hi_up hi_down",
      {"qos set", "qos set eth0", "qos set eth0 1", "qos set eth0 on hi 1 2 3 4 5 6 7 8",
       "qos set eth0 on tipe 1 2 3 4 5 6 7 8 9"});
  sends("qos speed_set eth0 100 4000000000", {14, 1},
        "0:text eth0 17:u8 1 20:u16 4 1500 24:u64 100 4000000000 40:u16 75 85 5 10 1000 2000 52:u32 8 16");
  rejects("dev up down", {"qos speed_set eth0 100"});

  const std::string rates =
      " sp[down]: 6\n fast[up]: 8\n fast[down]: 9\n root_skb_max[up]: 10\n root_skb_max[down]: 11\n"
      " ct_skb_max[up]: 12\n ct_skb_max[down]: 13\n ge_tm: 14  tcpwin=65535\n hi_min_up: 70000  "
      "hi_min_down=4000000000\n";
  const std::string answered = all + "22:u16 -1 52:u32 70000 4000000000";
  shows("qos get eth0", {14, 2}, "0:text eth0", answered + " 24:u64 -1",
        " en: 1\n type: type\n sp[up]: 18446744073709551615\n" + rates);
  shows("qos get eth0", {14, 2}, "0:text eth0", answered + " 16:u8 0",
        " en: 1\n type: hi\n sp[up]: 4000000000\n" + rates);
  rejects("dev", {"qos get", "qos state"});
}

TEST(Qos, State) {
  const std::string answered =
      "32:u64 33791 41983 50175 58367 66559 74751 82943 88 99327 104 115711 120 132095 136 148479 152"
      " 160:u64 164863 168 176:u32 -1 180 184:u64 184 -1";
  const std::string out =
      "  sp_max[up]: 184\n  sp_max[down]: 18446744073709551615\n  sp[up]: 32k/s\n  sp[down]: 40k/s\n"
      "  sp_qos[up]: 64k/s\n  sp_qos[down]: 72k/s\n  sp_drop[up]: 48k/s\n  sp_drop[down]: 56k/s\n"
      "  count[up]: 80k\n  count_skb[up]: 88\n  count[down]: 96k\n  count_skb[down]: 104\n"
      "  count_qos[up]: 144k\n  count_qos_skb[up]: 152\n  count_qos[down]: 160k\n  count_qos_skb[down]: 168\n"
      "  count_drop[up]: 112k\n  count_drop_skb[up]: 120\n  count_drop[down]: 128k\n"
      "  count_drop_skb[down]: 136\n  skb_num[up]: -1\n  skb_num[down]: 180\n\n";
  shows("qos state eth0 300", {14, 3, 2064}, "0:text eth0 18:u8 44", answered, "dev:eth0, iptype:44\n" + out);
  shows("qos state a-very-long-interface-name", {14, 3, 2064}, "0:text a-very-long-int", answered,
        "dev:a-very-long-int, iptype:0\n" + out);
  // What was asked for stands above the report.
  expect_end(vek("qos state eth0", {.result = 3}), 3, "dev:eth0, iptype:0\n", "err:no such entry \n");
}

TEST(Qos, GlobalLimits) {
  const std::string sent = "0:u32 3 4 5 6 8 9 7 10 11 12 13";
  sends("qos ext_set 3 4 5 6 7 8 9 10 11 12 13", {14, 17}, sent);
  rejects(
      "hup hdown ctnum1 ctnum2 tcpwin ctunum1 ctunum2 hi_wait_tm ct_wait_tm sqos_limit_num sqos_ct_limit_num",
      {"qos ext_set 3 4 5 6 7 8 9 10 11 12"});
  shows("qos ext_get", {14, 18}, "", sent + " 40:u32 -1",
        "hi_up:3  hi_down:4\nct_num1:5  ct_num2:6\ntcpwin:7\nct_udp_num1:8  ct_udp_num2:9\n"
        "hi_wait_tm2:10  ct_wait_tm2:11\nsqos_limit_num:12  sqos_ct_limit_num:-1\n");
  sends("qos level 4000000000", {14, 19}, "0:u32 4000000000");
  sends("qos debug", {14, 16}, "");
  sends("qos sb_tj_init", {14, 32}, "");
  rejects("level", {"qos level"});

  shows("qos ggvpn set 7", {14, 30}, "0:u32 1 7", "4:u32 1 2 -1", "limit:1,up:2,down:-1\n");
  shows("qos ggvpn put 7", {14, 30}, "", "4:u32 1 2 -1", "limit:1,up:2,down:-1\n");
  rejects("set/get limit", {"qos ggvpn", "qos ggvpn set"});
  shows("qos single_ct set 5 6 7", {14, 31}, "0:u32 1 5 6 7", "8:u32 8 7", "up:8,down:7\n");
  shows("qos single_ct get 5", {14, 31}, "4:u32 5", "8:u32 6 -1", "up:6,down:-1\n");
  rejects("set/get iface up down", {"qos single_ct get", "qos single_ct set 5 6"});
  shows("qos speed_limit set on", {14, 34}, "0:u32 1", "", "speed limit on\n");
  shows("qos speed_limit set off", {14, 34}, "0:u32 1 1", "4:u32 0x100", "speed limit off\n");
  shows("qos speed_limit get", {14, 34}, "", "", "speed limit on\n");
  rejects("set/get on/off", {"qos speed_limit", "qos speed_limit set", "qos speed_limit set 1"});

  const std::string out = "H/H  5\nH/N  4\nH/L  6\nN/H  2\nN/N  1\nN/L  3\nL/H  8\nL/N  7\nL/L  -1\n";
  shows("qos queue_wait set 11 12 13 14 15 16 17 18 19", {14, 35}, "0:u32 1 15 14 16 12 11 13 18 17 19",
        "4:u32 1 2 3 4 5 6 7 8 -1", out);
  shows("qos queue_wait get 11 12", {14, 35}, "", "4:u32 1 2 3 4 5 6 7 8 -1", out);
  rejects("set/get H/H H/N H/L N/H N/N N/L L/H L/N L/L",
          {"qos queue_wait", "qos queue_wait set 11 12 13 14 15 16 17 18"});
}

TEST(Qos, SpeedValues) {
  const auto one = [](const std::string& words, uint32_t command, const std::string& sent,
                      const std::string& answered, const std::string& value) {
    shows("qos " + words, {14, command, 102400 + 16}, sent, answered, "sp_val " + value + "\n");
  };
  one("ws_sp_val set 300", 37, "0:u32 1 8:hex {2c}*256", "4:u32 255 263:u8 77", "77");
  one("ws_sp_val get", 37, "", "8:u8 255", "255");
  one("ws_sp_wan_val set 3 50", 40, "0:u32 1 3 11:u8 50", "", "50");
  one("ws_sp_wan_val get 3", 40, "4:u32 3", "", "0");
  // Beyond the table, on the record's last byte, beyond the record, and round to the record's beginning.
  one("ws_sp_wan_val set 300 50", 40, "0:u32 1 300 308:u8 50", "", "50");
  one("ws_sp_wan_val set 102391 50", 40, "0:u32 1 102391 102399:u8 50", "", "50");
  one("ws_sp_wan_val set 102392 50", 40, "0:u32 1 102392", "", "0");
  one("ws_sp_wan_val set 4294967288 50", 40, "0:u32 1 -8", "", "0");
  rejects("set/get [0-99]", {"qos ws_sp_val", "qos ws_sp_val set"});
  rejects("set/get wanid [0-99]", {"qos ws_sp_wan_val get", "qos ws_sp_wan_val set 3"});

  const std::string answered = "0:text sixteen-letters! 16:u32 1 5 -1";
  const std::string out = "devname sixteen-letters! sp_val up 5 down -1\n";
  shows("qos noqueue_sp_val set sixteen-letters! 5 6", {14, 38}, "0:text sixteen-letters 16:u32 1 5 6",
        answered, out);
  shows("qos noqueue_sp_val get eth0 5 6", {14, 38}, "0:text eth0", answered, out);
  shows("qos noqueue_sp_val get", {14, 38}, "", answered, out);
  rejects("set/get devname [up 0-99] [down 0-99]", {"qos noqueue_sp_val", "qos noqueue_sp_val set eth0 5"});
}

TEST(Qos, Buffers) {
  const std::string host = "0:ip 1.2.3.4 4:hex 040506ffa8a9aaab 12:u32 12 16 20 24 28 -1";
  const std::string host_line = " [ 28 , -1 ][ 12 , 16 ] [ 20 , 24 ] [5,4]  6 [a8,a9][aa,ab]\n";
  const auto report = [&](const std::string& up_and_down) {
    return "0:text ppp0 16:u32 " + up_and_down + " 100 200 32 36 40:hex ffff0200 +44 " + host + " +80 " +
           host + " 0:ip 255.0.0.1";
  };
  const auto expected = [&](const std::string& buffers, const std::string& check) {
    return "skb_head:32 skb_data:36\ndev_skb[ " + buffers + " ]\nno_queue[ 100, 200 ]\n" +
           "ipaddr ct_skb[ ]  hi_skb[ ] hi_udp_skb[ ][dev_prio,hi_prio] is_udp ct_err[ ] hi_err[ ] \n" +
           check + "01020304" + host_line + "ff000001" + host_line;
  };
  const std::string name = answer("tvl_get_wan_name", 1, "0:text ppp0");
  const Outcome outcome = vek("qos skb 120", {.answer = report("156 198"), .script = name});
  EXPECT_EQ(outcome.calls, std::vector<std::string>{"tvl_get_wan_name 120"});
  expect_order(outcome, {14, 26, 204816}, "0:text ppp0");
  expect_end(outcome, 0, expected("156, 198", ""));
  expect_end(vek("qos skb 0", {.answer = report("157 0"), .script = name}), 0,
             expected("157, 0", "ct_up_zong:156  so->skb_num[0]=157\nct_down_zong:198 so->skb_num[1]=0\n"));
  EXPECT_EQ(std::ranges::count(vek("qos skb 0", {.answer = "42:u16 -1", .script = name}).out, '\n'),
            4 + (204800 - 44) / 36);

  const Outcome link = vek("qos skb 121", {.script = answer("tvl_vpnget", 1, "0:text key") +
                                                     answer("nvram_get:key", 1, "0:text a-very-long-name")});
  EXPECT_EQ(link.calls, (std::vector<std::string>{"tvl_vpnget vpn_link 0", "nvram_get key"}));
  expect_order(link, {14, 26, 204816}, "0:text a-very-long-nam");
  rejects("waniface", {"qos skb"});
  rejects("waniface", {"qos skb 5", "qos skb 4294967295"}, "not iface name\n");
  const Outcome nameless = vek("qos skb 5", {.script = answer("tvl_get_wan_name", 1)});
  EXPECT_TRUE(nameless.orders.empty());
  EXPECT_EQ(nameless.out, "not iface name\ngo to help\n");

  shows("qos devinfo", {14, 27, 204816}, "",
        "0:u32 1 2 3 4 16:hex ffff0200 +20 0:text sixteen-letters! 16:u32 7 8 -1 +48 0:text ppp1",
        "skb_head:3 skb_data:4\ndev_skb[ 1, 2 ]\niface [up,down] devname \n"
        "7 [ 8 , -1 ] sixteen-letters! \n0 [ 0 , 0 ] ppp1 \nend \n");
  expect_lines("qos devinfo", "18:u16 -1", 4 + (204800 - 20) / 28);
  shows("qos ip_rule_list", {14, 33, 102416}, "",
        list_of(36, {"0:u32 4 4:ip 1.2.3.4 20:u32 20 4000000024 28 32", "0:u32 6 4:hex fd{00}*14 01"}),
        "num: 2\nip:1.2.3.4 up:20KB down:4000000024KB max_up:28 max_down:32\n"
        "ip:fd00::1 up:0KB down:0KB max_up:0 max_down:0\n");
}

}  // namespace
