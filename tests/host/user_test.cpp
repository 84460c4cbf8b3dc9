// Local accounts, MAC memory, and the portal's functions.
#include <nlohmann/json.hpp>
#include <thread>

#include "host.h"
#include "platform/auth.h"

namespace {

using nlohmann::json;

class Users : public HostTest {
 protected:
  // A portal function by its words; its answer is JSON, its status always the same.
  static json portal(const std::string& words) {
    const RunResult result = vek("rzglapi " + words);
    EXPECT_EQ(result.status, 1) << words;
    EXPECT_EQ(result.err, "") << words;
    return json::parse(result.out, nullptr, false);
  }
  static void expect_done(const std::string& words) {
    EXPECT_EQ(portal(words), json({{"ret", "0"}})) << words;
  }
  static void expect_failed(const std::string& words) {
    EXPECT_EQ(portal(words), json({{"ret", "-1"}})) << words;
  }

  static std::string info(const std::string& name, int logins, const std::string& hosts = "") {
    const std::string number = std::to_string(logins);
    return "\nname:" + name + ",num:" + number + ",login_num:" + number + ",web_login_num:" + number + "\n" +
           hosts + "\n";
  }
  void run_sql(const std::string& statements) const { sql("state.db", statements); }
};

const std::string kBob =
    " pwd=pw gid=1 mod_pwd=0 state=0x58 ip=0.0.0.0 -0.0.0.0 \n  mac=00:00:00:00:00:00 "
    "speed up=1 down=2 mode=dl nip nmac web  ddate=0 zup=0 zdown=0 login_num=";

TEST_F(Users, AccountsAreKept) {
  expect_out("user list", "num: 0\n\n");
  expect_ok("user add alice secret 3 10.0.0.5-10.0.0.9 00:11:22:33:44:55 pppoe,off 2 memo 100 200 gx 1");
  expect_ok("user add bob pw 1 next next pppoe 9 m 9 9 gx 1");
  expect_ok("user add bob pw 1 next next web 0 other 1 2 dl 0");  // anew, under the same id
  const std::string alice =
      "name=alice pwd=secret gid=3 mod_pwd=1 state=0x27 ip=10.0.0.5 -10.0.0.9 \n  mac=00:11:22:33:44:55 "
      "speed "
      "up=100 down=200 mode=gx cfgip cfgmac pppoe off  ddate=0 zup=0 zdown=0 login_num=0 userid=1 "
      "mem=memo\n\n";
  expect_out("user list", "num: 2\n" + alice + "name=bob" + kBob + "0 userid=2 mem=other\n\n\n");
  expect_ok("user del bob");
  expect_refused("user del bob", "unknown user");
  expect_ok("user add carl pw 1 next next web 0 memo 1 2 dl 0");  // an id is given once
  expect_out("user list", "num: 2\n" + alice + "name=carl" + kBob + "0 userid=3 mem=memo\n\n\n");

  expect_refused("user add dora pw 1 next 01:00:5e:00:00:01 web 0 memo 1 2 dl 0", "bad address");
  EXPECT_EQ(run({VEK_BINARY, "user", "del", ""}).err, "err:unknown user \n");
  EXPECT_EQ(
      run({VEK_BINARY, "user", "add", "a\nb", "p", "1", "next", "next", "web", "0", "m", "1", "2", "dl", "0"})
          .err,
      "err:bad name \n");
  run_sql("UPDATE account SET up_bytes = 5000000000, down_bytes = 1 << 50, ddate = 77 WHERE name = 'alice'");
  expect_out("user stat alice", "up:4882812K down:1099511627776K \n  ok\n");
  EXPECT_NE(vek("user list").out.find(" ddate=77 zup=4882812 zdown=4294967295 "), std::string::npos);
  expect_refused("user stat bob", "unknown user");
  expect_refused("user name_info bob", "unknown user");
}

TEST_F(Users, AreDeletedByServiceAndExpiry) {
  const auto names = [] {
    std::istringstream list(vek("user list").out);
    std::string found;
    for (std::string word; list >> word;) {
      if (word.starts_with("name=")) found += word.substr(5);
    }
    return found;
  };
  for (const char* user : {"a pppoe", "b web", "c web,pppoe", "d off", "e web"}) {
    expect_ok(std::string("user add ") + user[0] + " pw 1 next next " + (user + 2) + " 0 memo 1 2 dl 0");
  }
  run_sql(
      "UPDATE account SET ddate = 1 WHERE name IN ('a', 'b', 'd'); UPDATE account SET ddate = 1 << 40 WHERE "
      "name = 'e'");
  expect_ok("user delall web 1");
  EXPECT_EQ(names(), "acde");
  expect_ok("user delall pppoe");
  EXPECT_EQ(names(), "de");
  expect_ok("user delall all 1");
  EXPECT_EQ(names(), "e");
  expect_refused("user delall all 2", "bad value");
  expect_ok("user delall");
  EXPECT_EQ(names(), "");
}

TEST_F(Users, HaveRoomFor4096Accounts) {
  expect_out("user list", "num: 0\n\n");
  run_sql(
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 4096) INSERT INTO account"
      " (name, pwd, mem, ip_start, ip_end, max, up_speed, down_speed, mac, gid, mode_speed, mod_pwd, flags)"
      " SELECT 'user' || i, '', '', 0, 0, 0, 0, 0, zeroblob(6), 0, 0, 0, 64 FROM n");
  expect_refused("user add alice pw 1 next next web 0 memo 1 2 dl 0", "table full");
  expect_ok("user add user9 pw 1 next next web 0 memo 1 2 dl 0");
  EXPECT_TRUE(vek("user list").out.starts_with("num: 4096\nname=user1 "));
}

