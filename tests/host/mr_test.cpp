// Lines: their numbers, their settings and the routes that pin traffic to them.
#include "host.h"
#include "platform/line.h"
#include "platform/nvram.h"

namespace {

class Mr : public HostTest {
 protected:
  Mr() { ok({"devmg add wan0 0", "devmg wandev wan0", "devmg add wan1 0", "devmg wandev wan1"}); }
  // The list with the one thing in it that no test can know taken out.
  static std::string list() {
    std::string out = vek("mr list").out;
    for (size_t at = 0; (at = out.find("create_tm:", at)) != out.npos;) {
      at += strlen("create_tm:");
      const size_t end = out.find(' ', at);
      EXPECT_NEAR(std::stod(out.substr(at, end - at)), static_cast<double>(time(nullptr)), 60);
      out.erase(at, end - at);
    }
    return out;
  }
};

const std::string kHeader = "wanid jh state  val is_qosval hi_num ct_num dns_prio false_tm\n";
const std::string kRoutes = "wanid prio src \t srcmask \t dst \t dstmask\n\n";

std::string untouched(const std::string& line) {
  return "\nwanid:" + line +
         " wan_proto:0 ppp_demand:0 jh:0  host_num:0 ct_limit_num:0  hi:0[0/0]  ct:0  dns_pri:0  "
         "change_id:0\n"
         "\t state_v4:0 state_v6:0 val:0 chk_qosval:0 false_tm:0 hi_val:0 ct_val:0 qos_val:0 qos_speed:0/0\n"
         "\t dnsip4: 0.0.0.0,0.0.0.0,0.0.0.0, dnsip6: ::,::,::,\n\t ula: ::/0,\n"
         "\t zc: en=0  act=0  tm=0  times=0  sd=0  gw=0.0.0.0  state=0 trys=0 ret_state=0 3g=0 srv=\n"
         "\t flow_limit:0, create_tm: \n";
}

TEST_F(Mr, ListsLinesAsTheyWereSet) {
  const std::string before = list();
  EXPECT_EQ(before, "num: 2\n" + kHeader + untouched("0") + untouched("1") + "\n");
  ok({"mr jh 1 1 50 pppoe 1 200", "mr val 1 4000000000 1", "mr flow 1 1", "mr ipv6 1 2",
      "mr ipv6_ula 1 fd00::/48", "mr dns 1 3 1.1.1.1,2.2.2.2,4.4.4.4 fd00::1,,fd00::3",
      "mr zc 1 1 2 10 3 99 10.0.0.1 1.1.1.1$a.example.com 1 0 x 0 0", "devmg wan_done wan1",
      "qos speed_set wan1 1000 2000"});
  const std::string set = list();
  EXPECT_EQ(changes(before, set),
            "wan_proto:3 ppp_demand:1 jh:1 host_num:50 ct_limit_num:200 dns_pri:3 change_id:7 state_v4:1 "
            "state_v6:2 val:4000000000 chk_qosval:1 qos_val:3000 qos_speed:1000/2000 "
            "1.1.1.1,2.2.2.2,4.4.4.4, fd00::1,::,fd00::3, fd00::/48, en=1 act=2 tm=10 times=3 sd=99 "
            "gw=10.0.0.1 state=1 3g=1 srv=1.1.1.1,a.example.com, flow_limit:1, ");
  ok({"mr zc_stop 1"});
  refused("not running", {"mr zc_stop 1"});
  EXPECT_EQ(changes(set, list()), "change_id:8 state=0 ");
  ok({"mr zc 1 0 1 0 0 0 0 0 0 0 x 0 0"});
  EXPECT_EQ(changes(set, list()), "change_id:9 en=0 act=1 tm=0 times=0 sd=0 gw=0.0.0.0 state=0 3g=0 srv= ");
  ok({"mr dns 0 9 3.3.3.3 64:ff9b::1", "mr dns_cache"});
  begins("errinfo 10",
         "dns servers: line 1: 1.1.1.1 2.2.2.2 4.4.4.4 fd00::1 fd00::3 line 0: 3.3.3.3 64:ff9b::1\n");
}

TEST_F(Mr, ALineGoesWithItsInterfaceAndItsNumberIsFreeAgain) {
  ok({"devmg add wan2 0", "devmg wandev wan2", "mr val 0 7 0", "mr val 1 7 0", "mr val 2 7 0",
      "mr lr_add 1 5 1.2.3.0 255.255.255.0 0 0", "devmg wandev wan1"});  // as it was: nothing changes
  EXPECT_STREQ(tvl_get_wan_name(1), "wan1");
  begins("mr lr_list", "num: 1\n");

  ok({"devmg landev wan1"});
  refused("unknown line", {"mr val 1 7 0"});
  shows("mr lr_list", "num: 0\n" + kRoutes);
  EXPECT_STREQ(tvl_get_wan_name(1), "");
  EXPECT_STREQ(tvl_get_wan_name(2), "wan2");
  ok({"devmg del wan0"});
  EXPECT_STREQ(tvl_get_wan_name(0), "");
  ok({"devmg add port 0", "devmg wandev port", "devmg wandev wan1"});
  EXPECT_STREQ(tvl_get_wan_name(0), "port");
  EXPECT_STREQ(tvl_get_wan_name(1), "wan1");
  EXPECT_NE(list().find(untouched("1") + "\nwanid:2 "), std::string::npos);
}

TEST_F(Mr, RoutesStandInTheOrderOfTheirPriority) {
  ok({"mr lr_add 0 20 192.168.1.0 255.255.255.0 10.0.0.0 255.0.0.0", "mr lr_add 0 10 0 0 10.0.0.0 255.0.0.0",
      "mr lr_add 1 10 1.2.3.4 255.255.255.255 0 0"});
  refused("already there",
          {"mr lr_add 1 30 1.2.3.4 255.255.255.255 0 0", "mr lr_add 0 20 0 0 10.1.0.0 255.0.0.0"});
  refused("unknown line", {"mr lr_add 2 1 0 0 10.0.0.0 255.0.0.0", "mr lr_del 2"});
  refused("bad mask", {"mr lr_add 1 1 0 0 10.0.0.0 255.0.255.0"});
  refused("bad mask", {"mr lr_add 1 1 192.168.1.0 255.255.255.300 10.0.0.0 255.0.0.0"});
  refused("bad address", {"mr lr_add 1 1 192.168.1.300 255.255.255.0 10.0.0.0 255.0.0.0"});
  const std::string host =
      "wanid:1  prio:10  src:1.2.3.4  srcmask:255.255.255.255  dst:0.0.0.0  dstmask:0.0.0.0\n";
  shows("mr lr_list",
        "num: 3\n" + kRoutes +
            "wanid:0  prio:10  src:0.0.0.0  srcmask:0.0.0.0  dst:10.0.0.0  dstmask:255.0.0.0\n" + host +
            "wanid:0  prio:20  src:192.168.1.0  srcmask:255.255.255.0  dst:10.0.0.0  dstmask:255.0.0.0\n");
  ok({"mr lr_del 0"});
  refused("no such route", {"mr lr_del 0"});
  shows("mr lr_list", "num: 1\n" + kRoutes + host);
  insert(1, 1022, "line_route SELECT 1, i, 1, 1, i, 1");
  ok({"mr lr_add 1 10 1.2.3.5 255.255.255.255 0 0"});
  refused("table full", {"mr lr_add 1 10 1.2.3.6 255.255.255.255 0 0"});
}

TEST_F(Mr, KeepsTheMode) {
  shows("mr get", "type:1,onlywan:0 onlywan_tcp:0 zn_val:0 ct_rule_name:0\n");
  ok({"mr mode zn 7 9", "mr onlywan 1 0"});
  refused("switch is neither 0 nor 1", {"mr onlywan 0 2"});
  shows("mr get", "type:4,onlywan:1 onlywan_tcp:0 zn_val:7 ct_rule_name:9\n");
  ok({"mr mode ct 7 0"});
  shows("mr get", "type:2,onlywan:1 onlywan_tcp:0 zn_val:0 ct_rule_name:0\n");
}

TEST_F(Mr, RefusesUnknownLinesAndBadValues) {
  refused("unknown line",
          {"mr jh 2 1 1 dhcp 0", "mr flow 2 1", "mr val 2 1 1", "mr dns 2 1 x x", "mr zc_stop 2",
           "mr ipv6 2 1", "mr ipv6_ula 2 fd00::", "mr zc 2 1 1 1 1 1 x x 0 0 x x x"});
  refused("switch is neither 0 nor 1", {"mr jh 0 2 1 dhcp 0", "mr jh 0 1 1 dhcp 2", "mr flow 0 2",
                                        "mr val 0 1 2", "mr zc 0 2 1 1 1 1 x x 0 0 x x x"});
  refused("unknown type", {"mr jh 0 1 1 modem 0"});
  refused("unknown mode", {"mr zc 0 1 3 1 1 1 x x 0 0 x x x"});
  refused("bad mask", {"mr ipv6_ula 0 fd00::/129"});
  refused("control character in a text",
          {"mr zc 0 1 1 1 1 1 x a\x01 0 0 x x x", "mr zc 0 1 1 1 1 1 x x 0 0 a\x01 x x"});
  refused("bad address", {"mr ipv6_ula 0 ::", "mr ipv6_ula 0 2001:db8::", "mr ipv6_ula 0 what",
                          "mr zc 0 1 1 1 1 1 x 8.8.8.800 0 0 x x x"});
  EXPECT_EQ(list(), "num: 2\n" + kHeader + untouched("0") + untouched("1") + "\n");
}

TEST_F(Mr, LinesByProtocolAndVpnLinks) {
  const char* const names[] = {"", "static", "dhcp", "pppoe", "pptp", "l2tp", "4g"};
  for (int number = 0; number < 7; ++number) EXPECT_EQ(vek_get_wan_proto(names[number]), number);
  EXPECT_EQ(vek_get_wan_proto("3g"), 6);
  EXPECT_EQ(vek_get_wan_proto("PPPOE"), 0);
  EXPECT_EQ(vek_get_wan_proto(nullptr), 0);

  EXPECT_EQ(tvl_vpnget("vpn_link", 135), nullptr);
  EXPECT_EQ(tvl_vpnget("wan", 0), nullptr);
  EXPECT_EQ(tvl_vpnget(nullptr, 0), nullptr);
  EXPECT_NE(vek("qos skb 255").out.find("not iface name\n"), std::string::npos);
  EXPECT_EQ(nvram_set(tvl_vpnget("vpn_link", 134), "wan1"), 0);
  begins("qos skb 255", "skb_head:0 skb_data:0\n");
}

}  // namespace
