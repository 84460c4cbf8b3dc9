// pppoe, pppoe_group, pppoe_br and ppp_fast: what they send and what they print.
#include "tool/driver.h"

namespace {

TEST(Pppoe, Server) {
  sends("pppoe set_base on a-very-long-interface-name 10.0.0.1 255.255.255.0 4000000000", {9, 1},
        "0:u32 2 4000000000 72:text a-very-long-int 88:ip 10.0.0.1 255.255.255.0 112:u32 1");
  sends("pppoe set_base 1 eth1 10.0.0.1 255.255.255.0 ''", {9, 1},
        "0:u32 2 72:text eth1 88:ip 10.0.0.1 255.255.255.0");
  sends("pppoe set_opt {n}*70 1.1.1.1 2.2.2.2 261 70000 70001 257 2 3 4 on", {9, 1},
        "0:u32 3 8:text {n}*63 104:ip 1.1.1.1 2.2.2.2 116:u32 70000 70001 124:u8 1 2 3 4 5 1");
  sends("pppoe set_opt '' x '' 0 0 0 0 0 0 0 1", {9, 1}, "0:u32 3");
  // The words name themselves on standard error, before the runner's own report.
  const std::string base = "en[on|off] devname srv_ip netmask sys_run_flag";
  const std::string report = " " + vek_path() + " pppoe set_base " + base + "\n";
  expect_unsent(vek("pppoe set_base on eth1 0.0.0.0 x 1"), 1, "go to help\n",
                " srv_ip err ! 0.0.0.0\n" + report);
  expect_unsent(vek("pppoe set_base on eth1 10.0.0.1 %s%n 1"), 1, "go to help\n",
                " netmask err ! %s%n\n" + report);
  rejects(base, {"pppoe set_base on eth1 0.0.0.0 255.255.255.0"});
  rejects("acname dns0 dns1 any_acn check_tm check_max pap  chap mschap mschap2 any_user",
          {"pppoe set_opt ac 0 0 0 0 0 1 1 1 1"});

  // The texts fill their fields, without a NUL.
  shows(
      "pppoe show", {9, 2}, "",
      "8:text {a}*64 72:text sixteen-letters! 88:ip 1.1.1.1 2.2.2.2 3.3.3.3 4.4.4.4 0.0.0.0 6.6.6.6"
      " 112:u32 -1 116 120 124:u8 124 125 126 127 128 129 132:u32 -1 136",
      unfolded(
          "en: -1 dev: sixteen-letters!  srv_ip: 1.1.1.1 start_ip: 3.3.3.3 end_ip:4.4.4.4 netmask:2.2.2.2\n"
          " dns: 6.6.6.6,\n acname: {a}*64 any_acname:128  check_tm: 116 check_max: 120\n"
          " pap: 124 chap:125  mschap:126 mschap2:127 \n rcv_padi:4294967295 send_pado:136  any_user:129\n"));
}

TEST(Pppoe, Devices) {
  shows("pppoe devmg set eth1 7 on", {2, 6}, "0:u32 1 4:text eth1 20:u32 7 1", "", "ok\n");
  shows("pppoe devmg set eth1 0 1", {2, 6}, "0:u32 1 4:text eth1", "", "ok\n");
  for (const char* words : {"pppoe devmg get eth1", "pppoe devmg foo eth1 1 on"}) {
    shows(words, {2, 6}, "0:u32 2 4:text eth1", "20:u32 -1 3", "en: -1 only: 3 \n");
  }
  rejects("opt[set,get] devname en(0,1) only(0,1)", {"pppoe devmg get", "pppoe devmg set eth1 1"});
}

TEST(Pppoe, Debug) {
  const Route route = {9, 9, 102416};
  shows("pppoe debug set 1 2", route, "0:u32 1 1 2", "", "ok\n");
  rejects("set/get en[0/1] logen[0/1]", {"pppoe debug", "pppoe debug set 1"});
  const std::string ranges = " 28:ip 10.0.0.1 10.0.0.9 1.1.1.1 1.1.1.1 2.2.2.2 2.2.2.3 3.3.3.3 4.4.4.4";
  const std::string sessions = unfolded("{ 5.5.5.5 255.255.255.255}*10");
  const std::string head =
      " en:1, log_en:-1\n\n pool_num:2\n10.0.0.1-10.0.0.9\n1.1.1.1-1.1.1.1\n\n bl_num:1\n2.2.2.2-2.2.2.3\n"
      "\n ipused_num:1\n3.3.3.3-4.4.4.4\n\n session_num:";
  const std::string line = unfolded("{5.5.5.5,}*10");
  shows("pppoe debug get", route, "", "4:u32 1 -1 2 1 1 10" + ranges + sessions, head + "10\n" + line);
  shows("pppoe debug get", route, "", "4:u32 1 -1 2 1 1 11" + ranges + sessions + " 6.6.6.6",
        head + "11\n" + line + "\n6.6.6.6,");
  // A list that claims more than the record holds ends with it, and nothing is left for those behind it.
  expect_lines("pppoe debug get", "12:u32 -1 5 5 5", 1 + 8 + (102400 - 28) / 8);
  expect_lines("pppoe_group debug g", "32:u32 1 -1 1", 6 + (204800 - 52) / 8);
}

TEST(Pppoe, Probe) {
  sends("pppoe start_probe {d}*40", {9, 17}, "0:text {d}*31 32:u32 1");
  sends("pppoe stop_probe eth1", {9, 18}, "");
  shows("pppoe probe_status", {9, 19}, "",
        "0:text {d}*32 32:u32 1 -1 40:text {u}*64 {p}*64 168:u32 -1 172 176 180",
        unfolded("enable:1\r\nprobe_dev_name:{d}*32\r\nprobe_ppppoe_status:-1\r\nprobe_username:{u}*64\r\n"
                 "probe_userpwd:{p}*64\r\n-1:172:176:180\r\n"));
  sends("pppoe time_change -5", {9, 20}, "0:u32 -5");
  rejects("", {"pppoe start_probe"});
  rejects("tm", {"pppoe time_change"});
}

TEST(Pppoe, Groups) {
  for (const auto& [word, command] : {std::pair("add", 10u), {"mod", 12u}}) {
    sends(std::string("pppoe_group ") + word +
              " {g}*40 10.0.0.1 255.255.255.0 x,,1.1.1.1:53,0,2.2.2.2,3.3.3.3 7",
          {9, command}, "0:u32 7 4:text {g}*31 36:ip 10.0.0.1 255.255.255.0 52:ip 1.1.1.1 2.2.2.2");
  }
  // Eight words are looked at.
  sends("pppoe_group add g x '' 1.1.1.1,,,,,,,,2.2.2.2 0", {9, 10}, "4:text g 52:ip 1.1.1.1");
  sends("pppoe_group del g", {9, 11}, "4:text g");
  sends("pppoe_group delall g", {9, 13}, "");
  sends("pppoe_group speed g 70000 -1", {9, 15}, "4:text g 44:u32 70000 -1");
  rejects("name ip mask dns sys_run_flag", {"pppoe_group add g 10.0.0.1 255.255.255.0 8.8.8.8"});
  rejects("name ip mask dns", {"pppoe_group mod g1 10.0.0.1 255.255.255.0 8.8.8.8"});
  rejects("name", {"pppoe_group del", "pppoe_group debug"});
  rejects("name up down", {"pppoe_group speed g 1"});
  shows("pppoe_group list", {9, 14, 204816}, "",
        list_of(64, {"4:text {g}*32 36:ip 1.1.1.1 2.2.2.2 44:u32 -1 48 52:ip 3.3.3.3 4.4.4.4 60:u32 60", ""}),
        unfolded("num:2\n{g}*32 ip[1.1.1.1-2.2.2.2] up[-1] down[48] user[60] dns[3.3.3.3,4.4.4.4]\n"
                 " ip[0.0.0.0-0.0.0.0] up[0] down[0] user[0] dns[0.0.0.0,0.0.0.0]\n\n"));
  shows("pppoe_group debug {g}*40", {9, 16, 204816}, "0:text {g}*31",
        "32:u32 1 0 2 52:ip 1.1.1.1 2.2.2.2 3.3.3.3 4.4.4.4 5.5.5.5 5.5.5.5",
        "\n pool_num:1\n1.1.1.1-2.2.2.2\n\n bl_num:0\n\n ipused_num:2\n3.3.3.3-4.4.4.4\n5.5.5.5-5.5.5.5\n");
}

TEST(PppoeBridge, Setting) {
  const Route route = {41, 1, 102416};
  sends(
      "pppoe_br set 1 x 70000 70001 'lan0 a-very-long-interface-name  lan2' wan0,wan1,wan2"
      " 100-200.5000,4095-4096.7-8,9 wan3:65537,wan4,a:b:c,:5,wan6:",
      route,
      "0:u32 1 1 70000 70001 2 20:text lan0 36:text a-very-long-int 2100:text wan0 2116:u16 100 200"
      " 2132:text wan1 2148:u16 4095 0 7 8"
      " 2164:u32 3 2168:text wan3 2184:u16 1 2204:u16 5 2208:text wan6");
  sends("pppoe_br set 0 00 '' '' ' lan0' wan0 '.7,-5' ''", route,
        "4:u32 1 2100:text wan0 2120:u16 7 2132:text none 2150:u16 5");
  sends("pppoe_br set 0 0 0 0 '{l }*200' '' '' {wan0:1,}*300", route,
        "16:u32 128 20:hex {6c000000000000000000000000000000}*128 2100:text none 2132:text none"
        " 2164:u32 254 2168:hex {77616e3000000000000000000000000001000000}*254");
  rejects("en[1|0] en_more[1|0] time hi_jh indev outdev more_wan", {"pppoe_br set 1 1 0 0 lan0 wan0 1"});
}

TEST(PppoeBridge, Answers) {
  const std::string out = "2100:text sixteen-letters! 2116:u16 1 2 3 65535 2124:u32 -1 9 2132:text none";
  const std::string out_lines =
      "i:1,name:sixteen-letters!,vlan:1-2,vlan2:3-65535,state:-1,times:9\n"
      "i:2,name:none,vlan:0-0,vlan2:0-0,state:0,times:0\n\n";
  shows("pppoe_br get", {41, 2, 102416}, "", "0:u32 1 -1 3 4 2 20:text sixteen-letters! lan0 " + out,
        "en:1\n en_more:-1\n time:3\n ,hi_jh:4\nlan_dev:sixteen-letters! lan0 \n" + out_lines);
  // There are 128 places for LAN devices, however many are counted.
  shows("pppoe_br get", {41, 2, 102416}, "", "16:u32 -1 20:text {lan-with-16-char}*130 " + out,
        "en:0\n en_more:0\n time:0\n ,hi_jh:0\nlan_dev:" + unfolded("{lan-with-16-char }*128\n") + out_lines);
  shows("pppoe_br vlanid_list", {41, 13, 102416}, "", list_of(12, {"0:hex a0b1c2d3e4f5 6:u16 65535 8", ""}),
        "num: 2\nmac:a0:b1:c2:d3:e4:f5,id:65535,dev:8\nmac:00:00:00:00:00:00,id:0,dev:0\n\n");
  shows("pppoe_br mac_dev_list", {41, 19, 102416}, "",
        list_of(48, {"0:hex a0b1c2d3e4f5010203040506 12:u8 12 13 14 255 16:text sixteen-letters! 32:u16 32 34"
                     " 36:hex ffffffff 40:u64 -1",
                     "0:u8 2"}),
        "num: 2\nlan_mac:a0:b1:c2:d3:e4:f5, wan_mac:01:02:03:04:05:06, in_dev:sixteen-letters!, flag:13, "
        "changed:14, init_wanid:12, set_wanid:255, vlanid:32, vlanid2:34, ltm:18446744073709551615\n"
        "lan_mac:02:00:00:00:00:00, wan_mac:00:00:00:00:00:00, in_dev:, flag:0, changed:0, init_wanid:0, "
        "set_wanid:0, vlanid:0, vlanid2:0, ltm:0\n\n");
}

TEST(PppoeBridge, More) {
  sends("pppoe_br more_add a-very-long-interface-name 65537", {41, 14}, "0:text a-very-long-int 16:u16 1");
  sends("pppoe_br more_del wan0 7", {41, 15}, "0:text wan0 16:u16 7");
  sends("pppoe_br more_get wan0", {41, 16}, "0:text wan0");
  sends("pppoe_br more_get", {41, 16}, "");
  sends("pppoe_br more_delall wan0", {41, 20}, "");
  rejects("dev id", {"pppoe_br more_add wan0", "pppoe_br more_del wan0"});
}

TEST(PppFast, BindsAndShows) {
  sends("ppp_fast set 1 a-very-long-interface-name eth0 65537", {45, 1},
        "0:text eth0 16:text a-very-long-int 32:u32 1 36:u16 1");
  sends("ppp_fast set 0 ppp0", {45, 1}, "16:text ppp0");
  sends("ppp_fast set 2 ppp0 eth0", {45, 1}, "0:text eth0 16:text ppp0 32:u32 2");
  rejects("en[1:on]  ppp_dev real_dev session_id", {"ppp_fast set 0", "ppp_fast set 1 ppp0 eth0"});
  rejects("dev", {"ppp_fast get"});
  shows("ppp_fast get eth0", {45, 2}, "0:text eth0",
        "0:text sixteen-letters! ppp0 36:u16 65535 40:hex a0b1c2d3e4f5 010203040506 8864 01 0f 1267 ffff "
        "0021 fe",
        "ppp_dev: ppp0  real_dev:sixteen-letters! session_id:65535 int:254\n"
        "dst: a0:b1:c2:d3:e4:f5\nsrc: 01:02:03:04:05:06\nproto: 0x8864\nver_type: 0x 1\ncode: 0x0f\n"
        "session_id: 4711\nproto2: 0x0021\n");
}

}  // namespace