TEST_F(Users, SettingsAreKept) {
  expect_out("user get_auto", "\nautscan:enable=0 interval_time=0\n");
  expect_ok("user autoscan 1 30");
  expect_out("user get_auto", "\nautscan:enable=1 interval_time=30\n");
  expect_refused("user autoscan 2", "bad value");
  expect_ok("user js_mod 5");
  expect_out("user card set 3 1", "type:3,en:1\n");
  expect_out("user card get 3", "type:3,en:1\n");
  expect_out("user card get 4", "type:4,en:0\n");
  expect_refused("user card set 256 1", "bad value");
  expect_refused("user card set 3 2", "bad value");
  expect_out("user ssid set 1 2 3 4 5", "assid:1,lssid:2,dssid:3,ussid:4,gssid:5\n");
  expect_out("user ssid get", "assid:1,lssid:2,dssid:3,ussid:4,gssid:5\n");

  EXPECT_EQ(portal("auth get"), json({{"state", "0"}, {"savemac", "0"}, {"time", "0"}, {"loginmax", "0"}}));
  expect_done("auth set 1 1 600 5");
  expect_failed("auth set 2 1 600 6");
  expect_failed("auth set 1 2 600 6");
  EXPECT_EQ(portal("auth get"), json({{"state", "1"}, {"savemac", "1"}, {"time", "600"}, {"loginmax", "5"}}));
  expect_out("macuser get", "enable:1\ntimeout:0\n");
  expect_ok("macuser set 0 -1");
  expect_refused("macuser set 2 1", "bad value");
  expect_out("macuser get", "enable:0\ntimeout:18446744073709551615\n");
  EXPECT_EQ(portal("auth get")["savemac"], "0");

  EXPECT_EQ(portal("portal get"), json({{"url", ""}}));
  const std::string url = "http://portal.example/?" + std::string(1000, 'u');
  expect_done("portal set " + url);
  EXPECT_EQ(portal("portal get"), json({{"url", url}}));
  expect_failed("portal set " + url + "x");
  expect_failed("portal set http://\"");
  EXPECT_EQ(portal("portal get"), json({{"url", url}}));
}

