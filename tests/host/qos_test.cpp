// The QoS engine: settings of devices and of the engine, and rates drawn from Linux's counters.
#include "host.h"

namespace {

class Qos : public HostTest {
 protected:
  Qos() { ok({"devmg add wan0 0", "devmg wandev wan0"}); }

  // What get shows of wan0, without the labels.
  static std::string settings() {
    std::istringstream words(vek("qos get wan0").out);
    std::string values;
    for (std::string word; words >> word;) {
      if (!word.ends_with(':')) values += word.substr(word.find('=') + 1) + " ";
    }
    return values;
  }
};

const std::string kNeverSet = "0 hi 0 0 0 0 0 0 0 0 0 0 0 0 ";

TEST_F(Qos, DevicesKeepTheirSettings) {
  EXPECT_EQ(settings(), kNeverSet);
  ok({"qos set wan0 on type 4000000000 2 3 4 5 6 7 8 9 10 11 12"});
  EXPECT_EQ(settings(), "1 type 4000000000 2 3 4 5 6 7 8 9 10 11 12 ");
  ok({"qos speed_set wan0 100 200"});
  EXPECT_EQ(settings(), "1 hi 100 200 75 85 1000 2000 5 10 4 1500 8 16 ");
  begins("qos state wan0", "dev:wan0, iptype:0\n  sp_max[up]: 100\n  sp_max[down]: 200\n");
  ok({"qos set wan0 off"});
  EXPECT_EQ(settings(), kNeverSet);

  shows("qos noqueue_sp_val set wan0 99 1", "devname wan0 sp_val up 99 down 1\n");
  refused("number out of range", {"qos noqueue_sp_val set wan0 1 100"});
  shows("qos noqueue_sp_val get wan0", "devname wan0 sp_val up 99 down 1\n");
  shows("qos noqueue_sp_val get lo", "devname lo sp_val up 0 down 0\n");

  ok({"qos speed_set wan0 100 200", "devmg del wan0"});
  refused("unknown interface", {"qos get wan0"});
  ok({"devmg add wan0 0"});
  EXPECT_EQ(settings(), kNeverSet);  // went with the interface
  shows("qos noqueue_sp_val get wan0", "devname wan0 sp_val up 0 down 0\n");
}

TEST_F(Qos, RefusesUnknownDevicesAndLines) {
  refused("unknown interface",
          {"qos set nowhere off", "qos speed_set nowhere 1 2", "qos get nowhere", "qos get ../lo",
           "qos noqueue_sp_val get nowhere", "qos noqueue_sp_val set nowhere 1 2", "qos noqueue_sp_val get"});
  EXPECT_EQ(vek("qos state nowhere").err, "err:unknown interface \n");
  refused("unknown line", {"qos single_ct get 1", "qos single_ct set 1 2 3", "qos ws_sp_wan_val get 1",
                           "qos ws_sp_wan_val set 1 2", "qos ws_sp_wan_val get 70000"});
  insert(1, 64, "qos_device SELECT 'x' || i, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0");
  refused("table full", {"qos speed_set wan0 1 2"});
}

TEST_F(Qos, KeepsGlobalSettings) {
  ok({"qos ext_set 3 4 5 6 7 8 9 10 11 12 4000000000"});
  shows("qos ext_get",
        "hi_up:3  hi_down:4\nct_num1:5  ct_num2:6\ntcpwin:7\nct_udp_num1:8  ct_udp_num2:9\n"
        "hi_wait_tm2:10  ct_wait_tm2:11\nsqos_limit_num:12  sqos_ct_limit_num:-294967296\n");
  const std::string matrix = "H/H  1\nH/N  2\nH/L  3\nN/H  4\nN/N  5\nN/L  6\nL/H  7\nL/N  8\nL/L  9\n";
  ok({"devmg add wan1 0", "devmg wandev wan1"});
  for (const auto& [words, out] :
       {std::pair<std::string, std::string>("queue_wait set 1 2 3 4 5 6 7 8 9", matrix),
        {"queue_wait get", matrix},
        {"ggvpn set 7", "limit:7,up:0,down:0\n"},
        {"ggvpn get", "limit:7,up:0,down:0\n"},
        {"speed_limit get", "speed limit on\n"},
        {"speed_limit set off", "speed limit off\n"},
        {"speed_limit get", "speed limit off\n"},
        {"single_ct set 0 2 3", "up:2,down:3\n"},
        {"single_ct get 0", "up:2,down:3\n"},
        {"ws_sp_wan_val get 1", "sp_val 0\n"},
        {"ws_sp_val set 50", "sp_val 50\n"},
        {"ws_sp_wan_val set 1 99", "sp_val 99\n"},
        {"ws_sp_wan_val get 0", "sp_val 50\n"},
        {"ws_sp_wan_val get 1", "sp_val 99\n"},
        {"ip_rule_list", "num: 0\n"}}) {
    shows("qos " + words, out);
  }
  refused("number out of range", {"qos ws_sp_wan_val set 1 100", "qos ws_sp_val set 100"});
  shows("qos ws_sp_val get", "sp_val 50\n");
  ok({"devmg del wan1", "devmg add wan1 0", "devmg wandev wan1"});
  shows("qos ws_sp_wan_val get 1", "sp_val 50\n");  // its own went with the line
  shows("qos devinfo",
        "skb_head:0 skb_data:0\ndev_skb[ 0, 0 ]\niface [up,down] devname \n0 [ 0 , 0 ] wan0 \n"
        "1 [ 0 , 0 ] wan1 \nend \n");
  ok({"qos level 3", "qos speed_set wan0 1 2", "qos debug"});
  begins("errinfo 14", "qos: level 3, 1 devices shaped, 0 devices read\n");
}

TEST_F(Qos, RatesComeFromTwoReadingsOfLinuxsCounters) {
  const auto lo = [](const std::string& label) {
    return number_behind(vek("qos state lo").out, "\n  " + label + ": ");
  };
  EXPECT_EQ(lo("sp[up]"), 0);
  const long before = lo("count[up]");
  // To nobody over the loopback, 1024 bytes each; every other one may be lost to the answer that nobody is
  // there. The last reading was taken 20 s ago, when nothing had been sent yet.
  run({"/bin/bash", "-c",
       "exec 3>/dev/udp/127.0.0.1/9; printf -v kib %1024s; for i in {1..8000}; do echo -n \"$kib\" >&3; "
       "done"});
  sql("UPDATE qos_reading SET taken_ms = taken_ms - 20000");
  const long rate = lo("sp[up]");
  EXPECT_GT(rate, 100);
  EXPECT_LT(rate, 1000);
  EXPECT_GE(lo("count[up]"), before + 4000);
  EXPECT_GT(lo("count_skb[down]"), 4000);

  sql("UPDATE qos_reading SET taken_ms = taken_ms - 2000, up = up + 1000000000");
  EXPECT_EQ(lo("sp[up]"), 0);  // the counter began anew
  sql("UPDATE qos_reading SET taken_ms = taken_ms + 1000000000");
  EXPECT_EQ(lo("sp[down]"), 0);  // so did the clock
  sql("UPDATE qos_reading SET taken_ms = taken_ms - 2000, down = 0");
  EXPECT_GT(lo("sp[down]"), 0);
  ok({"qos sb_tj_init"});
  EXPECT_EQ(lo("sp[down]"), 0);
}

}  // namespace
