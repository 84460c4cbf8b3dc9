// devmg and arp: what they send and what they print.
#include "tool/driver.h"

namespace {

const std::string kLongName = " a-very-long-interface-name ";
const std::string kCutName = "text a-very-long-int ";

TEST(Devmg, Requests) {
  sends("devmg add eth0 250", {2, 1}, "0:text eth0 24:u16 250");
  sends("devmg add" + kLongName + "65537", {2, 1}, "0:" + kCutName + "24:u16 1");
  sends("devmg del eth0", {2, 2}, "0:text eth0");
  sends("devmg set eth0 1 gateway 3", {2, 4}, "0:text eth0 31:u8 1 0 3");
  sends("devmg set eth0 258 router 3", {2, 4}, "0:text eth0 31:u8 2 1 3");
  sends("devmg set eth0 0 vpn 0", {2, 4}, "0:text eth0 31:u8 0 2 0");
  sends("devmg landev eth0", {2, 7}, "0:text eth0");
  sends("devmg wandev" + kLongName, {2, 8}, "0:" + kCutName);
  sends("devmg dev_get", {2, 9}, "");
  sends("devmg wan_done ''", {2, 10}, "");
  rejects("dev type[lan:250,not:0]", {"devmg add", "devmg add eth0"});
  rejects("dev jb_en wk_mode wan_isp", {"devmg set eth0 1 vpn"});
  rejects("dev",
          {"devmg del", "devmg get", "devmg landev", "devmg wandev", "devmg wan_done", "devmg dev_stat"});
}

TEST(Devmg, Answers) {
  // The name fills its field, without a NUL.
  const std::string entry =
      "0:text sixteen-letters! 16:u32 0xABCDEF01 0x1043 24:u16 250 26:hex ffffffff 30:u8 1 2 3 255 5 0xff";
  shows("devmg get eth0", {2, 3}, "0:text eth0", entry,
        " dev:sixteen-letters! flags:0XABCDEF01  type: 250  arp:1  jb_en:2  wk_mode:3 isp:255  "
        "dev_flags:0X1043\n");
  shows("devmg list", {2, 5, 0x400000}, "", list_of(36, {entry, "0:text eth1 34:u8 9"}),
        "dev\t\t flags\t type\t arp\t jb\t wk_mode\t isp\t dev_id\t dev_flags\n\n"
        "sixteen-letters! 0XABCDEF01\t 250\t 1\t 2\t 3\t 255\t 5\t 0X1043\n"
        "eth1             0X0\t 0\t 0\t 0\t 0\t 0\t 9\t 0X0\n");
  shows("devmg dev_stat eth0", {2, 11}, "0:text eth0", "16:u64 1 2 -1 0x8000000000000000 5 6",
        "rx_broadcast:1,rx_multicast:2,rx_unicast:18446744073709551615\n"
        "tx_broadcast:9223372036854775808,tx_multicast:5,tx_unicast:6\n");
}

TEST(Arp, Settings) {
  const std::string settings = "0:text eth0 16:u32 10 20:ip 1.1.1.1 2.2.2.2 28:u32 ";
  for (const auto& [word, level] :
       {std::pair("100", "2"), {"-5", "2"}, {"101", "1"}, {"200", "1"}, {"201", "0"}}) {
    sends(std::string("arp set eth0 10 1.1.1.1 2.2.2.2 ") + word, {3, 1}, settings + level);
  }
  sends("arp set eth0 '' x '' ''", {3, 1}, "0:text eth0 28:u32 2");
  shows("arp get" + kLongName, {3, 2}, "0:" + kCutName, settings + "2 16:u32 -1",
        " dev: eth0  tm: -1 ip:1.1.1.1  check_ip:2.2.2.2 deal_level:2\n");
  sends("arp disonline_set 7", {3, 13}, "0:u32 7");
  shows("arp disonline_get", {3, 14}, "", "0:u32 3", " enable:3\n");
  rejects("dev tm ip check_ip zn_jb", {"arp set eth0 10 1.1.1.1 2.2.2.2"});
  rejects("dev", {"arp get"});
  rejects("en[0|1]", {"arp disonline_set"});
}

TEST(Arp, Bindings) {
  sends("arp add eth0 1.2.3.4 00:11:22:33:44:55 4 pc", {3, 3},
        "0:ip 1.2.3.4 4:hex 001122334455 10:u16 4 12:text eth0 28:text pc");
  sends("arp add" + kLongName + "258 00:11:22:33:44:55 1 {n}*40", {3, 3},
        "0:ip 0.0.1.2 4:hex 001122334455 10:u16 1 12:" + kCutName + "28:text {n}*31");
  sends("arp del eth0 1.2.3.4", {3, 5}, "0:ip 1.2.3.4 12:text eth0");
  sends("arp delall eth0", {3, 6}, "");
  sends("arp addall lan 9", {3, 4}, "12:text lan 10:u16 9");
  const std::string add = "arp add eth0 1.2.3.4 00:11:22:33:44:55 ";
  rejects("dev ip mac type[1|2|3|4] name",
          {add + "5 pc", add + "0 pc", add + "'' pc", add + "11 pc", add + "'1 ' pc", add + "1",
           "arp add eth0 1.2.3.4 00:11:22:33:44 1 pc", "arp add eth0"});
  rejects("dev ip mac type[1|2|3|4] name", {"arp add eth0 %s%n"}, "ip err:%s%n/n");
  rejects("dev ip", {"arp del eth0 0"}, "ip err:0/n");
  rejects("dev ip", {"arp del eth0", "arp db_del eth0"});
  rejects("dev[lan|wan] type[1|2|3|4]", {"arp addall lan"});

  sends("arp db_del eth0 1.2.3.4", {3, 15}, "0:ip 1.2.3.4 4:text eth0");
  sends("arp db_del" + kLongName + "none", {3, 15}, "4:" + kCutName);
  sends("arp del_mac eth0 a0:11:22:33:44:55", {3, 17}, "0:hex a01122334455 8:text eth0");
  sends("arp del_mac eth0 none", {3, 17}, "8:text eth0");
  sends("arp debug", {3, 12}, "");
  sends("arp search eth0 192.168.1.77 255.255.255.0", {3, 16}, "0:text eth0 16:ip 192.168.1.0 192.168.1.255");
  rejects("dev mac", {"arp del_mac eth0"});
  rejects("dev ip mask",
          {"arp search eth0 1.2.3.4 0.0.0.0", "arp search eth0 x 255.0.0.0", "arp search eth0 1.1.1.1"});

  const std::string entry =
      "0:ip 1.2.3.4 5.6.7.8 255.255.255.255 12:hex a0b1c2d3e4f5ffffffffffff 24:u32 4000000000"
      " 28:text sixteen-letters! 44:u32 0xFFF80005 84:u32 -1 96:u64 -1";
  shows("arp list" + kLongName, {3, 8, 0x400000}, "36:" + kCutName, list_of(104, {entry, ""}),
        "ip \t\t check_ip \t\t org_ip \t \t mac \t \t dev \t  type \t state \t del_time\n"
        "1.2.3.4\t5.6.7.8\t255.255.255.255\ta0:b1:c2:d3:e4:f5\tsixteen-letters!\t4000000000\t4294443013"
        "[0|2|19|]-1\t18446744073709551615\n"
        "0.0.0.0\t0.0.0.0\t0.0.0.0\t00:00:00:00:00:00\t\t0\t0[]0\t0\n");
  rejects("dev", {"arp list"});
}

}  // namespace
