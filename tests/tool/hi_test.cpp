// hi: what it sends and what it prints.
#include "tool/driver.h"

namespace {

const std::string kListHead =
    "ip\t\t sp[up]\t sp[down]\t flag ct_count ct_max ct_create count[up] count_skb[up] count[down] "
    "count_skb[down] start_tm last_tm \n\n";
const std::string kConnectionHead =
    "prot\tin_port\tfip\t\tf_port\tid \t  qtype\ttm\tp[up]\tp[down]\ts[up]\ts[down] sz[up]\tsz[down] "
    "z[up]\tz[down]\n\n";

// Every field differs, texts fill their fields without a NUL, and bytes that are nobody's are set, too.
const std::string kHost =
    "0:u64 0xF00000080000005 1700000001 1700000002 -1 -1 4095 -1 56:u32 4 60:ip 10.0.0.2"
    " 76:ip 10.0.0.3 10.0.0.1 84:u32 -1 88 0x80000000 96 100:hex a00102030405b00102030405"
    " 112:u8 112 1 0 115 116 217 0xEE 119 120 0xEE 122:u16 65535 124 4094 128:hex {ee}*280"
    " 408:u64 417792 416 -1 432 440:text {h}*128 568:u8 1 3 2 171 572:text {t}*286 858:u16 8580"
    " 860:text {a}*128 {v}*49 {n}*31 1068:u32 -2 1072:hex ac{ee}*71 ";
const std::string kNames =
    "ip:10.0.0.2 ,arp_ip:10.0.0.3,local_ip:10.0.0.1\n  hostname:{h}*128,device_name:{n}*31\n";
const std::string kMacs = "  local_mac:a0:01:02:03:04:05 real_mac:b0:01:02:03:04:05 auto_jb:116 typeid:217";
const std::string kRates =
    "\n  sp[up]:3K/s sp[down]:18014398509481983K/s creat_tm:1700000001  last_tm:1700000002 "
    "del_tm:18446744073709551615\n  pc_flag:172, sys_type:-2, user_agent:{a}*128\n"
    "  up:408K up_pkt:416 down:18014398509481983K down_pkt:432\n";
const std::string kLogin =
    ",user_card_type:171,user_login_type:115\n  typeid_ipstr:217,typeid_user:65535\n  mr_id:124,";
const std::string kHostText =
    unfolded(kNames + kMacs + " vlanid:4094" + kRates +
             "  flag:1080863912716402693[0|2|31|]  third[1,2,3] redirt_url:{t}*286\n  speed_limit:-1|88 "
             "devname:{v}*49\n"
             "  tmp_speed_limit:-2147483648|96  block:112,apidx:119,5g:120,orsal:0" +
             kLogin + " pppdp_mr_id:8580\n\n");

TEST(Hi, HostLists) {
  const std::string hosts =
      list_of(1144, {kHost,
                     "0:u64 -1 56:u32 6 60:hex fd{00}*14 12 114:u8 9 440:text tv 572:text %s%n"
                     " 860:text 'agent/1 (x)' 988:text lan0 1037:text Television"});
  const std::string out =
      "num:2\n" + kListHead + kHostText +
      "ip:fd00::12 ,arp_ip:0.0.0.0,local_ip:0.0.0.0\n  hostname:tv,device_name:Television\n"
      "  local_mac:00:00:00:00:00:00 real_mac:00:00:00:00:00:00 auto_jb:0 typeid:0 vlanid:0\n"
      "  sp[up]:0K/s sp[down]:0K/s creat_tm:0  last_tm:0 del_tm:0\n  pc_flag:0, sys_type:0, "
      "user_agent:agent/1 (x)\n  up:0K up_pkt:0 down:0K down_pkt:0\n"
      "  flag:18446744073709551615[0|1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|17|18|19|20|21|22|23|24|25|26|27|"
      "28|29|30|31|]  third[0,0,0] orsal_token:%s%n\n"
      "  speed_limit:0|0 devname:lan0\n  tmp_speed_limit:0|0  block:0,apidx:0,5g:0,orsal:9,user_card_type:0,"
      "user_login_type:0\n  typeid_ipstr:0,typeid_user:0\n  mr_id:0, pppdp_mr_id:0\n\n";
  shows("hi list ignored", {13, 1, 0x400000}, "", hosts, out);
  shows("hi ws_list", {13, 62, 0x400000}, "", hosts, out);
  shows("hi list", {13, 1, 0x400000}, "", "", "num:0\n" + kListHead);
}

TEST(Hi, ExtendedList) {
  // Its places from 1144 on are the contract of records/host.h.
  const std::string entry =
      kHost + "114:u8 9 1144:text {i}*48 1192:u32 7 1196:text {s}*36 1232:u32 -1 1236:hex eeeeeeee";
  const std::string text = unfolded(kNames + "  devname:{v}*49,in_devname:{i}*48\n" + kMacs + kRates +
                                    "  block:112,apidx:119,5g:120,orsal:9" + kLogin +
                                    "ssid:{s}*36,vek_out_id:7,ssid_out_id:-1\n\n");
  shows("hi ai_list", {13, 72, 0x400000}, "", list_of(1240, {entry, entry}),
        "num:2\n" + kListHead + text + text);
}

// The counts are unsigned.
TEST(Hi, ListsEndWithTheRecord) {
  expect_lines("hi list", "4:u32 3665", 3 + 3665 * 12);
  expect_lines("hi list", "4:u32 3666", 3 + 3666 * 12);
  expect_lines("hi list", "4:u32 -1", 3 + 3666 * 12);
  expect_lines("hi ws_list", "4:u32 3667", 3 + 3666 * 12);
  expect_lines("hi ai_list", "4:u32 -1", 3 + (0x400000 - 24) / 1240 * 11);
  expect_lines("hi third_list", "4:u32 -1", 1 + (0x400000 - 24) / 40 * 2);
  expect_lines("hi ct 10.0.0.2", "20:u32 -1", 4 + (204800 - 44) / 304);
  // The last host that the record has room for.
  EXPECT_TRUE(vek("hi list", {.answer = "4:u32 3666 +4192768 " + kHost}).out.ends_with(kHostText));
}

TEST(Hi, CountersAndThirdList) {
  shows("hi runinfo", {13, 8, 20496}, "", "0:u32 100 101 102 103 104 105 106 107 108 109 -1",
        "ct_max=102 ct_num=103 ct_alloc_max=104\nrt_max=100 rt_num=101 \nskb_zong=105 skb_data=106 \n"
        "host_num=107 host_list_num=108 \nddos_drop_pkt=109 broadcast_pkt=-1\n");
  shows("hi third_list", {13, 40, 0x400000}, "",
        list_of(40, {"0:u64 -1 4 12:ip 10.0.0.2 28:hex a00102030405 34:u8 134 235 36:hex eeeeeeee",
                     "8:u32 6 12:hex fd{00}*14 12"}),
        "num:2\nip:10.0.0.2, mac:a0:01:02:03:04:05, creat_tm:18446744073709551615, clt_installed:134, "
        "device_type:235\n\nip:fd00::12, mac:00:00:00:00:00:00, creat_tm:0, clt_installed:0, "
        "device_type:0\n\n");
}

TEST(Hi, Connections) {
  // Ports stand in network byte order.
  const std::string first =
      "0:u32 4 4:ip 1.2.3.4 20:hex c001eeee01bbeeeeffff{ee}*6 36:u64 -1 44:hex {ee}*24 68:u32 0xAB"
      " 72:text {n}*36 108:u32 110593 -1 -1 -1 4000000000 128 135168 140287 -1 -1 151552 155648"
      " 156:hex {ee}*148";
  shows("hi ct fd00::12", {13, 19, 204816}, "0:u32 6 4:hex fd{00}*14 12",
        "20:u32 2 +44 " + first + " +348 0:u32 6 4:hex fd{00}*14 12 28:u16 6 72:text web",
        "num=2\n" + kConnectionHead +
            unfolded("65535\t49153\t1.2.3.4\t443\t000000ab \t18446744073709551615\t4000000000\t128\t108\t"
                     "4194303\t132\t136\t148\t152\t{n}*36\n"
                     "6\t0\tfd00::12\t0\t00000000 \t0\t0\t0\t0\t0\t0\t0\t0\t0\tweb\n\n"));
  shows("hi ct 10.0.0.2", {13, 19, 204816}, "0:u32 4 4:ip 10.0.0.2", "", "num=0\n" + kConnectionHead + "\n");
  rejects("ip", {"hi ct", "hi ct tv"});
}

TEST(Hi, Settings) {
  sends("hi set_ageing 90", {13, 24}, "0:u32 90");
  sends("hi set_ageing", {13, 24}, "");
  sends("hi set_ageing3 -1", {13, 29}, "0:u32 -1");

  const std::string answered = "4:u32 4 8:ip 10.0.0.9 24:u32 -1";
  const std::string out = "ip:10.0.0.9,flag:-1\n";
  const Route route = {13, 51, 0x400000};
  shows("hi redirct_flag set 10.0.0.2 0x102", route, "0:u32 1 4 8:ip 10.0.0.2 24:u32 0x102", answered, out);
  shows("hi redirct_flag get fd00::12", route, "4:u32 6 8:hex fd{00}*14 12", answered, out);
  shows("hi redirct_flag get 10.0.0.2 9", route, "4:u32 4 8:ip 10.0.0.2", answered, out);
  // Any other word than "get" sets.
  shows("hi redirct_flag show 10.0.0.2 0", route, "0:u32 1 4 8:ip 10.0.0.2", answered, out);
  rejects("set/get ip flag", {"hi redirct_flag", "hi redirct_flag get", "hi redirct_flag get tv",
                              "hi redirct_flag set 10.0.0.2", "hi redirct_flag set tv 1"});
}

TEST(Hi, ListTestAsksUntilATryFails) {
  const std::string usage = " hi\tlist runinfo ct qq gxcfg_set gxcfg_get set_ageing snmpscan\n";
  const std::pair<Route, std::string> asked = {{13, 1, 0x400000}, ""};
  const Outcome refused = vek("hi list_test", {.then = {{.answer = "4:u32 1"}, {.result = 3}}});
  expect_orders(refused, {asked, asked, asked});
  expect_end(refused, 1, "", "err:no such entry \n" + usage);
  const Outcome failed = vek("hi list_test", {.returned = -1});
  expect_orders(failed, {asked});
  expect_end(failed, 1, "", " " + vek_path() + " hi list_test  \n\t\terr:order_opt_fun false!\n" + usage);
}

// The scripted library overwrites a setting's text with the next one.
const std::string kCommunity = answer("tvl_nv_get_def:snmp_prro", 1, "0:text secret");
const std::string kPeer = answer("tvl_nv_get_def:snmp_prnm", 1, "0:text 10.0.0.8");

TEST(Hi, SnmpScan) {
  const auto mac = [](long returned, const std::string& found) {
    return answer("snmp_get_mac_by_ipstr", returned, "0:hex " + found);
  };
  // The second host is not to be asked.
  const std::string hosts =
      list_of(1144, {"56:u32 4 60:ip 10.0.0.2", "56:u32 4 60:ip 10.0.0.3 113:u8 1", "56:u32 4 60:ip 10.0.0.4",
                     "56:u32 6 60:hex fd{00}*14 12", "56:u32 4 60:ip 10.0.0.5"});
  const std::string script =
      kCommunity + kPeer + mac(0, "a00b0c0d0e0f") + mac(-1, "{ff}*6") + mac(0, "020000000009");
  const Outcome outcome =
      vek("hi snmpscan", {.answer = hosts, .script = script, .then = {{}, {.result = 3}, {.returned = -1}}});
  std::vector<std::string> calls = {"tvl_nv_get_def snmp_prro", "tvl_nv_get_def snmp_prnm"};
  for (const std::string ip : {"10.0.0.2", "10.0.0.4", "fd00::12", "10.0.0.5"})
    calls.push_back("snmp_get_mac_by_ipstr secret 10.0.0.8 " + ip);
  EXPECT_EQ(outcome.calls, calls);
  expect_end(outcome, 0,
             "snmp ip mac do...\nIP[10.0.0.2] <===> realMAC[A0 0B 0C 0D 0E 0F] set success!\n"
             "IP[10.0.0.4] snmp find MAC error!IP[fd00::12] real MAC[02 00 00 00 00 09] set error!\n"
             "IP[10.0.0.5] real MAC[02 00 00 00 00 09] set error!\n");
  expect_orders(outcome, {{{13, 64, 0x400000}, ""},
                          {{13, 63, 512}, "0:u32 4 4:ip 10.0.0.2 20:hex a00b0c0d0e0f"},
                          {{13, 63, 512}, "0:u32 6 4:hex fd{00}*14 12 020000000009"},
                          {{13, 63, 512}, "0:u32 4 4:ip 10.0.0.5 20:hex 020000000009"}});
  const Outcome full = vek("hi snmpscan", {.answer = "4:u32 -1", .script = kCommunity + kPeer + mac(-1, "")});
  EXPECT_EQ(full.calls.size(), 2u + 3666u);
}

TEST(Hi, SnmpScanWithoutSettings) {
  const char* null = "snmp ip mac do...\nsnmpd comm or prnm is null!";
  for (const auto& [script, out] :
       {std::pair<std::string, std::string>("", "not peername"),
        {kCommunity + answer("tvl_nv_get_def:snmp_prnm", 1, "0:text switch1"), "not peername"},
        {kPeer, null},
        {answer("tvl_nv_get_def:snmp_prro", 1) + kPeer, null}}) {
    const Outcome outcome = vek("hi snmpscan", {.answer = "4:u32 1", .script = script});
    expect_orders(outcome, {{{13, 64, 0x400000}, ""}});
    expect_end(outcome, 0, out);
  }
}

}  // namespace
