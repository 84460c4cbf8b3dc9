// The host table, with hosts of a lab and of the running Linux.
#include <ctime>

#include "host.h"
#include "record.h"

namespace {

using HostTable = HostTest;

// The addresses of a list, with a blank behind each.
std::string addresses(const std::string& list) {
  std::istringstream lines(list);
  std::string found;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("ip:")) found += line.substr(3, line.find_first_of(" ,") - 3) + " ";
  }
  return found;
}

const std::string kDesk = R"({"ip": "10.0.0.2", "local_mac": "02:00:00:00:00:02"})";

TEST_F(HostTable, ListsWhatTheLabBrings) {
  load(R"({"hosts": [
    {"ip": "fd00::12", "local_mac": "02:00:00:00:00:12", "ssid": "office", "in_devname": "wlan0", "vek_out_id": 2},
    {"ip": "10.0.0.10", "local_mac": "02:00:00:00:00:10", "idle": 100, "age": 3600, "hostname": "tv", "flag": 21,
     "portal": 1, "portal_text": "token", "sp_up": 2048, "up_bytes": 9223372036854775807, "speed_limit_up": -1},
    {"ip": "10.0.0.9", "local_mac": "02:00:00:00:00:09", "arp_ip": "10.0.0.1"}]})");
  const std::string list = vek("hi list").out;
  EXPECT_EQ(addresses(list), "10.0.0.9 10.0.0.10 fd00::12 ");
  const std::string tv = list.substr(list.find("ip:10.0.0.10 ,arp_ip:10.0.0.10,local_ip:0.0.0.0\n"));
  for (const char* text : {"hostname:tv,", "sp[up]:2K/s", "up:9007199254740991K", "flag:21[0|2|4|]",
                           "orsal_token:token\n", "speed_limit:-1|0"}) {
    EXPECT_NE(tv.find(text), tv.npos) << text << " in " << tv;
  }
  // As recently seen as the scenario says, and 30 minutes from its end.
  const long last = number_behind(tv, "last_tm:");
  EXPECT_LE(std::abs(last - (time(nullptr) - 100)), 5);
  EXPECT_LE(std::abs(number_behind(tv, "creat_tm:") - (time(nullptr) - 3600)), 5);
  EXPECT_EQ(number_behind(tv, "del_tm:"), last + 1800);
  EXPECT_NE(list.find("ip:10.0.0.9 ,arp_ip:10.0.0.1,"), list.npos);
  EXPECT_EQ(addresses(vek("hi ws_list").out), "fd00::12 ");
  EXPECT_EQ(addresses(vek("hi ai_list").out), "10.0.0.9 10.0.0.10 fd00::12 ");
  holds("hi ai_list", {"mr_id:0,ssid:office,vek_out_id:2,ssid_out_id:0\n"});
}

TEST_F(HostTable, HostsAge) {
  load(R"({"hosts": [)" + kDesk + R"(, {"ip": "10.0.0.3", "local_mac": "02:00:00:00:00:03", "idle": 60}],
           "third": [{"ip": "10.0.0.2", "mac": "02:00:00:00:00:02", "age": 90, "device_type": 3},
                     {"ip": "10.0.0.3", "mac": "02:00:00:00:00:03", "age": 30}]})");
  // What a time has let go does not come back with a longer one, and none is without end.
  ok({"hi set_ageing 1", "hi set_ageing", "hi set_ageing3 1", "hi set_ageing3"});
  EXPECT_EQ(addresses(vek("hi list").out), "10.0.0.2 ");
  EXPECT_EQ(addresses(vek("hi third_list").out), "10.0.0.3 ");
  holds("hi runinfo", {"\nhost_num=1 host_list_num=1 \n"});
  refused("unknown host", {"hi ct 10.0.0.3"});
  for (const char* word : {"hi set_ageing 10081", "hi set_ageing3 -1"}) refused("bad time", {word});
  holds("hi list", {" del_tm:0\n"});
  const std::string third = vek("hi third_list").out;
  EXPECT_TRUE(third.starts_with("num:1\nip:10.0.0.3, mac:02:00:00:00:00:03, creat_tm:")) << third;
  EXPECT_NEAR(static_cast<double>(number_behind(third, "creat_tm:")), static_cast<double>(time(nullptr) - 30),
              5);
}

