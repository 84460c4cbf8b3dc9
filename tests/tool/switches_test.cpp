// The kernel's switches and the steering of wireless clients: what they send and what they print.
#include "tool/driver.h"

namespace {

// A command that sets and gets by one order: what is sent to set; what is answered to both and shown.
void sets_and_gets(const std::string& set, const std::string& get, const Route& route,
                   const std::string& sent, const std::string& answered, const std::string& out) {
  shows(set, route, sent, answered, out);
  shows(get, route, "", answered, out);
}

TEST(Switches, OfTheKernel) {
  sets_and_gets("ip_options_srr set 7 x", "ip_options_srr get", {1, 55}, "0:u32 1 7", "4:u32 9", "\nen:9\n");
  sets_and_gets("skb_delay set 4000000000", "skb_delay get", {1, 62}, "0:u32 1 4000000000", "4:u32 -1",
                "\ntime:-1\n");
  sets_and_gets("alg set 5 0 x 1 -1 00 0x10 0 1 7", "alg get", {11, 34}, "0:u32 1 4:hex 01000001010001000101",
                "4:hex 0102030405060708ff0a",
                "\nftp:1\ntftp:2\nrtsp:3\npptp:4\nl2tp:5\nipsec:6\nsip:7\nh323:8\nsnmp:255\nirc:10\n");
  rejects("en", {"ip_options_srr set"});
  rejects("time", {"skb_delay set"});
  rejects("ftp tftp rtsp pptp l2tp ipsec sip h323 snmp irc", {"alg set", "alg set 1 1 1 1 1 1 1 1 1"});
}

TEST(Switches, OfAccessPoints) {
  sets_and_gets("ac_server mode foo 1 2 3", "ac_server mode get 1 1 1", {1, 25}, "0:u32 1 1 2 3",
                "4:u32 4 5 6", "en:4,mode:5,debug:6\n");
  sets_and_gets("ap_balanced num set 3", "ap_balanced num gets 1", {1, 9}, "0:u32 1 3", "4:u32 1 2 3 4 -1 6",
                "show:\n0:1\n1:2\n2:3\n3:4\n4:-1\n");
  sets_and_gets("ap_balanced trys set 1 2 3 4 5 6", "ap_balanced trys get", {1, 10}, "0:u32 1 1 2 3 4 5",
                "4:u32 0 7 0 0 0", "show:\n0:0\n1:7\n2:0\n3:0\n4:0\n");
  sets_and_gets("ap_rssi set -75 20 1", "ap_rssi get", {1, 12}, "0:u32 1 4:u8 0xb5 8:u32 10 1 0 1 0 20",
                "4:u8 -128 8:u32 2 3 4 5 6 7",
                "rssi:-128,interval:2,balance:4,drop:3,led:5,macfilter:6,rate:7\n");
  sets_and_gets("ap_rssi_5g set -300 -1 1", "ap_rssi_5g get", {1, 54}, "0:u32 1 4:u8 -44 28:u32 -1",
                "4:u8 -70 8:u32 2 3 4 5 6 7", "rssi:-70,rate:7\n");
  sets_and_gets("ap_rssi_3w set 0x10 9", "ap_rssi_3w get", {1, 56}, "0:u32 1 28:u32 9", "4:u8 5 28:u32 0",
                "rssi:5,rate:0\n");
  sets_and_gets("5g_prio conf set 1 2 3 4 5 6 7 8 9", "5g_prio conf x", {1, 63}, "0:u32 1 1 2 3 4 5 6 7 8",
                "4:u32 9 8 7 6 5 4 3 2 1",
                "show:\nSSID1:9\nSSID2:8\nSSID3:7\nSSID4:6\nSSID5:5\nSSID6:4\nSSID7:3\nSSID8:2\n");
  sets_and_gets("5g_prio debug set 02:00:00:00:00:0a", "5g_prio debug get x", {1, 64},
                "0:u32 1 4:hex 02000000000a", "4:hex 0102030405ff", "mac:01:02:03:04:05:ff\n");
  rejects("set/get en[1/0] mode[1/0] debug",
          {"ac_server mode", "ac_server mode foo 1 0", "ac_server mode set"});
  rejects("set/get num",
          {"ap_balanced num", "ap_balanced num set", "ap_balanced trys", "ap_balanced trys set"});
  rejects("rssi rate led", {"ap_rssi set", "ap_rssi set -75 20"});
  rejects("rssi rate", {"ap_rssi_5g set -75", "ap_rssi_3w set -75"});
  rejects("set/get ssid1 ssid2 ssid3 ssid4 ssid5", {"5g_prio conf", "5g_prio conf set"});
  rejects("set/get mac", {"5g_prio debug", "5g_prio debug set", "5g_prio debug set 02:00"});
}

TEST(Switches, OrdersOfTheirOwn) {
  sends("tmp_qos_xz set 10.0.0.9 5 4000000000", {13, 41}, "0:u32 4 4:ip 10.0.0.9 20:u32 5 4000000000");
  sends("tmp_qos_xz set fd00::1 5 6", {13, 41}, "0:u32 6 4:hex fd 19:u8 1 20:u32 5 6");
  rejects("ip sx xx", {"tmp_qos_xz set 10.0.0.9 5", "tmp_qos_xz set 10.0.0 5 6"});
  sends("hictlist_show set 3", {13, 43, 2064}, "0:u32 3");
  shows("hictlist_show get", {13, 44}, "", "0:u32 -1", "en: -1 \n");
  rejects("en", {"hictlist_show set"});
  shows("rssi get 02:00:00:00:00:0a", {13, 46}, "0:hex 02000000000a", "6:u8 -52", "rssi: -52 \n");
  rejects("mac[11:22:33:44:55:66]", {"rssi get", "rssi get 02:00"});
}

TEST(Switches, ControlByDelay) {
  const std::string set = "spzn set a-very-long-interface-name ";
  const std::string cut = "0:text a-very-long-int ";
  sends(set + "1 8.8.8.8 3 20 65537", {14, 24}, cut + "16:u8 1 3 20:u16 20 1 48:ip 8.8.8.8");
  sends(set + "257 a-server-with-a-very-long-name 259 0 0", {14, 24},
        cut + "16:u8 1 3 24:text a-server-with-a-very-lo");
  sends("spzn set eth0 0", {14, 24}, "0:text eth0");
  sends("spzn set eth0 256 8.8.8.8 3 20 80", {14, 24}, "0:text eth0");
  rejects("devname en srv level dely_min dely_max",
          {"spzn set", "spzn set eth0", "spzn set eth0 1", "spzn set eth0 1 8.8.8.8 3 20"});

  const std::string answered = "16:u8 1 255 20:u16 65535 4 24:text a.server 52:ip 9.9.9.9 56:u32 -1 2 -3 4";
  const std::string rest =
      " level:255 dely_tm:65535 - 4 \ntmp_ip:9.9.9.9, up_max:-1 down_max:2 up_set:-3 down_set:4\n";
  shows("spzn get" + set.substr(8), {14, 25}, cut, answered, "en: on, srv:a.server" + rest);
  shows("spzn get eth0", {14, 25}, "0:text eth0", answered + " 48:ip 8.8.8.8", "en: on, srv:8.8.8.8" + rest);
  shows("spzn get eth0", {14, 25}, "0:text eth0", answered + " 16:u8 2", "en: off\n");
  rejects("devname", {"spzn get"});
}

TEST(Switches, Igmp) {
  shows("igmp show 3", {10, 17, 204816}, "0:u16 3", "0:u16 4 2:text 224.0.0.1%d", "\n224.0.0.1%d\n");
  const std::string long_text(204798, 'x');  // to the end of the record, without a NUL
  shows("igmp show 3", {10, 17, 204816}, "0:u16 3", "2:text " + long_text, "\n" + long_text + "\n");
  const Route mode = {10, 20, 10256};
  const std::string ranges = "16:hex 010000e0 010000e0 0100000a 0900000a";
  const std::string shown = "ips:224.0.0.1,10.0.0.1-10.0.0.9,\n";
  shows("igmp mode set 7 224.0.0.1,10.0.0.1-10.0.0.9", mode, "0:u32 1 7 2 16 " + ranges, "4:u32 8 2",
        "\nmode:8\n" + shown);
  shows("igmp mode get", mode, "12:u32 10200", "4:u32 -1 2 " + ranges, "\nmode:-1\n" + shown);
  shows("igmp mode set 0 ''", mode, "0:u32 1", "", "\nmode:0\nips:\n");
  rejects("set/get mode iplist", {"igmp mode", "igmp mode set", "igmp mode set 1"});
  // What is counted goes no further than the record.
  std::string all_ranges;
  for (int i = 0; i < (10256 - 16 - 16) / 8; ++i) all_ranges += "0.0.0.0,";
  shows("igmp mode get", mode, "12:u32 10200", "8:u32 -1", "\nmode:0\nips:" + all_ranges + "\n");
  sends("igmp debug 2", {10, 19}, "0:u32 2");
  rejects("0|1", {"igmp debug"});
  rejects("wanid", {"igmp show"});
}

TEST(Switches, Listeners) {
  sends("vek_netlink register 4711", {74, 1}, "0:u32 4711 1");
  sends("vek_netlink unregister 0x10", {74, 1}, "");
  rejects(" ", {"vek_netlink register", "vek_netlink unregister"});
  const Outcome list = vek("vek_netlink list x", {.answer = "0:u32 4711 0 -1 60:u32 16"});
  expect_order(list, {74, 2, 1024}, "");
  std::string out = "pid:1 enable:4711\npid:2 enable:0\npid:3 enable:-1\n";
  for (int i = 4; i < 16; ++i) out += "pid:" + std::to_string(i) + " enable:0\n";
  expect_end(list, 0, out + "pid:16 enable:16\n");
  expect_end(vek("vek_netlink list", {.returned = -1}), 0,
             "tesvel_order_opt_fun error\nvek vek_netlink list\n");
  expect_end(vek("vek_netlink list", {.result = 3}), 3, "", "err:no such entry \n");
}

}  // namespace
