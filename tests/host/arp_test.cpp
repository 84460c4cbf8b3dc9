// ARP binding.
#include "host.h"

namespace {

class Arp : public HostTest {
 protected:
  Arp() {
    expect_ok("devmg add lan0 250");
    expect_ok("devmg add wan0 0");
    expect_ok("devmg wandev wan0");
  }
};

const std::string kLan5 = "192.168.1.5\t0.0.0.0\t192.168.1.5\t00:11:22:33:44:55\tlan0\t1\t1[0|]0\t0\n";
const std::string kLan9 = "192.168.1.9\t0.0.0.0\t192.168.1.9\t00:11:22:33:44:55\tlan0\t2\t1[0|]0\t0\n";
const std::string kWan5 = "192.168.1.5\t0.0.0.0\t192.168.1.5\t00:11:22:33:44:99\twan0\t4\t1[0|]0\t0\n";

TEST_F(Arp, ListsWhatIsBound) {
  expect_ok("arp add lan0 192.168.1.9 00:11:22:33:44:55 2 tv");
  expect_ok("arp add lan0 192.168.1.5 00:00:00:00:00:02 3 pc");
  expect_ok("arp add lan0 192.168.1.5 00:11:22:33:44:55 1 pc");  // replaces
  expect_ok("arp add wan0 192.168.1.5 00:11:22:33:44:99 4 pc");
  for (const char* word : {"lan", "lan0"})
    expect_out(std::string("arp list ") + word, kArpHeader + kLan5 + kLan9);
  expect_out("arp list wan", kArpHeader + kWan5);
  expect_out("arp list all", kArpHeader + kLan5 + kLan9 + kWan5);
  EXPECT_EQ(run({VEK_BINARY, "arp", "list", ""}).out, kArpHeader + kLan5 + kLan9 + kWan5);
  expect_out("devmg get lan0",
             " dev:lan0 flags:0X1  type: 250  arp:1  jb_en:0  wk_mode:0 isp:0  dev_flags:0X0\n");

  expect_ok("arp del lan0 192.168.1.9");
  expect_refused("arp del lan0 192.168.1.9", "no such entry");
  expect_ok("arp del_mac lan0 00:11:22:33:44:55");
  expect_refused("arp del_mac lan0 00:11:22:33:44:55", "no such entry");
  expect_out("arp list all", kArpHeader + kWan5);
  expect_ok("devmg del wan0");
  expect_ok("devmg add wan0 0");
  expect_out("arp list all", kArpHeader);  // went with its interface

  expect_ok("arp add lan0 192.168.1.5 00:11:22:33:44:55 1 pc");
  expect_ok("arp delall");
  expect_out("arp list all", kArpHeader);
}

TEST_F(Arp, RefusesWhatCannotBeBound) {
  for (const char* order :
       {"add lan9 1.2.3.4 00:11:22:33:44:55 1 pc", "del lan9 1.2.3.4", "list lan9", "addall lan9 1",
        "get lan9", "set lan9 1 1.1.1.1 2.2.2.2 1", "db_del lan9 1.2.3.4", "del_mac lan9 00:11:22:33:44:55",
        "search lan9 1.2.3.4 255.0.0.0"}) {
    expect_refused(std::string("arp ") + order, "unknown interface");
  }
  expect_refused("arp add lan0 1.2.3.4 00:00:00:00:00:00 1 pc", "bad address");
  expect_refused("arp add lan0 1.2.3.4 01:00:5e:00:00:01 1 pc", "bad address");
  for (const char* type : {"0", "5"}) expect_refused(std::string("arp addall lan ") + type, "bad value");
  expect_refused("arp db_del lan0 1.2.3.4", "no such entry");
  expect_out("arp list all", kArpHeader);
}

TEST_F(Arp, KeepsSettings) {
  expect_out("arp get lan0", " dev: lan0  tm: 0 ip:0.0.0.0  check_ip:0.0.0.0 deal_level:0\n");
  expect_ok("arp set lan0 10 1.1.1.1 2.2.2.2 150");
  expect_ok("arp set lan0 4000000000 1.1.1.1 254.2.2.2 100");
  expect_out("arp get lan0", " dev: lan0  tm: -294967296 ip:1.1.1.1  check_ip:254.2.2.2 deal_level:2\n");
  expect_ok("arp add lan0 192.168.1.5 00:11:22:33:44:55 1 pc");
  expect_out("arp list lan0",
             kArpHeader + "192.168.1.5\t254.2.2.2\t192.168.1.5\t00:11:22:33:44:55\tlan0\t1\t1[0|]0\t0\n");

  expect_out("arp disonline_get", " enable:0\n");
  expect_ok("arp disonline_set 1");
  expect_refused("arp disonline_set 2", "bad value");
  expect_out("arp disonline_get", " enable:1\n");
}

TEST_F(Arp, HasRoomFor4096Bindings) {
  sql("state.db",
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 4096)"
      "INSERT INTO arp_binding SELECT 'lan0', 167772160 + i, x'020000000001', 1, '', 1 FROM n");
  expect_refused("arp add lan0 192.168.1.5 00:11:22:33:44:55 1 pc", "table full");
  expect_ok("arp add lan0 10.0.0.1 00:11:22:33:44:55 1 pc");
  const std::string list = vek("arp list all").out;
  EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), 4097);
}

