// The PPPoE server with its groups, PPPoE bridging and the PPP fast path.
#include "host.h"

namespace {

class Pppoe : public HostTest {
 protected:
  Pppoe() { ok({"devmg add lan0 250", "devmg add wan0 0", "devmg add ppp0 0"}); }
};

const std::string kNoServer =
    "en: 0 dev:   srv_ip: 0.0.0.0 start_ip: 0.0.0.0 end_ip:0.0.0.0 netmask:0.0.0.0\n";
const std::string kNoOptions =
    " dns: \n acname:  any_acname:0  check_tm: 0 check_max: 0\n"
    " pap: 0 chap:0  mschap:0 mschap2:0 \n rcv_padi:0 send_pado:0  any_user:0\n";

TEST_F(Pppoe, KeepsBothHalvesOfTheServer) {
  const std::string server =
      "en: 1 dev: lan0  srv_ip: 10.1.0.1 start_ip: 10.1.0.1 end_ip:10.1.255.254 netmask:255.255.0.0\n";
  const std::string options =
      " dns: 9.9.9.9,\n acname: an ac any_acname:1  check_tm: 30 check_max: 5\n"
      " pap: 1 chap:0  mschap:1 mschap2:0 \n rcv_padi:0 send_pado:0  any_user:1\n";
  shows("pppoe show", kNoServer + kNoOptions);
  for (int i = 0; i < 2; ++i) ok({"pppoe set_base on lan0 10.1.0.1 255.255.0.0 1"});
  shows("pppoe show", server + kNoOptions);
  ok({"pppoe set_opt 'an ac' 0 9.9.9.9 1 30 5 1 0 1 0 on"});
  refused("unknown interface", {"pppoe set_base on lan9 10.1.0.1 255.255.0.0 1"});
  refused(
      "bad address",
      {"pppoe set_base on lan0 127.0.0.1 255.255.0.0 1", "pppoe set_base on lan0 10.1.0.0 255.255.0.0 1",
       "pppoe set_base on lan0 10.1.255.255 255.255.0.0 1", "pppoe set_opt ac 224.0.0.1 0 0 0 0 0 0 0 0 on"});
  refused("bad mask", {"pppoe set_base on lan0 10.1.0.1 255.0.255.0 1",
                       "pppoe set_base on lan0 10.1.0.1 255.255.255.254 1"});
  refused("control character in a text", {"pppoe set_opt \x1b[2J 0 0 0 0 0 0 0 0 0 on"});
  refused("number out of range", {"pppoe set_opt ac 0 0 0 -1 0 0 0 0 0 on"});
  refused("switch is neither 0 nor 1", {"pppoe set_opt ac 0 0 0 0 0 0 0 2 0 on"});
  shows("pppoe show", server + options);
  shows("pppoe devmg set lan0 1 on", "ok\n");
  refused("switch is neither 0 nor 1", {"pppoe devmg set lan0 2 on"});
  refused("unknown interface", {"pppoe devmg get lan9"});
  shows("pppoe devmg get lan0", "en: 1 only: 1 \n");
  // The base settings and the interface's own go with it.
  ok({"devmg del lan0", "devmg add lan0 250"});
  shows("pppoe show", kNoServer + options);
  shows("pppoe devmg get lan0", "en: 0 only: 0 \n");
}

TEST_F(Pppoe, GroupsHaveNetworksOfTheirOwn) {
  ok({"pppoe_group add east 10.1.0.1 255.255.0.0 1.1.1.1,10.1.0.2 1", "pppoe_group speed east 100 200",
      "pppoe_group add west 10.2.0.0 255.255.0.0 0 0"});
  const std::string west = "west ip[10.2.0.0-255.255.0.0] up[0] down[0] user[0] dns[0.0.0.0,0.0.0.0]\n";
  refused("already there", {"pppoe_group add east 10.9.0.1 255.255.0.0 0 0"});
  refused("overlaps another",
          {"pppoe_group add north 10.2.7.0 255.255.255.0 0 0", "pppoe_group add north 10.0.0.0 254.0.0.0 0 0",
           "pppoe_group mod east 10.2.9.9 255.255.255.252 0 0"});
  refused("bad name", {"pppoe_group add '' 10.9.0.1 255.255.0.0 0 0"});
  refused("control character in a text", {"pppoe_group add \x7f 10.9.0.1 255.255.0.0 0 0"});
  refused("bad address", {"pppoe_group add north 10.9.0 255.255.0.0 0 0",
                          "pppoe_group add north 10.9.0.1 255.255.0.0 127.0.0.1 0"});
  refused("bad mask",
          {"pppoe_group add north 10.9.0.1 16 0 0", "pppoe_group mod east 10.9.0.1 255.255.255.255 0 0"});
  refused("number out of range", {"pppoe_group speed east 0 2147483648"});
  refused("unknown group", {"pppoe_group mod north 10.9.0.1 255.255.0.0 0 0", "pppoe_group speed north 1 2",
                            "pppoe_group del north", "pppoe_group debug north"});
  shows(
      "pppoe_group list",
      "num:2\neast ip[10.1.0.1-255.255.0.0] up[100] down[200] user[0] dns[1.1.1.1,10.1.0.2]\n" + west + "\n");
  ok({"pppoe_group mod east 10.1.4.1 255.255.255.0 10.1.4.4 1"});  // within its own: the limits stay
  shows("pppoe_group list",
        "num:2\neast ip[10.1.4.1-255.255.255.0] up[100] down[200] user[0] dns[10.1.4.4,0.0.0.0]\n" + west +
            "\n");
  ok({"pppoe_group del east", "pppoe_group delall", "pppoe_group delall"});
  shows("pppoe_group list", "num:0\n\n");
  insert(1, 1024, "pppoe_group SELECT i, 167772160 + i * 4, 4294967292, 0, 0, 0, 0, 0");
  refused("table full", {"pppoe_group add north 11.0.0.0 255.255.0.0 0 0"});
}

TEST_F(Pppoe, ReportsItsPoolsAndSessions) {
  shows("pppoe debug set 1 0", "ok\n");
  refused("switch is neither 0 nor 1", {"pppoe debug set 1 2"});
  ok({"pppoe set_base on lan0 10.1.0.1 255.255.255.0 1",
      "pppoe set_opt ac 10.1.0.2 10.1.0.4 0 0 0 0 0 0 0 off",
      "pppoe_group add east 10.2.0.0 255.255.0.0 10.1.0.2 1"});
  load(R"({"accounts": [{"name": "a", "pppoe": 1, "sessions": [
    {"ip": "10.1.0.11", "pppoe": 1}, {"ip": "10.1.0.10", "pppoe": 1}, {"ip": "10.1.0.20", "pppoe": 1},
    {"ip": "10.2.0.9", "pppoe": 1}, {"ip": "10.1.0.99"}]}]})");
  shows("pppoe debug get",
        " en:1, log_en:0\n\n pool_num:1\n10.1.0.1-10.1.0.254\n\n bl_num:2\n10.1.0.1-10.1.0.2\n"
        "10.1.0.4-10.1.0.4\n\n ipused_num:2\n10.1.0.10-10.1.0.11\n10.1.0.20-10.1.0.20\n\n session_num:4\n"
        "10.1.0.10,10.1.0.11,10.1.0.20,10.2.0.9,");
  shows("pppoe_group debug east",
        "\n pool_num:1\n10.2.0.1-10.2.255.254\n\n bl_num:0\n\n ipused_num:1\n10.2.0.9-10.2.0.9\n");
  begins("pppoe_group list", "num:1\neast ip[10.2.0.0-255.255.0.0] up[0] down[0] user[1] ");
}