json online(const std::string& ip, const std::string& mac) {
  return {{"ip", ip}, {"mac", mac}, {"up", "0"}, {"down", "0"}, {"send", "0"}, {"recv", "0"}};
}

TEST_F(Users, HostsLogInByAllThreeKeys) {
  expect_ok("user add bob pw 1 next next web 0 memo 1 2 dl 0");
  expect_done("login ip 10.0.0.6 600 bob");
  expect_done("login mac 02-00-00-00-00-02 600 bob");
  expect_done("login ipmac 10.0.0.30 02:00:00:00:00:03 600");
  const json by_ip = online("10.0.0.6", "");
  const json by_mac = online("", "02:00:00:00:00:02");
  const json by_both = online("10.0.0.30", "02:00:00:00:00:03");
  EXPECT_EQ(portal("getonline all"), json({by_ip, by_mac, by_both}));
  EXPECT_EQ(portal("getonline ip 10.0.0.6"), by_ip);
  EXPECT_EQ(portal("getonline mac 020000000002"), by_mac);
  EXPECT_EQ(portal("getonline ipmac 10.0.0.30 02:00:00:00:00:03"), by_both);
  for (const char* host : {"ip 10.0.0.30", "mac 02:00:00:00:00:03", "ipmac 10.0.0.30 02:00:00:00:00:03"}) {
    expect_done(std::string("checkonline ") + host);
  }
  for (const char* host : {"ip 10.0.0.7", "mac 02:00:00:00:00:07", "ipmac 10.0.0.6 02:00:00:00:00:02"}) {
    expect_failed(std::string("checkonline ") + host);
    expect_failed(std::string("getonline ") + host);
  }
  expect_out("user online_list", "num: 1\nname=bob" + kBob + "2 userid=1 mem=memo\n\n\n");
  const std::string line = ",ip:10.0.0.6,mac:00:00:00:00:00:00,flags:0x00000040\n";
  expect_out("user name_info bob", info("bob", 2, "i:0" + line + "i:1" + line));

  expect_done("login ipmac 10.0.0.6 02:00:00:00:00:02 600");  // both hosts were this one
  EXPECT_EQ(portal("getonline all"), json({by_both, online("10.0.0.6", "02:00:00:00:00:02")}));
  expect_out("user online_list", "num: 0\n\n");
  expect_failed("logout ip 10.0.0.9");
  expect_failed("logout mac 02:00:00:00:00:09");
  expect_done("logout mac 02:00:00:00:00:02");
  expect_done("logout ipmac 10.0.0.30 02:00:00:00:00:99");  // goes by the IP
  expect_failed("logout ip 10.0.0.30");
  EXPECT_EQ(vek("rzglapi getonline all").out, "[]");
}

TEST_F(Users, LoginsEnd) {
  expect_done("login ip 10.0.0.1 600");
  expect_done("login ip 10.0.0.2 0");  // as long as logins are set to: for good
  expect_done("auth set 0 0 600 0");
  expect_done("login ip 10.0.0.3 0");
  run_sql("UPDATE session SET until = until - 599");
  EXPECT_EQ(portal("getonline all").size(), 3u);
  run_sql("UPDATE session SET until = until - 10");
  EXPECT_EQ(portal("getonline all"), json({online("10.0.0.2", "")}));
  expect_failed("checkonline ip 10.0.0.1");
  expect_failed("logout ip 10.0.0.1");

  run_sql("UPDATE session SET up = 1, down = 2, send = 3, recv = 4");
  const json traffic = {{"ip", "10.0.0.2"}, {"mac", ""},   {"up", "1"},
                        {"down", "2"},      {"send", "3"}, {"recv", "4"}};
  EXPECT_EQ(portal("getonline ip 10.0.0.2"), traffic);
}

