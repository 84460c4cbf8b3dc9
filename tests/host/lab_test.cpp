// vek-lab: scenarios good and bad.
#include "host.h"

namespace {

class Lab : public HostTest {
 protected:
  // A scenario that is wrong changes nothing. What is said of the place and the reason begins with this.
  void refuses_all(const std::string& scenario, const std::string& why) const {
    const std::string before = shown();
    const std::string file = state.file("bad");
    std::ofstream(file) << scenario;
    const RunResult result = run({VEK_LAB, "load", file});
    EXPECT_EQ(result.status, 1) << scenario;
    EXPECT_EQ(shown(), before);
    const std::string start = "vek-lab: " + file + ": " + why;
    EXPECT_EQ(result.err.substr(0, start.size()), start);
  }
  void refuses(const std::string& section, const std::string& content, const std::string& why) const {
    refuses_all("{\"" + section + "\": " + content + "}", "/" + section + why + "\n");
  }

  static std::string shown() { return run({VEK_LAB, "show"}).out; }
  static void reset() { EXPECT_EQ(run({VEK_LAB, "reset"}).status, 0); }
};

TEST_F(Lab, TheOfficeIsLoadedAndReset) {
  for (int i = 0; i < 2; ++i) ASSERT_EQ(run({VEK_LAB, "load", VEK_OFFICE}).err, "");
  EXPECT_EQ(shown(),
            "hosts: 12\nthird: 2\ncounters: 6\nlines: 2\naccounts: 2\nrules: 0\nprofiles: 0\ntypes: 0\n"
            "pppoe: 2\npppoe_br: 2\nppp_fast: 1\naudit: 18\nleases: 4\ndhcp: 1\ndns_cache: 2\n"
            "signals: 4\ndelays: 1\nswitch_ports: 3\nled: on\nwatchdog: not running\n");
  holds("hi ai_list", {"vek_out_id:0,", "vek_out_id:1,"});
  holds("mr list", {"\nwanid:0 ", "\nwanid:1 "});
  shows("user stat accounts", "up:9216K down:86016K \n  ok\n");
  holds("user list", {"pppoe  ddate=2051222400 zup=8192 zdown=62464 login_num=1"});
  // Whatever orders have made of it, it can be loaded again.
  ok({"rule mroute add out 3 0 1 0 0 '' '' '' 0", "devmg landev wan1"});
  ASSERT_EQ(run({VEK_LAB, "load", VEK_OFFICE}).err, "");
  shows("rule mroute list", "num:0\n");
  load(R"({"hosts": [{"ip": "10.0.0.2", "local_mac": "02-00-00-00-00-02"}]})");
  EXPECT_TRUE(shown().starts_with("hosts: 1\nthird: 0\n"));
  EXPECT_EQ(run({VEK_LAB, "hosts", "5"}).status, 0);
  EXPECT_TRUE(shown().starts_with("hosts: 5\nthird: 0\n"));
  reset();
  EXPECT_EQ(shown(),
            "hosts: 0\nthird: 0\ncounters: 0\nlines: 0\naccounts: 0\nrules: 0\nprofiles: 0\ntypes: 0\n"
            "pppoe: 0\npppoe_br: 0\nppp_fast: 0\naudit: 0\nleases: 0\ndhcp: 0\ndns_cache: 0\n"
            "signals: 0\ndelays: 0\nswitch_ports: 0\nled: on\nwatchdog: not running\n");
  shows("user list", "num: 0\n\n");
}

TEST_F(Lab, LinesHaveTheirFactsUntilReset) {
  ok({"devmg add wan0 0", "devmg wandev wan0", "devmg wan_done wan0"});
  const std::string before = vek("mr list").out;
  ok({"devmg add lan0 250"});
  load(R"({"lines": [
    {"dev": "wan9", "up": 1, "hi": 1, "hi_bracket_1": -2, "hi_bracket_2": 3, "ct": 4, "hi_val": 5000000000,
     "ct_val": 6, "qos_up": 7, "qos_down": 8, "false_tm": 4294967295, "trys": 10, "ret_state": 11},
    {"dev": "wan0", "qos_up": 70, "qos_down": 80}]})");
  ok({"mr val 1 1 1"});
  holds("mr list", {"\nwanid:1 ", " hi:1[-2/3]  ct:4 ",
                    " state_v4:1 state_v6:0 val:1 chk_qosval:1 false_tm:4294967295 hi_val:5000000000 "
                    "ct_val:6 qos_val:15 qos_speed:7/8\n",
                    " trys=10 ret_state=11 ", " state_v4:0 ", " qos_val:0 qos_speed:70/80\n"});
  ok({"qos speed_set wan9 1000 2000"});  // who is shaped is not asked what it carries
  holds("mr list", {" qos_val:3000 qos_speed:1000/2000\n"});
  ok({"qos set wan9 off"});
  holds("mr list", {" qos_val:15 qos_speed:7/8\n"});
  const std::string list = vek("mr list").out;
  refuses("lines", R"([{"dev": "wan1"}, {"dev": "lan0"}])", "/1: interface is not a line");
  refuses("lines", R"([{"dev": "wan1"}, {"dev": "wan1"}])", "/1: a second line of this dev");
  refuses("lines", R"([{"dev": "no way"}])", "/0: bad name");
  EXPECT_EQ(vek("mr list").out, list);
  reset();
  EXPECT_EQ(vek("mr list").out, before);
  EXPECT_EQ(vek("devmg list").out.find("wan9"), std::string::npos);
}

