// The kernel's switches and the steering of wireless clients on the host: set and read back, refused.
#include "host.h"

namespace {

class Switches : public HostTest {};

TEST_F(Switches, PairsAreKeptAndReadBack) {
  const struct {
    std::string get;
    std::string set;
    std::string out;  // of both
  } kPairs[] = {
      {"ip_options_srr get", "ip_options_srr set 1", "\nen:1\n"},
      {"skb_delay get", "skb_delay set 2147483647", "\ntime:2147483647\n"},
      {"alg get", "alg set 0 1 0 0 0 0 0 0 0 9",
       "\nftp:0\ntftp:1\nrtsp:0\npptp:0\nl2tp:0\nipsec:0\nsip:0\nh323:0\nsnmp:0\nirc:1\n"},
      {"ac_server mode get", "ac_server mode set 1 0 3", "en:1,mode:0,debug:3\n"},
      {"ap_balanced num get", "ap_balanced num set 1 2", "show:\n0:1\n1:2\n2:0\n3:0\n4:0\n"},
      {"ap_balanced trys get", "ap_balanced trys set 0 0 0 0 9", "show:\n0:0\n1:0\n2:0\n3:0\n4:9\n"},
      {"ap_rssi get", "ap_rssi set -75 20 1",
       "rssi:-75,interval:10,balance:0,drop:1,led:1,macfilter:0,rate:20\n"},
      {"ap_rssi_5g get", "ap_rssi_5g set -128 5", "rssi:-128,rate:5\n"},
      {"ap_rssi_3w get", "ap_rssi_3w set -60 6", "rssi:-60,rate:6\n"},
      {"5g_prio conf get", "5g_prio conf set 0 2 0 0 0 0 0 9",
       "show:\nSSID1:0\nSSID2:2\nSSID3:0\nSSID4:0\nSSID5:0\nSSID6:0\nSSID7:0\nSSID8:9\n"},
      {"5g_prio debug get", "5g_prio debug set 02:00:00:00:00:01", "mac:02:00:00:00:00:01\n"},
  };
  shows("skb_delay get", "\ntime:0\n");  // nothing is set at first
  shows("ap_rssi get", "rssi:0,interval:0,balance:0,drop:0,led:0,macfilter:0,rate:0\n");
  for (const auto& pair : kPairs) shows(pair.set, pair.out);
  refused("switch is neither 0 nor 1", {"ip_options_srr set 2", "ac_server mode set 2 0 0",
                                        "ac_server mode set 0 2 0", "ap_rssi set -1 1 2"});
  refused("number out of range", {"skb_delay set -1", "ac_server mode set 0 0 -1", "ap_balanced num set 1 -1",
                                  "ap_balanced trys set -1", "ap_rssi set 75 1 1", "ap_rssi_5g set -200 1",
                                  "ap_rssi_3w set -1 -1", "5g_prio conf set 1 1 1 1 1 1 1 -1"});
  refused("bad MAC address", {"5g_prio debug set 01:00:5e:00:00:01"});
  for (const auto& pair : kPairs) shows(pair.get, pair.out);
  shows("5g_prio debug set 00:00:00:00:00:00", "mac:00:00:00:00:00:00\n");
}

TEST_F(Switches, HostsAndClients) {
  shows("hictlist_show get", "en: 0 \n");
  ok({"hictlist_show set 1"});
  refused("switch is neither 0 nor 1", {"hictlist_show set 2"});
  shows("hictlist_show get", "en: 1 \n");

  const std::string host = R"("hosts": [{"ip": "10.0.0.9", "local_mac": "02:00:00:00:00:01",
    "tmp_speed_limit_up": 3, "tmp_speed_limit_down": 4}])";
  load("{" + host + R"(, "signals": [{"mac": "02:00:00:00:00:01", "rssi": -52}]})");
  holds("hi list", {" tmp_speed_limit:3|4"});
  ok({"tmp_qos_xz set 10.0.0.9 5 6"});
  holds("hi list", {" tmp_speed_limit:5|6"});
  refused("number out of range", {"tmp_qos_xz set 10.0.0.9 0 -1", "tmp_qos_xz set 10.0.0.9 -1 0"});
  refused("unknown host", {"tmp_qos_xz set 10.0.0.8 5 6", "rssi get 02:00:00:00:00:02"});
  ok({"tmp_qos_xz set 10.0.0.9 0 0"});
  holds("hi list", {" tmp_speed_limit:0|0"});
  shows("rssi get 02:00:00:00:00:01", "rssi: -52 \n");
  load("{" + host + "}");  // another host of that address
  holds("hi list", {" tmp_speed_limit:3|4"});
  refused("unknown host", {"rssi get 02:00:00:00:00:01"});
}

