// Limits on connections and attack defence of the host library.
#include "host.h"

namespace {

class Limits : public HostTest {};

TEST_F(Limits, RulesStandOnceInTheirTable) {
  ok({"ctrule add ct r 10.0.0.1,10.1.0.0/16 tcp 200", "ctrule add ddos r 5>7 udp_ipport 50 10",
      "ctrule add ct s 5-9 all 2147483647"});
  const std::string header = "name  prot  max  tm group\n\n";
  const std::string s = "s   all  2147483647  0  5-9,\n";
  refused("already there", {"ctrule add ct r 6 udp 1"});
  shows("ctrule list ct", "num: 2\n" + header + "r   tcp  200  0  10.0.0.1,10.1.0.0-10.1.255.255,\n" + s);
  ok({"ctrule del ct r"});
  refused("no such rule", {"ctrule del ct r"});
  refused("number out of range",
          {"ctrule add ct t 5 all 0", "ctrule add ct t 5 all many", "ctrule add ct t 5 all -1"});
  refused("bad time", {"ctrule add ddos t 5 all 1 -1", "ctrule defset 1 2 0 4 5 6 7 8 9 1 2 3 4 5 6"});
  refused("empty list", {"ctrule add ct t '' all 1", "ctrule add ct t ::1 all 1"});
  refused("bad list", {"ctrule add ct t desks all 1"});
  refused("bad address", {"ctrule add ct t 10.0.0.300 all 1"});
  refused("bad name", {"ctrule add ct '' 5 all 1"});
  shows("ctrule list ct", "num: 1\n" + header + s);
  shows("ctrule list ddos", "num: 1\n" + header + "r   udp_ipport  50  10  5,\n");
  insert(1, 100, "limit_rule (type, name, record) SELECT 1, i, zeroblob(400)");
  refused("table full", {"ctrule add ct t {1,}*100 all 1"});

  ok({"ctrule defset 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21"});
  refused("number out of range", {"ctrule defset -1 2 3 4 5 6 7 8 9 10 11 12 13 14 15"});
  holds("ctrule defget",
        {"all: ct_max:1,ddos_max:2,ddos_time:3\n", "udp_ipport: ct_max:19,ddos_max:20,ddos_time:21\n"});
}

TEST_F(Limits, DefenceIsSetAndReadBack) {
  ok({"ddos_fy set 1 0 0 0 0 0 00:00:00:00:00:00", "ddos_fy mac_set 020000000001,020000000002",
      "ddos mac_set 020000000003"});
  refused("switch is neither 0 nor 1", {"ddos_fy set 2 0 0 0 0 0 020000000001", "ddos wan_attack set 2 1"});
  refused("bad MAC address", {"ddos_fy set 1 0 0 0 0 0 010000000001", "ddos_fy mac_set ffffffffffff"});
  shows("ddos_fy mac_get", "cnt:2\n02:00:00:00:00:01\n02:00:00:00:00:02\n\n");
  shows("ddos mac_get", "cnt:1\n02:00:00:00:00:03\n\n");
  shows("ddos wan_attack set 1 500", "en:1,limit:500\n");
  refused("number out of range",
          {"ddos wan_attack set 1 -1", "ddos lan_protect_set 1 '' '' 0 '' -1 0 0 0 0"});
  shows("ddos wan_attack get", "en:1,limit:500\n");

  begins("ddos lan_protect_get", "en:0\nsrc_area:\nsrc_addr:\ntype:0\n");
  ok({"ddos lan_protect_set 1 1-3 10.0.0.1,fd00::1 2 10.0.0.1 4 5 6 1 7"});
  refused("bad address", {"ddos lan_protect_set 1 '' '' 0 fd00::1x 0 0 0 0 0"});
  shows("ddos lan_protect_get",
        "en:1\nsrc_area:1-3,\nsrc_addr:10.0.0.1,fd00::1,\ntype:2\nexclude_addr:10.0.0.1,\nmax_tcp_conns:4\n"
        "max_pkt_count:5\ndefen_time:6\nlog:1\nlittle_len:7\n");
}

TEST_F(Limits, ProfilesAreSetByHalves) {
  const std::string enable = " 1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 1";
  ok({"devmg add wan0 0", "devmg add wan1 0", "ddos protect_set enable p wan0" + enable,
      "ddos protect_set rate p wan0 1 0 5 1 2 3 4 5 6,7 8", "ddos protect_set enable q wan1" + enable,
      "ddos protect_set enable p wan0" + enable});
  refused("already there", {"ddos protect_set enable p wan1" + enable});
  refused("unknown interface", {"ddos protect_set enable p wan9" + enable, "ddos protect_dev_get wan9"});
  refused("bad name", {"ddos protect_set enable '' wan0" + enable});
  refused("number out of range", {"ddos protect_set rate p wan0 1 0 5 9 2 3 4 5 6x 8"});
  refused("bad time", {"ddos protect_set rate p wan0 1 0 5 9 2 3 4 5 6,-1 8"});
  refused("bad list", {"ddos protect_set rate p wan0 1 0 all 9 2 3 4 5 6 8"});
  refused("switch is neither 0 nor 1", {"ddos protect_set rate p wan0 2 0 5 9 2 3 4 5 6 8"});
  load(R"({"profiles": {"p": 77}})");
  holds("ddos protect_dev_get wan0",
        {"name:p, log:1, block:0, count:77\nd_ip_num:1, d_ip_list: 5,s_area_num:0,", "\tunknow_id  en:1\n",
         "\tTearDrop  en:0\n", "\tTcpFin  en:1\n", "\tARP  max:1  time:0\n", "\tSYN_src  max:6  time:7\n"});
  ok({"ddos protect_clear p", "ddos protect_del q"});
  refused("no such entry", {"ddos protect_clear q", "ddos protect_del q", "ddos protect_dev_get wan1"});
  ok({"ddos protect_set rate p wan1 0 0 '' 1 2 3 4 5 6 8"});  // goes over to another device
  begins("ddos protect_dev_get wan1",
         "name:p, log:0, block:0, count:0\nd_ip_num:0, d_ip_list: s_area_num:0,");
  insert(1, 10, "protect_profile (name, dev, record) SELECT i, 'x' || i, zeroblob(10200)");
  refused("table full", {"ddos protect_set rate p wan1 0 0 {1,}*300 1 2 3 4 5 6 8"});
  ok({"ddos protect_delall", "ddos protect_set enable p wan1" + enable, "devmg del wan1"});
  shows("ddos protect_list", "ddos wan protect list num:0\n");
}

}  // namespace