// Neighbours that can be told apart from this machine's stand in a network of their own.
TEST_F(Arp, BindsTheNeighboursThatLinuxKnows) {
  const std::string neighbours =
      "ip link add other type bridge; ip link set other up;"
      "ip neigh add 10.0.0.9 lladdr 02:00:00:00:00:09 dev lan0;"
      "ip neigh add 10.0.0.7 lladdr 02:00:00:00:00:07 dev lan0;"
      "ip neigh add 10.1.0.1 lladdr 02:00:00:00:00:01 dev wan0;"
      "ip neigh add 10.2.0.1 lladdr 02:00:00:00:00:03 dev other;";
  if (in_own_network("echo").empty()) GTEST_SKIP() << "this machine allows no network of one's own";

  const std::string by_hand = "10.0.0.9\t0.0.0.0\t10.0.0.9\t00:11:22:33:44:55\tlan0\t1\t1[0|]0\t0\n";
  const std::string lan = "10.0.0.7\t0.0.0.0\t10.0.0.7\t02:00:00:00:00:07\tlan0\t3\t2[1|]0\t0\n" + by_hand;
  const std::string wan = "10.1.0.1\t0.0.0.0\t10.1.0.1\t02:00:00:00:00:01\twan0\t2\t2[1|]0\t0\n";
  expect_ok("arp add lan0 10.0.0.9 00:11:22:33:44:55 1 pc");
  EXPECT_EQ(in_own_network(neighbours + "$vek arp addall lan 3"), "ok\n");
  expect_out("arp list all", kArpHeader + lan);
  EXPECT_EQ(in_own_network(neighbours + "$vek arp addall wan0 2"), "ok\n");
  expect_out("arp list all", kArpHeader + lan + wan);

  // What a search has found can be bound when Linux has long forgotten it, unless it was deleted or flushed.
  expect_ok("arp delall");
  vek("fls 3");
  EXPECT_EQ(in_own_network(neighbours + "$vek arp search lan0 10.0.0.8 255.255.255.248"),
            "ok\n");  // not 10.0.0.7
  EXPECT_EQ(in_own_network(neighbours + "$vek arp search wan0 10.1.0.1 255.255.255.0"), "ok\n");
  expect_ok("arp db_del wan0 10.1.0.1");
  expect_ok("arp debug");
  EXPECT_TRUE(
      vek("errinfo 3").out.starts_with("arp: 0 bindings, 1 addresses learnt, settings of 0 interfaces\n"));
  expect_ok("arp addall all 1");
  expect_out("arp list all",
             kArpHeader + "10.0.0.9\t0.0.0.0\t10.0.0.9\t02:00:00:00:00:09\tlan0\t1\t2[1|]0\t0\n");
}

}  // namespace