TEST_F(HostTable, Connections) {
  load(R"({"hosts": [)" + kDesk + R"(, {"ip": "10.0.0.3", "local_mac": "02:00:00:00:00:03", "connections": [
    {"far_ip": "1.2.3.4", "protocol": 6, "in_port": 50000, "far_port": 443, "id": 171, "tm": 7, "name": "web",
     "packets_up": 1, "packets_down": 2, "s_up": 3072, "s_down": 4096, "sz_up": 5120, "sz_down": 6144, "z_up": 7168,
     "z_down": 4294967295},
    {"far_ip": "fd00::1", "protocol": 17}]}]})");
  holds("hi ct 10.0.0.3", {"num=2\n",
                           "\n\n6\t50000\t1.2.3.4\t443\t000000ab \t7\t1\t2\t3\t4\t5\t6\t7\t4194303\tweb\n"
                           "17\t0\tfd00::1\t0\t00000000 \t0\t0\t0\t0\t0\t0\t0\t0\t0\t\n\n"});
  begins("hi ct 10.0.0.2", "num=0\n");
  holds("hi runinfo", {"ct_max=65536 ct_num=2 "});
}

TEST_F(HostTable, RedirectFlagsAndRealMacs) {
  load(R"({"hosts": [)" + kDesk + "]}");
  shows("hi redirct_flag get 10.0.0.2", "ip:10.0.0.2,flag:0\n");
  shows("hi redirct_flag set 10.0.0.2 7", "ip:10.0.0.2,flag:7\n");
  shows("hi redirct_flag get 10.0.0.2", "ip:10.0.0.2,flag:7\n");
  refused("unknown host", {"hi redirct_flag set 10.0.0.3 7"});
  for (const char* found : {"\2\0\0\0\0\7", "\2\0\0\0\0\10"}) {  // by one scan, and by the next
    Record scanned(13, 63, 32);
    memcpy(&scanned.bytes[16], "\4\0\0\0\12\0\0\2", 8);
    memcpy(&scanned.bytes[36], found, 6);
    EXPECT_EQ(scanned.send(), "");
  }
  holds("hi list", {" real_mac:02:00:00:00:00:08 "});
  load(R"({"hosts": [)" + kDesk + "]}");  // another host of that address
  shows("hi redirct_flag get 10.0.0.2", "ip:10.0.0.2,flag:0\n");
}

TEST_F(HostTable, AFullRecordHoldsTheFirst3666Hosts) {
  EXPECT_EQ(run({VEK_LAB, "hosts", "4000"}).status, 0);
  const std::string list = vek("hi list").out;
  EXPECT_TRUE(list.starts_with("num:3666\n"));
  EXPECT_EQ(std::ranges::count(addresses(list), ' '), 3666);
  holds("hi runinfo", {"host_num=4000 host_list_num=4000 "});
}

// Hosts are the neighbours on the interfaces that are registered as LAN ones.
TEST_F(HostTable, ListsTheNeighboursThatLinuxKnows) {
  ok({"devmg add lan0 250", "devmg add wan0 0"});
  const std::string neighbours =
      "ip addr add 10.0.0.1/24 dev lan0; ip neigh add 10.0.0.9 lladdr 02:00:00:00:00:09 dev lan0;"
      "ip neigh add 10.0.0.7 lladdr 02:00:00:00:00:07 dev lan0;"
      "ip neigh add fd00::7 lladdr 02:00:00:00:00:07 dev lan0;"
      "ip neigh add 10.1.0.1 lladdr 02:00:00:00:00:01 dev wan0;";
  if (in_own_network("echo").empty()) GTEST_SKIP() << "this machine allows no network of one's own";
  load(R"({"hosts": [{"ip": "10.0.0.8", "local_mac": "02:00:00:00:00:08"},
                     {"ip": "10.0.0.9", "local_mac": "02:00:00:00:00:99"}]})");
  const std::string list = in_own_network(neighbours + "vek hi list");
  EXPECT_EQ(addresses(list), "10.0.0.7 10.0.0.8 10.0.0.9 fd00::7 ");
  EXPECT_NEAR(static_cast<double>(number_behind(list, "creat_tm:")), static_cast<double>(time(nullptr)), 5);
  EXPECT_NE(list.find("ip:10.0.0.7 ,arp_ip:10.0.0.7,local_ip:10.0.0.1\n"
                      "  hostname:,device_name:\n"
                      "  local_mac:02:00:00:00:00:07 real_mac:02:00:00:00:00:07 "),
            list.npos)
      << list;
  EXPECT_NE(list.find("local_mac:02:00:00:00:00:99"), list.npos);  // the lab's word counts
  EXPECT_EQ(in_own_network(neighbours + "vek hi redirct_flag set 10.0.0.7 3;"
                                        "ip neigh change 10.0.0.7 lladdr 02:00:00:00:00:77 dev lan0;"
                                        "vek hi redirct_flag get 10.0.0.7"),  // another host of that address
            "ip:10.0.0.7,flag:3\nip:10.0.0.7,flag:0\n");
  refused("unknown host", {"hi redirct_flag get 10.0.0.7"});  // not in this network
}

}  // namespace
