// The rule tables.
#include "host.h"
#include "record.h"

namespace {

class Rule : public HostTest {
 protected:
  Rule() {
    for (const char* dev : {"wan0", "wan1", "wan2"}) {
      ok({std::string("devmg add ") + dev + " 0", std::string("devmg wandev ") + dev});
    }
  }
};

const std::string kNone = "cl_type: f_ip:  proto: f_dns: \n";

TEST_F(Rule, AccessRulesByPriority) {
  const std::string words = " 1 1 2 5,7-9 ";
  const std::string shown = " log:1 act:accept thd_type:2 thd:5,7-9 ";
  const std::string protocols = "not-tcp:1024-65535:80,udp:53,icmp,";
  ok({"rule acc add later 20 3" + words + "'' ''",
      "rule acc add block 20 10.0.0.0/8,fd00::1>1" + words +
          "not-class=3+ip=1.1.1.1,fd00::/16+proto=" + protocols + "+not-dns=type:7,not-line:2",
      "rule acc add mac 3 00:11:22:33:44:55" + words + "'' 4"});
  refused("already there", {"rule acc add mac 1 3" + words + "'' ''"});
  const std::string first = "name:mac prio:3" + shown + "mac: 00:11:22:33:44:55 " + kNone +
                            "name:later prio:20" + shown + "user_group:3, " + kNone;
  shows("rule acc list",
        "num:3\n" + first + "name:block prio:20" + shown +
            "ip_duan:10.0.0.0-10.255.255.255,fd00::1, cl_type:3 cl_type_fei:1 "
            "f_ip:1.1.1.1,fd00::-fd00:ffff:ffff:ffff:ffff:ffff:ffff:ffff, proto:" +
            protocols + " dns_en:1,dns_typeid:7,dns_typeid_fei:0 dns_wanid:2,dns_wanid_fei:1,dns_fei:1\n");
  ok({"rule acc del block"});
  shows("rule acc list", "num:2\n" + first);
  ok({"rule whitelist add mac 3 ''", "rule acc delall"});
  shows("rule acc list", "num:0\n");
  shows("rule whitelist list", "num:1\nname:mac  user_group:3, " + kNone);
  ok({"rule whitelist del mac"});
  refused("no such rule", {"rule acc del block", "rule whitelist del mac"});
  ok({"rule whitelist add a 3 ''", "rule whitelist delall"});
  shows("rule whitelist list", "num:0\n");

  shows("rule acc defget", "defact=off\nok\n");
  ok({"rule acc defset drop"});
  shows("rule acc defget", "defact=drop\nok\n");
}

TEST_F(Rule, RoutesAndTheirHits) {
  const auto expect_hits = [](const std::string& all, const std::string& voip) {
    shows("rule mroute hit", "num: 2\nname                hit\nall                  " + all +
                                 "\nvoip                 " + voip + "\n");
  };
  ok({"rule mroute add voip 3 0 9 0,2 0 12 '' '' 0", "rule mroute add all 3 0 2 0,2 0 '' '' '' 0"});
  const std::string lines = "  wans[512]:1,3 thd_type:0  thd:";
  const std::string rest = " user_group:3, shibie_duan:" + kNone;
  const std::string voip = "name:voip prio:9 log:0 no_change:0 rule_type:2" + lines + "12" + rest;
  shows("rule mroute list", "num:2\nname:all prio:2 log:0 no_change:0 rule_type:1" + lines + rest + voip);
  expect_hits("0", "0");
  sql("UPDATE rule SET hits = 7");
  ok({"rule mroute hit_del all"});
  refused("no such rule", {"rule mroute hit_del other"});
  expect_hits("0", "7");
  ok({"rule mroute hit_delall"});
  expect_hits("0", "0");

  refused("unknown type", {"rule mroute delall 3"});
  ok({"rule mroute delall 1"});
  shows("rule mroute list", "num:1\n" + voip);
  ok({"rule mroute add all 3 0 2 0,2 0 '' '' '' 0", "rule mroute delall 2"});
  begins("rule mroute list", "num:1\nname:all ");
  ok({"rule mroute del all"});
  refused("no such rule", {"rule mroute del all"});
  ok({"rule mroute add voip 3 0 9 0,2 0 12 '' '' 0", "rule mroute delall", "rule mroute hit_delall"});
  shows("rule mroute hit", "num: 0\nname                hit\n");
}

TEST_F(Rule, ALineStaysWhileARouteNamesIt) {
  refused("unknown line",
          {"rule mroute add r 3 0 1 3 0 '' '' '' 0", "rule mroute add r 3 0 1 0,256 0 '' '' '' 0"});
  ok({"rule mroute add {n}*70 3 0 1 2,200,,1 0 '' '' '' 0"});
  refused("in use", {"devmg del wan2", "devmg landev wan2", "devmg add wan2 250"});
  ok({"devmg del wan1", "devmg wandev wan2", "rule mroute del {n}*70", "devmg landev wan2",
      "devmg del wan2"});
}

TEST_F(Rule, WhatIsNotUnderstoodIsRefused) {
  const struct {
    const char* why;
    std::vector<const char*> lists;  // hosts, class mode, classes, destination
  } cases[] = {
      {"bad destination",
       {"3 0 '' proto=tpc:23", "3 0 '' proto=tcp:99999", "3 0 '' not-ip=1.1.1.1", "3 0 '' any"}},
      {"bad address", {"192.168.1.300>1 0 '' ''", "fd00::g>1 0 '' ''", "1.1.1.1,x>1 0 '' ''"}},
      {"range ends before it starts", {"10.0.0.9-10.0.0.1>1 0 '' ''", "::2-::1>1 0 '' ''", "9-1 0 '' ''"}},
      {"bad list", {"staff 0 '' ''", "70000 0 '' ''", "3 1 voip ''"}},
      {"empty list", {"'' 0 '' ''", ",>1 0 '' ''", "0>1 0 '' ''", "3 1 '' ''"}},
  };
  for (const auto& c : cases) {
    for (const std::string words : c.lists) {
      const size_t hosts = words.find(' ');
      const size_t classes = words.rfind(' ');
      const std::string destination = words.substr(classes);
      refused(c.why, {"rule acc add r 1 " + words.substr(0, hosts) + " 0 0" + words.substr(hosts),
                      "rule mroute add r " + words.substr(0, hosts) + " 0 1 0" +
                          words.substr(hosts, classes - hosts) + " ''" + destination + " 0"});
    }
  }
  refused("empty list", {"rule whitelist add r '' ''", "rule mroute add r 3 0 1 ,1 0 '' '' '' 0"});
  refused("bad list", {"rule mroute add r 3 0 1 0 0 '' 1-g '' 0", "rule filter add r 1 1 0 0 2 web"});
  refused("control character in a text", {"rule whitelist add a\x01 3 ''"});
}

TEST_F(Rule, FiltersOfAGroup) {
  const std::string header = "\n name prio hi_type log act gid  shibie_ids\n";
  const std::string of_2 = "f 5 1 0 drop 2  7,100-120\n";
  ok({"rule filter add f 5 1 0 0 2 7,100-120", "rule filter add f 1 1 1 1 3 8"});
  refused("already there", {"rule filter add f 5 1 0 0 2 9"});
  refused("switch is neither 0 nor 1", {"rule filter add g 5 1 2 0 2 9"});
  shows("rule filter list 2", "num:1" + header + of_2);
  shows("rule filter list 0", "num:2" + header + "f 1 1 1 accept 3  8\n" + of_2);
  ok({"rule filter del f 3"});
  refused("no such rule", {"rule filter del f 3"});
  shows("rule filter list 0", "num:1" + header + of_2);
}

// What no command line can ask for: lists whose sizes do not agree.
TEST_F(Rule, RefusesRecordsThatAreWrongInThemselves) {
  const struct {
    uint32_t command;
    std::vector<std::pair<size_t, uint16_t>> numbers;  // in the payload
    uint32_t payload = 300;
    std::string result = "record does not hold what it says";
  } cases[] = {
      {9, {{120, 1}, {122, 2}, {128, 11}}},
      {9, {{120, 65535}, {128, 65532}, {130, 3}}},  // behind the record's end
      {9, {}, 131},
      {9, {{126, 19}, {128, 19}}},
      {9, {{126, 32}, {128, 32}}},
      {9, {{126, 21}, {128, 21}, {132 + 12, 1}}},
      {39, {{68, 1}, {76, 8}}},
      {13, {{626, 1}, {632, 4}}, 700},
      {20, {{38, 65535}}},
      {7, {{0, 3}}, 300, "unknown mode"},
      {9, {{104, 4}, {108, 512}, {126, 32}, {128, 32}, {132 + 12, 1}}, 300, ""},
  };
  for (const auto& c : cases) {
    Record record(11, c.command, c.payload);
    record.bytes[16] = 'r';
    for (const auto& [offset, number] : c.numbers) {
      memcpy(&record.bytes[16 + offset], &number, sizeof number);
    }
    EXPECT_EQ(record.send(), c.result) << &c - cases;
  }
  refused("bad name", {"rule acc add '' 1 3 1 1 0 '' ''"});
  refused("bad MAC address",
          {"rule acc add r 1 none 1 1 0 '' '' 4", "rule acc add r 1 01:00:5e:00:00:01 1 1 0 '' '' 4"});
  shows("rule acc list",
        "num:1\nname:r prio:0 log:0 act:accept thd_type:0 thd: mac: 00:02:00:00:00:00 cl_type:0 "
        "cl_type_fei:0 f_ip:"
        " proto:any:0:0, dns_en:0,dns_typeid:0,dns_typeid_fei:0 dns_wanid:0,dns_wanid_fei:0,dns_fei:0\n");
}

TEST_F(Rule, ATableHoldsWhatItsListCanShow) {
  const std::string big = " 1 {1,}*2500 0 0 0 '' ''";  // 10132 bytes a rule
  for (int i = 0; i < 10; ++i) ok({"rule acc add r" + std::to_string(i) + big});
  refused("table full", {"rule acc add more" + big});
  ok({"rule acc add small 1 1 0 0 0 '' ''", "rule whitelist add more {1,}*2500 ''"});  // a table of its own
  const std::string list = vek("rule acc list").out;
  EXPECT_TRUE(list.starts_with("num:11\n"));
  EXPECT_NE(list.find("\nname:small "), list.npos);
}

}  // namespace
