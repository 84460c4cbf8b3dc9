// vek-lab: scenarios good and bad.
#include "host.h"

namespace {

class Lab : public HostTest {
 protected:
  // Loads a scenario that is wrong. What it says of the place and the reason; nothing must have changed.
  std::string refusal_of(const std::string& scenario) const {
    const std::string before = shown();
    const std::string file = state.file("bad");
    std::ofstream(file) << scenario;
    const RunResult result = run({VEK_LAB, "load", file});
    EXPECT_EQ(result.status, 1) << scenario;
    EXPECT_EQ(shown(), before);
    const std::string start = "vek-lab: " + file + ": ";
    EXPECT_TRUE(result.err.starts_with(start)) << result.err;
    return result.err.substr(std::min(start.size(), result.err.size()));
  }

  static std::string shown() { return run({VEK_LAB, "show"}).out; }
};

constexpr const char* kNothing = "hosts: 0\nthird: 0\ncounters: 0\nlines: 0\naccounts: 0\nrules: 0\naudit: 0\n";

TEST_F(Lab, TheOfficeIsLoadedAndReset) {
  for (int i = 0; i < 2; ++i) ASSERT_EQ(run({VEK_LAB, "load", VEK_OFFICE}).err, "");
  EXPECT_EQ(shown(), "hosts: 12\nthird: 2\ncounters: 6\nlines: 2\naccounts: 2\nrules: 0\naudit: 18\n");
  const std::string list = vek("hi ai_list").out;
  const std::string lines = vek("mr list").out;
  for (const char* line : {"0", "1"}) {
    EXPECT_NE(list.find(std::string("vek_out_id:") + line + ","), list.npos) << line;
    EXPECT_NE(lines.find(std::string("\nwanid:") + line + " "), lines.npos) << line;
  }
  shows("user stat accounts", "up:9216K down:86016K \n  ok\n");
  EXPECT_NE(vek("user list").out.find("pppoe  ddate=2051222400 zup=8192 zdown=62464 login_num=0"), list.npos);
  load(R"({"hosts": [{"ip": "10.0.0.2", "local_mac": "02-00-00-00-00-02"}]})");
  EXPECT_TRUE(shown().starts_with("hosts: 1\nthird: 0\n"));
  EXPECT_EQ(run({VEK_LAB, "hosts", "5"}).status, 0);
  EXPECT_TRUE(shown().starts_with("hosts: 5\nthird: 0\n"));
  EXPECT_EQ(run({VEK_LAB, "reset"}).status, 0);
  EXPECT_EQ(shown(), kNothing);
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
  std::string list = vek("mr list").out;
  for (const char* text : {"\nwanid:1 ", " hi:1[-2/3]  ct:4 ",
                           " state_v4:1 state_v6:0 val:1 chk_qosval:1 "
                           "false_tm:4294967295 hi_val:5000000000 ct_val:6 qos_val:15 qos_speed:7/8\n",
                           " trys=10 ret_state=11 ", " state_v4:0 ", " qos_val:0 qos_speed:70/80\n"}) {
    EXPECT_NE(list.find(text), list.npos) << text << list;
  }
  ok({"qos speed_set wan9 1000 2000"});  // who is shaped is not asked what it carries
  list = vek("mr list").out;
  EXPECT_NE(list.find(" qos_val:3000 qos_speed:1000/2000\n"), list.npos) << list;
  EXPECT_EQ(refusal_of(R"({"lines": [{"dev": "wan1"}, {"dev": "lan0"}]})"),
            "/lines/1: interface is not a line\n");
  EXPECT_EQ(refusal_of(R"({"lines": [{"dev": "wan1"}, {"dev": "wan1"}]})"),
            "/lines/1: a second line of this dev\n");
  EXPECT_EQ(refusal_of(R"({"lines": [{"dev": "no way"}]})"), "/lines/0: bad name\n");
  EXPECT_EQ(vek("mr list").out, list);
  EXPECT_EQ(run({VEK_LAB, "reset"}).status, 0);
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
       {"ip": "10.0.0.3", "pppoe": 1}]}]})");
  shows("user list",
        "num: 2\nname=old pwd=pw gid=1 mod_pwd=0 state=0x58 ip=0.0.0.0 -0.0.0.0 \n"
        "  mac=00:00:00:00:00:00 speed up=1 down=2 mode=dl nip nmac web  ddate=77 zup=2 zdown=1024 "
        "login_num=0 userid=1 mem=memo\n\n"
        "name=new pwd=pw gid=3 mod_pwd=0 state=0x78 ip=0.0.0.0 -0.0.0.0 \n"
        "  mac=00:00:00:00:00:00 speed up=5 down=6 mode=dl nip nmac pppoe web  ddate=0 zup=0 zdown=0 "
        "login_num=2 userid=2 mem=a memo\n\n\n");
  shows("user name_info new",
        "\nname:new,num:2,login_num:2,web_login_num:1\n"
        "i:0,ip:10.0.0.2,mac:02:00:00:00:00:02,flags:0x00000040\n"
        "i:1,ip:10.0.0.2,mac:02:00:00:00:00:02,flags:0x00000040\n\n");  // the tool shows the first alone
  EXPECT_EQ(vek("rzglapi getonline ip 10.0.0.2").out,
            R"({"ip":"10.0.0.2","mac":"02:00:00:00:00:02","up":"1","down":"2","send":"3","recv":"4"})");
  const std::string loaded = vek("user list").out;
  EXPECT_EQ(refusal_of(R"({"accounts": [{"name": "a"}, {"name": "a"}]})"),
            "/accounts/1: a second account of this name\n");
  EXPECT_EQ(refusal_of(R"({"accounts": [{"name": ""}]})"), "/accounts/0: bad name\n");
  EXPECT_EQ(
      refusal_of(R"({"accounts": [{"name": "a", "sessions": [{"ip": "10.0.0.9"}, {"ip": "10.0.0.9"}]}]})"),
      "/accounts/0/sessions/1: the host is logged in already\n");
  EXPECT_EQ(vek("user list").out, loaded);
  EXPECT_EQ(run({VEK_LAB, "reset"}).status, 0);
  shows("user list", before);
}

