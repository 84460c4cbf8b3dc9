// user and macuser: what they send and what they print.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/driver.h"

namespace {

void sends(const std::string& words, uint32_t module, uint32_t command, const Bytes& payload) {
  expect_setting(split(words), module, command, 1040, payload);
}

void shows(const std::string& words, uint32_t module, uint32_t command, const Bytes& sent,
           const Bytes& answered, const std::string& out) {
  SCOPED_TRACE(words);
  const Outcome outcome = vek(split(words), {{.payload = answered}});
  expect_order(outcome, module, command, 1040, sent);
  expect_end(outcome, 0, out);
}

TEST(User, Accounts) {
  const auto adds = [](const std::string& bindings_and_type, const Bytes& wanted) {
    // max, up_speed, down_speed; gid, mode_speed, mod_pwd
    const Bytes rest = Bytes(wanted)
                           .text(0, "alice")
                           .text(64, "secret")
                           .text(128, "memo")
                           .hex(272, "07000000 64000000 c8000000")
                           .hex(290, "03 01 01");
    sends("user add alice secret 259 " + bindings_and_type + " 7 memo 100 200 gx 1", 16, 4, rest);
  };
  // The range goes out as numbers, in the machine's byte order.
  adds("10.0.0.5-10.0.0.9,1.1.1.1 00:11:22:33:44:55 pppoe,web,off",
       Bytes().u32(260, 0x0A000005).u32(264, 0x0A000009).hex(284, "001122334455").u16(308, 0x67));
  adds("next next web", Bytes().u16(308, 0x58));
  adds("10.0.0.5 next x", Bytes().u32(260, 0x0A000005).u32(264, 0x0A000005).u16(308, 0x11));
  adds("0.0.0.0-0.0.0.0 00-11 offpppoe", Bytes().u16(308, 0x24));
  adds("0.0.0.0-0.0.0.9 zz WEB", Bytes().u32(264, 9).u16(308, 0));

  const std::string cut(200, 'x');
  sends("user add " + cut + " " + cut + " -1 next next web -1 " + cut + " 0x10 4294967296 GX 01 ignored", 16,
        4,
        Bytes()
            .text(0, cut.substr(0, 63))
            .text(64, cut.substr(0, 63))
            .text(128, cut.substr(0, 127))
            .hex(272, "ffffffff 10000000 ffffffff")
            .hex(290, "ff")
            .u16(308, 0x58));
  sends("user del alice", 16, 8, Bytes().text(0, "alice"));
}

TEST(User, Orders) {
  sends("user delall", 16, 9, Bytes());
  sends("user delall web", 16, 9, Bytes().u32(0, 1));
  sends("user delall pppoe 3 4", 16, 9, Bytes().u32(0, 2).u32(4, 3));
  sends("user delall other 1", 16, 9, Bytes().u32(4, 1));
  for (const auto& [word, command] : {std::pair("rd_down_all", 42u), std::pair("down_all", 43u)}) {
    sends(std::string("user ") + word + " all", 16, command, Bytes());
    sends(std::string("user ") + word + " pppoe", 16, command, Bytes().u32(0, 1));
    sends(std::string("user ") + word + " web", 16, command, Bytes().u32(0, 2));
  }
  sends("user autoscan 0 9", 16, 23, Bytes());
  sends("user autoscan 2 9", 16, 23, Bytes().u32(0, 2));
  for (const char* minutes : {"", " 2", " -2", " 5"}) {
    sends(std::string("user autoscan 1") + minutes, 16, 23, Bytes().u32(0, 1).u32(4, 5));
  }
  sends("user autoscan 1 6", 16, 23, Bytes().u32(0, 1).u32(4, 6));
  sends("user js_mod 90", 16, 45, Bytes().u32(0, 5400));
  sends("user lock x 1 alice 0", 16, 52, Bytes().text(0, "alice").u32(64, 1));
  sends("user lock x 0 " + std::string(70, 'n') + " 2", 16, 52,
        Bytes().text(0, std::string(63, 'n')).u32(68, 2));
  sends("macuser set 2 3600", 62, 1, Bytes().u32(0, 2).u64(8, 3600));
  sends("macuser set 1 -1", 62, 1, Bytes().u32(0, 1).u64(8, UINT64_MAX));
  sends("macuser mac_del 00:11:22:33:44:55", 62, 5, Bytes().hex(8, "001122334455"));
  sends("macuser mac_del zz", 62, 5, Bytes());
  sends("macuser id_del 4000000000", 62, 6, Bytes().u32(20, 4000000000));
  sends("macuser init", 62, 7, Bytes());
}

TEST(User, Settings) {
  shows("user get_auto", 16, 24, Bytes(), Bytes().u32(0, 0xFFFFFFFF).u32(4, 30),
        "\nautscan:enable=-1 interval_time=30\n");
  shows("user card set 3 1", 16, 46, Bytes().u32(0, 1).u32(4, 3).u32(8, 1), Bytes().u32(4, 4).u32(8, 5),
        "type:4,en:5\n");
  shows("user card get 3 1", 16, 46, Bytes().u32(4, 3), Bytes(), "type:3,en:0\n");
  shows("user ssid set 1 2 3 4 -5", 16, 48,
        Bytes().hex(0, "01000000 01000000 02000000 03000000 04000000 fbffffff"),
        Bytes().hex(4, "06000000 07000000 08000000 09000000 0a000000"),
        "assid:6,lssid:7,dssid:8,ussid:9,gssid:10\n");
  shows("user ssid get", 16, 48, Bytes(), Bytes(), "assid:0,lssid:0,dssid:0,ussid:0,gssid:0\n");
  shows("macuser get", 62, 2, Bytes(), Bytes().u32(0, 0xFFFFFFFF).u64(8, UINT64_MAX),
        "enable:-1\ntimeout:18446744073709551615\n");
}

TEST(User, Rejected) {
  const std::pair<const char*, const char*> kCases[] = {
      {"user add alice pw 1 next next web 0 memo 1 2 gx",
       "name pwd gid ip(next|ip_s-ip_e) mac(next|mac) type(pppoe,web,off) max mem up_speed down_speed "
       "mode_speed "
       "mod_pwd"},
      {"user del", "name"},
      {"user rd_down_all bogus", "type[all/pppoe/web]"},
      {"user down_all", "type[all/pppoe/web]"},
      {"user autoscan", "autoscan enable minut"},
      {"user js_mod", "time"},
      {"user lock x 1 alice", "all name lock"},
      {"user card get", "set/get type en[0/1]"},
      {"user card set 3", "set/get type en[0/1]"},
      {"user ssid", "set/get a l d u g"},
      {"user ssid set 1 2 3 4", "set/get a l d u g"},
      {"user name_info", "name"},
      {"macuser set 1", "enable time"},
      {"macuser mac_del", "mac"},
      {"macuser id_del", "userid"},
  };
  for (const auto& [words, usage] : kCases) expect_rejected(split(words), usage);
  for (const char* word : {"group_add", "voucher_list", "LIST", ""}) {
    expect_end(vek({"user", word, "x"}), 1, "",
               " user\tadd del list group_add group_del group_list autoscan get_auto voucher_list\n");
    expect_end(vek({"macuser", word, "x"}), 1, "", " macuser\tset/get/list/mac_del/id_del\n");
  }
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
}

// The texts of the first account fill their fields, without a NUL.
TEST(User, AccountLists) {
  const std::string name(64, 'n');
  const std::string memo(128, 'm');
  const Bytes first = Bytes()
                          .text(0, name + name + memo)
                          .hex(256,
                               "01286bee 0a000005 0a000009 02286bee")  // userid, range, ddate
                          .hex(272,
                               "ffffffff feffffff 09000000")  // max, up_speed, down_speed
                          .hex(284,
                               "a0b1c2d3e4f5 ff 01 02")             // mac, gid, mode_speed, mod_pwd
                          .hex(293, std::string(30, 'f') + "ffff")  // flags at the end
                          .hex(448, "03286bee")                     // login_num
                          .hex(480,
                               "04286bee 05286bee");  // zup, zdown
  const Bytes second = Bytes().text(0, "bob").u8(291, 2).u16(308, 0x60).u32(256, 2);
  const std::string out =
      "num: 2\nname=" + name + " pwd=" + name +
      " gid=255 mod_pwd=2 state=0xffff ip=10.0.0.5 -10.0.0.9 \n  mac=a0:b1:c2:d3:e4:f5 speed up=-2 down=9 "
      "mode=gx "
      "cfgip cfgmac nip nmac pppoe web mobile off  ddate=4000000002 zup=4000000004 zdown=4000000005 "
      "login_num=4000000003 userid=4000000001 mem=" +
      memo +
      "\n\nname=bob pwd= gid=0 mod_pwd=0 state=0x60 ip=0.0.0.0 -0.0.0.0 \n  mac=00:00:00:00:00:00 speed up=0 "
      "down=0 "
      "mode=dl pppoe web  ddate=0 zup=0 zdown=0 login_num=0 userid=2 mem=\n\n\n";
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

// Every line is of the first entry.
TEST(User, NameInfo) {
  const std::string name(64, 'n');
  const Bytes info = Bytes()
                         .text(0, name)
                         .hex(64, "08000000 ffffffff 03000000")
                         .hex(76, "06000000 20010db8000000000000000000000001 a0b1c2d3e4f5 ffffffffffff")
                         .hex(108, "efcdab9078563412 04000000");
  const Outcome outcome = vek({"user", "name_info", name}, {{.payload = info}});
  expect_order(outcome, 16, 38, 10256, Bytes().text(0, name.substr(0, 63)));
  const std::string entry = ",ip:2001:db8::1,mac:a0:b1:c2:d3:e4:f5,flags:0x1234567890ABCDEF\n";
  expect_end(outcome, 0,
             "\nname:" + name + ",num:3,login_num:8,web_login_num:-1\ni:0" + entry + "i:1" + entry + "i:2" +
                 entry + "\n");
  expect_end(vek({"user", "name_info", "a"}, {{.payload = Bytes().u32(72, 1).u32(76, 4).u64(108, 0xAB)}}), 0,
             "\nname:,num:1,login_num:0,web_login_num:0\n"
             "i:0,ip:0.0.0.0,mac:00:00:00:00:00:00,flags:0x000000AB\n\n");
  const auto lines = [](uint32_t count) {
    const std::string out = vek({"user", "name_info", "a"}, {{.payload = Bytes().u32(72, count)}}).out;
    return std::count(out.begin(), out.end(), '\n');
  };
  EXPECT_EQ(lines(0x80000000), 3);
  EXPECT_EQ(lines(0x7FFFFFFF), 3 + (10240 - 76) / 40);
}

TEST(MacUser, List) {
  const Bytes entry =
      Bytes().u64(0, UINT64_MAX).hex(8, "a0b1c2d3e4f5ffffffffffff").hex(20, "00286bee 07000000 feffffff");
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
