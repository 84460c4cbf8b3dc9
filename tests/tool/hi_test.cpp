// hi: what it sends and what it prints.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/driver.h"

namespace {

const std::string kUsage = " hi\tlist runinfo ct qq gxcfg_set gxcfg_get set_ageing snmpscan\n";
const std::string kListHead =
    "ip\t\t sp[up]\t sp[down]\t flag ct_count ct_max ct_create count[up] count_skb[up] count[down] "
    "count_skb[down] start_tm last_tm \n\n";
const std::string kConnectionHead =
    "prot\tin_port\tfip\t\tf_port\tid \t  qtype\ttm\tp[up]\tp[down]\ts[up]\ts[down] sz[up]\tsz[down] "
    "z[up]\tz[down]\n\n";

constexpr size_t kRoom = 0x400000 - 16 - 8;  // for the entries of a list

// A combined address value.
Bytes address(const std::string& dotted) { return Bytes().u32(0, 4).ip(4, dotted); }
Bytes address6() { return Bytes().u32(0, 6).hex(4, "fd000000000000000000000000000012"); }

size_t count_of(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size()) ++count;
  return count;
}

// A host whose every field differs; bytes that are nobody's are set, too.
Bytes host() {
  return Bytes()
      .u64(0, 0xF00000080000005)
      .u64(8, 1700000001)
      .u64(16, 1700000002)
      .u64(24, UINT64_MAX)
      .hex(32, "eeeeeeeeeeeeeeee")
      .u64(40, 3 * 1024 + 1023)
      .u64(48, UINT64_MAX)
      .at(56, address("10.0.0.2"))
      .ip(76, "10.0.0.3")
      .ip(80, "10.0.0.1")
      .u32(84, 0xFFFFFFFF)
      .u32(88, 88)
      .u32(92, 0x80000000)
      .u32(96, 96)
      .hex(100, "a00102030405")
      .hex(106, "b00102030405")
      .u8(112, 112)
      .u8(115, 115)
      .u8(116, 116)
      .u8(117, 217)
      .hex(118, "ee")
      .u8(119, 119)
      .u8(120, 120)
      .hex(121, "ee")
      .u16(122, 65535)
      .u16(124, 124)
      .u16(126, 4094)
      .u64(408, 408 * 1024)
      .u64(416, 416)
      .u64(424, UINT64_MAX)
      .u64(432, 432)
      .text(440, "tv")
      .u8(568, 1)
      .u8(570, 2)
      .u8(569, 3)
      .u8(571, 171)
      .text(572, "http://10.0.0.1/%s%n")
      .u16(858, 8580)
      .text(860, "agent/1 (x)")
      .text(988, "lan0")
      .text(1037, "Television")
      .u32(1068, 0xFFFFFFFE)
      .u8(1072, 172)
      .hex(1073, "ee")
      .hex(1143, "ee");
}

std::string host_text(const std::string& vlan_and_devices) {
  return "ip:10.0.0.2 ,arp_ip:10.0.0.3,local_ip:10.0.0.1\n"
         "  hostname:tv,device_name:Television\n" +
         vlan_and_devices +
         "  sp[up]:3K/s sp[down]:18014398509481983K/s creat_tm:1700000001  last_tm:1700000002 "
         "del_tm:18446744073709551615\n"
         "  pc_flag:172, sys_type:-2, user_agent:agent/1 (x)\n"
         "  up:408K up_pkt:416 down:18014398509481983K down_pkt:432\n";
}

const std::string kLogin =
    "  block:112,apidx:119,5g:120,orsal:0,user_card_type:171,user_login_type:115\n"
    "  typeid_ipstr:217,typeid_user:65535\n";

const std::string kHost =
    host_text(
        "  local_mac:a0:01:02:03:04:05 real_mac:b0:01:02:03:04:05 auto_jb:116 typeid:217 vlanid:4094\n") +
    "  flag:1080863912716402693[0|2|31|]  third[1,2,3] redirt_url:http://10.0.0.1/%s%n\n"
    "  speed_limit:-1|88 devname:lan0\n"
    "  tmp_speed_limit:-2147483648|96" +
    kLogin + "  mr_id:124, pppdp_mr_id:8580\n\n";

