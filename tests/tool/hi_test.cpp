// hi: what it sends and what it prints.
#include <gtest/gtest.h>

#include <array>

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

// Numbers at offsets: {offset, width, value}.
Bytes numbers(std::initializer_list<std::array<uint64_t, 3>> fields) {
  Bytes bytes;
  for (const auto& [offset, width, value] : fields) {
    for (uint64_t i = 0; i < width; ++i) bytes.u8(offset + i, value >> (8 * i) & 0xFF);
  }
  return bytes;
}

struct Texts {
  std::string name, device, agent, dev, portal;
};
const Texts kShort = {"tv", "Television", "agent/1 (x)", "lan0", "http://10.0.0.1/%s%n"};
// They fill their fields, without a NUL.
const Texts kLong = {std::string(128, 'h'), std::string(31, 'n'), std::string(128, 'a'), std::string(49, 'v'),
                     std::string(286, 't')};

// clang-format off
// A host whose every field differs; bytes that are nobody's are set, too.
Bytes host(const Texts& texts, uint8_t portal, const Bytes& ip) {
  return numbers({
      {0, 8, 0xF00000080000005}, {8, 8, 1700000001}, {16, 8, 1700000002}, {24, 8, UINT64_MAX},
      {32, 8, UINT64_MAX}, {40, 8, 4095}, {48, 8, UINT64_MAX}, {84, 4, 0xFFFFFFFF}, {88, 4, 88},
      {92, 4, 1U << 31}, {96, 4, 96}, {112, 1, 112}, {114, 1, portal}, {115, 1, 115}, {116, 1, 116},
      {117, 1, 217}, {118, 1, 0xEE}, {119, 1, 119}, {120, 1, 120}, {121, 1, 0xEE}, {122, 2, 65535},
      {124, 2, 124}, {126, 2, 4094}, {408, 8, 408 * 1024}, {416, 8, 416}, {424, 8, UINT64_MAX},
      {432, 8, 432}, {568, 1, 1}, {569, 1, 3}, {570, 1, 2}, {571, 1, 171}, {858, 2, 8580},
      {1068, 4, 0xFFFFFFFE}, {1072, 1, 172}, {1073, 8, UINT64_MAX}, {1143, 1, 0xEE}})
      .at(56, ip)
      .ip(76, "10.0.0.3")
      .ip(80, "10.0.0.1")
      .hex(100, "a00102030405b00102030405")
      .text(440, texts.name)
      .text(572, texts.portal)
      .text(860, texts.agent)
      .text(988, texts.dev)
      .text(1037, texts.device);
}
// clang-format on

// What both kinds of lists print of it, around what only one of them has.
std::string host_text(const Texts& texts, const std::string& ip, const std::string& devices,
                      const std::string& vlan, const std::string& flags, int portal, const std::string& end) {
  return "ip:" + ip + " ,arp_ip:10.0.0.3,local_ip:10.0.0.1\n  hostname:" + texts.name +
         ",device_name:" + texts.device + "\n" + devices +
         "  local_mac:a0:01:02:03:04:05 real_mac:b0:01:02:03:04:05 auto_jb:116 typeid:217" + vlan +
         "\n  sp[up]:3K/s sp[down]:18014398509481983K/s creat_tm:1700000001  last_tm:1700000002 "
         "del_tm:18446744073709551615\n  pc_flag:172, sys_type:-2, user_agent:" +
         texts.agent + "\n  up:408K up_pkt:416 down:18014398509481983K down_pkt:432\n" + flags +
         "  block:112,apidx:119,5g:120,orsal:" + std::to_string(portal) +
         ",user_card_type:171,user_login_type:115\n  typeid_ipstr:217,typeid_user:65535\n  mr_id:124," + end +
         "\n\n";
}

std::string list_text(const Texts& texts, const std::string& ip, int portal, const std::string& label) {
  return host_text(texts, ip, "", " vlanid:4094",
                   "  flag:1080863912716402693[0|2|31|]  third[1,2,3] " + label + ":" + texts.portal +
                       "\n  speed_limit:-1|88 devname:" + texts.dev + "\n  tmp_speed_limit:-2147483648|96",
                   portal, " pppdp_mr_id:8580");
}

const Bytes kHost = host(kShort, 0, address("10.0.0.2"));
const std::string kHostText = list_text(kShort, "10.0.0.2", 0, "redirt_url");

TEST(Hi, HostLists) {
  const Bytes two = Bytes().u32(4, 2).at(8, kHost).at(8 + 1144, host(kLong, 9, address6()));
  for (const auto& [word, command] : {std::pair("list", 1u), {"ws_list", 62u}}) {
    const Outcome outcome = vek({"hi", word, "ignored"}, {{.payload = two}});
    expect_order(outcome, 13, command, 0x400000, Bytes());
    expect_end(outcome, 0,
               "num:2\n" + kListHead + kHostText + list_text(kLong, "fd00::12", 9, "orsal_token"));
    expect_end(vek({"hi", word}), 0, "num:0\n" + kListHead);
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
  const auto entry = [](const Texts& texts, const std::string& in_devname, const std::string& ssid) {
    return Bytes()
        .at(0, host(texts, 9, address("10.0.0.2")))
        .text(1144, in_devname)
        .u32(1192, 7)
        .text(1196, ssid)
        .u32(1232, 0xFFFFFFFF)
        .hex(1236, "eeeeeeee");
  };
  const auto text = [](const Texts& texts, const std::string& in_devname, const std::string& ssid) {
    return host_text(texts, "10.0.0.2", "  devname:" + texts.dev + ",in_devname:" + in_devname + "\n", "", "",
                     9, "ssid:" + ssid + ",vek_out_id:7,ssid_out_id:-1");
  };
  const std::string device(48, 'i');
  const std::string network(36, 's');
  const Outcome outcome =
      vek({"hi", "ai_list"}, {{.payload = Bytes()
                                              .u32(4, 2)
                                              .at(8, entry(kLong, device, network))
                                              .at(8 + 1240, entry(kShort, "wlan0", "office"))}});
  expect_order(outcome, 13, 72, 0x400000, Bytes());
  expect_end(outcome, 0,
             "num:2\n" + kListHead + text(kLong, device, network) + text(kShort, "wlan0", "office"));
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
  const Outcome full = vek({"hi", "list"}, {{.payload = Bytes().u32(4, 3666).at(8 + 3665 * 1144, kHost)}});
  EXPECT_TRUE(full.out.ends_with(kHostText));
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
  // clang-format off
  const Bytes first = numbers({
      {20, 2, 0x01C0}, {22, 2, 0xEEEE}, {24, 2, 0xBB01}, {28, 2, 65535}, {36, 8, UINT64_MAX},
      {68, 4, 0xAB}, {108, 4, 108 * 1024}, {112, 4, 0xFFFFFFFF}, {124, 4, 4000000000}, {128, 4, 128},
      {132, 4, 132 * 1024}, {136, 4, 137 * 1024 - 1}, {148, 4, 148 * 1024}, {152, 4, 152 * 1024},
      {303, 1, 0xEE}})
                          .at(0, address("1.2.3.4"))
                          .text(72, std::string(36, 'n'));
  // clang-format on
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