TEST_F(Switches, ControlByDelay) {
  ok({"devmg add wan0 0"});
  shows("spzn get wan0", "en: off\n");
  ok({"spzn set wan0 1 8.8.8.8 3 20 80"});
  load(
      R"({"delays": [{"dev": "wan0", "tmp_ip": "9.9.9.9", "up_max": 1, "down_max": -2, "up_set": 3, "down_set": 4}]})");
  const std::string facts = "tmp_ip:9.9.9.9, up_max:1 down_max:-2 up_set:3 down_set:4\n";
  shows("spzn get wan0", "en: on, srv:8.8.8.8 level:3 dely_tm:20 - 80 \n" + facts);
  refused("switch is neither 0 nor 1", {"spzn set wan0 2 8.8.8.8 3 20 80"});
  refused("bad address", {"spzn set wan0 1 8.8.8.888 3 20 80", "spzn set wan0 1 '' 3 20 80",
                          "spzn set wan0 1 224.0.0.1 3 20 80"});
  refused("bad name", {"spzn set wan0 1 a..b 3 20 80"});
  refused("range ends before it starts", {"spzn set wan0 1 8.8.8.8 3 81 80"});
  refused("unknown interface", {"spzn set wan1 1 8.8.8.8 3 20 80", "spzn set wan1 0", "spzn get wan1"});
  ok({"spzn set wan0 1 a.server 4 80 80"});
  shows("spzn get wan0", "en: on, srv:a.server level:4 dely_tm:80 - 80 \n" + facts);
  insert(2, 64, "qos_delay SELECT 'x' || i, 0, 0, 0, 0, '', 0");
  refused("table full", {"spzn set lo 0"});
  ok({"devmg del wan0", "devmg add wan0 0"});
  shows("spzn get wan0", "en: off\n");  // went with the interface
}

TEST_F(Switches, Igmp) {
  shows("igmp mode get", "\nmode:0\nips:\n");
  shows("igmp mode set 2 224.0.0.251,10.0.0.1-10.0.0.9", "\nmode:2\nips:224.0.0.251,10.0.0.1-10.0.0.9,\n");
  refused("bad address", {"igmp mode set 1 10.0.0.1,x"});
  refused("range ends before it starts", {"igmp mode set 1 10.0.0.9-10.0.0.1"});
  refused("number out of range", {"igmp mode set -1 ''"});
  shows("igmp mode get", "\nmode:2\nips:224.0.0.251,10.0.0.1-10.0.0.9,\n");
  refused("switch is neither 0 nor 1", {"igmp debug 2"});
  ok({"igmp debug 1"});
  begins("errinfo 10", "igmp: debug 1, mode 2, 2 ranges\n");
  shows("igmp mode set 0 ''", "\nmode:0\nips:\n");

  refused("unknown line", {"igmp show 0"});
  ok({"devmg add nowhere0 0", "devmg wandev nowhere0"});
  shows("igmp show 0", "\ndev:nowhere0 num:0\n");
  // A group of one interface alone, whose name leaves no blank in front of the colon behind it.
  const std::string shown = in_own_network(
      "ip link add fifteen-letters type bridge; ip link set fifteen-letters up;"
      "ip addr add 239.1.2.3/32 dev fifteen-letters autojoin;"
      "for dev in fifteen-letters wan0; do " VEK_BINARY " devmg add $dev 0; " VEK_BINARY
      " devmg wandev $dev; done; " VEK_BINARY " igmp show 1; " VEK_BINARY " igmp show 2");
  if (shown.empty()) GTEST_SKIP() << "no network of its own here";
  const size_t other = shown.find("\ndev:wan0 num:");
  EXPECT_NE(shown.substr(0, other).find("\n239.1.2.3 users:1\n"), shown.npos) << shown;
  EXPECT_NE(shown.find("\n224.0.0.1 users:1\n", other), shown.npos) << shown;
  EXPECT_EQ(shown.find("239.1.2.3", other), shown.npos) << shown;
}

TEST_F(Switches, ListenersLeaveTheirSlots) {
  const std::string own = std::to_string(getpid());
  const auto slots = [](const std::string& first, const std::string& second) {
    begins("vek_netlink list", "pid:1 enable:" + first + "\npid:2 enable:" + second + "\npid:3 enable:0\n");
  };
  // The shell's process is gone when it has been registered.
  const std::string gone = run({"/bin/sh", "-c", VEK_BINARY " vek_netlink register $$ >&2; echo $$"}).out;
  ok({"vek_netlink register " + own, "vek_netlink register " + own});
  slots(own, "0");
  refused("no such entry", {"vek_netlink unregister " + gone, "vek_netlink unregister 0"});
  refused("not running", {"vek_netlink register " + gone, "vek_netlink register x"});
  ok({"vek_netlink register 1"});
  slots(own, "1");
  sql("UPDATE netlink_listener SET start = start + 1 WHERE pid = 1");  // another process has its number
  slots(own, "0");
  sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 15) "
      "INSERT OR REPLACE INTO netlink_listener SELECT i, pid, start, boot FROM netlink_listener, n WHERE "
      "slot = 0");
  refused("table full", {"vek_netlink register 1"});
}

}  // namespace