TEST(Hi, HostLists) {
  struct {
    const char* word;
    uint32_t command;
  } const lists[] = {{"list", 1}, {"ws_list", 62}};
  // The second host is on the portal, has an IPv6 address, and its texts fill their fields without a NUL.
  const Bytes second = Bytes()
                           .at(56, address6())
                           .u8(114, 1)
                           .text(440, std::string(128, 'h'))
                           .text(572, std::string(286, 't'))
                           .text(860, std::string(128, 'a'))
                           .text(988, std::string(49, 'v'))
                           .text(1037, std::string(31, 'n'));
  const std::string second_text =
      "ip:fd00::12 ,arp_ip:0.0.0.0,local_ip:0.0.0.0\n"
      "  hostname:" +
      std::string(128, 'h') + ",device_name:" + std::string(31, 'n') +
      "\n"
      "  local_mac:00:00:00:00:00:00 real_mac:00:00:00:00:00:00 auto_jb:0 typeid:0 vlanid:0\n"
      "  sp[up]:0K/s sp[down]:0K/s creat_tm:0  last_tm:0 del_tm:0\n"
      "  pc_flag:0, sys_type:0, user_agent:" +
      std::string(128, 'a') +
      "\n"
      "  up:0K up_pkt:0 down:0K down_pkt:0\n"
      "  flag:0[]  third[0,0,0] orsal_token:" +
      std::string(286, 't') +
      "\n"
      "  speed_limit:0|0 devname:" +
      std::string(49, 'v') +
      "\n"
      "  tmp_speed_limit:0|0  block:0,apidx:0,5g:0,orsal:1,user_card_type:0,user_login_type:0\n"
      "  typeid_ipstr:0,typeid_user:0\n"
      "  mr_id:0, pppdp_mr_id:0\n\n";
  for (const auto& list : lists) {
    const Outcome outcome = vek({"hi", list.word, "ignored"},
                                {{.payload = Bytes().u32(4, 2).at(8, host()).at(8 + 1144, second)}});
    expect_order(outcome, 13, list.command, 0x400000, Bytes());
    expect_end(outcome, 0, "num:2\n" + kListHead + kHost + second_text);
    expect_end(vek({"hi", list.word}), 0, "num:0\n" + kListHead);
  }
}

TEST(Hi, FlagBits) {
  const auto flags = [](uint64_t flag) {
    const std::string out = vek({"hi", "list"}, {{.payload = Bytes().u32(4, 1).u64(8, flag)}}).out;
    const size_t start = out.find("\n  flag:") + 3;
    return out.substr(start, out.find(']', start) + 1 - start);
  };
  EXPECT_EQ(flags(5), "flag:5[0|2|]");
  std::string all = "flag:18446744073709551615[";
  for (int bit = 0; bit < 32; ++bit) all += std::to_string(bit) + "|";
  EXPECT_EQ(flags(UINT64_MAX), all + "]");
}

TEST(Hi, ExtendedList) {
  // Its offsets from 1144 on are the contract of hi_records.h.
  const Bytes second = Bytes()
                           .at(0, host())
                           .text(1144, "wlan0")
                           .u32(1192, 7)
                           .text(1196, "office net")
                           .u32(1232, 0xFFFFFFFF)
                           .hex(1236, "eeeeeeee");
  const Bytes first = Bytes().text(1144, std::string(48, 'i')).text(1196, std::string(36, 's')).u8(114, 9);
  const Outcome outcome =
      vek({"hi", "ai_list"}, {{.payload = Bytes().u32(4, 2).at(8, first).at(8 + 1240, second)}});
  expect_order(outcome, 13, 72, 0x400000, Bytes());
  expect_end(
      outcome, 0,
      "num:2\n" + kListHead +
          "ip:0.0.0.0 ,arp_ip:0.0.0.0,local_ip:0.0.0.0\n"
          "  hostname:,device_name:\n"
          "  devname:,in_devname:" +
          std::string(48, 'i') +
          "\n"
          "  local_mac:00:00:00:00:00:00 real_mac:00:00:00:00:00:00 auto_jb:0 typeid:0\n"
          "  sp[up]:0K/s sp[down]:0K/s creat_tm:0  last_tm:0 del_tm:0\n"
          "  pc_flag:0, sys_type:0, user_agent:\n"
          "  up:0K up_pkt:0 down:0K down_pkt:0\n"
          "  block:0,apidx:0,5g:0,orsal:9,user_card_type:0,user_login_type:0\n"
          "  typeid_ipstr:0,typeid_user:0\n"
          "  mr_id:0,ssid:" +
          std::string(36, 's') + ",vek_out_id:0,ssid_out_id:0\n\n" +
          host_text("  devname:lan0,in_devname:wlan0\n"
                    "  local_mac:a0:01:02:03:04:05 real_mac:b0:01:02:03:04:05 auto_jb:116 typeid:217\n") +
          kLogin + "  mr_id:124,ssid:office net,vek_out_id:7,ssid_out_id:-1\n\n");
}