TEST_F(Users, LogInOnlyAsTheirAccountsAllow) {
  expect_ok("user add two pw 1 next next web 2 memo 1 2 dl 0");
  expect_ok("user add any pw 1 next next web 0 memo 1 2 dl 0");
  expect_ok("user add fix pw 1 10.0.0.5-10.0.0.9 02:00:00:00:00:05 web 0 memo 1 2 dl 0");
  expect_ok("user add off pw 1 next next web,off 0 memo 1 2 dl 0");
  expect_ok("user add ppp pw 1 next next pppoe 0 memo 1 2 dl 0");
  expect_ok("user add old pw 1 next next web 0 memo 1 2 dl 0");
  run_sql("UPDATE account SET ddate = 1 WHERE name = 'old'");
  for (const char* user : {"off", "ppp", "old", "nobody"})
    expect_failed(std::string("login ip 10.0.0.1 60 ") + user);
  for (const char* host : {"ip 10.0.0.4", "ip 10.0.0.10", "mac 02:00:00:00:00:06"}) {
    expect_failed(std::string("login ") + host + " 60 fix");
  }
  expect_failed("login ipmac 10.0.0.9 02:00:00:00:00:06 60 fix");
  expect_done("login ipmac 10.0.0.9 02:00:00:00:00:05 60 fix");

  expect_done("login ip 10.0.1.1 60 two");
  expect_done("login ip 10.0.1.2 60 two");
  expect_failed("login ip 10.0.1.3 60 two");
  expect_done("login ip 10.0.1.2 60 two");  // again
  expect_done("auth set 1 0 0 1");
  expect_done("login ip 10.0.1.4 60 any");
  expect_failed("login ip 10.0.1.5 60 any");

  expect_failed("login mac 01:00:5e:00:00:01 60");
  expect_done("login mac 02:00:00:00:00:06 60");
  expect_done("black mac add 02:00:00:00:00:06");
  expect_failed("checkonline mac 02:00:00:00:00:06");
  expect_failed("login mac 02:00:00:00:00:06 60");

  expect_ok("user lock x 0 two 1");
  expect_out("user name_info two", info("two", 0));
  expect_failed("login ip 10.0.1.1 60 two");
  expect_ok("user lock x 0 two 0");
  expect_done("login ip 10.0.1.1 60 two");
  expect_refused("user lock x 0 nobody 1", "unknown user");
  expect_refused("user lock x 0 two 2", "bad value");
  expect_ok("user lock x 1 - 1");
  EXPECT_EQ(portal("getonline all"), json::array());
}

TEST_F(Users, AreKickedByService) {
  expect_ok("user add bob pw 1 next next web,pppoe 0 memo 1 2 dl 0");
  for (const char* word : {"rd_down_all", "down_all"}) {
    const auto kick = [&](const std::string& type, size_t left) {
      expect_done("login ip 10.0.0.1 60 bob");
      run_sql(
          "INSERT INTO session (userid, service, ip, mac, until) VALUES (1, 32, 1, zeroblob(6), 1 << 40)");
      expect_ok(std::string("user ") + word + " " + type);
      EXPECT_EQ(portal("getonline all").size(), left);
      run_sql("DELETE FROM session");
    };
    kick("pppoe", 1);
    kick("web", 1);
    kick("all", 0);
  }
  expect_done("login ip 10.0.0.1 60 bob");
  expect_ok("user del bob");
  EXPECT_EQ(portal("getonline all"), json::array());
}

