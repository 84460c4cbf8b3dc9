// rule: the access, whitelist, multi-line routing and filter tables.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/driver.h"

namespace {

// Payloads read best with several fields a line.
// clang-format off

using Words = std::vector<std::string>;

Words rule(const Words& words) {
  Words all = {"rule"};
  all.insert(all.end(), words.begin(), words.end());
  return all;
}

std::string items(const std::string& item, int count) {
  std::string list;
  for (int i = 0; i < count; ++i) list += item + ",";
  return list;
}

// The two lines of a refusal or of a failed exchange.
std::string report(const Words& words, const std::string& text, const std::string& why) {
  return " " + vek_path() + " rule " + words[0] + " " + text + "\n\t\terr:" + why + "\n";
}

const std::string kAccAdd = "add NAME RPRI IPS ACT LOG THD_TYPE THD IPPORT";
const std::string kMrouteAdd =
    "vek rule mroute add name ip_duan log prio wans thd_type thd shibie_id ipport no_change";
const std::string kFilterAdd = "vek rule filter add  name prio hi_type log act gid  shibie_ids ";
const std::string kHitDel = "vek rule mroute hit_del/hit_delall name";

// class 3 negated, 10.0.0.0/8, tcp to port 80, DNS line 2 negated and type 7: 20 + 8 + 12 bytes.
const std::string kDestination = "not-class=3+ip=10.0.0.0/8+proto=tcp:80+dns=not-line:2,type:7";
const Bytes kDestinationBytes = Bytes().hex(0, "0301010207010000").u16(8, 1).u16(12, 1).u8(15, 7)
    .u32(20, 0x0A000000).u32(24, 0x0AFFFFFF).hex(28, "060000000000ffff50005000");

TEST(RuleRequests, Access) {
  const Bytes addresses = Bytes().text(0, "r1").u16(96, 10).u8(99, 1).u8(100, 1).u8(103, 2).u8(104, 1)
      .u16(120, 2).u16(122, 2).u16(124, 1).u16(126, 40).u32(128, 8 + 16 + 32 + 40)
      .hex(132, "0300030005000900").u32(140, 0xC0A80100).u32(144, 0xC0A801FF).u32(148, 0x01020304)
      .u32(152, 0x01020304).hex(156, "fd000000000000000000000000000001")
      .hex(172, "fd000000000000000000000000000002").at(188, kDestinationBytes);
  expect_setting(rule({"acc", "add", "r1", "65546", "192.168.1.0/24,fd00::1-fd00::2,1.2.3.4>1", "0", "1", "2",
                       "3,5-9", kDestination, "4"}),
                 11, 9, 10240, addresses);
  const Bytes groups =
      Bytes().text(0, std::string(63, 'n')).u16(122, 2).u32(128, 8).hex(132, "0500050007000900");
  // Any word but "0" accepts; no kind of host at all, or one that is not known, is user groups.
  expect_setting(
      rule({"acc", "add", std::string(80, 'n'), "0", "5,7-9", "00", "0", "0", "", "no such block"}), 11, 9,
      10240, groups);
  expect_setting(rule({"acc", "add", std::string(80, 'n'), "0", "5,7-9>258", "1", "0", "0", "", "", "1"}), 11,
                 9, 10240, Bytes(groups).u8(104, 2));
  const Bytes mac =
      Bytes().text(0, "m").u8(104, 4).hex(108, "a01122334455").u16(120, 1).u32(128, 4).hex(132, "08000800");
  expect_setting(rule({"acc", "add", "m", "0", "a0:11:22:33:44:55", "1", "0", "0", "8", "", "4"}), 11, 9,
                 10240, mac);
  expect_setting(rule({"acc", "add", "m", "0", "a0:11:22:33:44:55>4>1", "1", "0", "0", "8", ""}), 11, 9,
                 10240, mac);
}

TEST(RuleRequests, Whitelist) {
  expect_setting(rule({"whitelist", "add", "w", "1.2.3.4", kDestination}), 11, 39, 10240,
                 Bytes().text(0, "w").u8(64, 1).u16(68, 1).u16(72, 40).u32(76, 48).u32(80, 0x01020304)
                     .u32(84, 0x01020304).at(88, kDestinationBytes));
  expect_setting(rule({"whitelist", "add", "w", "::1", ""}), 11, 39, 10240,
                 Bytes().text(0, "w").u8(64, 1).u16(70, 1).u32(76, 32).u8(95, 1).u8(111, 1));
  const Bytes groups = Bytes().text(0, "w").u16(68, 1).u32(76, 4).hex(80, "05000900");
  expect_setting(rule({"whitelist", "add", "w", "5-9", ""}), 11, 39, 10240, groups);
  expect_setting(rule({"whitelist", "add", "w", "5-9>4", ""}), 11, 39, 10240, Bytes(groups).u8(64, 4));
}

TEST(RuleRequests, Mroute) {
  expect_setting(rule({"mroute", "add", "m", "1.2.3.4,fd00::1", "2", "258", "0,,120,121,-1,x", "3", "1-2",
                       "00010002-0001ffff,20", kDestination, "5", "1"}),
                 11, 13, 20480,
                 Bytes().text(0, "m").u16(96, 258).u8(99, 2).u8(103, 3).u8(104, 5).u16(108, 1).u16(112, 121)
                     .u16(114, 121).u16(116, 65535).u16(118, 1).u16(620, 1).u16(622, 1).u16(624, 1)
                     .u16(626, 2).u16(628, 40).u8(630, 1).u32(632, 4 + 8 + 32 + 16 + 40).hex(636, "01000200")
                     .u32(640, 0x01020304).u32(644, 0x01020304)
                     .hex(648, "fd000000000000000000000000000001fd000000000000000000000000000001")
                     .u32(680, 0x00010002).u32(684, 0x0001FFFF).u32(688, 0x20).u32(692, 0x20)
                     .at(696, kDestinationBytes));
  // All places of the line table, and groups, which stand in for addresses.
  Bytes lines = Bytes().text(0, "m").u16(622, 1).u32(632, 4).hex(636, "08000800");
  for (size_t i = 0; i < 256; ++i) lines.u16(108 + 2 * i, 10);
  expect_setting(rule({"mroute", "add", "m", "8", "0", "0", items("9", 300), "0", "", "", "", "0"}), 11, 13,
                 20480, lines);
}

TEST(RuleRequests, Filter) {
  const Bytes filter = Bytes().text(0, std::string(31, 'f')).u16(32, 1).u8(34, 2).u8(35, 3).u8(36, 1)
      .u8(37, 4).u16(38, 2).hex(40, "0800080064007800");
  const std::string name(40, 'f');
  expect_setting(rule({"filter", "add", name, "1", "2", "3", "0", "4", "8,100-120"}), 11, 20, 10240, filter);
  expect_setting(rule({"filter", "add", name, "1", "2", "3", "drop", "256", "8,100-120"}), 11, 20, 10240,
                 Bytes(filter).u8(36, 0).u8(37, 0));
  expect_setting(rule({"filter", "add", "f", "0", "0", "0", "1", "1", ""}), 11, 20, 10240,
                 Bytes().text(0, "f").u8(37, 1));
  const Outcome nothing = vek(rule({"filter", "add", name, "1", "2", "3", "0", "256", "x"}));
  EXPECT_TRUE(nothing.orders.empty());
  expect_end(nothing, 41, "");
}

TEST(RuleRequests, NamesSwitchesAndNothing) {
  const std::string name(70, 'n');
  const Bytes cut = Bytes().text(0, std::string(63, 'n'));
  expect_setting(rule({"acc", "del", name}), 11, 10, 1024, cut);
  expect_setting(rule({"whitelist", "del", name}), 11, 40, 1024, cut);
  expect_setting(rule({"mroute", "del", name}), 11, 14, 102400, cut);
  expect_setting(rule({"mroute", "hit_del", name}), 11, 52, 102400, cut);
  expect_setting(rule({"filter", "del", name, "257"}), 11, 21, 1024,
                 Bytes().text(0, std::string(31, 'n')).u8(37, 1));
  expect_setting(rule({"acc", "delall", "x"}), 11, 11, 1024, Bytes());
  expect_setting(rule({"whitelist", "delall", "x"}), 11, 41, 1024, Bytes());
  expect_setting(rule({"mroute", "hit_delall", "x"}), 11, 52, 102400, Bytes());
  expect_setting(rule({"mroute", "delall"}), 11, 15, 102400, Bytes());
  expect_setting(rule({"mroute", "delall", "2"}), 11, 15, 102400, Bytes().u8(106, 2));
  expect_setting(rule({"acc", "defset", "off"}), 11, 7, 1024, Bytes());
  expect_setting(rule({"acc", "defset", "accept"}), 11, 7, 1024, Bytes().u32(0, 1));
  expect_setting(rule({"acc", "defset", "drop"}), 11, 7, 1024, Bytes().u32(0, 2));
  const Outcome unknown = vek(rule({"acc", "defset", "foo"}));
  EXPECT_TRUE(unknown.orders.empty());
  expect_end(unknown, 1, "");
}

TEST(RuleReports, UnknownWords) {
  expect_end(vek({"rule"}), 1, "", " rule\tacc mroute  filter whitelist\n");
  expect_end(vek({"rule", "ac", "list"}), 1, "");
  const std::pair<const char*, const char*> usages[] = {
      {"acc", "vek rule acc add/del/list/defset/defget\n"},
      {"whitelist", "vek rule whitelist add/del/list\n"},
      {"mroute", "vek rule mroute add/del/list/hit/hit_del/hit_delall\n"},
      {"filter", " vek rule filter add/del/list \n"}};
  for (const auto& [family, usage] : usages) {
    expect_end(vek({"rule", family}), 1, "", usage);
    expect_end(vek({"rule", family, "LIST"}), 1, "", usage);
  }
}

TEST(RuleReports, TooFewWordsAndFailedGateways) {
  const std::string few = "para is not enough!";
  const std::string failed = "order_opt_fun false!";
  const std::string list_failed = " order_opt_fun false!";
  const struct {
    Words words;
    std::string text;
    std::string why;
  } cases[] = {
      {{"acc", "add", "r", "1", "", "1", "0", "0", ""}, kAccAdd, few},
      {{"acc", "add", "r", "1", "", "1", "0", "0", "", ""}, kAccAdd, failed},
      {{"acc", "del"}, "vek rule acc del name", few},
      {{"acc", "defset"}, "vek rule acc defset act[off|accept|drop]", few},
      {{"acc", "list"}, " vek rule acc list ", list_failed},
      {{"whitelist", "add", "w", ""}, "add name ips ipport", few},
      {{"whitelist", "delall"}, "vek rule acc delall", failed},
      {{"whitelist", "list"}, " vek rule whitelist list ", list_failed},
      {{"mroute", "add", "m", "", "0", "0", "", "0", "", "", ""}, kMrouteAdd, few},
      {{"mroute", "del"}, "vek rule mroute del name", few},
      {{"mroute", "delall"}, "vek rule mroute delall", failed},
      {{"mroute", "list"}, " vek rule mroute list", list_failed},
      {{"mroute", "hit_del", "m"}, kHitDel, list_failed},
      {{"mroute", "hit_delall"}, kHitDel, list_failed},
      {{"filter", "add", "f", "0", "0", "0", "1", "1"}, kFilterAdd, few},
      {{"filter", "del", "f"}, "vek rule filter del  name gid", few},
      {{"filter", "list"}, " vek rule filter list gid", few},
  };
  for (const auto& c : cases) {
    const Outcome outcome = vek(rule(c.words), {{.returned = -1}});
    EXPECT_EQ(outcome.orders.empty(), c.why == few);
    expect_end(outcome, 1, "", report(c.words, c.text, c.why));
  }
  expect_end(vek({"rule", "mroute", "hit_del"}), 1, "", " " + vek_path() + " rule mroute " + kHitDel + "\n");
  expect_end(vek({"rule", "mroute", "del", "m"}, {{.returned = 1}}), 1, "",
             " vek rule mroute del name\n\t\terr:order_opt_fun false!\n");
  expect_end(vek({"rule", "mroute", "hit"}, {{.returned = 1}}), 1, "",
             "  vek rule mroute hit\n\t\terr: order_opt_fun false!\n");
  expect_end(vek({"rule", "acc", "list"}, {{.result = 3}}), 3, "", "err:no such entry \n");
}

// What the lists of each rule add up to when the record is full, and when it would be more than full.
TEST(RuleReports, ListsThatDoNotFit) {
  const std::string ip = "1.2.3.4";
  const auto acc = [](const std::string& ips, const std::string& ids, const std::string& block) {
    return Words{"acc", "add", "r", "1", ips, "1", "0", "0", ids, block};
  };
  const auto white = [](const std::string& ips) { return Words{"whitelist", "add", "w", ips, ""}; };
  const auto mroute = [](const std::string& ids, const std::string& ranges, const std::string& block) {
    return Words{"mroute", "add", "m", "", "0", "0", "", "0", ids, ranges, block, "0"};
  };
  const auto filter = [](const std::string& ids) {
    return Words{"filter", "add", "f", "0", "0", "0", "1", "1", ids};
  };
  const struct {
    Words fits;
    Words too_long;
    std::string text;
    size_t bytes_at;
    uint32_t bytes;
  } cases[] = {
      {acc("", items("7", 2523), ""), acc("", items("7", 2524), ""), kAccAdd, 128, 10092},
      {acc(items("1", 2523), "", ""), acc(items("1", 2523), "2", ""), kAccAdd, 128, 10092},
      {acc(items(ip, 1257) + "::1>1", "7", ""), acc(items(ip, 1258) + "::1>1", "7", ""), kAccAdd, 128, 10092},
      {acc("", "", "ip=" + items(ip, 1259)), acc("", "7", "ip=" + items(ip, 1259)), kAccAdd, 128, 10092},
      {acc("", "", "class=1+proto=" + items("tcp:1:2", 839)),
       acc("", "", "class=1+proto=" + items("tcp:1:2", 840)), kAccAdd, 128, 10088},
      {white(items("::1", 317)), white(items("::1", 318)), "add name ips ipport", 76, 10144},
      {mroute("7", items("1", 2478), ""), mroute("7,8", items("1", 2478), ""), kMrouteAdd, 632, 19828},
      {filter(items("7", 2546)), filter(items("7", 2547)), kFilterAdd, 38, 2546 | 0x00070000},
  };
  for (const auto& c : cases) {
    const Outcome sent = vek(rule(c.fits));
    expect_end(sent, 0, "ok\n");
    ASSERT_EQ(sent.orders.size(), 1U);
    EXPECT_EQ(sent.orders[0].payload.substr(c.bytes_at, 4), Bytes().u32(0, c.bytes).str());
    const Outcome refused = vek(rule(c.too_long));
    EXPECT_TRUE(refused.orders.empty());
    expect_end(refused, 1, "", report(c.too_long, c.text, "para is too long!"));
  }
}

TEST(RuleLists, Access) {
  const Bytes addresses = Bytes().text(0, std::string(64, 'n')).hex(64, "ffffffff").u16(96, 65535).u8(99, 2)
      .u8(100, 1).u8(103, 3).u8(104, 1).u16(120, 2).u16(122, 1).u16(124, 1).u16(126, 1)
      .hex(132, "0300030005000900").u32(140, 0x01020304).u32(144, 0x01020305)
      .hex(148, "fd000000000000000000000000000001fd000000000000000000000000000001").at(180, kDestinationBytes)
      .u8(186, 8).u8(187, 9);
  const Bytes mac =
      Bytes().text(0, "mac").u8(104, 4).hex(108, "a01122334455").u16(122, 9).u16(120, 1).u32(132, 0x00080008);
  const Bytes groups = Bytes().text(0, "groups").u8(104, 7).u16(122, 2).hex(132, "0500050007000900");
  const Outcome outcome = vek({"rule", "acc", "list"},
                              {{.payload = Bytes().u32(4, 3).at(8, addresses).at(228, mac).at(364, groups)}});
  expect_order(outcome, 11, 12, 102400, Bytes());
  expect_end(outcome, 0,
             "num:3\nname:" + std::string(64, 'n') +
                 " prio:65535 log:1 act:drop thd_type:3 thd:3,5-9 ip_duan:1.2.3.4-1.2.3.5,fd00::1,"
                 " cl_type:3 cl_type_fei:1 f_ip:10.0.0.0-10.255.255.255, proto:tcp:80,"
                 " dns_en:1,dns_typeid:7,dns_typeid_fei:8 dns_wanid:2,dns_wanid_fei:1,dns_fei:9\n"
                 "name:mac prio:0 log:0 act:accept thd_type:0 thd:8 mac: a0:11:22:33:44:55"
                 " cl_type: f_ip:  proto: f_dns: \n"
                 "name:groups prio:0 log:0 act:accept thd_type:0 thd: user_group:5,7-9,"
                 " cl_type: f_ip:  proto: f_dns: \n");
  const Bytes none = Bytes().u32(4, 0xFFFFFFFF).at(8, mac);
  expect_end(vek({"rule", "acc", "list"}, {{.payload = none}}), 0, "num:-1\n");
}

TEST(RuleLists, Whitelist) {
  const Bytes first =
      Bytes().text(0, "w1").u8(64, 1).u16(68, 1).u16(72, 40).u32(80, 1).u32(84, 2).at(88, kDestinationBytes);
  const Bytes second = Bytes().text(0, "w2").u8(64, 4).u16(68, 1).hex(80, "05000900");
  const Outcome outcome =
      vek({"rule", "whitelist", "list"}, {{.payload = Bytes().u32(4, 2).at(8, first).at(136, second)}});
  expect_order(outcome, 11, 42, 102400, Bytes());
  expect_end(outcome, 0,
             "num:2\nname:w1  ip_duan:0.0.0.1-0.0.0.2, cl_type:3 cl_type_fei:1 f_ip:10.0.0.0-10.255.255.255,"
             " proto:tcp:80, dns_en:1,dns_typeid:7,dns_typeid_fei:0 dns_wanid:2,dns_wanid_fei:1,dns_fei:0\n"
             "name:w2  user_group:5-9, cl_type: f_ip:  proto: f_dns: \n");
}

TEST(RuleLists, Mroute) {
  const Bytes first = Bytes().text(0, "m1").u16(96, 1).u8(99, 2).u8(103, 3).u8(104, 4).u8(105, 5)
      .hex(108, "01007900ffff0000c800").u16(620, 1).u16(622, 1).u16(626, 2).u16(628, 20).u8(630, 1)
      .hex(636, "01000200").u32(640, 0x01020304).u32(644, 0x01020304).u32(648, 0x00010002)
      .u32(652, 0x0001FFFF).u32(656, 0x20).u32(660, 0x20);  // and a block of zeros
  const Bytes second = Bytes().text(0, "m2").u16(622, 1).u32(636, 0x00050005);
  const Outcome outcome =
      vek({"rule", "mroute", "list"}, {{.payload = Bytes().u32(4, 2).at(8, first).at(692, second)}});
  expect_order(outcome, 11, 16, 102400, Bytes());
  expect_end(outcome, 0,
             "num:2\nname:m1 prio:1 log:2 no_change:4 rule_type:5  wans[512]:1,121,65535 thd_type:3  thd:1-2"
             " ip_duan:1.2.3.4, shibie_duan:00010002-0001ffff,00000020, cl_type:0 cl_type_fei:0 f_ip: proto:"
             " dns_en:0,dns_typeid:0,dns_typeid_fei:0 dns_wanid:0,dns_wanid_fei:0,dns_fei:0\n"
             "name:m2 prio:0 log:0 no_change:0 rule_type:0  wans[512]: thd_type:0  thd: user_group:5,"
             " shibie_duan:cl_type: f_ip:  proto: f_dns: \n");
}

TEST(RuleLists, FilterHitsAndDefault) {
  const std::string header = " name prio hi_type log act gid  shibie_ids\n";
  const Bytes filter =
      Bytes().text(0, std::string(32, 'f')).u16(32, 1).u8(34, 2).u8(35, 3).u8(36, 4).u8(37, 5);
  const Bytes filters = Bytes().u32(4, 2).at(8, filter).u16(46, 2).hex(48, "0800080064007800").at(56, filter);
  Outcome outcome = vek({"rule", "filter", "list", "259"}, {{.payload = filters}});
  expect_order(outcome, 11, 22, 102400, Bytes().u8(45, 3));
  const std::string line = std::string(32, 'f') + " 1 2 3 drop 5  ";
  expect_end(outcome, 0, "num:2\n" + header + line + "8,100-120\n" + line + "\n");
  expect_end(vek({"rule", "filter", "list", "3"}), 0, "num:0\n" + header);

  const Bytes hits =
      Bytes().u32(4, 2).text(8, "m").u64(72, UINT64_MAX).text(80, std::string(64, 'm')).u64(144, 7);
  outcome = vek({"rule", "mroute", "hit"}, {{.payload = hits}});
  expect_order(outcome, 11, 51, 102400, Bytes());
  expect_end(outcome, 0,
             "num: 2\nname                hit\nm                    18446744073709551615\n" +
                 std::string(64, 'm') + " 7\n");

  const char* actions[] = {"off", "accept", "drop", "error"};
  for (uint32_t action = 0; action < 4; ++action) {
    outcome = vek({"rule", "acc", "defget"}, {{.payload = Bytes().u32(0, action)}});
    expect_order(outcome, 11, 8, 1024, Bytes());
    expect_end(outcome, 0, std::string("defact=") + actions[action] + "\nok\n");
  }
}

// Counts that claim more than the record holds end the list, and the record that made the claim is the last.
TEST(RuleLists, EndWithTheRecord) {
  const auto lines = [](const char* family, const Bytes& payload) {
    const Words words = {"rule", family, "list", "1"};
    const Outcome outcome =
        vek(words, {{.payload = Bytes(payload).u32(4, 0x7FFFFFFF), .header = Bytes().u32(4, 0xFFFFFFFF)}});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    return std::count(outcome.out.begin(), outcome.out.end(), '\n');
  };
  constexpr size_t kRoom = 102400 - 16 - 8;
  EXPECT_EQ(lines("acc", {}), 1 + kRoom / 132);
  EXPECT_EQ(lines("filter", {}), 2 + kRoom / 40);
  EXPECT_EQ(lines("mroute", {}), 1 + kRoom / 636);

  const Bytes access = Bytes().u8(8 + 104, 1);
  const Bytes block = Bytes(access).u16(8 + 126, 1);
  for (const size_t count : {120, 122, 124}) EXPECT_EQ(lines("acc", Bytes(access).u16(8 + count, 65535)), 2);
  for (const size_t count : {8, 10, 12}) EXPECT_EQ(lines("acc", Bytes(block).u16(140 + count, 65535)), 2);
  // The 20 bytes that the IPv6 ranges leave over are no destination block.
  const Bytes leftover = Bytes(block).u32(4, 1).u16(8 + 120, 4).u16(8 + 124, 65535).u8(8 + kRoom - 20, 3);
  EXPECT_NE(vek({"rule", "acc", "list"}, {{.payload = leftover}}).out.find(" cl_type:0 "), std::string::npos);
  EXPECT_EQ(lines("acc", Bytes(block).u16(8 + 120, (kRoom - 132 - 8) / 4)), 2);
  EXPECT_EQ(lines("mroute", Bytes().u16(8 + 626, 65535)), 2);
  EXPECT_EQ(lines("filter", Bytes().u16(8 + 38, 65535)), 3);
}

// clang-format on

}  // namespace
