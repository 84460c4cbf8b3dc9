// Local accounts, MAC memory, and the portal's functions.
#include "host.h"
#include "platform/auth.h"

namespace {

class Users : public HostTest {
 protected:
  Users() { shows("user list", "num: 0\n\n"); }

  // Name, type, and if there is more to say the greatest number of logins, IP and MAC addresses.
  static void add(const std::string& name, const std::string& type, const std::string& rest = "0 next next") {
    const std::vector<std::string> words = split(rest);
    ok({"user add " + name + " pw 1 " + words[1] + " " + words[2] + " " + type + " " + words[0] +
        " memo 1 2 dl 0"});
  }
  // Portal functions by their words. The status is always the same.
  static void portal(const std::string& words, const std::string& answer) {
    shows("rzglapi " + words, answer, 1);
  }
  static void done(std::initializer_list<std::string> all) {
    for (const std::string& words : all) portal(words, R"({"ret":"0"})");
  }
  static void failed(std::initializer_list<std::string> all) {
    for (const std::string& words : all) portal(words, R"({"ret":"-1"})");
  }
  static std::string host(const std::string& ip, const std::string& mac, const std::string& sent = "0") {
    return R"({"ip":")" + ip + R"(","mac":")" + mac + R"(","up":"0","down":"0","send":")" + sent +
           R"(","recv":"0"})";
  }
  // How many are on line.
  static long online() { return std::ranges::count(vek("rzglapi getonline all").out, '{'); }
};

TEST_F(Users, AccountsAreKept) {
  ok({"user add alice secret 3 10.0.0.5-10.0.0.9 00:11:22:33:44:55 pppoe,off 2 'a memo' 100 200 gx 1",
      "user add bob x 7 1.2.3.4 next pppoe 9 m 9 9 gx 1"});
  add("bob", "web");  // anew, under the same id
  ok({"user del bob"});
  add("carl", "web");  // an id is given once
  holds("user list",
        {"num: 2\nname=alice pwd=secret gid=3 mod_pwd=1 state=0x27 ip=10.0.0.5 -10.0.0.9 \n",
         " mac=00:11:22:33:44:55 speed up=100 down=200 mode=gx cfgip cfgmac pppoe off  ddate=0 zup=0 ",
         " userid=1 mem=a memo\n\nname=carl pwd=pw gid=1 mod_pwd=0 state=0x58 ip=0.0.0.0 -0.0.0.0 \n",
         " speed up=1 down=2 mode=dl nip nmac web ", " login_num=0 userid=3 mem=memo\n\n\n"});
  refused("unknown user", {"user del bob", "user stat bob", "user name_info bob", "user lock x 0 bob 1"});
  const std::string rest = " 0 memo 1 2 dl 0";
  refused("bad MAC address", {"user add dora pw 1 next 01:00:5e:00:00:01 web" + rest,
                              "user add dora pw 1 next 02:00 web" + rest});
  refused("bad address", {"user add dora pw 1 10.0.0.x next web" + rest,
                          "user add dora pw 1 0.0.0.0-10.0.0.9 next web" + rest});
  refused("unknown type", {"user add dora pw 1 next next wep" + rest});
  refused("control character in a text",
          {"user add a\x01 pw 1 next next web" + rest, "user add dora p\x7f 1 next next web" + rest,
           "user add dora pw 1 next next web 0 m\x1b 1 2 dl 0"});

  sql("UPDATE account SET up_bytes = 5000000000, down_bytes = 1 << 50, ddate = 77 WHERE name = 'alice'");
  shows("user stat alice", "up:4882812K down:1099511627776K \n  ok\n");
  holds("user list", {" ddate=77 zup=4882812 zdown=4294967295 "});

  insert(
      3, 4096,
      "account (name, pwd, mem, ip_start, ip_end, max, up_speed, down_speed, mac, gid, mode_speed, mod_pwd, "
      "flags) SELECT 'user' || i, '', '', 0, 0, 0, 0, 0, zeroblob(6), 0, 0, 0, 64");
  refused("table full", {"user add bob pw 1 next next web 0 memo 1 2 dl 0"});
  add("user9", "web");
  begins("user list", "num: 4096\n");
}

TEST_F(Users, AreDeletedByServiceAndExpiry) {
  for (const char* user : {"a pppoe", "b web", "c web,pppoe", "d off", "e web"}) add({user[0]}, user + 2);
  sql("UPDATE account SET ddate = iif(name = 'e', 1 << 40, 1) WHERE name <> 'c'");
  for (const auto& [words, left] : pairs("'web 1' acde pppoe de 'all 1' e all ''")) {
    ok({"user delall " + words});
    std::string names;
    for (const std::string& word : split(vek("user list").out)) {
      if (word.starts_with("name=")) names += word.substr(5);
    }
    EXPECT_EQ(names, left) << words;
  }
  refused("switch is neither 0 nor 1", {"user delall all 2"});
}

