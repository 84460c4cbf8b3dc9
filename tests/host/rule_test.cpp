// The rule tables.
#include <cstring>

#include "host.h"
#include "platform/order.h"

namespace {

const std::string kNone = " cl_type: f_ip:  proto: f_dns: \n";

class Rule : public HostTest {
 protected:
  // Some words are empty; the result is "ok" or why the rule was refused.
  static std::string rule(std::vector<std::string> words) {
    words.insert(words.begin(), {VEK_BINARY, "rule"});
    const RunResult result = run(words);
    return result.status == 0 ? result.out : result.err;
  }
  static std::string add_acc(const std::string& name, const std::string& prio, const std::string& ips,
                             const std::string& type, const std::string& block) {
    return rule({"acc", "add", name, prio, ips, "1", "1", "2", "5,7-9", block, type});
  }
  static std::string add_mroute(const std::string& name, const std::string& prio, const std::string& ids) {
    return rule({"mroute", "add", name, "3", "0", prio, "0,2", "0", ids, "", "", "0"});
  }
};

TEST_F(Rule, AccessRulesByPriority) {
  const std::string protocols = "not-tcp:1024-65535:80,udp:53,icmp,";
  EXPECT_EQ(add_acc("later", "20", "3", "", ""), "ok\n");
  EXPECT_EQ(add_acc("block", "20", "10.0.0.0/8,fd00::1>1", "",
                    "not-class=3+ip=1.1.1.1,fd00::/16+proto=" + protocols + "+not-dns=type:7,not-line:2"),
            "ok\n");
  EXPECT_EQ(add_acc("mac", "3", "00:11:22:33:44:55", "4", ""), "ok\n");
  EXPECT_EQ(add_acc("mac", "1", "3", "", ""), "err:already there \n");
  const std::string mac =
      "name:mac prio:3 log:1 act:accept thd_type:2 thd:5,7-9 mac: 00:11:22:33:44:55" + kNone;
  const std::string later = "name:later prio:20 log:1 act:accept thd_type:2 thd:5,7-9 user_group:3," + kNone;
  expect_out(
      "rule acc list",
      "num:3\n" + mac + later +
          "name:block prio:20 log:1 act:accept thd_type:2 thd:5,7-9 ip_duan:10.0.0.0-10.255.255.255,"
          "fd00::1, cl_type:3 cl_type_fei:1 f_ip:1.1.1.1,fd00::-fd00:ffff:ffff:ffff:ffff:ffff:ffff:ffff,"
          " proto:" +
          protocols +
          " dns_en:1,dns_typeid:7,dns_typeid_fei:0"
          " dns_wanid:2,dns_wanid_fei:1,dns_fei:1\n");
  expect_ok("rule acc del block");
  expect_refused("rule acc del block", "no such rule");
  expect_out("rule acc list", "num:2\n" + mac + later);
  EXPECT_EQ(rule({"whitelist", "add", "mac", "3", ""}), "ok\n");
  expect_ok("rule acc delall");
  expect_out("rule acc list", "num:0\n");
  expect_out("rule whitelist list", "num:1\nname:mac  user_group:3," + kNone);
  expect_ok("rule whitelist del mac");
  expect_refused("rule whitelist del mac", "no such rule");
  EXPECT_EQ(rule({"whitelist", "add", "a", "3", ""}), "ok\n");
  expect_ok("rule whitelist delall");
  expect_out("rule whitelist list", "num:0\n");

  expect_out("rule acc defget", "defact=off\nok\n");
  expect_ok("rule acc defset drop");
  expect_out("rule acc defget", "defact=drop\nok\n");
}

TEST_F(Rule, RoutesAndTheirHits) {
  const std::string none = "num: 0\nname                hit\n";
  const std::string unhit =
      "num: 2\nname                hit\nall                  0\nvoip                 0\n";
  EXPECT_EQ(add_mroute("voip", "9", "12"), "ok\n");
  EXPECT_EQ(add_mroute("all", "2", ""), "ok\n");
  const std::string lines = "  wans[512]:1,3 thd_type:0  thd:";
  const std::string rest = " user_group:3, shibie_duan:" + kNone.substr(1);
  const std::string voip = "name:voip prio:9 log:0 no_change:0 rule_type:2" + lines + "12" + rest;
  expect_out("rule mroute list",
             "num:2\nname:all prio:2 log:0 no_change:0 rule_type:1" + lines + rest + voip);
  expect_out("rule mroute hit", unhit);
  sql("state.db", "UPDATE rule SET hits = 7");
  expect_ok("rule mroute hit_del all");
  expect_refused("rule mroute hit_del other", "no such rule");
  expect_out("rule mroute hit",
             "num: 2\nname                hit\nall                  0\nvoip                 7\n");
  expect_ok("rule mroute hit_delall");
  expect_out("rule mroute hit", unhit);

  expect_refused("rule mroute delall 3", "bad value");
  expect_ok("rule mroute delall 1");
  expect_out("rule mroute list", "num:1\n" + voip);
  expect_ok("rule mroute del voip");
  expect_refused("rule mroute del voip", "no such rule");
  EXPECT_EQ(add_mroute("voip", "9", "12"), "ok\n");
  expect_ok("rule mroute delall");
  expect_out("rule mroute hit", none);
  expect_ok("rule mroute hit_delall");
}

TEST_F(Rule, FiltersOfAGroup) {
  const std::string header = " name prio hi_type log act gid  shibie_ids\n";
  const std::string of_2 = "f 5 1 0 drop 2  7,100-120\n";
  const std::string of_3 = "f 1 1 1 accept 3  8\n";
  expect_ok("rule filter add f 5 1 0 0 2 7,100-120");
  expect_ok("rule filter add f 1 1 1 1 3 8");
  expect_refused("rule filter add f 5 1 0 0 2 9", "already there");
  expect_refused("rule filter add g 5 1 2 0 2 9", "bad value");
  expect_out("rule filter list 2", "num:1\n" + header + of_2);
  expect_out("rule filter list 0", "num:2\n" + header + of_3 + of_2);
  expect_ok("rule filter del f 3");
  expect_refused("rule filter del f 3", "no such rule");
  expect_out("rule filter list 0", "num:1\n" + header + of_2);
}

// What no command line can ask for: lists whose sizes do not agree.
TEST_F(Rule, RefusesRecordsThatAreWrongInThemselves) {
  const auto send = [](uint32_t command, std::initializer_list<std::pair<size_t, uint16_t>> numbers,
                       uint32_t payload = 300) {
    std::vector<unsigned char> record(16 + payload);
    const uint32_t header[] = {11, 16 + payload, 0, command};
    memcpy(record.data(), header, sizeof header);
    record[16] = 'r';
    for (const auto& [offset, number] : numbers) memcpy(&record[16 + offset], &number, sizeof number);
    EXPECT_EQ(tesvel_order_opt_fun(record.data(), 16 + payload), 0);
    return std::string(record[8] == 0 ? "ok" : tvlret_err_str[record[8]]);
  };
  EXPECT_EQ(send(9, {{120, 1}, {122, 2}, {128, 11}}), "bad value");
  EXPECT_EQ(send(9, {{120, 65535}, {128, 65532}, {130, 3}}), "bad value");  // behind the record's end
  EXPECT_EQ(send(9, {}, 131), "bad value");
  EXPECT_EQ(send(9, {{126, 19}, {128, 19}}), "bad value");
  EXPECT_EQ(send(9, {{126, 32}, {128, 32}}), "bad value");
  EXPECT_EQ(send(9, {{126, 21}, {128, 21}, {132 + 12, 1}}), "bad value");
  EXPECT_EQ(send(39, {{68, 1}, {76, 8}}), "bad value");
  EXPECT_EQ(send(13, {{626, 1}, {632, 4}}, 700), "bad value");
  EXPECT_EQ(send(20, {{38, 65535}}), "bad value");
  EXPECT_EQ(send(7, {{0, 3}}), "bad value");
  EXPECT_EQ(add_acc("", "1", "3", "", ""), "err:bad name \n");
  EXPECT_EQ(add_acc("r", "1", "none", "4", ""), "err:bad address \n");
  EXPECT_EQ(add_acc("r", "1", "01:00:5e:00:00:01", "4", ""), "err:bad address \n");
  EXPECT_EQ(send(9, {{126, 32}, {128, 32}, {132 + 12, 1}}), "ok");
  expect_out(
      "rule acc list",
      "num:1\nname:r prio:0 log:0 act:accept thd_type:0 thd: user_group: cl_type:0 cl_type_fei:0 f_ip:"
      " proto:any:0:0, dns_en:0,dns_typeid:0,dns_typeid_fei:0 dns_wanid:0,dns_wanid_fei:0,dns_fei:0\n");
}

TEST_F(Rule, ATableHoldsWhatItsListCanShow) {
  std::string groups = "1";
  for (int i = 1; i < 2500; ++i) groups += ",1";  // 10132 bytes a rule
  const auto add = [&](const std::string& name, const std::string& ips) {
    return rule({"acc", "add", name, "1", ips, "0", "0", "0", "", ""});
  };
  for (int i = 0; i < 10; ++i) EXPECT_EQ(add("r" + std::to_string(i), groups), "ok\n");
  EXPECT_EQ(add("more", groups), "err:table full \n");
  EXPECT_EQ(add("small", "1"), "ok\n");
  const RunResult list = vek("rule acc list");
  EXPECT_TRUE(list.out.starts_with("num:11\n"));
  EXPECT_NE(list.out.find("\nname:small "), list.out.npos);
  EXPECT_EQ(rule({"whitelist", "add", "more", groups, ""}), "ok\n");  // a table of its own
}

}  // namespace