TEST_F(Lab, AccountsHaveTheirFactsUntilReset) {
  ok({"user add old pw 1 next next web 0 memo 1 2 dl 0"});
  const std::string before = vek("user list").out;
  load(R"({"accounts": [
    {"name": "old", "pwd": "other", "ddate": 77, "up_bytes": 2048, "down_bytes": 1048576},
    {"name": "new", "pwd": "pw", "gid": 3, "web": 1, "pppoe": 1, "max": 4, "up_speed": 5, "down_speed": 6,
     "mem": "a memo", "sessions": [
       {"ip": "10.0.0.2", "mac": "02:00:00:00:00:02", "up": 1, "down": 2, "send": 3, "recv": 4},
       {"ip": "10.0.0.3", "pppoe": 1}, {"ip": "10.0.0.4"}]}]})");
  holds("user list",
        {"name=old pwd=pw gid=1 ", "  ddate=77 zup=2 zdown=1024 login_num=0 userid=1 mem=memo\n",
         "name=new pwd=pw gid=3 mod_pwd=0 state=0x78 ", " speed up=5 down=6 mode=dl nip nmac pppoe web ",
         " ddate=0 zup=0 zdown=0 login_num=3 userid=2 mem=a memo\n"});
  const std::string loaded = vek("user list").out;
  begins("user name_info new",
         "\nname:new,num:3,login_num:3,web_login_num:2\n"
         "i:0,ip:10.0.0.2,mac:02:00:00:00:00:02,flags:0x00000040\n");
  EXPECT_EQ(vek("rzglapi getonline ip 10.0.0.2").out,
            R"({"ip":"10.0.0.2","mac":"02:00:00:00:00:02","up":"1","down":"2","send":"3","recv":"4"})");
  refuses("accounts", R"([{"name": "a", "web": 1}, {"name": "a"}])", "/1: a second account of this name");
  refuses("accounts", R"([{"name": ""}])", "/0: bad name");
  const std::string mac = R"("mac": "02:00:00:00:00:02")";
  for (const std::string& key : {std::string(R"("ip": "10.0.0.9")"), R"("ip": "10.0.0.8", )" + mac}) {
    refuses("accounts",
            R"([{"name": "a", "web": 1, "sessions": [{"ip": "10.0.0.9", )" + mac + "}, {" + key + "}]}]",
            "/0/sessions/1: the host is logged in already");
  }
  refuses("accounts", R"([{"name": "a", "web": 1, "sessions": [{}]}])",
          R"(/0/sessions/0: neither "ip" nor "mac")");
  shows("user list", loaded);
  reset();
  shows("user list", before);
}

TEST_F(Lab, WhatOrdersHaveDoneStopsNoSecondLoad) {
  const std::string scenario =
      R"({"hosts": [{"ip": "10.0.0.2", "local_mac": "02:00:00:00:00:02"}], "accounts": [{"name": "a", "web": 1,
          "sessions": [{"ip": "10.0.0.2"}, {"ip": "10.0.0.3"}, {"mac": "02:00:00:00:00:04"}]}]})";
  load(scenario);
  const std::string again = "user add a pw 1 next next web 0 mine 1 2 dl 0";
  ok({again, "user del a", again});
  for (const char* login : {"ip 10.0.0.2 0 a", "mac 02:00:00:00:00:04 0"}) {
    shows(std::string("rzglapi login ") + login, R"({"ret":"0"})", 1);
  }
  vek("hi redirct_flag set 10.0.0.2 7");
  for (int i = 0; i < 2; ++i) {
    reset();
    load(scenario);
    ok({again});  // from now on it stays after a reset
  }
  holds("user list", {"login_num=3 ", " mem=mine\n"});
  shows("hi redirct_flag get 10.0.0.2", "ip:10.0.0.2,flag:0\n");
  reset();
  holds("user list", {"num: 1\n", "login_num=0 "});
}

