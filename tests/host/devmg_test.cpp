// The interface registry.
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "host.h"

namespace {

using Devmg = HostTest;

const std::string kHeader = "dev\t\t flags\t type\t arp\t jb\t wk_mode\t isp\t dev_id\t dev_flags\n\n";

TEST_F(Devmg, KeepsWhatWasAddedAndSet) {
  expect_out("devmg list", kHeader);
  expect_ok("devmg add lan0 250");
  expect_ok("devmg add port1 0");
  expect_ok("devmg set port1 1 vpn 7");
  expect_out("devmg list", kHeader + "lan0             0X1\t 250\t 0\t 0\t 0\t 0\t 1\t 0X0\n" +
                               "port1            0X0\t 0\t 0\t 1\t 2\t 7\t 2\t 0X0\n");
  expect_ok("devmg add port1 250");  // its type anew, its settings as they were
  expect_out("devmg get port1",
             " dev:port1 flags:0X1  type: 250  arp:0  jb_en:1  wk_mode:2 isp:7  dev_flags:0X0\n");
}

TEST_F(Devmg, AnInterfaceIsOnOneSideOnly) {
  expect_ok("devmg add port1 250");
  expect_refused("devmg wan_done port1", "interface is not a line");
  expect_ok("devmg wandev port1");
  expect_ok("devmg wan_done port1");
  expect_out("devmg get port1",
             " dev:port1 flags:0X6  type: 0  arp:0  jb_en:0  wk_mode:0 isp:0  dev_flags:0X0\n");
  expect_ok("devmg landev port1");
  expect_out("devmg get port1",
             " dev:port1 flags:0X1  type: 250  arp:0  jb_en:0  wk_mode:0 isp:0  dev_flags:0X0\n");
}

TEST_F(Devmg, RefusesUnknownInterfacesAndBadWords) {
  expect_ok("devmg add lan0 250");
  expect_ok("devmg del lan0");
  for (const char* order : {"get", "del", "landev", "wandev", "wan_done", "dev_stat", "set"}) {
    expect_refused(std::string("devmg ") + order + " lan0 1 vpn 1", "unknown interface");
  }
  expect_refused("devmg add lan0 7", "bad value");
  for (const char* name : {"../../x", "a/b", ".."}) {
    expect_refused(std::string("devmg add ") + name + " 250", "bad name");
    expect_refused(std::string("devmg dev_stat ") + name, "unknown interface");
  }
  expect_out("devmg list", kHeader);
}

TEST_F(Devmg, NumbersAreGivenOutAgainAndEnd) {
  for (int i = 1; i <= 64; ++i) expect_ok("devmg add port" + std::to_string(i) + " 0");
  expect_refused("devmg add port65 0", "table full");
  expect_ok("devmg add port64 250");
  expect_ok("devmg del port9");
  expect_ok("devmg add again 0");
  EXPECT_NE(vek("devmg list").out.find("again            0X0\t 0\t 0\t 0\t 0\t 0\t 9\t"), std::string::npos);
}

TEST_F(Devmg, AsksTheRunningLinux) {
  expect_ok("devmg add lo 0");
  struct ifreq request = {};
  strcpy(request.ifr_name, "lo");
  const int socket_fd = socket(AF_INET, SOCK_DGRAM, 0);
  ASSERT_EQ(ioctl(socket_fd, SIOCGIFFLAGS, &request), 0);
  close(socket_fd);
  char flags[16];
  snprintf(flags, sizeof flags, "0X%X\n", static_cast<unsigned>(request.ifr_flags));
  const std::string entry = vek("devmg get lo").out;
  EXPECT_TRUE(entry.ends_with(std::string("dev_flags:") + flags)) << entry;

  expect_ok("devmg add nowhere 0");
  expect_out("devmg dev_stat nowhere",
             "rx_broadcast:0,rx_multicast:0,rx_unicast:0\ntx_broadcast:0,tx_multicast:0,tx_unicast:0\n");

  expect_ok("devmg dev_get");
  const std::string list = vek("devmg list").out;
  struct if_nameindex* all = if_nameindex();
  for (const struct if_nameindex* each = all; each->if_name != nullptr; ++each) {
    EXPECT_NE(list.find(std::string("\n") + each->if_name + " "), std::string::npos) << each->if_name;
  }
  if_freenameindex(all);
}

}  // namespace
