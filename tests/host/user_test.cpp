// Local accounts, MAC memory, and the portal's functions.
#include <nlohmann/json.hpp>
#include <thread>

#include "host.h"
#include "platform/auth.h"

namespace {

using nlohmann::json;

class Users : public HostTest {
 protected:
  Users() { expect_out("user list", "num: 0\n\n"); }

  static void add(const std::string& name, const std::string& type, int max = 0,
                  const std::string& bindings = "next next") {
    expect_ok("user add " + name + " pw 1 " + bindings + " " + type + " " + std::to_string(max) +
              " memo 1 2 dl 0");
  }
  static std::string listed(const std::string& name, int id, int logins) {
    return "name=" + name +
           " pwd=pw gid=1 mod_pwd=0 state=0x58 ip=0.0.0.0 -0.0.0.0 \n  mac=00:00:00:00:00:00 speed up=1 "
           "down=2 "
           "mode=dl nip nmac web  ddate=0 zup=0 zdown=0 login_num=" +
           std::to_string(logins) + " userid=" + std::to_string(id) + " mem=memo\n\n";
  }

  // A portal function by its words. Its answer is JSON, its status always the same.
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
  static json online(const std::string& ip, const std::string& mac) {
    return {{"ip", ip}, {"mac", mac}, {"up", "0"}, {"down", "0"}, {"send", "0"}, {"recv", "0"}};
  }