TEST_F(Users, MacsAreRemembered) {
  expect_ok("user add bob pw 1 next next web 0 memo 1 2 dl 0");
  expect_ok("user add eve pw 1 next next web 0 memo 1 2 dl 0");
  expect_done("login mac 02:00:00:00:00:01 60 bob");
  expect_out("macuser list", "mac list num:0\n");
  expect_ok("macuser set 1 100");
  expect_done("login ipmac 10.0.0.1 02:00:00:00:00:01 1000 bob");
  expect_done("login mac 02:00:00:00:00:02 60 eve");
  expect_done("login mac 02:00:00:00:00:03 60");  // of no account
  expect_done("logout mac 02:00:00:00:00:02");
  run_sql("UPDATE mac_memory SET seen = seen - 50, card_type = 7");  // who is on line was seen just now
  const std::string list = vek("macuser list").out;
  const std::string first = "mac list num:2\nmac:02:00:00:00:00:01,user:1,last:0 seconds,card_type:7\n";
  EXPECT_EQ(list.substr(0, first.size()), first);
  EXPECT_NE(list.find("mac:02:00:00:00:00:02,user:2,last:5"), list.npos) << list;
  run_sql("UPDATE mac_memory SET seen = seen - 60");
  expect_out("macuser list", "mac list num:1\n" + first.substr(15));
  run_sql("UPDATE session SET until = unixepoch() - 200 WHERE ip <> 0");  // both are forgotten now
  expect_out("macuser list", "mac list num:0\n");
  expect_ok("macuser set 1 0");
  EXPECT_EQ(vek("macuser list").out.substr(0, 15), "mac list num:2\n");

  expect_ok("macuser mac_del 02:00:00:00:00:01");
  expect_refused("macuser mac_del 02:00:00:00:00:01", "no such entry");
  expect_refused("macuser mac_del zz", "no such entry");
  expect_ok("macuser id_del 2");
  expect_refused("macuser id_del 2", "no such entry");
  for (const char* forget : {"macuser init", "fls 62", "user del bob"}) {
    expect_done("login mac 02:00:00:00:00:01 60 bob");
    EXPECT_EQ(vek("macuser list").out.substr(0, 15), "mac list num:1\n");
    vek(forget);
    expect_out("macuser list", "mac list num:0\n");
  }
}

TEST_F(Users, ListsHoldEachValueOnce) {
  const struct {
    std::string list, key;
    std::vector<std::string> values, same;  // the same again as in values, in another form
    std::string text;
    std::vector<std::string> bad;
  } kLists[] = {
      {"white mac",
       "mac",
       {"02:00:00:00:00:0B", "02-00-00-00-00-0a"},
       {"02000000000b"},
       "02:00:00:00:00:0b,02:00:00:00:00:0a",
       {"01:00:5e:00:00:01"}},
      {"white domain",
       "domain",
       {"b.Example.org", "*.example.org", "localhost"},
       {"B.EXAMPLE.ORG"},
       "b.example.org,*.example.org,localhost",
       {"a,b", "a..b", ".a", "a.", "a\"b", "*", "*.", "b.*.c", std::string(64, 'a')}},
      {"white ip", "ip", {"10.0.0.2", "10.0.0.1"}, {"010.000.0.2"}, "10.0.0.2,10.0.0.1", {}},
      {"white fip", "fip", {"8.8.8.8"}, {"8.8.8.8"}, "8.8.8.8", {}},
      {"white port", "port", {"443", "80", "65535"}, {"0x50"}, "443,80,65535", {"65536"}},
      {"black mac",
       "mac",
       {"02:00:00:00:00:01"},
       {"020000000001"},
       "02:00:00:00:00:01",
       {"01:00:5e:00:00:01"}},
  };
  for (const auto& [list, key, values, same, text, bad] : kLists) {
    EXPECT_EQ(portal(list + " get"), json({{key, ""}}));
    for (const std::string& value : values) expect_done(list + " add " + value);
    for (const std::string& value : same) expect_done(list + " add " + value);
    for (const std::string& value : bad) expect_failed(list + " add " + value);
    EXPECT_EQ(portal(list + " get"), json({{key, text}}));
  }
  for (const auto& [list, key, values, same, text, bad] : kLists) {
    expect_done(list + " del " + values[0]);
    expect_failed(list + " del " + values[0]);
    const size_t comma = text.find(',');
    EXPECT_EQ(portal(list + " get"), json({{key, comma == text.npos ? "" : text.substr(comma + 1)}}));
    expect_done(list + " delall");
    EXPECT_EQ(portal(list + " get"), json({{key, ""}}));
  }
  expect_failed("white mac del zz");
}