TEST(Hi, ListsEndWithTheRecord) {
  const auto entries = [](const char* word, uint32_t count) {
    return count_of(vek({"hi", word}, {{.payload = Bytes().u32(4, count)}}).out, "\nip:");
  };
  for (const uint32_t count : {3666u, 3667u, 0x7FFFFFFFu, 0xFFFFFFFFu})
    EXPECT_EQ(entries("list", count), 3666u);
  EXPECT_EQ(entries("list", 3665), 3665u);
  EXPECT_EQ(entries("ai_list", 0xFFFFFFFF), kRoom / 1240);
  EXPECT_EQ(entries("third_list", 0xFFFFFFFF), kRoom / 40);
  const Outcome cut = vek({"hi", "ct", "10.0.0.2"}, {{.payload = Bytes().u32(20, 0xFFFFFFFF)}});
  EXPECT_TRUE(cut.out.starts_with("num=-1\n"));
  EXPECT_EQ(count_of(cut.out, "\n0\t0\t0.0.0.0\t0\t00000000 \t0\t"), (204800u - 44) / 304);

  // The last host that the record has room for.
  const Outcome full = vek({"hi", "list"}, {{.payload = Bytes().u32(4, 3666).at(8 + 3665 * 1144, host())}});
  EXPECT_TRUE(full.out.ends_with(kHost));
}

TEST(Hi, RunCounters) {
  Bytes counters;
  for (uint32_t i = 0; i < 11; ++i) counters.u32(4 * i, 100 + i);
  const Outcome outcome = vek({"hi", "runinfo"}, {{.payload = counters.u32(40, 0xFFFFFFFF)}});
  expect_order(outcome, 13, 8, 20496, Bytes());
  expect_end(outcome, 0,
             "ct_max=102 ct_num=103 ct_alloc_max=104\n"
             "rt_max=100 rt_num=101 \n"
             "skb_zong=105 skb_data=106 \n"
             "host_num=107 host_list_num=108 \n"
             "ddos_drop_pkt=109 broadcast_pkt=-1\n");
}

TEST(Hi, Connections) {
  const Bytes first = Bytes()
                          .at(0, address("1.2.3.4"))
                          .hex(20, "c001")
                          .hex(22, "eeee")
                          .hex(24, "01bb")
                          .u16(28, 65535)
                          .u64(36, UINT64_MAX)
                          .u32(68, 0xAB)
                          .text(72, std::string(36, 'n'))
                          .u32(108, 108 * 1024)
                          .u32(112, 0xFFFFFFFF)
                          .u32(124, 4000000000)
                          .u32(128, 128)
                          .u32(132, 132 * 1024)
                          .u32(136, 136 * 1024 + 1023)
                          .u32(148, 148 * 1024)
                          .u32(152, 152 * 1024)
                          .hex(303, "ee");
  const Bytes second = Bytes().at(0, address6()).text(72, "web").u16(28, 6);
  const Outcome outcome =
      vek({"hi", "ct", "fd00::12"}, {{.payload = Bytes().u32(20, 2).at(44, first).at(44 + 304, second)}});
  expect_order(outcome, 13, 19, 204816, address6());
  expect_end(
      outcome, 0,
      "num=2\n" + kConnectionHead +
          "65535\t49153\t1.2.3.4\t443\t000000ab \t18446744073709551615\t4000000000\t128\t108\t4194303\t132\t"
          "136\t148\t152\t" +
          std::string(36, 'n') + "\n6\t0\tfd00::12\t0\t00000000 \t0\t0\t0\t0\t0\t0\t0\t0\t0\tweb\n\n");
  expect_end(vek({"hi", "ct", "10.0.0.2"}), 0, "num=0\n" + kConnectionHead + "\n");
  expect_rejected({"hi", "ct"}, "ip");
  expect_rejected({"hi", "ct", "tv"}, "ip");
}