TEST_F(Pppoe, ProbesADevice) {
  const auto shown = [](const std::string& enable, const std::string& dev, const std::string& found) {
    shows("pppoe probe_status",
          "enable:" + enable + "\r\nprobe_dev_name:" + dev + "\r\nprobe_ppppoe_status:" + found + "\r\n");
  };
  const std::string nothing = "0\r\nprobe_username:\r\nprobe_userpwd:\r\n0:0:0:0";
  shown("0", "", nothing);
  refused("not running", {"pppoe stop_probe"});
  refused("unknown interface", {"pppoe start_probe wan9"});
  ok({"pppoe start_probe lan0", "pppoe start_probe wan0", "pppoe time_change 5"});
  shown("1", "wan0", nothing);
  load(R"({"pppoe": {"rcv_padi": 4000000000, "send_pado": 7, "probes": [
    {"dev": "wan0", "status": 2, "username": "u", "userpwd": "p", "numbers_1": -1, "numbers_4": 4}]}})");
  ok({"pppoe stop_probe"});
  shown("0", "wan0", "2\r\nprobe_username:u\r\nprobe_userpwd:p\r\n-1:0:0:4");
  EXPECT_NE(vek("pppoe show").out.find(" rcv_padi:4000000000 send_pado:7 "), std::string::npos);
  EXPECT_EQ(run({VEK_LAB, "reset"}).status, 0);
  shown("0", "wan0", nothing);
  shows("pppoe show", kNoServer + kNoOptions);
  ok({"devmg del wan0"});
  shown("0", "", nothing);
}

