// ARP binding.
#include "host.h"

namespace {

class Arp : public HostTest {
 protected:
  Arp() { ok({"devmg add lan0 250", "devmg add wan0 0", "devmg wandev wan0"}); }
};

const std::string kHeader =
    "ip \t\t check_ip \t\t org_ip \t \t mac \t \t dev \t  type \t state \t del_time\n";

std::string binding(const std::string& ip, const std::string& mac, const std::string& dev,
                    const std::string& type, const std::string& state = "1[0|]",
                    const std::string& check_ip = "0.0.0.0") {
  return ip + "\t" + check_ip + "\t" + ip + "\t" + mac + "\t" + dev + "\t" + type + "\t" + state + "0\t0\n";
}

TEST_F(Arp, ListsWhatIsBound) {
  const std::string lan = binding("192.168.1.5", "00:11:22:33:44:55", "lan0", "1") +
                          binding("192.168.1.9", "00:11:22:33:44:55", "lan0", "2");
  const std::string wan = binding("192.168.1.5", "00:11:22:33:44:99", "wan0", "4");
  ok({"arp add lan0 192.168.1.9 00:11:22:33:44:55 2 tv", "arp add lan0 192.168.1.5 00:00:00:00:00:02 3 pc",
      "arp add lan0 192.168.1.5 00:11:22:33:44:55 1 pc",  // replaces
      "arp add wan0 192.168.1.5 00:11:22:33:44:99 4 pc"});
  shows("arp list lan", kHeader + lan);
  shows("arp list lan0", kHeader + lan);
  shows("arp list wan", kHeader + wan);
  shows("arp list all", kHeader + lan + wan);
  shows("arp list ''", kHeader + lan + wan);
  shows("devmg get lan0", " dev:lan0 flags:0X1  type: 250  arp:1  jb_en:0  wk_mode:0 isp:0  dev_flags:0X0\n");

  ok({"arp del lan0 192.168.1.9", "arp del_mac lan0 00:11:22:33:44:55"});
  refused("no such entry",
          {"arp del lan0 192.168.1.9", "arp del_mac lan0 00:11:22:33:44:55", "arp db_del lan0 1.2.3.4"});
  shows("arp list all", kHeader + wan);
  ok({"devmg del wan0", "devmg add wan0 0"});
  shows("arp list all", kHeader);  // went with its interface
  ok({"arp add lan0 192.168.1.5 00:11:22:33:44:55 1 pc", "arp delall"});
  shows("arp list all", kHeader);
}

TEST_F(Arp, RefusesWhatCannotBeBound) {
  refused("unknown interface",
          {"arp add lan9 1.2.3.4 00:11:22:33:44:55 1 pc", "arp del lan9 1.2.3.4", "arp list lan9",
           "arp addall lan9 1", "arp get lan9", "arp set lan9 1 1.1.1.1 2.2.2.2 1", "arp db_del lan9 1.2.3.4",
           "arp del_mac lan9 00:11:22:33:44:55", "arp search lan9 1.2.3.4 255.0.0.0"});
  refused("bad MAC address",
          {"arp add lan0 1.2.3.4 00:00:00:00:00:00 1 pc", "arp add lan0 1.2.3.4 01:00:5e:00:00:01 1 pc"});
  refused("bad address",
          {"arp add lan0 224.0.0.1 00:11:22:33:44:55 1 pc", "arp add lan0 0.1.2.3 00:11:22:33:44:55 1 pc"});
  refused("control character in a text", {"arp add lan0 1.2.3.4 00:11:22:33:44:55 1 a\x01"});
  refused("unknown type", {"arp addall lan 0", "arp addall lan 5"});
  shows("arp list all", kHeader);
}

TEST_F(Arp, KeepsSettings) {
  shows("arp get lan0", " dev: lan0  tm: 0 ip:0.0.0.0  check_ip:0.0.0.0 deal_level:0\n");
  ok({"arp set lan0 10 1.1.1.1 2.2.2.2 150", "arp set lan0 4000000000 1.1.1.1 254.2.2.2 100",
      "arp add lan0 192.168.1.5 00:11:22:33:44:55 1 pc"});
  shows("arp get lan0", " dev: lan0  tm: -294967296 ip:1.1.1.1  check_ip:254.2.2.2 deal_level:2\n");
  shows("arp list lan0",
        kHeader + binding("192.168.1.5", "00:11:22:33:44:55", "lan0", "1", "1[0|]", "254.2.2.2"));
  shows("arp disonline_get", " enable:0\n");
  ok({"arp disonline_set 1"});
  refused("switch is neither 0 nor 1", {"arp disonline_set 2"});
  shows("arp disonline_get", " enable:1\n");
}

TEST_F(Arp, HasRoomFor4096BindingsAndAddresses) {
  insert(1, 4096, "arp_binding SELECT 'lan0', 167772160 + i, x'020000000001', 1, '', 1");
  refused("table full", {"arp add lan0 192.168.1.5 00:11:22:33:44:55 1 pc"});
  ok({"arp add lan0 10.0.0.1 00:11:22:33:44:55 1 pc"});
  EXPECT_EQ(std::ranges::count(vek("arp list all").out, '\n'), 4097);
  insert(1, 4096, "arp_learnt SELECT 'lan0', i, x'020000000001'");
  ok({"arp search lan0 10.0.0.1 255.0.0.0"});
  insert(4097, 4097, "arp_learnt SELECT 'lan0', i, x'020000000001'");
  refused("table full", {"arp search lan0 10.0.0.1 255.0.0.0"});
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
  const auto ok_there = [&](const std::string& words) {
    EXPECT_EQ(in_own_network(neighbours + "vek " + words), "ok\n") << words;
  };

  const std::string lan = binding("10.0.0.7", "02:00:00:00:00:07", "lan0", "3", "2[1|]") +
                          binding("10.0.0.9", "00:11:22:33:44:55", "lan0", "1");
  const std::string wan = binding("10.1.0.1", "02:00:00:00:00:01", "wan0", "2", "2[1|]");
  ok({"arp add lan0 10.0.0.9 00:11:22:33:44:55 1 pc"});
  ok_there("arp addall lan 3");
  shows("arp list all", kHeader + lan);
  ok_there("arp addall wan0 2");
  shows("arp list all", kHeader + lan + wan);

  // What a search has found can be bound when Linux has long forgotten it, unless it was deleted or flushed.
  ok({"arp delall"});
  vek("fls 3");
  ok_there("arp search lan0 10.0.0.8 255.255.255.248");  // not 10.0.0.7
  ok_there("arp search lan0 10.0.0.5 255.255.255.254");  // nobody
  ok_there("arp search wan0 10.1.0.1 255.255.255.0");
  ok({"arp db_del wan0 10.1.0.1", "arp debug"});
  begins("errinfo 3", "arp: 0 bindings, 1 addresses learnt, settings of 0 interfaces\n");
  ok({"arp addall all 1"});
  shows("arp list all", kHeader + binding("10.0.0.9", "02:00:00:00:00:09", "lan0", "1", "2[1|]"));
}

}  // namespace
