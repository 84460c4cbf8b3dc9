// dhcp, dhcp_reserve and dhcp_not_assign: what they send and what they print.
#include <algorithm>

#include "tool/driver.h"

namespace {

TEST(Dhcp, Pools) {
  // The addresses of lists go as numbers of this machine. There are as many pools as the shortest list has.
  const std::string words =
      "lan0 10.0.0.1 10.0.0.1,10.1.0.1 255.0.0.0,255.255.0.0,255.0.0.0,255.0.0.0 10.0.0.5-10.0.0.7,10.1.0.5,"
      "10.2.0.5 10.0.0.9,10.1.0.9,10.2.0.9 7200 9.9.9.9,8.8.8.8/24,1.1.1.1,2.2.2.2 a-domain-that-is-long ";
  const std::string pool =
      "0:text lan0 16:ip 10.0.0.1 20:u32 0x09090909 0x08080800 0x01010101 0x0a000005 0x0a010005 44:u32 "
      "0x0a000009 0x0a010009 56:u32 0xff000000 0xffff0000 68:u32 0x0a000001 0x0a010001 80:u32 7 0 9 7200"
      " 96:text a-domain-that-i 120:u32 3 124:hex 0a00ff ";
  sends("dhcp add " + words + "admin 0a-00ff 7,,9,10", {5, 1}, pool + "264:u32 1");
  sends("dhcp add " + words + "Admin 0a-00ff 7,,9", {5, 1}, pool);
  sends("dhcp new_add " + words + "0a-00ff 7,,9", {5, 16, 10256}, pool);
  sends("dhcp add lan0 10.0.0.1 '' '' '' '' '' '' '' '' {ab}*129 ''", {5, 1},
        "0:text lan0 16:ip 10.0.0.1 120:u32 128 124:hex {ab}*128");
  sends("dhcp del a-very-long-interface-name", {5, 2}, "0:text a-very-long-int");
  const std::string usage = "dev srv_ip gwaddr snmask start_addr end_addr leasetime dnss domain_name ";
  rejects(usage + "dhcp_type option43 filter", {"dhcp add " + words + "admin 0a"});
  rejects(usage + "option43 filter", {"dhcp new_add " + words + "0a"});
  rejects("dev", {"dhcp del", "dhcp show", "dhcp member_list"});
  expect_unsent(
      vek("dhcp add lan0 0.0.0.0 a a a a a a a a a a"), 1, "go to help\n",
      " srv_ip err ! 0.0.0.0\n " + vek_path() + " dhcp add " + usage + "dhcp_type option43 filter\n");

  const std::string show =
      "dev: sixteen-letters! dhcp_type: admin srv_ip: 10.0.0.1\n\n gwaddr: 10.0.0.1,10.0.0.3,\n snmask: "
      "255.0.0.0,\nleasetime: -1  domain_name: sixteen-letters! srv_mac: a0:b1:c2:d3:e4:f5\n\n dns: "
      "9.9.9.9,\n "
      "ips: 10.0.0.5-10.0.0.9,10.2.0.5-0.0.0.0,\n filter: 1,4294967295,\n option43: ";
  const std::string shown =
      "0:text sixteen-letters! 16:ip 10.0.0.1 24:ip 9.9.9.9 32:ip 10.0.0.5 0.0.0.0 10.2.0.5 10.0.0.9 56:ip "
      "255.0.0.0 68:ip 10.0.0.1 0.0.0.0 10.0.0.3 80:u32 1 2 -1 -1 96:text sixteen-letters! 112:hex "
      "a0b1c2d3e4f5 252:u32 7 -1 264:u32 2 ";
  shows("dhcp show lan0", {5, 3, 10256}, "0:text lan0", shown, show + "\n rcv:7,send:4294967295\n\n");
  shows("dhcp show lan0", {5, 3, 10256}, "0:text lan0", shown + "120:u32 -1 124:hex 0aff{00}*125 b0",
        show + "0AFF" + std::string(250, '0') + "B0\n rcv:7,send:4294967295\n\n");
}

TEST(Dhcp, LeasesSwitchesAndServer) {
  const std::string lease =
      "0:text pc 64:ip 10.0.0.5 68:hex a0b1c2d3e4f5 74:u8 255 2 76:text lan0 96:u64 -1 0x8000000000000000";
  shows("dhcp member_list {d}*70", {5, 4, 40496}, "8:text {d}*63", list_of(112, {lease, ""}),
        "num: 2\nipaddr  mac  \t  lease start state type hostname  in_dev\n\n"
        "10.0.0.5  a0:b1:c2:d3:e4:f5   18446744073709551615  9223372036854775808  255  2  pc  lan0\n"
        "0.0.0.0  00:00:00:00:00:00   0  0  0  0    \n");
  shows("dhcp bind set 7", {5, 5}, "0:u32 1 7", "", "state:7\n\n\n");
  shows("dhcp bind get", {5, 5}, "", "4:u32 1", "state:1\n\n\n");
  rejects("set/get [1/0]", {"dhcp bind", "dhcp bind set", "dhcp bind put 1"});
  sends("dhcp defense_set 2 aa:bb:cc:dd:ee:ff,bogus,,a1b1c1d1e1f1", {5, 24, 40496},
        "0:u32 2 2 12:hex aabbccddeeff0000a1b1c1d1e1f1");
  sends("dhcp defense_set 1 {a1b1c1d1e1f1,}*129", {5, 24, 40496},
        "0:u32 1 128 12:hex {a1b1c1d1e1f10000}*128");
  rejects("en mac", {"dhcp defense_set 1"});
  shows("dhcp defense_get", {5, 25, 40496}, "", "0:u32 1 2 -1 12:hex a0b1c2d3e4f5",
        "en:1,drop_num:-1,mac_num:2\na0:b1:c2:d3:e4:f5,00:00:00:00:00:00,\n");
  const std::string most = vek("dhcp defense_get", {.answer = "4:u32 -1"}).out;
  EXPECT_EQ(std::ranges::count(most, ','), 2 + (40480 - 12) / 8);

  using Calls = std::vector<std::string>;
  for (const auto& [word, calls] : {std::pair("start", Calls{"start_dhcp_server"}),
                                    {"stop", {"stop_dhcp_server"}},
                                    {"restart", {"stop_dhcp_server", "start_dhcp_server"}},
                                    {"Start", {}},
                                    {"", {}}}) {
    const Outcome outcome = vek(std::string("dhcp server ") + word);
    EXPECT_EQ(outcome.calls, calls) << word;
    expect_unsent(outcome, 1, "", " dhcp\tadd del show member_list bind\n");
  }
}

TEST(Dhcp, ReservedAndNotAssigned) {
  const std::string mac = "a0:b1:c2:d3:e4:f5 ";
  sends("dhcp_reserve add a-very-long-interface-name " + mac + "10.0.0.9", {5, 6},
        "0:text a-very-long-int 16:ip 10.0.0.9 20:hex a0b1c2d3e4f5");
  sends("dhcp_reserve add lan0 bogus 10.0.0.9", {5, 6}, "0:text lan0 16:ip 10.0.0.9");
  sends("dhcp_reserve del lan0 " + mac, {5, 7}, "0:text lan0 20:hex a0b1c2d3e4f5");
  sends("dhcp_reserve del lan0 bogus", {5, 7}, "0:text lan0");
  sends("dhcp_reserve delall lan0", {5, 8}, "0:text lan0");
  const std::string entry = "+24 0:text lan0 16:ip 10.0.0.9 20:hex a0b1c2d3e4f5 +0 20:u32 ";
  const std::string line = "10.0.0.9  a0:b1:c2:d3:e4:f5   \n";
  shows("dhcp_reserve show lan0", {5, 9, 40496}, "0:text lan0", entry + "1",
        "num: 1\nipaddr  mac \n\n" + line);
  expect_lines("dhcp_reserve show lan0", "20:u32 0x7fffffff", 3 + (40480 - 24) / 28);
  expect_lines("dhcp_not_assign show lan0", "20:u32 0x7fffffff", 2 + (40480 - 24) / 24);
  rejects("dev mac ip", {"dhcp_reserve add lan0 " + mac, "dhcp_reserve add lan0 " + mac + "bogus"});
  rejects("dev mac", {"dhcp_reserve del lan0"});
  rejects("dev",
          {"dhcp_reserve delall", "dhcp_reserve show", "dhcp_not_assign delall", "dhcp_not_assign show"});

  sends("dhcp_not_assign add lan0 10.0.0.9 255.255.0.0", {5, 12}, "0:text lan0 16:ip 10.0.0.9 255.255.0.0");
  sends("dhcp_not_assign del lan0 10.0.0.9 x", {5, 13}, "0:text lan0 16:ip 10.0.0.9");
  sends("dhcp_not_assign delall lan0", {5, 14}, "0:text lan0");
  rejects("dev ip netmask", {"dhcp_not_assign add lan0 10.0.0.9", "dhcp_not_assign del lan0 10.0.0.9",
                             "dhcp_not_assign add lan0 x 255.0.0.0"});
  shows("dhcp_not_assign show lan0", {5, 15, 40496}, "0:text lan0",
        "20:u32 5 40:ip 10.0.0.1 0.0.0.0 64:ip 10.0.0.2 255.255.0.0 88:ip 10.0.0.3 10.0.0.7 112:ip 10.0.0.4 "
        "255.255.255.255 136:ip 0.0.0.1 128.0.0.1",
        "num: 5\nipaddr \n  1: 10.0.0.1\n  2: 10.0.0.2/255.255.0.0\n  3: 10.0.0.3-10.0.0.7\n"
        "  4: 10.0.0.4/255.255.255.255\n  5: 0.0.0.1-128.0.0.1\n");
}

}  // namespace