TEST(Hi, ThirdList) {
  const Bytes entry = Bytes()
                          .u64(0, UINT64_MAX)
                          .at(8, address("10.0.0.2"))
                          .hex(28, "a00102030405")
                          .u8(34, 134)
                          .u8(35, 235)
                          .hex(36, "eeeeeeee");
  const Outcome outcome =
      vek({"hi", "third_list"}, {{.payload = Bytes().u32(4, 2).at(8, entry).at(48, entry)}});
  expect_order(outcome, 13, 40, 0x400000, Bytes());
  const std::string text =
      "ip:10.0.0.2, mac:a0:01:02:03:04:05, creat_tm:18446744073709551615, clt_installed:134, "
      "device_type:235\n\n";
  expect_end(outcome, 0, "num:2\n" + text + text);
}

TEST(Hi, Settings) {
  expect_setting({"hi", "set_ageing", "90"}, 13, 24, 1040, Bytes().u32(0, 90));
  expect_setting({"hi", "set_ageing"}, 13, 24, 1040, Bytes());
  expect_setting({"hi", "set_ageing3", "-1"}, 13, 29, 1040, Bytes().u32(0, 0xFFFFFFFF));

  const Bytes answer = Bytes().at(4, address("10.0.0.9")).u32(24, 0xFFFFFFFF);
  const Outcome set = vek({"hi", "redirct_flag", "set", "10.0.0.2", "0x102"}, {{.payload = answer}});
  expect_order(set, 13, 51, 0x400000, Bytes().u32(0, 1).at(4, address("10.0.0.2")).u32(24, 0x102));
  expect_end(set, 0, "ip:10.0.0.9,flag:-1\n");
  const Outcome get = vek({"hi", "redirct_flag", "get", "fd00::12", "9"}, {{.payload = answer}});
  expect_order(get, 13, 51, 0x400000, Bytes().at(4, address6()));
  // Any other word than "get" sets.
  expect_order(vek({"hi", "redirct_flag", "show", "10.0.0.2", "0"}), 13, 51, 0x400000,
               Bytes().u32(0, 1).at(4, address("10.0.0.2")));
  expect_rejected({"hi", "redirct_flag", "set", "10.0.0.2"}, "set/get ip flag");
  expect_rejected({"hi", "redirct_flag", "get"}, "set/get ip flag");
  expect_rejected({"hi", "redirct_flag", "get", "tv"}, "set/get ip flag");
}

TEST(Hi, UnknownWords) {
  for (const char* word : {"qq", "gxcfg_set", "gxcfg_get", "LIST", ""}) {
    const Outcome outcome = vek({"hi", word});
    EXPECT_TRUE(outcome.orders.empty());
    expect_end(outcome, 1, "", kUsage);
  }
  expect_end(vek({"hi"}), 1, "", kUsage);
}

TEST(Hi, ListTestAsksUntilATryFails) {
  const Outcome refused = vek({"hi", "list_test"}, {{}, {.payload = Bytes().u32(4, 1)}, {.result = 3}});
  ASSERT_EQ(refused.orders.size(), 3u);
  for (const Order& order : refused.orders) {
    EXPECT_EQ(order.command, 1u);
    EXPECT_EQ(order.payload, "");
  }
  expect_end(refused, 1, "", "err:no such entry \n" + kUsage);
  const Outcome failed = vek({"hi", "list_test"}, {{.returned = -1}});
  EXPECT_EQ(failed.orders.size(), 1u);
  expect_end(failed, 1, "", " " + vek_path() + " hi list_test  \n\t\terr:order_opt_fun false!\n" + kUsage);
}

