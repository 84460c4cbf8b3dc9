// Asking for MAC addresses by SNMP: of a real agent, on the loopback alone.
#include "platform/snmp.h"

#include <arpa/inet.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

#include "host.h"
#include "platform/nvram.h"

namespace {

constexpr const char* kAgent = "/usr/sbin/snmpd";

// A UDP port of the loopback that is free.
uint16_t free_port() {
  const int fd = socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  bind(fd, reinterpret_cast<sockaddr*>(&address), length);
  getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  close(fd);
  return ntohs(address.sin_port);
}

// The first line of an agent's settings, and how it is started.
std::string settings(uint16_t port) {
  return "agentAddress udp:127.0.0.1:" + std::to_string(port) + "\nrocommunity secret 127.0.0.1\n";
}
std::string start(const std::string& folder) {
  return "env MIBS= SNMP_PERSISTENT_DIR=" + folder + "/agent " + kAgent + " -f -C -Ln -I -smux -p " + folder +
         "/pid -c " + folder + "/snmpd.conf";
}

class Snmp : public HostTest {
 protected:
  void SetUp() override {
    if (access(kAgent, X_OK) != 0) GTEST_SKIP() << "no snmpd here";
  }
  ~Snmp() override {
    if (agent_ == 0) return;
    kill(agent_, SIGTERM);
    waitpid(agent_, nullptr, 0);
  }

  void start_agent(const std::string& entries) {
    const uint16_t port = free_port();
    peer = "127.0.0.1:" + std::to_string(port);
    std::ofstream(state.file("snmpd.conf")) << settings(port) << entries;
    std::string command = "exec " + start(state.path());
    std::string shell = "sh";
    std::string option = "-c";
    char* argv[] = {shell.data(), option.data(), command.data(), nullptr};
    ASSERT_EQ(posix_spawn(&agent_, "/bin/sh", nullptr, nullptr, argv, environ), 0);
    for (int i = 0; i < 100 && ask("10.0.0.9") == "none"; ++i) usleep(50'000);
  }

  // The MAC address as the peer has it.
  std::string ask(const char* ip, const char* community = "secret") const {
    uint8_t mac[6] = {};
    if (snmp_get_mac_by_ipstr(community, peer.c_str(), ip, mac) != 0) {
      for (const uint8_t byte : mac) EXPECT_EQ(byte, 0);
      return "none";
    }
    char text[32];
    snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3], mac[4],
             mac[5]);
    return text;
  }

  std::string peer;

 private:
  pid_t agent_ = 0;
};

constexpr const char* kOldTable = "override 1.3.6.1.2.1.4.22.1.2.";
constexpr const char* kNewTable = "override 1.3.6.1.2.1.4.35.1.4.";

TEST_F(Snmp, FindsHostsOnAnyInterfaceOfTheAgent) {
  const std::string old_table = kOldTable;
  const std::string new_table = kNewTable;
  start_agent(old_table + "901.10.0.0.8 octet_str \"0x020000000008\"\n" +  //
              old_table + "905.10.0.0.0 octet_str \"0x020000000001\"\n" +  //
              old_table + "905.10.0.0.9 octet_str \"0x020000000009\"\n" +  //
              old_table + "905.10.0.0.10 octet_str \"0x0200\"\n" +         // no MAC address
              old_table + "906.10.0.0.200 octet_str \"0x0200000000c8\"\n" + new_table +
              "906.1.4.10.0.0.77 octet_str \"0x02000000004d\"\n" + new_table +
              "906.2.16.253.0.0.0.0.0.0.0.0.0.0.0.0.0.0.18 octet_str \"0x020000000012\"\n");
  EXPECT_EQ(ask("10.0.0.8"), "02:00:00:00:00:08");
  EXPECT_EQ(ask("10.0.0.9"), "02:00:00:00:00:09");
  EXPECT_EQ(ask("10.0.0.0"), "02:00:00:00:00:01");
  EXPECT_EQ(ask("10.0.0.200"), "02:00:00:00:00:c8");
  EXPECT_EQ(ask("10.0.0.77"), "02:00:00:00:00:4d");
  EXPECT_EQ(ask("fd00::12"), "02:00:00:00:00:12");
  for (const char* ip : {"10.0.0.7", "10.0.0.10", "10.0.0.255", "255.255.255.255", "fd00::13", "desk"}) {
    EXPECT_EQ(ask(ip), "none") << ip;
  }
}

