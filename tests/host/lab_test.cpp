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

TEST_F(Lab, TheOfficeIsLoadedAndReset) {
  ASSERT_EQ(run({VEK_LAB, "load", VEK_OFFICE}).err, "");
  EXPECT_EQ(shown(), "hosts: 12\nthird: 2\ncounters: 6\n");
  const std::string list = vek("hi ai_list").out;
  for (const char* text : {"vek_out_id:1,", "vek_out_id:2,"}) EXPECT_NE(list.find(text), list.npos) << text;
  load(R"({"hosts": [{"ip": "10.0.0.2", "local_mac": "02-00-00-00-00-02"}]})");
  EXPECT_EQ(shown(), "hosts: 1\nthird: 0\ncounters: 0\n");
  EXPECT_EQ(run({VEK_LAB, "hosts", "5"}).status, 0);
  EXPECT_EQ(shown(), "hosts: 5\nthird: 0\ncounters: 0\n");
  EXPECT_EQ(run({VEK_LAB, "reset"}).status, 0);
  EXPECT_EQ(shown(), "hosts: 0\nthird: 0\ncounters: 0\n");
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
