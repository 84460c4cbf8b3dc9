// The interface registry.
#include "host.h"

namespace {

using Devmg = HostTest;

const std::string kHeader = "dev\t\t flags\t type\t arp\t jb\t wk_mode\t isp\t dev_id\t dev_flags\n\n";

TEST_F(Devmg, KeepsWhatWasAddedAndSet) {
  shows("devmg list", kHeader);
  ok({"devmg add lan0 250", "devmg add port1 0", "devmg set port1 1 vpn 7"});
  shows("devmg list", kHeader + "lan0             0X1\t 250\t 0\t 0\t 0\t 0\t 1\t 0X0\n" +
                          "port1            0X0\t 0\t 0\t 1\t 2\t 7\t 2\t 0X0\n");
  ok({"devmg add port1 250"});  // its type anew, its settings as they were
  const std::string rest = "  arp:0  jb_en:1  wk_mode:2 isp:7  dev_flags:0X0\n";
  shows("devmg get port1", " dev:port1 flags:0X1  type: 250" + rest);
  // An interface is on one side only.
  refused("interface is not a line", {"devmg wan_done port1"});
  ok({"devmg wandev port1", "devmg wan_done port1", "devmg add port1 0",
      "devmg wandev port1"});  // a line stays one
  refused("in use", {"devmg add port1 250"});
  shows("devmg get port1", " dev:port1 flags:0X6  type: 0" + rest);
  ok({"devmg landev port1"});
  shows("devmg get port1", " dev:port1 flags:0X1  type: 250" + rest);
}

TEST_F(Devmg, RefusesUnknownInterfacesAndBadWords) {
  ok({"devmg add lan0 250", "devmg del lan0"});
  refused("unknown interface",
          {"devmg get lan0", "devmg del lan0", "devmg landev lan0", "devmg wandev lan0",
           "devmg wan_done lan0", "devmg dev_stat lan0", "devmg set lan0 1 vpn 1", "devmg dev_stat ../../x"});
  refused("unknown type", {"devmg add lan0 7"});
  refused("bad name", {"devmg add ../../x 250", "devmg add a/b 250", "devmg add .. 250"});
  shows("devmg list", kHeader);
}

TEST_F(Devmg, NumbersAreGivenOutAgainAndEnd) {
  for (int i = 1; i <= 64; ++i) ok({"devmg add port" + std::to_string(i) + " 0"});
  refused("table full", {"devmg add port65 0"});
  ok({"devmg add port64 250", "devmg del port9", "devmg add again 0"});
  holds("devmg list", {"again            0X0\t 0\t 0\t 0\t 0\t 0\t 9\t"});
}

TEST_F(Devmg, AsksTheRunningLinux) {
  ok({"devmg add nowhere 0"});
  shows("devmg dev_stat nowhere",
        "rx_broadcast:0,rx_multicast:0,rx_unicast:0\ntx_broadcast:0,tx_multicast:0,tx_unicast:0\n");
  const std::string list = in_own_network("vek devmg dev_get; vek devmg list");
  if (list.empty()) GTEST_SKIP() << "this machine allows no network of one's own";
  for (const char* dev : {"lan0", "wan0"}) {
    EXPECT_NE(list.find(std::string("\n") + dev + "             0X0\t 0\t 0\t 0\t 0\t 0\t "), list.npos)
        << list;
  }
  EXPECT_NE(list.find(" 0X10"), list.npos) << list;  // a bridge has multicasts
}

}  // namespace