TEST_F(Users, SettingsAreKept) {
  shows("user get_auto", "\nautscan:enable=0 interval_time=0\n");
  ok({"user autoscan 1 30", "user js_mod 5"});
  shows("user get_auto", "\nautscan:enable=1 interval_time=30\n");
  shows("user card set 3 1", "type:3,en:1\n");
  shows("user card get 3", "type:3,en:1\n");
  shows("user card get 4", "type:4,en:0\n");
  refused("switch is neither 0 nor 1", {"user autoscan 2", "user card set 3 2"});
  refused("unknown type", {"user card set 256 1"});
  shows("user ssid set 1 2 3 4 5", "assid:1,lssid:2,dssid:3,ussid:4,gssid:5\n");
  shows("user ssid get", "assid:1,lssid:2,dssid:3,ussid:4,gssid:5\n");

  portal("auth get", R"({"state":"0","savemac":"0","time":"0","loginmax":"0"})");
  done({"auth set 1 1 600 5"});
  failed({"auth set 2 1 600 6", "auth set 1 2 600 6"});
  portal("auth get", R"({"state":"1","savemac":"1","time":"600","loginmax":"5"})");
  shows("macuser get", "enable:1\ntimeout:0\n");  // the same switch
  ok({"macuser set 0 -1"});
  refused("switch is neither 0 nor 1", {"macuser set 2 1"});
  shows("macuser get", "enable:0\ntimeout:18446744073709551615\n");
  holds("rzglapi auth get", {R"("savemac":"0")"});

  portal("portal get", R"({"url":""})");
  done({"portal set http://portal.example/?{u}*1000"});
  failed({"portal set http://portal.example/?{u}*1001", "portal set http://\"", "portal set ''"});
  EXPECT_LT(ApiSetPortal(nullptr), 0);
  portal("portal get", R"({"url":"http://portal.example/?)" + std::string(1000, 'u') + "\"}");
}

TEST_F(Users, HostsLogInByAllThreeKeys) {
  add("bob", "web");
  done({"login ip 10.0.0.6 600 bob", "login mac 02-00-00-00-00-02 600 bob",
        "login ipmac 10.0.0.30 02:00:00:00:00:03 600"});
  const std::string by_ip = host("10.0.0.6", "");
  const std::string by_mac = host("", "02:00:00:00:00:02");
  const std::string by_both = host("10.0.0.30", "02:00:00:00:00:03");
  portal("getonline all", "[" + by_ip + "," + by_mac + "," + by_both + "]");
  portal("getonline ip 10.0.0.6", by_ip);
  portal("getonline mac 020000000002", by_mac);
  portal("getonline ipmac 10.0.0.30 02:00:00:00:00:03", by_both);
  done({"checkonline ip 10.0.0.30", "checkonline mac 02:00:00:00:00:03",
        "checkonline ipmac 10.0.0.30 02:00:00:00:00:03"});
  for (const std::string host :
       {"ip 10.0.0.7", "mac 02:00:00:00:00:07", "ipmac 10.0.0.6 02:00:00:00:00:02"}) {
    failed({"checkonline " + host, "getonline " + host});
  }
  holds("user online_list", {"num: 1\nname=bob ", " login_num=2 userid=1 "});
  const std::string line = ",ip:10.0.0.6,mac:00:00:00:00:00:00,flags:0x00000040\n";
  shows("user name_info bob",
        "\nname:bob,num:2,login_num:2,web_login_num:2\ni:0" + line + "i:1" + line + "\n");

  OnlineInfo infos[2] = {};
  EXPECT_EQ(ApiGetAllOnlineInfo(infos, 1), 1);
  EXPECT_STREQ(infos[1].ip, "");
  EXPECT_LT(ApiLogoutByIpAndMac("10.0.0.30", "02:00:00:00:00:02"), 0);
  done({"login ipmac 10.0.0.6 02:00:00:00:00:02 600"});  // both hosts were this one
  portal("getonline all", "[" + by_both + "," + host("10.0.0.6", "02:00:00:00:00:02") + "]");
  shows("user online_list", "num: 0\n\n");
  failed({"logout ip 10.0.0.9", "logout mac 02:00:00:00:00:09"});
  done({"logout mac 02:00:00:00:00:02", "logout ipmac 10.0.0.30 02:00:00:00:00:99"});  // goes by the IP
  failed({"logout ip 10.0.0.30"});
  EXPECT_EQ(online(), 0);

  done({"login ip 10.0.0.1 600", "login ip 10.0.0.2 0"});  // as long as logins are set to: for good
  done({"auth set 0 0 600 0", "login ip 10.0.0.3 0"});
  sql("UPDATE session SET seconds = max(0, seconds - 500), send = 4");
  EXPECT_EQ(online(), 3);
  sql("UPDATE session SET since = 0, seconds = min(seconds, 1)");
  portal("getonline all", "[" + host("10.0.0.2", "", "4") + "]");
  failed({"checkonline ip 10.0.0.1", "logout ip 10.0.0.1"});
}

TEST_F(Users, LogInOnlyAsTheirAccountsAllow) {
  add("two", "web", "2 next next");
  add("any", "web");
  add("fix", "web", "0 10.0.0.5-10.0.0.9 02:00:00:00:00:05");
  add("off", "web,off");
  add("ppp", "pppoe");
  add("old", "web");
  sql("UPDATE account SET ddate = 1 WHERE name = 'old'");
  failed({"login ip 10.0.0.1 60 off", "login ip 10.0.0.1 60 ppp", "login ip 10.0.0.1 60 old",
          "login ip 10.0.0.1 60 nobody", "login ip 10.0.0.1 60 ''", "login ip 10.0.0.4 60 fix",
          "login ip 10.0.0.10 60 fix", "login ipmac 10.0.0.9 02:00:00:00:00:06 60 fix",
          "login mac 01:00:5e:00:00:01 60"});
  EXPECT_LT(ApiLoginByMacName(nullptr, nullptr, 60), 0);
  done({"login ipmac 10.0.0.9 02:00:00:00:00:05 60 fix", "login ip 10.0.1.1 60 two",
        "login ip 10.0.1.2 60 two"});
  failed({"login ip 10.0.1.3 60 two"});
  done({"login ip 10.0.1.2 60 two", "auth set 1 0 0 1", "login ip 10.0.1.4 60 any"});
  failed({"login ip 10.0.1.5 60 any"});

  done({"login mac 02:00:00:00:00:06 60", "black mac add 02:00:00:00:00:06"});
  failed({"checkonline mac 02:00:00:00:00:06", "login mac 02:00:00:00:00:06 60"});

  EXPECT_EQ(online(), 4);
  add("any", "web,off");
  EXPECT_EQ(online(), 3);
  add("any", "web");
  sql("UPDATE account SET ddate = 1 WHERE name = 'fix'");
  EXPECT_EQ(online(), 2);
  sql("UPDATE account SET ddate = 0");
  EXPECT_EQ(online(), 2);
  add("two", "pppoe");
  EXPECT_EQ(online(), 0);
  add("two", "web");
  done({"login ip 10.0.1.1 60 two", "login ip 10.0.0.9 60 fix"});

  ok({"user lock x 0 two 1"});
  EXPECT_EQ(online(), 1);
  failed({"login ip 10.0.1.1 60 two"});
  ok({"user lock x 0 two 0"});
  done({"login ip 10.0.1.1 60 two"});
  refused("switch is neither 0 nor 1", {"user lock x 0 two 2"});
  ok({"user lock x 1 - 1"});
  EXPECT_EQ(online(), 0);
}

// The lab knows the addresses of the host.
TEST_F(Users, AHostIsTheSameByBothOfItsAddresses) {
  load(R"({"hosts": [{"ip": "10.0.0.2", "local_mac": "02:00:00:00:00:02"}]})");
  add("one", "web", "1 next next");
  add("fix", "web", "0 10.0.0.3 02:00:00:00:00:03");
  failed({"login ip 10.0.0.2 60 fix", "login mac 02:00:00:00:00:02 60 fix"});
  done({"login mac 02:00:00:00:00:02 60 one", "login ip 10.0.0.2 60 one"});
  portal("getonline all", "[" + host("10.0.0.2", "") + "]");
  done({"checkonline mac 02:00:00:00:00:02", "black mac add 02:00:00:00:00:02"});
  EXPECT_EQ(online(), 0);
  failed({"login ip 10.0.0.2 60 one", "login ipmac 10.0.0.2 02:00:00:00:00:07 60"});
}

TEST_F(Users, AreKickedByService) {
  add("bob", "web,pppoe");
  for (const std::string word : {"rd_down_all ", "down_all "}) {
    for (const auto& [type, left] : {std::pair("pppoe", 1), {"web", 1}, {"all", 0}}) {
      done({"login ip 10.0.0.1 60 bob"});
      load(R"({"accounts": [{"name": "bob", "sessions": [{"ip": "10.0.0.2", "pppoe": 1}]}]})");
      ok({"user " + word + type});
      EXPECT_EQ(online(), left) << word << type;
    }
  }
  done({"login ip 10.0.0.1 60 bob"});
  ok({"user del bob"});
  EXPECT_EQ(online(), 0);
}

TEST_F(Users, MacsAreRemembered) {
  add("bob", "web");
  add("eve", "web");
  done({"login mac 02:00:00:00:00:01 60 bob"});
  shows("macuser list", "mac list num:0\n");
  ok({"macuser set 1 100"});
  done({"login ipmac 10.0.0.1 02:00:00:00:00:01 1000 bob", "login mac 02:00:00:00:00:02 60 eve",
        "login mac 02:00:00:00:00:03 60",  // of no account
        "logout mac 02:00:00:00:00:02"});
  // Who is on line was seen just now.
  const std::string bob = "mac:02:00:00:00:00:01,user:1,last:0 seconds,card_type:7\n";
  sql("UPDATE mac_memory SET unseen = 50, card_type = 7");
  begins("macuser list", "mac list num:2\n" + bob + "mac:02:00:00:00:00:02,user:2,last:5");
  sql("UPDATE mac_memory SET unseen = 110");
  ok({"macuser set 1 1000"});  // too late for whom the shorter time has let go
  shows("macuser list", "mac list num:1\n" + bob);
  done({"login mac 02:00:00:00:00:02 60 eve", "logout mac 02:00:00:00:00:01"});
  begins("macuser list", "mac list num:2\nmac:02:00:00:00:00:01,user:1,last:");

  ok({"macuser mac_del 02:00:00:00:00:01", "macuser id_del 2"});
  refused("no such entry", {"macuser mac_del 02:00:00:00:00:01", "macuser mac_del zz", "macuser id_del 2"});
  for (const char* forget : {"macuser init", "fls 62", "user del bob"}) {
    done({"login mac 02:00:00:00:00:01 60 bob"});
    begins("macuser list", "mac list num:1\n");
    vek(forget);
    shows("macuser list", "mac list num:0\n");
  }
}

// Values, what the list is then (each value once, in the one form that it has), and values that are none.
TEST_F(Users, ListsHoldEachValueOnce) {
  const struct {
    std::string list, key, values, text, bad;
  } kLists[] = {
      {"white mac ", "mac", "02:00:00:00:00:0B 02-00-00-00-00-0a 02000000000b",
       "02:00:00:00:00:0b,02:00:00:00:00:0a", "01:00:5e:00:00:01"},
      {"white domain ", "domain", "b.Example.org *.example.org localhost B.EXAMPLE.ORG",
       "b.example.org,*.example.org,localhost", "a,b a..b .a a. a\"b * *. b.*.c {a}*64"},
      {"white ip ", "ip", "10.0.0.2 10.0.0.1 010.000.0.2", "10.0.0.2,10.0.0.1", ""},
      {"white fip ", "fip", "8.8.8.8 8.8.8.8", "8.8.8.8", ""},
      {"white port ", "port", "443 80 65535 0x50", "443,80,65535", "65536"},
      {"black mac ", "mac", "02:00:00:00:00:01 020000000001", "02:00:00:00:00:01", "01:00:5e:00:00:01"},
  };
  const auto expect = [](const std::string& list, const std::string& key, const std::string& text) {
    portal(list + "get", "{\"" + key + "\":\"" + text + "\"}");
  };
  for (const auto& [list, key, values, text, bad] : kLists) {
    expect(list, key, "");
    for (const std::string& value : split(values)) done({list + "add " + value});
    for (const std::string& value : split(bad)) failed({list + "add " + value});
  }
  for (const auto& [list, key, values, text, bad] : kLists) {
    expect(list, key, text);
    done({list + "del " + split(values)[0]});
    failed({list + "del " + split(values)[0]});
    expect(list, key, text.substr(std::min(text.find(','), text.size() - 1) + 1));
    done({list + "delall"});
    expect(list, key, "");
  }

  std::string all = "40001";
  for (int port = 40002; port <= 41024; ++port) all += "," + std::to_string(port);
  insert(40001, 41024, "portal_list (list, value) SELECT 'white port', i");
  failed({"white port add 1"});
  done({"white port add 41024", "white fip add 8.8.8.8"});
  expect("white port ", "port", all);
  char part[8];
  EXPECT_EQ(ApiGetWhitePort(part, sizeof part), static_cast<int>(all.size()));
  EXPECT_STREQ(part, "40001,4");
}

}  // namespace