TEST_F(Users, ListsHold1024Values) {
  expect_done("white port add 40001");
  run_sql(
      "WITH RECURSIVE n(i) AS (SELECT 40002 UNION ALL SELECT i + 1 FROM n WHERE i < 41024)"
      "INSERT INTO portal_list (list, value) SELECT 'white port', i FROM n");
  expect_failed("white port add 1");
  expect_done("white port add 41024");
  expect_done("white fip add 8.8.8.8");
  std::string all = "40001";
  for (int port = 40002; port <= 41024; ++port) all += "," + std::to_string(port);
  EXPECT_EQ(portal("white port get"), json({{"port", all}}));

  char part[8];
  EXPECT_EQ(ApiGetWhitePort(part, sizeof part), static_cast<int>(all.size()));
  EXPECT_STREQ(part, "40001,4");
  EXPECT_EQ(ApiGetWhitePort(nullptr, 0), static_cast<int>(all.size()));
}

TEST_F(Users, CallersAtOnceLoseNothing) {
  const auto add_ports = [](int first) {
    for (int port = first; port < first + 20; ++port) {
      vek("rzglapi white port add " + std::to_string(port));
      vek("rzglapi login ip 10.0.0." + std::to_string(port) + " 600");
    }
  };
  std::thread other(add_ports, 101);
  add_ports(1);
  other.join();
  const std::string ports = portal("white port get")["port"];
  EXPECT_EQ(std::count(ports.begin(), ports.end(), ','), 39);
  EXPECT_EQ(portal("getonline all").size(), 40u);
}

TEST_F(Users, PortalFunctionsTakeNoNonsense) {
  EXPECT_LT(ApiLoginByIpName(nullptr, nullptr, 60), 0);
  EXPECT_LT(ApiLoginByIpName("", "10.0.0.1", 60), 0);
  EXPECT_LT(ApiLoginByMacName(nullptr, "", 60), 0);
  EXPECT_LT(ApiLoginByIpAndMacName(nullptr, "10.0.0.1", nullptr, 60), 0);
  EXPECT_LT(ApiAddWhiteDomain(nullptr), 0);
  EXPECT_LT(ApiAddWhiteDomain(""), 0);
  EXPECT_LT(ApiAddBlackMac(nullptr), 0);
  EXPECT_LT(ApiAddWhitePort(0), 0);
  EXPECT_LT(ApiSetPortal(nullptr), 0);
  EXPECT_LT(ApiSetPortal(""), 0);
  EXPECT_LT(ApiGetAuthenticateState(nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(ApiGetAllOnlineInfo(nullptr, 0), 0);

  ASSERT_EQ(ApiLoginByIpAndMacName(nullptr, "10.0.0.1", "02:00:00:00:00:01", 60), 0);
  ASSERT_EQ(ApiLoginByIpName(nullptr, "10.0.0.2", 60), 0);
  OnlineInfo infos[2] = {};
  EXPECT_EQ(ApiGetAllOnlineInfo(infos, 1), 1);
  EXPECT_STREQ(infos[0].ip, "10.0.0.1");
  EXPECT_STREQ(infos[1].ip, "");
  EXPECT_LT(ApiLogoutByIpAndMac("10.0.0.1", "02:00:00:00:00:02"), 0);
  EXPECT_EQ(ApiLogoutByIpAndMac("10.0.0.1", "02:00:00:00:00:01"), 0);
  EXPECT_EQ(ApiGetAllOnlineInfo(nullptr, 0), 1);
}

}  // namespace