TEST_F(Lab, RulesHaveTheirHitsUntilReset) {
  const auto hits = [](const std::string& of_voip) {
    return "num: 2\nname                hit\nall                  0\nvoip                 " + of_voip + "\n";
  };
  for (const char* name : {"all", "voip"}) {
    run({VEK_BINARY, "rule", "mroute", "add", name, "3", "0", "1", "0", "0", "", "", "", "0"});
  }
  load(R"({"rules": {"voip": 9000000000}})");
  EXPECT_EQ(refusal_of(R"({"rules": {"all": 1, "video": 7}})"), "/rules/video: no such routing rule\n");
  EXPECT_EQ(refusal_of(R"({"rules": {"all": -1}})"),
            "/rules/all: a whole number from 0 to 9223372036854775807 is wanted\n");
  shows("rule mroute hit", hits("9000000000"));
  EXPECT_NE(shown().find("\nrules: 1\n"), std::string::npos);
  EXPECT_EQ(run({VEK_LAB, "reset"}).status, 0);
  shows("rule mroute hit", hits("0"));
}

TEST_F(Lab, SaysWhatIsWrongAndWhere) {
  load(R"({"about": "one host", "hosts": [{"ip": "10.0.0.2", "local_mac": "02:00:00:00:00:02"}]})");
  const std::string good = R"("ip": "10.0.0.3", "local_mac": "02:00:00:00:00:03")";
  const auto host = [&](const std::string& members) {
    return refusal_of(R"({"hosts": [{"ip": "10.0.0.2", "local_mac": "02:00:00:00:00:02"}, {)" + members +
                      "}]}");
  };
  EXPECT_EQ(host(good + R"(, "vlanid": 65536)"),
            "/hosts/1/vlanid: a whole number from 0 to 65535 is wanted\n");
  EXPECT_EQ(host(good + R"(, "vlanid": 1.5)"), "/hosts/1/vlanid: a whole number from 0 to 65535 is wanted\n");
  EXPECT_EQ(host(good + R"(, "block": -1)"), "/hosts/1/block: a whole number from 0 to 255 is wanted\n");
  EXPECT_EQ(host(good + R"(, "speed_limit_up": 2147483648)"),
            "/hosts/1/speed_limit_up: a whole number from -2147483648 to 2147483647 is wanted\n");
  EXPECT_EQ(host(good + R"(, "hostname": 7)"), "/hosts/1/hostname: a text is wanted\n");
  EXPECT_EQ(host(good + R"(, "ssid": ")" + std::string(36, 's') + "\""),
            "/hosts/1/ssid: more than 35 characters\n");
  EXPECT_EQ(host(good + R"(, "ssid": "a\u0000b")"), "/hosts/1/ssid: a control character in the text\n");
  EXPECT_EQ(host(good + R"(, "colour": "red")"), "/hosts/1/colour: unknown member\n");
  EXPECT_EQ(host(good + R"(, "real_mac": "02:00")"), "/hosts/1/real_mac: no MAC address\n");
  EXPECT_EQ(host(good + R"(, "arp_ip": "fd00::1")"), "/hosts/1/arp_ip: no IPv4 address\n");
  EXPECT_EQ(host(R"("ip": "desk", "local_mac": "02:00:00:00:00:03")"), "/hosts/1/ip: no IP address\n");
  EXPECT_EQ(host(R"("ip": "10.0.0.3")"), "/hosts/1: no \"local_mac\"\n");
  EXPECT_EQ(host(R"("ip": "10.0.0.2", "local_mac": "02:00:00:00:00:03")"),
            "/hosts/1: a second host of this ip\n");
  EXPECT_EQ(host(good + R"(, "connections": [{"far_ip": "1.2.3.4", "protocol": 6, "in_port": 65536}])"),
            "/hosts/1/connections/0/in_port: a whole number from 0 to 65535 is wanted\n");
  EXPECT_EQ(host(good + R"(, "connections": {})"), "/hosts/1/connections: a list is wanted\n");
  EXPECT_EQ(refusal_of(R"({"third": [7]})"), "/third/0: an object is wanted\n");
  EXPECT_EQ(refusal_of(R"({"counters": {"host_num": 7}})"), "/counters/host_num: unknown counter\n");
  EXPECT_EQ(refusal_of(R"({"hots": []})"), "/hots: unknown section\n");
  EXPECT_EQ(refusal_of("[]"), "/: an object is wanted\n");
  EXPECT_TRUE(refusal_of("{\"hosts\": [\n  {\"ip\" \"10.0.0.2\"}]}")
                  .starts_with("parse error at line 2, column 18: "));
  EXPECT_TRUE(refusal_of("").starts_with("parse error at line 1, column 1: "));
}

TEST_F(Lab, Words) {
  const RunResult full = run({"/bin/sh", "-c", VEK_LAB " show > /dev/full"});
  EXPECT_EQ(full.err, "vek-lab: cannot write: No space left on device\n");
  EXPECT_EQ(full.status, 1);
  const RunResult missing = run({VEK_LAB, "load", state.file("none")});
  EXPECT_EQ(missing.err, "vek-lab: " + state.file("none") + ": cannot be read\n");
  EXPECT_EQ(missing.status, 1);
  for (const char* count : {"8193", "-1", "12x", ""}) {
    const RunResult result = run({VEK_LAB, "hosts", count});
    EXPECT_EQ(result.err, "vek-lab: the number of hosts is 0 to 8192\n") << count;
    EXPECT_EQ(result.status, 1);
  }
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{VEK_LAB}, {VEK_LAB, "load"}, {VEK_LAB, "reset", "x"}}) {
    EXPECT_TRUE(run(words).err.starts_with("vek-lab load FILE\n"));
    EXPECT_EQ(run(words).status, 1);
  }
}

}  // namespace
