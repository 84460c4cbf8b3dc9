// ctrule, ddos_fy and ddos: limits on connections and the defence against attacks.
#include "tool/driver.h"

namespace {

TEST(Limits, Rules) {
  const Route set = {11, 1};
  sends(
      "ctrule add ct {n}*70 1.2.3.4-1.2.3.5,9.9.9.9,::1 tcp_ipport 300 9", set,
      "0:text {n}*63 64:u8 1 1 0 5 1 72:u32 300 0 80:u16 2 84:u32 16 88:u32 0x01020304 0x01020305 0x09090909 "
      "0x09090909");
  sends("ctrule add ddos r 5-9,12>300 udp 7 60", set,
        "0:text r 64:u8 2 1 0 2 44 72:u32 7 60 80:u16 2 84:u32 8 88:u16 5 9 12 12");
  sends("ctrule add ct r 1.1.1.1>2 all 1", set,
        "0:text r 64:u8 1 1 0 0 2 72:u32 1 80:u16 1 84:u32 4 88:hex ffff");
  sends("ctrule add ct r ::1 udp_ipport 1", set, "0:text r 64:u8 1 1 0 6 1 72:u32 1");
  sends("ctrule add ct r {1,}*234 tcp 1 1", set,
        "0:text r 64:u8 1 1 0 1 72:u32 1 80:u16 234 84:u32 936 88:hex {01000100}*234");
  sends("ctrule del ddos r x y z", set, "0:text r 64:u8 2 2");
  rejects("type[ct ddos] name user_group prot[all,tcp,udp] max tm",
          {"ctrule add ct r 5 tcp", "ctrule add x r 5 tcp 1", "ctrule add ct r 5 icmp 1",
           "ctrule add ct r 5 '' 1", "ctrule add ct r 5 unknow 1", "ctrule add ddos r 5 tcp 1",
           "ctrule add ddos r 5 tcp 1 0", "ctrule add ct r {1,}*235 tcp 1"});
  rejects("type name", {"ctrule del ct", "ctrule del x r"});
  rejects("type", {"ctrule list", "ctrule list tcp"});
  shows(
      "ctrule list ddos", {11, 2, 40496}, "72:u8 2",
      "4:u32 3 +8 0:text a 67:u8 3 1 72:u32 5 -1 80:u16 1 1 84:u32 40 88:u32 0x01020304 0x01020305 111:u8 1 "
      "127:u8 1 +136 0:text b 67:u8 7 80:u16 2 84:u32 8 88:u16 5 6 7 7 +232 0:text c 67:u8 6",
      "num: 3\nname  prot  max  tm group\n\na   icmp  5  -1  1.2.3.4-1.2.3.5,::1,\nb   unknow  0  0  5-6,7,\n"
      "c   udp_ipport  0  0  \n");
}

TEST(Limits, Defaults) {
  const std::string usage = "ct_max ddos_max ddos_time";
  const std::string five = "0:u32 1 4 7 10 13 28:u32 3 6 9 12 15 56:u32 2 5 8 11 14";
  const std::string words = "ctrule defset 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15";
  sends(words, {11, 3}, five);
  sends(words + " 16 17 18 19 20", {11, 3}, five);
  const std::string seven = five + " 20:u32 16 19 48:u32 18 21 76:u32 17 20";
  sends(words + " 16 17 18 19 20 21", {11, 3}, seven);
  rejects(usage, {"ctrule defset 1 2 3 4 5 6 7 8 9 10 11 12 13 14"});
  shows("ctrule defget", {11, 4}, "", seven,
        "all: ct_max:1,ddos_max:2,ddos_time:3\ntcp: ct_max:4,ddos_max:5,ddos_time:6\n"
        "udp: ct_max:7,ddos_max:8,ddos_time:9\nicmp: ct_max:10,ddos_max:11,ddos_time:12\n"
        "other: ct_max:13,ddos_max:14,ddos_time:15\ntcp_ipport: ct_max:16,ddos_max:17,ddos_time:18\n"
        "udp_ipport: ct_max:19,ddos_max:20,ddos_time:21\n");
}

TEST(Limits, SwitchMacsAndAttack) {
  sends("ddos_fy set 1 2 3 4 5 6 00:11:22:33:44:55", {12, 1}, "0:u32 1 2 3 4 5 6 24:hex 001122334455");
  rejects("fy_en fy_type fy_rule", {"ddos_fy set 1 2 3 4 5 6", "ddos_fy set 1 2 3 4 5 6 x"});
  const std::string macs = "0:u16 2 4:hex 001122334455 12:hex 02aabbccddee";
  const std::pair<std::string, Route> families[] = {{"ddos_fy", {12, 3, 40496}}, {"ddos", {56, 1, 40496}}};
  for (const auto& [word, route] : families) {
    sends(word + " mac_set 00:11:22:33:44:55|a,x,,02aabbccddee,1|02:00:00:00:00:01", route, macs);
    sends(word + " mac_set ''", route, "");
    rejects("mac", {word + " mac_set"});
    shows(word + " mac_get", {route.module, route.command + 1, 40496}, "", macs,
          "cnt:2\n00:11:22:33:44:55\n02:aa:bb:cc:dd:ee\n\n");
  }
  sends("ddos mac_set {020000000001,}*300", {56, 1, 40496}, "0:u16 256 4:hex {0200000000010000}*256");
  shows("ddos wan_attack set 1 500", {56, 3}, "0:u32 1 1 500", "", "en:1,limit:500\n");
  shows("ddos wan_attack x 1 500", {56, 3}, "", "4:u32 7 -1", "en:7,limit:-1\n");
  rejects("set/get en limit", {"ddos wan_attack", "ddos wan_attack set 1"});
}

TEST(Limits, Profiles) {
  const Route set = {56, 4, 10256};
  sends("ddos protect_set rate p wan0 1 2 1-5,9 1 2,3 4 5 6 7,8 9", set,
        "0:u32 1 8:text p 72:text wan0 88:u16 2 92:u8 1 2 112:u32 1 0 2 3 4 0 5 0 6 0 7 8 7 8 9 184:u16 1 5 "
        "9 9");
  sends("ddos protect_set rate p wan0 0 0 '' 0 0 0 0 0 1,2,3,4 -1", set,
        "0:u32 1 8:text p 72:text wan0 152:u32 1 2 3 4 -1");
  sends("ddos protect_set enable p wan0 0 1 00 x 0 0 0 0 0 0 0 0 0 0 0 0 0 5", set,
        "0:u32 2 8:text p 72:text wan0 95:u8 1 1 1 111:u8 1");
  const std::string rate = "ddos protect_set rate p wan0 0 0 '' 0 ";
  rejects(
      "opt[rate/enable] name dev rate[log block dest_ip arp ip_scan port_scan icmp udp syn dns]\n"
      "enable[unknow teardrop ipfrag land winnuke smurf ping ipopt(err timestamp sec sid rr lsrr ssrr) "
      "tcp(syn_frag flag_zero syn_fin fin)]",
      {rate + "0 0 0 0 0", rate + "1,2,3 0 0 0 0 0", rate + "'' 0 0 0 0 0", rate + "0 0 0 0 1,2,3 0",
       rate + "0 0 0 0 1,2,3,4,5 0", "ddos protect_set rates p wan0 0 0 '' 0 0 0 0 0 0 0",
       "ddos protect_set rate p wan0 0 0 {1,}*2516 0 0 0 0 0 0 0",
       "ddos protect_set enable p wan0 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1"});
  sends("ddos protect_del p", {56, 6, 4112}, "0:text p");
  sends("ddos protect_clear p", {56, 12, 4112}, "0:text p");
  sends("ddos protect_delall", {56, 7}, "");
  rejects("name", {"ddos protect_del", "ddos protect_clear"});
  rejects("dev", {"ddos protect_dev_get"});
  expect_unsent(
      vek("ddos protect_get wan0"), 1, "",
      " ddos\tmac_set mac_get wan_attack protect_set protect_get lan_protect_set lan_protect_get\n");

  const std::string profile =
      " 0:text p 64:text wan0 80:u16 2 1 84:u8 3 4 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26 27 28 "
      "104:u32 31 32 33 34 35 36 37 38 39 40 41 42 43 44 45 46 168:u64 -1 176:u16 1 5 9 9 7 8";
  const std::string head =
      ", log:3, block:4, count:18446744073709551615\nd_ip_num:2, d_ip_list: 1-5,9,s_area_num:1, "
      "s_area_list: 7-8,\nenable:\n";
  const Outcome all = vek("ddos protect_list", {.answer = "4:u32 2 +8" + profile + " +196 0:text q"});
  expect_order(all, {56, 8, 102416}, "");
  EXPECT_TRUE(all.out.starts_with(
      "ddos wan protect list num:2\nname:p" + head +
      "  unknow_id en:11\n  TearDrop en:12\n  IpFrag en:13\n  LAND en:14\n  WinNuke en:15\n  Smurf en:16\n"
      "  PingOfDeath en:17\n  IpOptErr en:18\n  IpOptTimeStamp en:19\n  IpOptSec en:20\n  IpOptSid en:21\n"
      "  IpOptRR en:22\n  IpOptLSRR en:23\n  IpOptSSRR en:24\n  TcpSynFrag en:25\n  TcpFlagZero en:26\n"
      "  TcpSynFin en:27\n  TcpFin en:28\n\nrate:\n  ARP max:31 time:32\n  IP_SCAN max:33 time:34\n"
      "  PORT_SCAN max:35 time:36\n  ICMP max:37 time:38\n  UDP max:39 time:40\n  SYN_dst max:41 time:42\n"
      "  SYN_src max:43 time:44\n  DNS max:45 time:46\n\n\nname:q, log:0, block:0, count:0\n"))
      << all.out;
  const Outcome one = vek("ddos protect_dev_get wan0", {.answer = profile});
  expect_order(one, {56, 5, 10256}, "64:text wan0");
  EXPECT_TRUE(one.out.starts_with("name:p" + head + "\t\tunknow_id  en:11\n\t\tTearDrop  en:12\n"))
      << one.out;
  EXPECT_TRUE(
      one.out.ends_with("\n\nrate:\n\t\tARP  max:31  time:32\n\t\tIP_SCAN  max:33  time:34\n"
                        "\t\tPORT_SCAN  max:35  time:36\n\t\tICMP  max:37  time:38\n"
                        "\t\tUDP  max:39  time:40\n\t\tSYN_dst  max:41  time:42\n"
                        "\t\tSYN_src  max:43  time:44\n\t\tDNS  max:45  time:46\n\n\n"))
      << one.out;
}

TEST(Limits, Lan) {
  const std::string record =
      "0:u32 1 2 100 200 30 1 64 28:u16 1 1 1 1 1 40:u16 1 3 44:u32 0x0a000000 0x0a0000ff 52:hex fd 67:u8 1 "
      "68:hex fd "
      "83:u8 2 84:u32 0x0a000001 0x0a000001 107:u8 1 123:u8 1";
  sends("ddos lan_protect_set 1 1-3 fd00::1-fd00::2,10.0.0.0/24 2 ::1,10.0.0.1 100 200 30 1 64",
        {56, 10, 10256}, record);
  rejects("en src_area src_addr type exclude_addr max_tcp_conns max_pkt_count defen_time log little_len",
          {"ddos lan_protect_set 1 1-3 10.0.0.1 2 '' 100 200 30 1",
           "ddos lan_protect_set 1 '' {::1,}*320 0 '' 0 0 0 0 0"});
  shows("ddos lan_protect_get", {56, 11, 10256}, "", record,
        "en:1\nsrc_area:1-3,\nsrc_addr:10.0.0.0-10.0.0.255,fd00::1-fd00::2,\ntype:2\nexclude_addr:10.0.0.1,::"
        "1,\n"
        "max_tcp_conns:100\nmax_pkt_count:200\ndefen_time:30\nlog:1\nlittle_len:64\n");
}

}  // namespace