TEST_F(Pppoe, BridgesDevices) {
  const std::string nothing = "en:0\n en_more:0\n time:0\n ,hi_jh:0\nlan_dev:\n";
  const auto out = [](const std::string& first, const std::string& second) {
    return "i:1,name:" + first + "\ni:2,name:" + second + "\n\n";
  };
  const std::string none = "none,vlan:0-0,vlan2:0-0,state:0,times:0";
  shows("pppoe_br get", nothing + out(none, none));
  refused("no such entry", {"pppoe_br more_get", "pppoe_br more_del wan0 1"});
  const std::string set = "pppoe_br set 1 0 30 7 'lan0 ppp0' ";
  ok({set + "none,wan0 0,100-200.7 wan0:9,wan0:9,ppp0:0", "pppoe_br more_add wan0 65535",
      "pppoe_br more_get"});
  const std::string kept = "en:1\n en_more:0\n time:30\n ,hi_jh:7\nlan_dev:lan0 ppp0 \n";
  const std::string wan = "wan0,vlan:100-200,vlan2:7-0,state:0,times:0";
  shows("pppoe_br get", kept + out(none, wan));
  begins("errinfo 41", "more wan: ppp0:0,wan0:9,wan0:65535\n");

  refused("unknown interface", {"pppoe_br set 1 0 30 7 'lan0 lan9' wan0 0 ''", set + "wan0,wan9 0 ''",
                                set + "wan0 1,2 ''", set + "wan0 1 wan9:1", "pppoe_br more_add wan9 1"});
  refused("in use", {set + "lan0 1 ''"});
  refused("number out of range", {"pppoe_br set 1 0 -1 7 lan0 wan0 0 ''"});
  refused("bad VLAN id", {set + "wan0 4095 ''", set + "wan0 100-4095 ''", set + "wan0 5000-200 ''",
                          set + "wan0 .7 ''", set + "wan0 1.4095 ''"});
  refused("range ends before it starts", {set + "wan0 200-100 ''"});
  shows("pppoe_br get", kept + out(none, wan));

  load(R"({"pppoe_br": {"out": [{"name": "wan0", "state": 1, "times": 3}], "macs": [
    {"lan_mac": "02:00:00:00:00:02", "wan_mac": "02:00:00:00:00:03", "in_dev": "wan0", "flag": 1, "changed": 2,
     "init_wanid": 3, "set_wanid": 4, "vlanid": 5, "vlanid2": 6, "ltm": 7},
    {"lan_mac": "02:00:00:00:00:01", "wan_mac": "02:00:00:00:00:04"}]}})");
  begins("pppoe_br get",
         kept + "i:1,name:" + none + "\ni:2,name:wan0,vlan:100-200,vlan2:7-0,state:1,times:3\n");
  begins("pppoe_br mac_dev_list", "num: 2\nlan_mac:02:00:00:00:00:01, wan_mac:02:00:00:00:00:04, in_dev:, ");
  shows("pppoe_br vlanid_list", "num: 1\nmac:02:00:00:00:00:02,id:5,dev:2\n\n");
  EXPECT_EQ(run({VEK_LAB, "reset"}).status, 0);
  shows("pppoe_br vlanid_list", "num: 0\n\n");

  ok({"devmg del wan0"});  // takes its places along
  shows("pppoe_br get", kept + out(none, none));
  ok({"pppoe_br more_get"});
  begins("errinfo 41", "more wan: ppp0:0\n");
  ok({"pppoe_br more_del ppp0 0", "pppoe_br more_delall"});
  insert(1, 254, "pppoe_br_more SELECT 'lan0', i");
  ok({"pppoe_br more_add lan0 254"});
  refused("table full", {"pppoe_br more_add lan0 255"});
}

TEST_F(Pppoe, BindsSessionsToRealDevices) {
  const std::string bound = "ppp_dev: ppp0  real_dev:wan0 session_id:7";
  const std::string none =
      " int:0\ndst: 00:00:00:00:00:00\nsrc: 00:00:00:00:00:00\nproto: 0x0000\nver_type: 0x 0\ncode: 0x00\n"
      "session_id: 0\nproto2: 0x0000\n";
  ok({"devmg add ppp1 0", "ppp_fast set 0 ppp0", "ppp_fast set 1 ppp0 lan0 5", "ppp_fast set 1 ppp0 wan0 7"});
  shows("ppp_fast get wan0", bound + none);
  shows("ppp_fast get ppp0", bound + none);
  refused("no such entry", {"ppp_fast get lan0", "ppp_fast set 0 ppp0 lan0", "ppp_fast set 0 ppp0 wan0 8"});
  refused("in use", {"ppp_fast set 1 ppp1 wan0 7"});
  refused("unknown interface", {"ppp_fast set 1 ppp9 wan0 7", "ppp_fast set 1 ppp0 wan9 7"});
  refused("bad name", {"ppp_fast set 1 ppp0 ppp0 7"});
  refused("number out of range", {"ppp_fast set 1 ppp0 wan0 65536", "ppp_fast set 1 ppp0 wan0 65535"});
  refused("switch is neither 0 nor 1", {"ppp_fast set 2 ppp0"});
  load(R"({"ppp_fast": [{"ppp_dev": "ppp0", "dst": "02:00:00:00:00:01", "src": "02:00:00:00:00:02",
    "ether_type": 34916, "ver_type": 17, "code": 1, "header_session_id": 4711, "length": 9, "protocol": 33,
    "int": 2}]})");
  shows("ppp_fast get wan0", bound +
                                 " int:2\ndst: 02:00:00:00:00:01\nsrc: 02:00:00:00:00:02\nproto: "
                                 "0x8864\nver_type: 0x11\ncode: 0x01\n"
                                 "session_id: 4711\nproto2: 0x0021\n");
  ok({"devmg del wan0", "devmg add wan0 0"});
  refused("no such entry", {"ppp_fast get ppp0"});
  ok({"ppp_fast set 1 ppp0 wan0 7", "ppp_fast set 0 ppp0 wan0 7", "ppp_fast set 0 ppp0"});
  refused("no such entry", {"ppp_fast get wan0"});
}

}  // namespace