// The scripted library overwrites a setting's text with the next one.
constexpr const char* kSettings =
    "answer tvl_nv_get_def:snmp_prro 1 736563726574\n"       // secret
    "answer tvl_nv_get_def:snmp_prnm 1 31302e302e302e38\n";  // 10.0.0.8

TEST(Hi, SnmpScan) {
  const Bytes hosts = Bytes()
                          .u32(4, 5)
                          .at(8 + 56, address("10.0.0.2"))
                          .at(8 + 1144 + 56, address("10.0.0.3"))
                          .u8(8 + 1144 + 113, 1)  // not to be asked
                          .at(8 + 2 * 1144 + 56, address("10.0.0.4"))
                          .at(8 + 3 * 1144 + 56, address6())
                          .at(8 + 4 * 1144 + 56, address("10.0.0.5"));
  const Outcome outcome =
      vek({"hi", "snmpscan"}, {{.payload = hosts}, {}, {.result = 3}, {.returned = -1}},
          {.script = std::string(kSettings) + "answer snmp_get_mac_by_ipstr 0 a00b0c0d0e0f\n"
                                              "answer snmp_get_mac_by_ipstr -1 ffffffffffff\n"
                                              "answer snmp_get_mac_by_ipstr 0 020000000009\n"});
  const std::vector<std::string> calls = {"tvl_nv_get_def snmp_prro",
                                          "tvl_nv_get_def snmp_prnm",
                                          "snmp_get_mac_by_ipstr secret 10.0.0.8 10.0.0.2",
                                          "snmp_get_mac_by_ipstr secret 10.0.0.8 10.0.0.4",
                                          "snmp_get_mac_by_ipstr secret 10.0.0.8 fd00::12",
                                          "snmp_get_mac_by_ipstr secret 10.0.0.8 10.0.0.5"};
  EXPECT_EQ(outcome.calls, calls);
  expect_end(outcome, 0,
             "snmp ip mac do...\n"
             "IP[10.0.0.2] <===> realMAC[A0 0B 0C 0D 0E 0F] set success!\n"
             "IP[10.0.0.4] snmp find MAC error!"
             "IP[fd00::12] real MAC[02 00 00 00 00 09] set error!\n"
             "IP[10.0.0.5] real MAC[02 00 00 00 00 09] set error!\n");
  ASSERT_EQ(outcome.orders.size(), 4u);
  EXPECT_EQ(outcome.orders[0].command, 64u);
  EXPECT_EQ(outcome.orders[0].length, 0x400000u);
  const Bytes updates[] = {Bytes().at(0, address("10.0.0.2")).hex(20, "a00b0c0d0e0f"),
                           Bytes().at(0, address6()).hex(20, "020000000009"),
                           Bytes().at(0, address("10.0.0.5")).hex(20, "020000000009")};
  for (size_t i = 0; i < std::size(updates); ++i) {
    Outcome one;
    one.orders = {outcome.orders[i + 1]};
    expect_order(one, 13, 63, 512, updates[i]);
  }
}

TEST(Hi, SnmpScanWithoutSettings) {
  const Bytes one = Bytes().u32(4, 1);
  const auto out = [&](const std::string& script) {
    const Outcome outcome = vek({"hi", "snmpscan"}, {{.payload = one}}, {.script = script});
    EXPECT_EQ(outcome.orders.size(), 1u);
    EXPECT_EQ(outcome.status, 0);
    return outcome.out;
  };
  EXPECT_EQ(out(""), "not peername");
  EXPECT_EQ(out("answer tvl_nv_get_def:snmp_prro 1 736563726574\n"
                "answer tvl_nv_get_def:snmp_prnm 1 73776974636831\n"),
            "not peername");  // a name
  const std::string null = "snmp ip mac do...\nsnmpd comm or prnm is null!";
  EXPECT_EQ(out("answer tvl_nv_get_def:snmp_prnm 1 31302e302e302e38\n"), null);
  EXPECT_EQ(out("answer tvl_nv_get_def:snmp_prro 1\nanswer tvl_nv_get_def:snmp_prnm 1 31302e302e302e38\n"),
            null);
}

}  // namespace
