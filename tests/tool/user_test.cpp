// user and macuser: what they send and what they print.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/driver.h"

namespace {

const std::string kAddUsage =
    "name pwd gid ip(next|ip_s-ip_e) mac(next|mac) type(pppoe,web,off) max mem up_speed down_speed "
    "mode_speed "
    "mod_pwd";

std::vector<std::string> add_words(const std::string& ip, const std::string& mac, const std::string& type) {
  return {"user", "add", "alice", "secret", "259", ip, mac, type, "7", "memo", "100", "200", "gx", "1"};
}

// What add_words sends, without the bindings and the flags.
Bytes account() {
  return Bytes()
      .text(0, "alice")
      .text(64, "secret")
      .text(128, "memo")
      .u32(272, 7)
      .u32(276, 100)
      .u32(280, 200)
      .u8(290, 3)
      .u8(291, 1)
      .u8(292, 1);
}

TEST(User, SendsAccounts) {
  const auto sends = [](const std::string& ip, const std::string& mac, const std::string& type,
                        const Bytes& payload) {
    expect_setting(add_words(ip, mac, type), 16, 4, 1040, payload);
  };
  // The range goes out as numbers: in the machine's byte order.
  sends("10.0.0.5-10.0.0.9,1.1.1.1", "00:11:22:33:44:55", "pppoe,web,off",
        account().u32(260, 0x0A000005).u32(264, 0x0A000009).hex(284, "001122334455").u16(308, 0x67));
  sends("next", "next", "web", account().u16(308, 0x58));
  sends("10.0.0.5", "next", "x", account().u32(260, 0x0A000005).u32(264, 0x0A000005).u16(308, 0x11));
  sends("0.0.0.0-0.0.0.0", "00-11", "offpppoe", account().u16(308, 0x24));
  sends("0.0.0.0-0.0.0.9", "zz", "", account().u32(264, 9));
  sends("bogus", "", "WEB", account());

  const std::string cut(200, 'x');
  expect_setting({"user", "add", cut, cut, "-1", "next", "next", "web", "-1", cut, "0x10", "4294967296", "GX",
                  "01", "ignored"},
                 16, 4, 1040,
                 Bytes()
                     .text(0, std::string(63, 'x'))
                     .text(64, std::string(63, 'x'))
                     .text(128, std::string(127, 'x'))
                     .u32(272, 0xFFFFFFFF)
                     .u32(276, 16)
                     .u32(280, 0xFFFFFFFF)
                     .u8(290, 255)
                     .u16(308, 0x58));
  expect_setting({"user", "del", "alice"}, 16, 8, 1040, Bytes().text(0, "alice"));
  std::vector<std::string> short_of_one = add_words("next", "next", "web");
  short_of_one.pop_back();
  expect_rejected(short_of_one, kAddUsage);
  expect_rejected({"user", "add"}, kAddUsage);
  expect_rejected({"user", "del"}, "name");
}

TEST(User, SendsOrders) {
  const auto sends = [](std::vector<std::string> words, uint32_t command, const Bytes& payload) {
    words.insert(words.begin(), "user");
    expect_setting(words, 16, command, 1040, payload);
  };
  sends({"delall"}, 9, Bytes());
  sends({"delall", "web"}, 9, Bytes().u32(0, 1));
  sends({"delall", "pppoe", "3", "4"}, 9, Bytes().u32(0, 2).u32(4, 3));
  sends({"delall", "other", "1"}, 9, Bytes().u32(4, 1));
  for (const auto& [word, command] : {std::pair("rd_down_all", 42u), std::pair("down_all", 43u)}) {
    sends({word, "all"}, command, Bytes());
    sends({word, "pppoe"}, command, Bytes().u32(0, 1));
    sends({word, "web"}, command, Bytes().u32(0, 2));
    expect_rejected({"user", word, "bogus"}, "type[all/pppoe/web]");
    expect_rejected({"user", word}, "type[all/pppoe/web]");
  }
  sends({"autoscan", "0", "9"}, 23, Bytes());
  sends({"autoscan", "2", "9"}, 23, Bytes().u32(0, 2));
  for (const char* minutes : {"2", "-2", "", "5"}) {
    sends({"autoscan", "1", minutes}, 23, Bytes().u32(0, 1).u32(4, 5));
  }
  sends({"autoscan", "1"}, 23, Bytes().u32(0, 1).u32(4, 5));
  sends({"autoscan", "1", "6"}, 23, Bytes().u32(0, 1).u32(4, 6));
  expect_rejected({"user", "autoscan"}, "autoscan enable minut");
  sends({"js_mod", "90"}, 45, Bytes().u32(0, 5400));
  expect_rejected({"user", "js_mod"}, "time");
  sends({"lock", "x", "1", "alice", "0"}, 52, Bytes().text(0, "alice").u32(64, 1));
  sends({"lock", "x", "0", std::string(70, 'n'), "2"}, 52, Bytes().text(0, std::string(63, 'n')).u32(68, 2));
  expect_rejected({"user", "lock", "x", "1", "alice"}, "all name lock");
}

TEST(User, SettingsWithAnAnswer) {
  const auto shows = [](std::vector<std::string> words, uint32_t command, const Bytes& sent,
                        const Bytes& answered, const std::string& out) {
    words.insert(words.begin(), "user");
    const Outcome outcome = vek(words, {{.payload = answered}});
    expect_order(outcome, 16, command, 1040, sent);
    expect_end(outcome, 0, out);
  };
  shows({"get_auto"}, 24, Bytes(), Bytes().u32(0, 0xFFFFFFFF).u32(4, 30),
        "\nautscan:enable=-1 interval_time=30\n");
  shows({"card", "set", "3", "1"}, 46, Bytes().u32(0, 1).u32(4, 3).u32(8, 1), Bytes().u32(4, 4).u32(8, 5),
        "type:4,en:5\n");
  shows({"card", "get", "3", "1"}, 46, Bytes().u32(4, 3), Bytes(), "type:3,en:0\n");
  shows({"ssid", "set", "1", "2", "3", "4", "-5"}, 48,
        Bytes().u32(0, 1).u32(4, 1).u32(8, 2).u32(12, 3).u32(16, 4).u32(20, 0xFFFFFFFB),
        Bytes().u32(4, 6).u32(8, 7).u32(12, 8).u32(16, 9).u32(20, 10),
        "assid:6,lssid:7,dssid:8,ussid:9,gssid:10\n");
  shows({"ssid", "get"}, 48, Bytes(), Bytes().u32(20, 9), "assid:0,lssid:0,dssid:0,ussid:0,gssid:9\n");
  expect_rejected({"user", "card", "get"}, "set/get type en[0/1]");
  expect_rejected({"user", "card", "set", "3"}, "set/get type en[0/1]");
  expect_rejected({"user", "ssid"}, "set/get a l d u g");
  expect_rejected({"user", "ssid", "set", "1", "2", "3", "4"}, "set/get a l d u g");
}

TEST(User, Stat) {
  const Outcome outcome =
      vek({"user", "stat", std::string(70, 'n')}, {{.payload = Bytes().u64(64, 2048).u64(72, UINT64_MAX)}});
  expect_order(outcome, 16, 7, 1024, Bytes().text(0, std::string(63, 'n')));
  expect_end(outcome, 0, "up:18014398509481983K down:2K \n  ok\n");

  const std::string usage = " " + vek_path() + " user stat user stat name\n";
  expect_end(vek({"user", "stat"}), 1, "", usage);
  expect_end(vek({"user", "stat", "name", "extra"}), 1, "", usage);
  expect_end(vek({"user", "stat", "name"}, {{.returned = 1}}), 1, "",
             usage + "\t\terr:order_opt_fun false!\n");
  expect_end(vek({"user", "stat", "name"}, {{.result = 51}}), 3, "", "err:error fifty-one \n");
  expect_end(vek({"user", "stat", "name"}, {{.result = 52}}), 3, "", "err:not find err! \n");
}

TEST(User, AccountLists) {
  const Bytes first = Bytes()
                          .text(0, std::string(64, 'n'))
                          .text(64, std::string(64, 'p'))
                          .text(128, std::string(128, 'm'))
                          .u32(256, 4000000001)
                          .ip(260, "10.0.0.5")
                          .ip(264, "10.0.0.9")
                          .u32(268, 4000000002)
                          .u32(272, 0xFFFFFFFF)
                          .u32(276, 0xFFFFFFFE)
                          .u32(280, 9)
                          .hex(284, "a0b1c2d3e4f5")
                          .u8(290, 255)
                          .u8(291, 1)
                          .u8(292, 2)
                          .hex(293, std::string(30, 'f'))
                          .u16(308, 0xFFFF)
                          .u32(448, 4000000003)
                          .u32(480, 4000000004)
                          .u32(484, 4000000005);
  const Bytes second = Bytes().text(0, "bob").u8(291, 2).u16(308, 0x60).u32(256, 2);
  const std::string out = "num: 2\nname=" + std::string(64, 'n') + " pwd=" + std::string(64, 'p') +
                          " gid=255 mod_pwd=2 state=0xffff ip=10.0.0.5 -10.0.0.9 \n  mac=a0:b1:c2:d3:e4:f5 "
                          "speed up=-2 down=9 mode=gx cfgip cfgmac nip nmac pppoe web mobile off "
                          " ddate=4000000002 zup=4000000004 zdown=4000000005 login_num=4000000003 "
                          "userid=4000000001 mem=" +
                          std::string(128, 'm') +
                          "\n\nname=bob pwd= gid=0 mod_pwd=0 state=0x60 ip=0.0.0.0 -0.0.0.0 \n  "
                          "mac=00:00:00:00:00:00 speed up=0 down=0 mode=dl pppoe web  ddate=0 zup=0 zdown=0 "
                          "login_num=0 userid=2 mem=\n\n\n";
  const Bytes two = Bytes().u32(4, 2).at(8, first).at(496, second);
  const Outcome list = vek({"user", "list"}, {{.payload = two}});
  expect_order(list, 16, 10, 0x400000, Bytes());
  expect_end(list, 0, out);
  const Outcome online = vek({"user", "online_list"}, {{.payload = two}});
  expect_order(online, 16, 12, 204816, Bytes());
  expect_end(online, 0, out);
  expect_end(vek({"user", "list"}, {{.payload = Bytes(two).u32(4, 0xFFFFFFFF)}}), 0, "num: -1\n\n");

  const Outcome cut = vek({"user", "online_list"}, {{.payload = Bytes().u32(4, 0x7FFFFFFF)}});
  EXPECT_EQ(std::count(cut.out.begin(), cut.out.end(), '\n'), 2 + 3 * ((204800 - 8) / 488));
}

TEST(User, NameInfo) {
  const Bytes info = Bytes()
                         .text(0, std::string(64, 'n'))
                         .u32(64, 8)
                         .u32(68, 0xFFFFFFFF)
                         .u32(72, 3)
                         .u32(76, 6)
                         .hex(80, "20010db8000000000000000000000001")
                         .hex(96, "a0b1c2d3e4f5")
                         .u64(108, 0x1234567890ABCDEF)
                         .u32(116, 4);
  const Outcome outcome = vek({"user", "name_info", std::string(70, 'x')}, {{.payload = info}});
  expect_order(outcome, 16, 38, 10256, Bytes().text(0, std::string(63, 'x')));
  const std::string entry = ",ip:2001:db8::1,mac:a0:b1:c2:d3:e4:f5,flags:0x1234567890ABCDEF\n";
  const std::string header = "\nname:" + std::string(64, 'n') + ",num:3,login_num:8,web_login_num:-1\n";
  expect_end(outcome, 0, header + "i:0" + entry + "i:1" + entry + "i:2" + entry + "\n");
  expect_end(vek({"user", "name_info", "a"}, {{.payload = Bytes().u32(72, 1).u32(76, 4).u64(108, 0xAB)}}), 0,
             "\nname:,num:1,login_num:0,web_login_num:0\n"
             "i:0,ip:0.0.0.0,mac:00:00:00:00:00:00,flags:0x000000AB\n\n");
  expect_end(vek({"user", "name_info", "a"}, {{.payload = Bytes().u32(72, 0x80000000)}}), 0,
             "\nname:,num:-2147483648,login_num:0,web_login_num:0\n\n");
  const Outcome cut = vek({"user", "name_info", "a"}, {{.payload = Bytes().u32(72, 0x7FFFFFFF)}});
  EXPECT_EQ(std::count(cut.out.begin(), cut.out.end(), '\n'), 3 + (10240 - 76) / 40);
  expect_rejected({"user", "name_info"}, "name");
}

TEST(User, UnknownWords) {
  for (const char* word : {"group_add", "voucher_list", "LIST", ""}) {
    expect_end(vek({"user", word, "x"}), 1, "",
               " user\tadd del list group_add group_del group_list autoscan get_auto voucher_list\n");
    expect_end(vek({"macuser", word, "x"}), 1, "", " macuser\tset/get/list/mac_del/id_del\n");
  }
}

TEST(MacUser, Requests) {
  expect_setting({"macuser", "set", "2", "3600"}, 62, 1, 1040, Bytes().u32(0, 2).u64(8, 3600));
  expect_setting({"macuser", "set", "1", "-1"}, 62, 1, 1040, Bytes().u32(0, 1).u64(8, UINT64_MAX));
  expect_rejected({"macuser", "set", "1"}, "enable time");
  expect_setting({"macuser", "mac_del", "00:11:22:33:44:55"}, 62, 5, 1040, Bytes().hex(8, "001122334455"));
  expect_setting({"macuser", "mac_del", "zz"}, 62, 5, 1040, Bytes());
  expect_rejected({"macuser", "mac_del"}, "mac");
  expect_setting({"macuser", "id_del", "4000000000"}, 62, 6, 1040, Bytes().u32(20, 4000000000));
  expect_rejected({"macuser", "id_del"}, "userid");
  expect_setting({"macuser", "init"}, 62, 7, 1040, Bytes());
}

TEST(MacUser, Answers) {
  const Outcome get = vek({"macuser", "get"}, {{.payload = Bytes().u32(0, 0xFFFFFFFF).u64(8, UINT64_MAX)}});
  expect_order(get, 62, 2, 1040, Bytes());
  expect_end(get, 0, "enable:-1\ntimeout:18446744073709551615\n");

  const Bytes entry = Bytes()
                          .u64(0, UINT64_MAX)
                          .hex(8, "a0b1c2d3e4f5")
                          .hex(14, "ffffffffffff")
                          .u32(20, 4000000000)
                          .u32(24, 7)
                          .u32(28, 0xFFFFFFFE);
  const Bytes two = Bytes().u32(4, 2).at(8, entry).at(40, Bytes().u64(0, 5).u32(20, 6).u32(28, 1));
  const Outcome list = vek({"macuser", "list"}, {{.payload = two}});
  expect_order(list, 62, 3, 0x400000, Bytes());
  expect_end(list, 0,
             "mac list num:2\n"
             "mac:a0:b1:c2:d3:e4:f5,user:4000000000,last:18446744073709551615 seconds,card_type:-2\n"
             "mac:00:00:00:00:00:00,user:6,last:5 seconds,card_type:1\n");
  expect_end(vek({"macuser", "list"}), 0, "mac list num:0\n");
}

}  // namespace
