// user and macuser: what they send and what they print.
#include "tool/driver.h"

namespace {

TEST(User, Accounts) {
  const auto adds = [](const std::string& bindings_and_type, const std::string& wanted) {
    // max, up_speed, down_speed; gid, mode_speed, mod_pwd
    sends("user add alice secret 259 " + bindings_and_type + " 7 memo 100 200 gx 1", {16, 4},
          "0:text alice 64:text secret 128:text memo 272:u32 7 100 200 290:u8 3 1 1 " + wanted);
  };
  // The range goes out as numbers, in the machine's byte order.
  adds("10.0.0.5-10.0.0.9,1.1.1.1 00:11:22:33:44:55 pppoe,web,off",
       "260:u32 0x0A000005 0x0A000009 284:hex 001122334455 308:u16 0x67");
  adds("next next web", "308:u16 0x58");
  adds("10.0.0.5 next x", "260:u32 0x0A000005 0x0A000005 308:u16 0x11");
  adds("0.0.0.0-0.0.0.0 00-11 offpppoe", "308:u16 0x24");
  adds("0.0.0.0-0.0.0.9 zz WEB", "264:u32 9");
  adds("10.0.0.x next web", "308:u16 0x50");
  sends("user add {a}*200 {b}*200 -1 next next web -1 {c}*200 0x10 4294967296 GX 01 ignored", {16, 4},
        "0:text {a}*63 64:text {b}*63 128:text {c}*127 272:u32 -1 16 -1 290:u8 -1 308:u16 0x58");
  sends("user del alice", {16, 8}, "0:text alice");
}

TEST(User, Orders) {
  sends("user delall", {16, 9}, "");
  sends("user delall web", {16, 9}, "0:u32 1");
  sends("user delall pppoe 3 4", {16, 9}, "0:u32 2 3");
  sends("user delall other 1", {16, 9}, "4:u32 1");
  sends("user rd_down_all all", {16, 42}, "");
  sends("user rd_down_all pppoe", {16, 42}, "0:u32 1");
  sends("user down_all web", {16, 43}, "0:u32 2");
  sends("user autoscan 0 9", {16, 23}, "");
  sends("user autoscan 2 9", {16, 23}, "0:u32 2");
  for (const std::string minutes : {"", "2", "-2", "5"})
    sends("user autoscan 1 " + minutes, {16, 23}, "0:u32 1 5");
  sends("user autoscan 1 6", {16, 23}, "0:u32 1 6");
  sends("user js_mod 90", {16, 45}, "0:u32 5400");
  sends("user lock x 1 alice 0", {16, 52}, "0:text alice 64:u32 1");
  sends("user lock x 0 {n}*70 2", {16, 52}, "0:text {n}*63 68:u32 2");
  sends("macuser set 2 3600", {62, 1}, "0:u32 2 8:u64 3600");
  sends("macuser set 1 -1", {62, 1}, "0:u32 1 8:u64 -1");
  sends("macuser mac_del 00:11:22:33:44:55", {62, 5}, "8:hex 001122334455");
  sends("macuser mac_del zz", {62, 5}, "");
  sends("macuser id_del 4000000000", {62, 6}, "20:u32 4000000000");
  sends("macuser init", {62, 7}, "");
}

TEST(User, Settings) {
  shows("user get_auto", {16, 24}, "", "0:u32 -1 30", "\nautscan:enable=-1 interval_time=30\n");
  shows("user card set 3 1", {16, 46}, "0:u32 1 3 1", "4:u32 4 5", "type:4,en:5\n");
  shows("user card get 3 1", {16, 46}, "4:u32 3", "", "type:3,en:0\n");
  shows("user ssid set 1 2 3 4 -5", {16, 48}, "0:u32 1 1 2 3 4 -5", "4:u32 6 7 8 9 10",
        "assid:6,lssid:7,dssid:8,ussid:9,gssid:10\n");
  shows("user ssid get", {16, 48}, "", "", "assid:0,lssid:0,dssid:0,ussid:0,gssid:0\n");
  shows("macuser get", {62, 2}, "", "0:u32 -1 8:u64 -1", "enable:-1\ntimeout:18446744073709551615\n");
}

TEST(User, Rejected) {
  rejects(
      "name pwd gid ip(next|ip_s-ip_e) mac(next|mac) type(pppoe,web,off) max mem up_speed down_speed "
      "mode_speed mod_pwd",
      {"user add alice pw 1 next next web 0 memo 1 2 gx"});
  rejects("name", {"user del", "user name_info"});
  rejects("type[all/pppoe/web]", {"user rd_down_all bogus", "user down_all"});
  rejects("autoscan enable minut", {"user autoscan"});
  rejects("time", {"user js_mod"});
  rejects("all name lock", {"user lock x 1 alice"});
  rejects("set/get type en[0/1]", {"user card get", "user card set 3"});
  rejects("set/get a l d u g", {"user ssid", "user ssid set 1 2 3 4"});
  rejects("enable time", {"macuser set 1"});
  rejects("mac", {"macuser mac_del"});
  rejects("userid", {"macuser id_del"});
}

TEST(User, Stat) {
  shows("user stat {n}*70", {16, 7, 1024}, "0:text {n}*63", "64:u64 2048 -1",
        "up:18014398509481983K down:2K \n  ok\n");
  const std::string usage = " " + vek_path() + " user stat user stat name\n";
  expect_unsent(vek("user stat"), 1, "", usage);
  expect_unsent(vek("user stat name extra"), 1, "", usage);
  expect_end(vek("user stat name", {.returned = 1}), 1, "", usage + "\t\terr:order_opt_fun false!\n");
  expect_end(vek("user stat name", {.result = 51}), 3, "", "err:error fifty-one \n");
}

// The texts of the first entries fill their fields, without a NUL.
TEST(User, Lists) {
  const std::string accounts = list_of(
      488,
      {"0:text {n}*64 {p}*64 {m}*128 256:u32 4000000001 260:ip 10.0.0.5 10.0.0.9 268:u32 4000000002 -1 -2 9"
       " 284:hex a0b1c2d3e4f5 ff0102 {ff}*17 448:u32 4000000003 480:u32 4000000004 4000000005",
       "0:text bob 256:u32 2 291:u8 2 308:u16 0x60"});
  const std::string out = unfolded(
      "num: 2\nname={n}*64 pwd={p}*64 gid=255 mod_pwd=2 state=0xffff ip=10.0.0.5 -10.0.0.9 \n"
      "  mac=a0:b1:c2:d3:e4:f5 speed up=-2 down=9 mode=gx cfgip cfgmac nip nmac pppoe web mobile off  "
      "ddate=4000000002 zup=4000000004 zdown=4000000005 login_num=4000000003 userid=4000000001 "
      "mem={m}*128\n\nname=bob pwd= gid=0 mod_pwd=0 state=0x60 ip=0.0.0.0 -0.0.0.0 \n"
      "  mac=00:00:00:00:00:00 speed up=0 down=0 mode=dl pppoe web  "
      "ddate=0 zup=0 zdown=0 login_num=0 userid=2 mem=\n\n\n");
  shows("user list", {16, 10, 0x400000}, "", accounts, out);
  shows("user online_list", {16, 12, 204816}, "", accounts, out);

  shows(
      "macuser list", {62, 3, 0x400000}, "",
      list_of(32, {"0:u64 -1 8:hex a0b1c2d3e4f5ffffffffffff 20:u32 4000000000 7 -2",
                   "0:u64 5 20:u32 6 28:u32 1"}),
      "mac list num:2\nmac:a0:b1:c2:d3:e4:f5,user:4000000000,last:18446744073709551615 seconds,card_type:-2\n"
      "mac:00:00:00:00:00:00,user:6,last:5 seconds,card_type:1\n");

  // Every line is of the first entry.
  const std::string entry = ",ip:2001:db8::1,mac:a0:b1:c2:d3:e4:f5,flags:0x1234567890ABCDEF\n";
  shows("user name_info {n}*64", {16, 38, 10256}, "0:text {n}*63",
        "0:text {n}*64 64:u32 8 -1 3 +76 0:u32 6 4:hex 20010db8{00}*11 01 a0b1c2d3e4f5ffffffffffff"
        " 32:u64 0x1234567890ABCDEF 40:u32 4",
        unfolded("\nname:{n}*64,num:3,login_num:8,web_login_num:-1\ni:0") + entry + "i:1" + entry + "i:2" +
            entry + "\n");
  shows("user name_info a", {16, 38, 10256}, "0:text a", "72:u32 1 4 108:u64 0xAB",
        "\nname:,num:1,login_num:0,web_login_num:0\n"
        "i:0,ip:0.0.0.0,mac:00:00:00:00:00:00,flags:0x000000AB\n\n");
  expect_lines("user name_info a", "72:u32 0x80000000", 3);
  expect_lines("user name_info a", "72:u32 0x7FFFFFFF", 3 + (10240 - 76) / 40);
}

}  // namespace