TEST_F(Snmp, SilenceCostsTwoSecondsThreeTimes) {
  start_agent(std::string(kOldTable) + "905.10.0.0.9 octet_str \"0x020000000009\"\n");
  ASSERT_EQ(ask("10.0.0.9"), "02:00:00:00:00:09");
  const auto seconds = [this](const char* community) {
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(ask("10.0.0.9", community), "none");
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - before).count();
  };
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(seconds("wrong"), 2, 0.5) << i;  // agents do not answer strangers
  EXPECT_LT(seconds("wrong"), 0.5);
  EXPECT_EQ(ask("10.0.0.9"), "02:00:00:00:00:09");
  for (int i = 0; i < 4; ++i) EXPECT_EQ(ask("10.0.0.7"), "none");  // which is an answer
  EXPECT_EQ(ask("10.0.0.9"), "02:00:00:00:00:09");
  peer = "127.0.0.1:" + std::to_string(free_port());
  EXPECT_NEAR(seconds("secret"), 2, 0.5);
  for (const char* other : {"localhost", "127.0.0.1:", "127.0.0.1:0", "127.0.0.1:65536", "unix:/tmp/x", ""}) {
    peer = other;
    EXPECT_LT(seconds("secret"), 0.5) << other;
  }
  EXPECT_NE(snmp_get_mac_by_ipstr(nullptr, "127.0.0.1", "10.0.0.9", nullptr), 0);
}

// The whole way, in a network of its own: the agent tells what its Linux knows, on the port of its trade.
TEST_F(Snmp, AScanFillsInRealMacs) {
  if (in_own_network("echo").empty()) GTEST_SKIP() << "this machine allows no network of one's own";
  load(R"({"hosts": [{"ip": "10.0.0.8", "local_mac": "02:00:00:00:00:01"},
                     {"ip": "10.0.0.9", "local_mac": "02:00:00:00:00:01"},
                     {"ip": "10.0.0.10", "local_mac": "02:00:00:00:00:10", "no_snmp": 1},
                     {"ip": "10.0.0.11", "local_mac": "02:00:00:00:00:01"}]})");
  std::ofstream(state.file("snmpd.conf")) << settings(161);
  shows("hi snmpscan", "not peername");
  ASSERT_EQ(nvram_set("snmp_prro", "secret"), 0);
  ASSERT_EQ(nvram_set("snmp_prnm", "127.0.0.1"), 0);
  const std::string out = in_own_network(
      "ip link set lo up; ip addr add 10.0.0.1/24 dev wan0;"
      "ip neigh add 10.0.0.8 lladdr 02:00:00:00:00:08 dev wan0;"
      "ip neigh add 10.0.0.9 lladdr 03:00:00:00:00:09 dev wan0;" +  // a group's: refused
      start(state.path()) +
      "& agent=$!; for i in 1 2 3 4 5 6 7 8 9; do sleep 0.2; [ -s " + state.file("pid") +
      " ] && break; done;"
      "vek hi snmpscan; kill $agent; wait $agent || true");
  EXPECT_EQ(out,
            "snmp ip mac do...\n"
            "IP[10.0.0.8] <===> realMAC[02 00 00 00 00 08] set success!\n"
            "IP[10.0.0.9] real MAC[03 00 00 00 00 09] set error!\n"
            "IP[10.0.0.11] snmp find MAC error!");
  const std::string list = vek("hi list").out;
  EXPECT_NE(list.find("local_mac:02:00:00:00:00:01 real_mac:02:00:00:00:00:08 "), list.npos) << list;
  EXPECT_EQ(list.find("real_mac:03"), list.npos);
}

}  // namespace