TEST_F(Lab, RulesHaveTheirHitsUntilReset) {
  ok({"devmg add wan0 0", "devmg wandev wan0"});
  for (const char* name : {"all", "voip"}) {
    ok({std::string("rule mroute add ") + name + " 3 0 1 0 0 '' '' '' 0"});
  }
  load(R"({"rules": {"voip": 9000000000}})");
  refuses("rules", R"({"all": 1, "video": 7})", "/video: no such routing rule");
  refuses("profiles", R"({"all": 1})", "/all: no such protection profile");
  refuses("rules", R"({"all": -1})", "/all: a whole number from 0 to 9223372036854775807 is wanted");
  holds("rule mroute hit", {"all                  0\nvoip                 9000000000\n"});
  EXPECT_TRUE(shown().find("rules: 1\n") != std::string::npos);
  reset();
  holds("rule mroute hit", {"all                  0\nvoip                 0\n"});
}

TEST_F(Lab, SaysWhatIsWrongAndWhere) {
  const std::string first = R"({"ip": "10.0.0.2", "local_mac": "02:00:00:00:00:02"})";
  load(R"({"about": "one host", "hosts": [)" + first + "]}");
  const auto host = [&](const std::string& members, const std::string& why) {
    refuses("hosts", "[" + first + ", {" + members + "}]", "/1" + why);
  };
  const std::string good = R"("ip": "10.0.0.3", "local_mac": "02:00:00:00:00:03", )";
  const std::string port = ": a whole number from 0 to 65535 is wanted";
  host(good + R"("vlanid": 65536)", "/vlanid" + port);
  host(good + R"("vlanid": 1.5)", "/vlanid" + port);
  host(good + R"("connections": [{"far_ip": "::1", "protocol": 6, "in_port": 65536}])",
       "/connections/0/in_port" + port);
  host(good + R"("block": -1)", "/block: a whole number from 0 to 255 is wanted");
  host(good + R"("speed_limit_up": 2147483648)",
       "/speed_limit_up: a whole number from -2147483648 to 2147483647 is wanted");
  host(good + R"("hostname": 7)", "/hostname: a text is wanted");
  host(good + R"("ssid": ")" + std::string(36, 's') + "\"", "/ssid: more than 35 characters");
  host(good + R"("ssid": "a\u0000b")", "/ssid: a control character in the text");
  host(good + R"("colour": "red")", "/colour: unknown member");
  host(good + R"("real_mac": "02:00")", "/real_mac: no MAC address");
  host(good + R"("arp_ip": "fd00::1")", "/arp_ip: no IPv4 address");
  host(good + R"("connections": {})", "/connections: a list is wanted");
  host(R"("ip": "desk", "local_mac": "02:00:00:00:00:03")", "/ip: no IP address");
  host(R"("ip": "10.0.0.3")", ": no \"local_mac\"");
  host(R"("ip": "10.0.0.2", "local_mac": "02:00:00:00:00:03")", ": a second host of this ip");
  refuses("third", "[7]", "/0: an object is wanted");
  refuses("counters", R"({"host_num": 7})", "/host_num: unknown counter");
  refuses("hots", "[]", ": unknown section");
  refuses_all("[]", "/: an object is wanted\n");
  refuses_all("{\"hosts\": [\n  {\"ip\" 7}]}", "parse error at line 2, column 9: ");
  refuses_all("", "parse error at line 1, column 1: ");
}

TEST_F(Lab, Words) {
  const RunResult full = run({"/bin/sh", "-c", "vek-lab show > /dev/full"});
  EXPECT_EQ(full.err, "vek-lab: cannot write: No space left on device\n");
  EXPECT_EQ(full.status, 1);
  const auto refuses = [](const std::vector<std::string>& words, const std::string& why) {
    std::vector<std::string> argv = {VEK_LAB};
    argv.insert(argv.end(), words.begin(), words.end());
    EXPECT_EQ(run(argv).err.substr(0, why.size()), why);
    EXPECT_EQ(run(argv).status, 1);
  };
  refuses({"load", state.file("none")}, "vek-lab: " + state.file("none") + ": cannot be read\n");
  for (const char* count : {"8193", "-1", "12x", ""}) {
    refuses({"hosts", count}, "vek-lab: the number of hosts is 0 to 8192\n");
  }
  for (const char* words : {"", "load", "reset x"}) refuses(split(words), "vek-lab load FILE\n");
}

}  // namespace
