// The DNS proxy: settings, fixed answers, domains treated apart and the cache. How it answers real clients,
// and asks real servers, is told beside the DHCP server.
#include "host.h"

namespace {

using Dns = HostTest;

std::string cached(const std::string& entries, int count) {
  return "num: " + std::to_string(count) + "\nid    typeid wanid ttd tm  dns\t\t ip_list\t \n\n" + entries;
}

TEST_F(Dns, KeepsSettings) {
  shows("dns get", " en: 0  acc_act: 0  max_tm=0 min_tm=0 ct_show_name=0 log=0\ndns=  \ndns6=  \n");
  for (int i = 0; i < 2; ++i) ok({"dns set 1 1 3600 604800 1 9.9.9.9,127.0.0.53 '2620:fe::fe ::1' 1"});
  const std::string settings =
      " en: 1  acc_act: 1  max_tm=604800 min_tm=3600 ct_show_name=1 log=1\ndns=9.9.9.9 127.0.0.53 \n"
      "dns6=2620:fe::fe ::1 \n";
  refused("switch is neither 0 nor 1",
          {"dns set 2 0 0 0 0 1.1.1.1 '' 0", "dns set 0 2 0 0 0 1.1.1.1 '' 0",
           "dns set 0 0 0 0 2 1.1.1.1 '' 0", "dns set 0 0 0 0 0 1.1.1.1 '' 2", "dns special_debug 2"});
  refused("bad time", {"dns set 0 0 3601 0 0 1.1.1.1 '' 0", "dns set 0 0 0 604801 0 1.1.1.1 '' 0"});
  refused("range ends before it starts", {"dns set 0 0 6 5 0 1.1.1.1 '' 0"});
  refused("bad address", {"dns set 0 0 0 0 0 224.0.0.1 '' 0", "dns set 0 0 0 0 0 1.1.1.1,0.0.0.1 '' 0",
                          "dns set 0 0 0 0 0 0 ff02::1 0", "dns set 0 0 0 0 0 0 'fe80::1' 0"});
  shows("dns get", settings);
  ok({"dns set 0 0 6 0 0 0 '' 0"});
  shows("dns get", " en: 0  acc_act: 0  max_tm=0 min_tm=6 ct_show_name=0 log=0\ndns=  \ndns6=  \n");
  refused("no DNS server is set", {"dns getip example.com"});
  refused("bad name",
          {"dns getip ''", "dns getip a..b", "dns getip 1.2.3.4", "dns getip -a", "dns getip {a}*64"});
  refused("number out of range", {"dns getip example.com 11", "dns getip example.com -1"});
}

TEST_F(Dns, KeepsFixedAnswers) {
  const auto lists = [](const std::string& entries) {
    shows("dns url list", "id  name                ipstr                type\n" + entries, 1);
  };
  ok({"devmg add lan0 250", "dns url add b.lan 10.0.0.9 0", "dns url add c.lan B.lan 0",
      "dns url add d.lan '' 1", "dns url add a_1.lan '' 2", "dns url add e.lan d.lan 0"});
  for (int i = 0; i < 2; ++i) ok({"dns url add B.LAN http://10.0.0.5 0"});  // instead of b.lan
  const std::string answers =
      "0   a_1.lan                                   GWIP_CMP\n1   B.LAN                10.0.0.5             "
      "IP\n"
      "2   c.lan                B.lan                \n3   d.lan                                     GWIP\n"
      "4   e.lan                d.lan                \n";
  refused("bad name",
          {"dns url add -b.lan 10.0.0.5 0", "dns url add x,y 10.0.0.5 0", "dns url add 10.0.0.5 b.lan 0",
           "dns url add x.lan 10.0.0.300 0", "dns url add x.lan 'b lan' 0", "dns url add 7 10.0.0.5 0"});
  refused("bad address", {"dns url add x.lan 127.0.0.1 0"});
  refused("bad destination",
          {"dns url add x.lan X.lan 0", "dns url add b.lan c.lan 0", "dns url add d.lan e.lan 0"});
  refused("no such entry", {"dns url del x.lan"});
  lists(answers);

  shows("dns getip C.LAN", "ip_num: 1 \n  10.0.0.5 \n");
  refused("unknown host", {"dns getip e.lan"});  // the router has no address yet
  ok({"dhcp add lan0 10.1.0.1 10.1.0.1 255.255.0.0 10.1.0.10 10.1.0.20 3600 '' '' base '' ''"});
  shows("dns getip e.lan", "ip_num: 1 \n  10.1.0.1 \n");
  shows("dns list", cached("", 0));

  ok({"dns url del b.lan"});
  refused("no DNS server is set", {"dns getip c.lan"});
  ok({"dns url delall"});
  lists("");
  insert(1, 1024, "dns_url SELECT i || '.lan', 1, i, ''");
  refused("table full", {"dns url add x.lan 10.0.0.5 0"});
  ok({"dns url add 1024.lan 10.0.0.5 0"});
}

TEST_F(Dns, KeepsDomainsTreatedApart) {
  const std::string added = "add tebie games.lan ,0x900000a \nok\n";
  for (int i = 0; i < 2; ++i) shows("dns tebie add games.lan 10.0.0.9", added);
  vek("dns tebie add a_b.lan 10.0.0.8");
  const auto test_says = [](const std::string& name, const std::string& out, const std::string& err) {
    const RunResult result = vek("dns tebie test " + name);
    EXPECT_EQ(result.out, "test tebie dns " + name + "\n" + out);
    EXPECT_EQ(result.err, err) << name;
  };
  for (const char* name : {"games.lan", "X.Games.lan", "x.a_b.lan"}) test_says(name, "ok\n", "");
  for (const char* name : {"xgames.lan", "lan", "x.acb.lan"}) test_says(name, "", "err:no such entry \n");
  EXPECT_EQ(vek("dns tebie add x.lan 224.0.0.1").err, "err:bad address \n");
  EXPECT_EQ(vek("dns tebie add 10.0.0.9 10.0.0.9").err, "err:bad name \n");
  EXPECT_EQ(vek("dns tebie del x.lan").err, "err:no such entry \n");
  ok({"dns debug"});
  begins("errinfo 4", "dns: proxy off, 0 names cached, 0 fixed answers, 2 domains treated apart\n");
  ok({"dns special_debug 1", "dns debug"});
  holds("errinfo 4", {"2 domains treated apart: a_b.lan 10.0.0.8, games.lan 10.0.0.9\n"});
  shows("dns tebie del a_b.lan", "del tebie dns a_b.lan\nok\n");
  test_says("a_b.lan", "", "err:no such entry \n");
  shows("dns tebie del", "del all tebie\nok\n");
  test_says("games.lan", "", "err:no such entry \n");
  insert(1, 256, "dns_tebie SELECT i || '.lan', 1");
  EXPECT_EQ(vek("dns tebie add x.lan 10.0.0.9").err, "err:table full \n");
}

TEST_F(Dns, ForgetsNamesThatHaveRunOut) {
  load(R"({"dns_cache": [{"name": "b.lan", "ttd": 500, "typeid": 2, "wanid": 1, "ips": ["10.0.0.1", "::1"]},
                         {"name": "a.lan", "ttd": 900, "ips": ["10.0.0.2", "10.0.0.3", "10.0.0.4", "10.0.0.5"]}]})");
  sql("UPDATE dns_cache SET seen = seen - 400");
  shows("dns getip A.lan", "ip_num: 4 \n  10.0.0.2 \n  10.0.0.3 \n  10.0.0.4 \n");
  const std::string list = vek("dns list").out;
  int ttd = 0;
  int age = 0;
  EXPECT_EQ(sscanf(list.c_str() + list.find("    1 "), "    1      2     1 %d %d b.lan  10.0.0.1, ::1,", &ttd,
                   &age),
            2);
  EXPECT_EQ(ttd + age, 500);
  EXPECT_NE(list.find(" a.lan  10.0.0.2, 10.0.0.3, 10.0.0.4, 10.0.0.5,\n"), list.npos);
  sql("UPDATE dns_cache SET seen = seen - 100");
  refused("no DNS server is set", {"dns getip b.lan"});
  holds("dns list", {"num: 1\n", " a.lan "});
  ok({"dns dnsc_clear"});
  shows("dns list", cached("", 0));
}

}  // namespace