  void run_sql(const std::string& statements) const { sql("state.db", statements); }
};

TEST_F(Users, AccountsAreKept) {
  expect_ok("user add alice secret 3 10.0.0.5-10.0.0.9 00:11:22:33:44:55 pppoe,off 2 memo 100 200 gx 1");
  expect_ok("user add bob x 7 1.2.3.4 next pppoe 9 m 9 9 gx 1");
  add("bob", "web");  // anew, under the same id
  const std::string alice =
      "name=alice pwd=secret gid=3 mod_pwd=1 state=0x27 ip=10.0.0.5 -10.0.0.9 \n  mac=00:11:22:33:44:55 "
      "speed "
      "up=100 down=200 mode=gx cfgip cfgmac pppoe off  ddate=0 zup=0 zdown=0 login_num=0 userid=1 "
      "mem=memo\n\n";
  expect_ok("user del bob");
  expect_refused("user del bob", "unknown user");
  add("carl", "web");  // an id is given once
  expect_out("user list", "num: 2\n" + alice + listed("carl", 3, 0) + "\n");
  expect_refused("user add dora pw 1 next 01:00:5e:00:00:01 web 0 memo 1 2 dl 0", "bad address");
  expect_refused("user add a\x01 pw 1 next next web 0 memo 1 2 dl 0", "bad name");

  run_sql("UPDATE account SET up_bytes = 5000000000, down_bytes = 1 << 50, ddate = 77 WHERE name = 'alice'");
  expect_out("user stat alice", "up:4882812K down:1099511627776K \n  ok\n");
  EXPECT_NE(vek("user list").out.find(" ddate=77 zup=4882812 zdown=4294967295 "), std::string::npos);
  expect_refused("user stat bob", "unknown user");
  expect_refused("user name_info bob", "unknown user");

  run_sql(
      "WITH RECURSIVE n(i) AS (SELECT 3 UNION ALL SELECT i + 1 FROM n WHERE i < 4096) INSERT INTO account"
      " (name, pwd, mem, ip_start, ip_end, max, up_speed, down_speed, mac, gid, mode_speed, mod_pwd, flags)"
      " SELECT 'user' || i, '', '', 0, 0, 0, 0, 0, zeroblob(6), 0, 0, 0, 64 FROM n");
  expect_refused("user add bob pw 1 next next web 0 memo 1 2 dl 0", "table full");
  add("user9", "web");
  EXPECT_EQ(vek("user list").out.find("num: 4096\n"), 0u);
}

TEST_F(Users, AreDeletedByServiceAndExpiry) {
  for (const char* user : {"a pppoe", "b web", "c web,pppoe", "d off", "e web"}) add({user[0]}, user + 2);
  run_sql("UPDATE account SET ddate = iif(name = 'e', 1 << 40, 1) WHERE name <> 'c'");
  const auto leaves = [](const std::string& words, const std::string& wanted) {
    expect_ok("user delall " + words);
    std::istringstream list(vek("user list").out);
    std::string names;
    for (std::string word; list >> word;) names += word.starts_with("name=") ? word.substr(5) : "";
    EXPECT_EQ(names, wanted) << words;
  };
  leaves("web 1", "acde");
  leaves("pppoe", "de");
  leaves("all 1", "e");
  expect_refused("user delall all 2", "bad value");
  leaves("", "");
}

TEST_F(Users, SettingsAreKept) {
  expect_out("user get_auto", "\nautscan:enable=0 interval_time=0\n");
  expect_ok("user autoscan 1 30");
  expect_out("user get_auto", "\nautscan:enable=1 interval_time=30\n");
  expect_ok("user js_mod 5");
  expect_out("user card set 3 1", "type:3,en:1\n");
  expect_out("user card get 3", "type:3,en:1\n");
  expect_out("user card get 4", "type:4,en:0\n");
  for (const char* words : {"autoscan 2", "card set 256 1", "card set 3 2"}) {
    expect_refused(std::string("user ") + words, "bad value");
  }
  for (const char* words : {"set 1 2 3 4 5", "get"}) {
    expect_out(std::string("user ssid ") + words, "assid:1,lssid:2,dssid:3,ussid:4,gssid:5\n");
  }

  EXPECT_EQ(portal("auth get"), json({{"state", "0"}, {"savemac", "0"}, {"time", "0"}, {"loginmax", "0"}}));
  expect_done("auth set 1 1 600 5");
  expect_failed("auth set 2 1 600 6");
  expect_failed("auth set 1 2 600 6");
  EXPECT_EQ(portal("auth get"), json({{"state", "1"}, {"savemac", "1"}, {"time", "600"}, {"loginmax", "5"}}));
  expect_out("macuser get", "enable:1\ntimeout:0\n");  // the same switch
  expect_ok("macuser set 0 -1");
  expect_refused("macuser set 2 1", "bad value");
  expect_out("macuser get", "enable:0\ntimeout:18446744073709551615\n");
  EXPECT_EQ(portal("auth get")["savemac"], "0");

  EXPECT_EQ(portal("portal get"), json({{"url", ""}}));
  const std::string url = "http://portal.example/?" + std::string(1000, 'u');
  expect_done("portal set " + url);
  expect_failed("portal set " + url + "x");
  expect_failed("portal set http://\"");
  EXPECT_LT(ApiSetPortal(""), 0);
  EXPECT_LT(ApiSetPortal(nullptr), 0);
  EXPECT_EQ(portal("portal get"), json({{"url", url}}));
}

TEST_F(Users, HostsLogInByAllThreeKeys) {
  add("bob", "web");
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
  expect_out("user online_list", "num: 1\n" + listed("bob", 1, 2) + "\n");
  const std::string line = ",ip:10.0.0.6,mac:00:00:00:00:00:00,flags:0x00000040\n";
  expect_out("user name_info bob",
             "\nname:bob,num:2,login_num:2,web_login_num:2\ni:0" + line + "i:1" + line + "\n");

  OnlineInfo infos[2] = {};
  EXPECT_EQ(ApiGetAllOnlineInfo(infos, 1), 1);
  EXPECT_STREQ(infos[1].ip, "");
  EXPECT_LT(ApiLogoutByIpAndMac("10.0.0.30", "02:00:00:00:00:02"), 0);
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
  run_sql("UPDATE session SET until = until - 500, send = 4");
  EXPECT_EQ(portal("getonline all").size(), 3u);
  run_sql("UPDATE session SET until = until - 100");
  json left = online("10.0.0.2", "");
  left["send"] = "4";
  EXPECT_EQ(portal("getonline all"), json({left}));
  expect_failed("checkonline ip 10.0.0.1");
  expect_failed("logout ip 10.0.0.1");
}

TEST_F(Users, LogInOnlyAsTheirAccountsAllow) {
  add("two", "web", 2);
  add("any", "web");
  add("fix", "web", 0, "10.0.0.5-10.0.0.9 02:00:00:00:00:05");
  add("off", "web,off");
  add("ppp", "pppoe");
  add("old", "web");
  run_sql("UPDATE account SET ddate = 1 WHERE name = 'old'");
  for (const char* login : {"ip 10.0.0.1 60 off", "ip 10.0.0.1 60 ppp", "ip 10.0.0.1 60 old",
                            "ip 10.0.0.1 60 nobody", "ip 10.0.0.4 60 fix", "ip 10.0.0.10 60 fix",
                            "ipmac 10.0.0.9 02:00:00:00:00:06 60 fix", "mac 01:00:5e:00:00:01 60"}) {
    expect_failed(std::string("login ") + login);
  }
  EXPECT_LT(ApiLoginByIpName("", "10.0.0.1", 60), 0);
  EXPECT_LT(ApiLoginByMacName(nullptr, nullptr, 60), 0);
  expect_done("login ipmac 10.0.0.9 02:00:00:00:00:05 60 fix");
  expect_done("login ip 10.0.1.1 60 two");
  expect_done("login ip 10.0.1.2 60 two");
  expect_failed("login ip 10.0.1.3 60 two");
  expect_done("login ip 10.0.1.2 60 two");  // again
  expect_done("auth set 1 0 0 1");
  expect_done("login ip 10.0.1.4 60 any");
  expect_failed("login ip 10.0.1.5 60 any");

  expect_done("login mac 02:00:00:00:00:06 60");
  expect_done("black mac add 02:00:00:00:00:06");
  expect_failed("checkonline mac 02:00:00:00:00:06");
  expect_failed("login mac 02:00:00:00:00:06 60");

  expect_ok("user lock x 0 two 1");
  EXPECT_EQ(portal("getonline all").size(), 2u);
  expect_failed("login ip 10.0.1.1 60 two");
  expect_ok("user lock x 0 two 0");
  expect_done("login ip 10.0.1.1 60 two");
  expect_refused("user lock x 0 nobody 1", "unknown user");
  expect_refused("user lock x 0 two 2", "bad value");
  expect_ok("user lock x 1 - 1");
  EXPECT_EQ(portal("getonline all"), json::array());
}

TEST_F(Users, AreKickedByService) {
  add("bob", "web,pppoe");
  for (const std::string word : {"rd_down_all ", "down_all "}) {
    for (const auto& [type, left] : {std::pair("pppoe", 1u), std::pair("web", 1u), std::pair("all", 0u)}) {
      expect_done("login ip 10.0.0.1 60 bob");
      run_sql(
          "INSERT INTO session (userid, service, ip, mac, until) VALUES (1, 32, 1, zeroblob(6), 1 << 40)");
      expect_ok("user " + word + type);
      EXPECT_EQ(portal("getonline all").size(), left) << word << type;
      run_sql("DELETE FROM session");
    }
  }
  expect_done("login ip 10.0.0.1 60 bob");
  expect_ok("user del bob");
  EXPECT_EQ(portal("getonline all"), json::array());
}

TEST_F(Users, MacsAreRemembered) {
  add("bob", "web");
  add("eve", "web");
  expect_done("login mac 02:00:00:00:00:01 60 bob");
  expect_out("macuser list", "mac list num:0\n");
  expect_ok("macuser set 1 100");
  expect_done("login ipmac 10.0.0.1 02:00:00:00:00:01 1000 bob");
  expect_done("login mac 02:00:00:00:00:02 60 eve");
  expect_done("login mac 02:00:00:00:00:03 60");  // of no account
  expect_done("logout mac 02:00:00:00:00:02");
  const std::string bob =
      "mac:02:00:00:00:00:01,user:1,last:0 seconds,card_type:7\n";  // on line: seen just now
  run_sql("UPDATE mac_memory SET seen = seen - 50, card_type = 7");
  const std::string both = vek("macuser list").out;
  EXPECT_EQ(both.find("mac list num:2\n" + bob + "mac:02:00:00:00:00:02,user:2,last:5"), 0u) << both;
  run_sql("UPDATE mac_memory SET seen = seen - 60");
  expect_out("macuser list", "mac list num:1\n" + bob);
  run_sql("UPDATE session SET until = unixepoch() - 200 WHERE ip <> 0");
  expect_out("macuser list", "mac list num:0\n");
  expect_ok("macuser set 1 0");
  EXPECT_EQ(vek("macuser list").out.find("mac list num:2\n"), 0u);

  expect_ok("macuser mac_del 02:00:00:00:00:01");
  expect_ok("macuser id_del 2");
  for (const char* words : {"mac_del 02:00:00:00:00:01", "mac_del zz", "id_del 2"}) {
    expect_refused(std::string("macuser ") + words, "no such entry");
  }
  for (const char* forget : {"macuser init", "fls 62", "user del bob"}) {
    expect_done("login mac 02:00:00:00:00:01 60 bob");
    EXPECT_EQ(vek("macuser list").out.find("mac list num:1\n"), 0u);
    vek(forget);
    expect_out("macuser list", "mac list num:0\n");
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
       "b.example.org,*.example.org,localhost", "a,b a..b .a a. a\"b * *. b.*.c " + std::string(64, 'a')},
      {"white ip ", "ip", "10.0.0.2 10.0.0.1 010.000.0.2", "10.0.0.2,10.0.0.1", ""},
      {"white fip ", "fip", "8.8.8.8 8.8.8.8", "8.8.8.8", ""},
      {"white port ", "port", "443 80 65535 0x50", "443,80,65535", "65536"},
      {"black mac ", "mac", "02:00:00:00:00:01 020000000001", "02:00:00:00:00:01", "01:00:5e:00:00:01"},
  };
  for (const auto& [list, key, values, text, bad] : kLists) {
    EXPECT_EQ(portal(list + "get"), json({{key, ""}}));
    std::istringstream good_words(values);
    for (std::string value; good_words >> value;) expect_done(list + "add " + value);
    std::istringstream bad_words(bad);
    for (std::string value; bad_words >> value;) expect_failed(list + "add " + value);
    EXPECT_EQ(portal(list + "get"), json({{key, text}}));
  }
  for (const auto& [list, key, values, text, bad] : kLists) {
    const std::string first = values.substr(0, values.find(' '));
    expect_done(list + "del " + first);
    expect_failed(list + "del " + first);
    const size_t comma = text.find(',');
    EXPECT_EQ(portal(list + "get"), json({{key, comma == text.npos ? "" : text.substr(comma + 1)}}));
    expect_done(list + "delall");
    EXPECT_EQ(portal(list + "get"), json({{key, ""}}));
  }
}

TEST_F(Users, ListsHold1024Values) {
  std::string all = "40001";
  for (int port = 40002; port <= 41024; ++port) all += "," + std::to_string(port);
  run_sql(
      "WITH RECURSIVE n(i) AS (SELECT 40001 UNION ALL SELECT i + 1 FROM n WHERE i < 41024)"
      "INSERT INTO portal_list (list, value) SELECT 'white port', i FROM n");
  expect_failed("white port add 1");
  expect_done("white port add 41024");
  expect_done("white fip add 8.8.8.8");
  EXPECT_EQ(portal("white port get"), json({{"port", all}}));
  char part[8];
  EXPECT_EQ(ApiGetWhitePort(part, sizeof part), static_cast<int>(all.size()));
  EXPECT_STREQ(part, "40001,4");
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

}  // namespace
