// mr: what it sends and what it prints.
#include "tool/driver.h"

namespace {

TEST(Mr, Modes) {
  sends("mr mode hi 9 5", {10, 2}, "0:u32 1 16:u32 5");
  sends("mr mode ct 9 0", {10, 2}, "0:u32 2");
  sends("mr mode flow '' 7", {10, 2}, "0:u32 3 16:u32 7");
  sends("mr mode zn 70000 4000000000", {10, 2}, "0:u32 4 12:u32 70000 4000000000");
  sends("mr onlywan 1 2", {10, 3}, "4:u32 1 2");
  shows("mr get", {10, 4}, "", "0:u32 4 1 2 -1 5",
        "type:4,onlywan:1 onlywan_tcp:2 zn_val:-1 ct_rule_name:5\n");
  rejects("type[hi,ct]", {"mr mode hi 0", "mr mode rr 0 0"});
  rejects("en[0,1] tcp[0,1]", {"mr onlywan 1"});
}

TEST(Mr, Balancing) {
  const std::string line = "1:u8 1 4:u8 3 6:u8 2 8:u16 258 72:u32 70000";
  for (const std::string count : {"", "70001"}) {
    const Outcome outcome =
        vek("mr jh 258 1 70000 pppoe 2 " + count, {.script = answer("vek_get_wan_proto", 3)});
    EXPECT_EQ(outcome.calls, std::vector<std::string>{"vek_get_wan_proto pppoe"});
    expect_order(outcome, {10, 1}, line + (count.empty() ? "" : " 76:u32 " + count));
    expect_end(outcome, 0, "ok\n");
  }
  sends("mr flow 2 1", {10, 1}, "0:u8 6 8:u16 2 10:u8 1");
  sends("mr val 65538 4000000000 257", {10, 1}, "0:u8 1 3:u8 1 8:u16 2 24:u64 4000000000");
  sends("mr zc_stop 3", {10, 1}, "0:u8 5 8:u16 3");
  rejects("wanid en[1:on] host_num wan_proto ppp_demand ct_num", {"mr jh 2 1 50 pppoe"});
  rejects("wanid flow_limit[1:on]", {"mr flow 2"});
  rejects("wanid val is_qosval(1:en)", {"mr val 2 100"});
  rejects("wanid", {"mr zc_stop", "mr lr_del"});

  sends("mr dns 2 9 1.1.1.1,x,3.3.3.3:53,4.4.4.4 fd00::1,,fd00::3", {10, 1},
        "0:u8 3 8:u16 2 80:ip 1.1.1.1 0.0.0.0 3.3.3.3 92:hex fd{00}*14 01 {00}*16 fd{00}*14 03 140:u32 9");
  // A list is read as far as 127 characters.
  sends("mr dns 2 0 '{ }*118,1.1.1.1,2.2.2.2' {,}*300", {10, 1}, "0:u8 3 8:u16 2 84:ip 1.1.1.1");
  rejects("wanid prio dns4 dns6", {"mr dns 2 0 1.1.1.1"});
}

TEST(Mr, Detection) {
  const std::string line =
      "0:u8 2 8:u16 2 152:u8 1 2 1 156:u16 258 65535 160:u64 7 168:ip 10.0.0.1 335:u8 1 9 ";
  const auto zc = [&](const std::string& targets, const std::string& sent) {
    sends("mr zc 2 1 2 258 65535 7 10.0.0.1 " + targets + " 1 9 '' '' ''", {10, 1}, line + sent);
  };
  zc("0", "");
  zc("''", "");
  zc("1.1.1.1$a.example.com$0", "155:u8 1 176:ip 1.1.1.1 236:text a.example.com");
  zc("a$$1.1.1.1", "155:u8 1 188:text a");
  zc("a,b$0.0.0.0$1.1.1.1$2.2.2.2", "155:u8 1 188:text a,b 236:text 0.0.0.0 184:ip 1.1.1.1");
  zc("{n}*60${o}*60${p}*60", "155:u8 1 188:text {n}*47 236:text {o}*47 284:text {p}*47");
  sends("mr zc 2 0 1 0 0 0 '' 0 0 0 {n}*60 1.2.3.4 5.6.7.8", {10, 1},
        "0:u8 2 8:u16 2 153:u8 1 172:ip 5.6.7.8 340:text {n}*31 372:ip 1.2.3.4");
  rejects("wanid en(0 1) act(1 2) tm times sd gw srv 3g_enable",
          {"mr zc 2 1 2 258 65535 7 10.0.0.1 0 1 9 '' ''"});
}

TEST(Mr, Routes) {
  sends("mr lr_add 1 258 0 0.0.0.0 10.0.0.0 255.0.0.0", {10, 6}, "8:ip 10.0.0.0 255.0.0.0 16:u16 258 1");
  sends("mr lr_add 1 0 1.2.3.4 255.255.255.255 5.6.7.8 0", {10, 6},
        "0:ip 1.2.3.4 255.255.255.255 5.6.7.8 18:u16 1");
  sends("mr lr_del 1", {10, 7}, "18:u16 1");
  rejects("wanid prio src srcmask dst dstmask",
          {"mr lr_add 1 1 0 0 0 0", "mr lr_add 1 1 1.2.3.4 0 0 255.0.0.0",
           "mr lr_add 1 1 1.2.3.4 255.0.0.0 0", "mr lr_add"});
  shows("mr lr_list", {10, 8, 0x400000}, "",
        list_of(24, {"0:ip 1.2.3.4 5.6.7.8 9.10.11.12 13.14.15.16 16:u16 65535 7", "18:u16 9"}),
        "num: 2\nwanid prio src \t srcmask \t dst \t dstmask\n\n"
        "wanid:7  prio:65535  src:1.2.3.4  srcmask:5.6.7.8  dst:9.10.11.12  dstmask:13.14.15.16\n"
        "wanid:9  prio:0  src:0.0.0.0  srcmask:0.0.0.0  dst:0.0.0.0  dstmask:0.0.0.0\n");
}

TEST(Mr, Ipv6) {
  sends("mr dns_cache", {10, 18}, "");
  sends("mr ipv6 258 259", {10, 22}, "0:u16 258 4:u8 3");
  sends("mr ipv6_ula 1 fd00::", {10, 25}, "0:u16 1 60 4:hex fd");
  sends("mr ipv6_ula 1 fd00::/0", {10, 25}, "0:u16 1 60 4:hex fd");
  sends("mr ipv6_ula 1 fd00::/48/9", {10, 25}, "0:u16 1 48 4:hex fd");
  sends("mr ipv6_ula 1 fd00", {10, 25}, "0:u16 1 60");
  rejects("id state", {"mr ipv6 1"});
  rejects("id ula", {"mr ipv6_ula 1"});
}

// Every field of the entry has another value.
TEST(Mr, List) {
  const std::string entry =
      "0:hex ffc9cacbcccdcecf 8:u16 60008 10:hex d2ff 12:u32 -1 1016 1020 1024 32:u64 -1 1040 1048 1056 1064"
      " 72:u64 1072 80:u32 1080 1084 88:ip 0.0.0.88 0.0.0.0 0.0.0.96 100:hex 01{00}*14 00 {00}*16 01{00}*14 "
      "32"
      " 148:u32 4000000148 4000000152 4000000156 160:hex fd{00}*14 60 176:u32 1176 192:hex c0c1ffff"
      " 196:u16 60196 60198 200:u64 -2 208:ip 0.0.0.208 9.9.9.9 0.0.0.216 228:text beside-an-address"
      " 276:text {m}*48 372:hex acadaeaf{ff}*40";
  const std::string block =
      "\nwanid:60008 wan_proto:204 ppp_demand:206 jh:201  host_num:1080 ct_limit_num:1084  hi:-1[1016/1020]  "
      "ct:1024  dns_pri:4000000148  change_id:205\n"
      "\t state_v4:202 state_v6:207 val:18446744073709551615 chk_qosval:203 false_tm:4000000152 hi_val:1040 "
      "ct_val:1048 qos_val:1056 qos_speed:1064/1072\n"
      "\t dnsip4: 0.0.0.88,0.0.0.0,0.0.0.96, dnsip6: 100::,::,100::32,\n\t ula: fd00::60/1176,\n"
      "\t zc: en=192  act=193  tm=60196  times=60198  sd=18446744073709551614  gw=0.0.0.208  state=172 "
      "trys=173 ret_state=174 3g=175 srv=0.0.0.216," +
      std::string(48, 'm') + ",\n\t flow_limit:210, create_tm:4000000156 \n";
  for (const char* words : {"mr list", "mr ws_list"}) {
    shows(words, {10, 23, 0x400000}, "", list_of(416, {entry, entry}),
          "num: 2\nwanid jh state  val is_qosval hi_num ct_num dns_prio false_tm\n" + block + block + "\n");
  }
}

}  // namespace
