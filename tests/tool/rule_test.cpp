// rule: the access, whitelist, multi-line routing and filter tables.
#include "tool/driver.h"

namespace {

const std::string kAccAdd = "add NAME RPRI IPS ACT LOG THD_TYPE THD IPPORT";
const std::string kWhiteAdd = "add name ips ipport";
const std::string kMrouteAdd =
    "vek rule mroute add name ip_duan log prio wans thd_type thd shibie_id ipport no_change";
const std::string kFilterAdd = "vek rule filter add  name prio hi_type log act gid  shibie_ids ";
const std::string kHitDel = "vek rule mroute hit_del/hit_delall name";

// class 3 negated, 10.0.0.0/8, tcp to port 80, DNS line 2 negated and type 7: 20 + 8 + 12 bytes.
const std::string kBlock = "not-class=3+ip=10.0.0.0/8+proto=tcp:80+dns=not-line:2,type:7";
const std::string kBlockBytes =
    " 0:hex 0301010207010000 8:u16 1 12:u16 1 15:u8 7 20:u32 0x0A000000 0x0AFFFFFF 28:hex "
    "060000000000ffff50005000 ";
const std::string kBlockOut =
    " proto:tcp:80, dns_en:1,dns_typeid:7,dns_typeid_fei:0 dns_wanid:2,dns_wanid_fei:1,dns_fei:0\n";
const std::string kNoBlockOut = "cl_type: f_ip:  proto: f_dns: \n";

TEST(Rule, AccessRequests) {
  sends("rule acc add r1 65546 192.168.1.0/24,fd00::1-fd00::2,1.2.3.4>1 0 1 2 3,5-9 " + kBlock + " 4",
        {11, 9, 10240},
        "0:text r1 96:u16 10 99:u8 1 1 103:u8 2 1 120:u16 2 2 1 40 128:u32 96 132:u16 3 3 5 9"
        " 140:u32 0xC0A80100 0xC0A801FF 0x01020304 0x01020304 156:hex fd{00}*14 01 fd{00}*14 02 +188" +
            kBlockBytes);
  // Any word but "0" accepts; no kind of host at all, or one that is not known, is user groups.
  const std::string groups = "0:text {n}*63 122:u16 2 128:u32 8 132:u16 5 5 7 9";
  sends("rule acc add {n}*80 0 5,7-9 00 0 0 '' 'no such block'", {11, 9, 10240},
        groups + " 126:u16 20 128:u32 28 140:hex {ff}*20");
  sends("rule acc add {n}*80 0 5,7-9>258 1 0 0 '' '' 1", {11, 9, 10240}, groups + " 104:u8 2");
  const std::string mac = "0:text m 104:u8 4 108:hex a01122334455 120:u16 1 128:u32 4 132:u16 8 8";
  sends("rule acc add m 0 a0:11:22:33:44:55 1 0 0 8 '' 4", {11, 9, 10240}, mac);
  sends("rule acc add m 0 a0:11:22:33:44:55>4>1 1 0 0 8 ''", {11, 9, 10240}, mac);

  sends("rule whitelist add w 1.2.3.4 " + kBlock, {11, 39, 10240},
        "0:text w 64:u8 1 68:u16 1 72:u16 40 76:u32 48 0x01020304 0x01020304 +88" + kBlockBytes);
  sends("rule whitelist add w ::1 ''", {11, 39, 10240},
        "0:text w 64:u8 1 70:u16 1 76:u32 32 95:u8 1 111:u8 1");
  sends("rule whitelist add w 5-9 ''", {11, 39, 10240}, "0:text w 68:u16 1 76:u32 4 80:u16 5 9");
  sends("rule whitelist add w 5-9>4 ''", {11, 39, 10240}, "0:text w 64:u8 4 68:u16 1 76:u32 4 80:u16 5 9");
}

TEST(Rule, RouteAndFilterRequests) {
  sends(
      "rule mroute add m 1.2.3.4,fd00::1 2 258 0,,120,121,-1,x 3 1-2 00010002-0001ffff,20 " + kBlock + " 5 1",
      {11, 13, 20480},
      "0:text m 96:u16 258 99:u8 2 103:u8 3 5 108:u16 1 0 121 121 -1 1 620:u16 1 1 1 2 40 630:u8 1"
      " 632:u32 100 636:u16 1 2 640:u32 0x01020304 0x01020304 648:hex fd{00}*14 01 fd{00}*14 01"
      " 680:u32 0x00010002 0x0001FFFF 0x20 0x20 +696" +
          kBlockBytes);
  // All places of the line table, and groups, which stand in for addresses.
  sends("rule mroute add m 8 0 0 {9,}*300 0 '' '' '' 0", {11, 13, 20480},
        "0:text m 108:hex {0a00}*256 622:u16 1 632:u32 4 636:u16 8 8");
  const std::string filter = "0:text {f}*31 32:u16 1 34:u8 2 3 1 4 38:u16 2 8 8 100 120";
  sends("rule filter add {f}*40 1 2 3 0 4 8,100-120", {11, 20, 10240}, filter);
  sends("rule filter add {f}*40 1 2 3 drop 256 8,100-120", {11, 20, 10240}, filter + " 36:u8 0 0");
  sends("rule filter add f 0 0 0 1 1 ''", {11, 20, 10240}, "0:text f 37:u8 1");
  expect_unsent(vek("rule filter add f 1 2 3 0 256 ,"), 41, "");
}

TEST(Rule, NamesAndSwitches) {
  sends("rule acc del {n}*70", {11, 10, 1024}, "0:text {n}*63");
  sends("rule whitelist del {n}*70", {11, 40, 1024}, "0:text {n}*63");
  sends("rule mroute del {n}*70", {11, 14, 102400}, "0:text {n}*63");
  sends("rule mroute hit_del {n}*70", {11, 52, 102400}, "0:text {n}*63");
  sends("rule filter del {n}*70 257", {11, 21, 1024}, "0:text {n}*31 37:u8 1");
  sends("rule acc delall x", {11, 11, 1024}, "");
  sends("rule whitelist delall x", {11, 41, 1024}, "");
  sends("rule mroute hit_delall x", {11, 52, 102400}, "");
  sends("rule mroute delall", {11, 15, 102400}, "");
  sends("rule mroute delall 2", {11, 15, 102400}, "106:u8 2");
  const char* const actions[] = {"off", "accept", "drop", "error"};
  for (int i = 0; i < 4; ++i) {
    const std::string action = actions[i];
    const std::string number = "0:u32 " + std::to_string(i);
    if (i < 3) sends("rule acc defset " + action, {11, 7, 1024}, number);
    shows("rule acc defget", {11, 8, 1024}, "", number, "defact=" + action + "\nok\n");
  }
  expect_unsent(vek("rule acc defset foo"), 1, "");
}

TEST(Rule, UnknownWords) {
  expect_unsent(vek("rule ac list"), 1, "");
  for (const std::string word : {"", " LIST"}) {
    expect_unsent(vek("rule acc" + word), 1, "", "vek rule acc add/del/list/defset/defget\n");
    expect_unsent(vek("rule whitelist" + word), 1, "", "vek rule whitelist add/del/list\n");
    expect_unsent(vek("rule mroute" + word), 1, "", "vek rule mroute add/del/list/hit/hit_del/hit_delall\n");
    expect_unsent(vek("rule filter" + word), 1, "", " vek rule filter add/del/list \n");
  }
}

// The two lines of a refusal or of a failed exchange.
std::string report(const std::string& words, const std::string& text, const std::string& why) {
  return " " + vek_path() + " rule " + split(words)[1] + " " + text + "\n\t\terr:" + why + "\n";
}

TEST(Rule, TooFewWordsAndFailedGateways) {
  const std::string few = "para is not enough!";
  const std::string failed = "order_opt_fun false!";
  const std::string list_failed = " order_opt_fun false!";
  const struct {
    std::string words, text, why;
  } cases[] = {
      {"rule acc add r 1 '' 1 0 0 ''", kAccAdd, few},
      {"rule acc add r 1 '' 1 0 0 '' ''", kAccAdd, failed},
      {"rule acc del", "vek rule acc del name", few},
      {"rule acc defset", "vek rule acc defset act[off|accept|drop]", few},
      {"rule acc list", " vek rule acc list ", list_failed},
      {"rule whitelist add w ''", kWhiteAdd, few},
      {"rule whitelist delall", "vek rule acc delall", failed},
      {"rule whitelist list", " vek rule whitelist list ", list_failed},
      {"rule mroute add m '' 0 0 '' 0 '' '' ''", kMrouteAdd, few},
      {"rule mroute del", "vek rule mroute del name", few},
      {"rule mroute delall", "vek rule mroute delall", failed},
      {"rule mroute list", " vek rule mroute list", list_failed},
      {"rule mroute hit_del m", kHitDel, list_failed},
      {"rule mroute hit_delall", kHitDel, list_failed},
      {"rule filter add f 0 0 0 1 1", kFilterAdd, few},
      {"rule filter del f", "vek rule filter del  name gid", few},
      {"rule filter list", " vek rule filter list gid", few},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.words);
    const Outcome outcome = vek(c.words, {.returned = -1});
    EXPECT_EQ(outcome.orders.empty(), c.why == few);
    expect_end(outcome, 1, "", report(c.words, c.text, c.why));
  }
  expect_unsent(vek("rule mroute hit_del"), 1, "", " " + vek_path() + " rule mroute " + kHitDel + "\n");
  expect_end(vek("rule mroute del m", {.returned = 1}), 1, "",
             " vek rule mroute del name\n\t\terr:order_opt_fun false!\n");
  expect_end(vek("rule mroute hit", {.returned = 1}), 1, "",
             "  vek rule mroute hit\n\t\terr: order_opt_fun false!\n");
  expect_end(vek("rule acc list", {.result = 3}), 3, "", "err:no such entry \n");
}

// The bytes of a rule's lists with so many of # that they fill the record; one more is too many.
TEST(Rule, ListsThatDoNotFit) {
  const struct {
    std::string words;
    int most;
    std::string text, bytes;
  } cases[] = {
      {"rule acc add r 1 '' 1 0 0 {7,}*# ''", 2523, kAccAdd, "128:u32 10092"},
      {"rule acc add r 1 {1,}*# 1 0 0 2 ''", 2522, kAccAdd, "128:u32 10092"},
      {"rule acc add r 1 {1.2.3.4,}*#::1>1 1 0 0 7 ''", 1257, kAccAdd, "128:u32 10092"},
      {"rule acc add r 1 '' 1 0 0 '' ip={1.2.3.4,}*#", 1259, kAccAdd, "128:u32 10092"},
      {"rule acc add r 1 '' 1 0 0 '' class=1+proto={tcp:1:2,}*#", 839, kAccAdd, "128:u32 10088"},
      {"rule acc add r 1 '' 1 0 0 {7,}*# not-class=1+dns=line:1,type:2", 2518, kAccAdd, "128:u32 10092"},
      {"rule acc add r 1 '' 1 0 0 {7,}*# ip=1.1.1.1,,fd00::1,+not-proto=tcp:1:2,udp,", 2502, kAccAdd,
       "128:u32 10092"},
      {"rule acc add r 1 '' 1 0 0 {7,}*# proto=icmp+ip=::1,::2", 2499, kAccAdd, "128:u32 10092"},
      {"rule whitelist add w {::1,}*# ''", 317, kWhiteAdd, "76:u32 10144"},
      {"rule mroute add m '' 0 0 '' 0 7 {1,}*# '' 0", 2478, kMrouteAdd, "632:u32 19828"},
      {"rule filter add f 0 0 0 1 1 {7,}*#", 2546, kFilterAdd, "38:u16 2546"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.words);
    const auto with = [&c](int count) {
      return std::string(c.words).replace(c.words.find('#'), 1, std::to_string(count));
    };
    const Outcome sent = vek(with(c.most));
    expect_end(sent, 0, "ok\n");
    ASSERT_EQ(sent.orders.size(), 1U);
    const size_t place = std::stoul(c.bytes);
    EXPECT_EQ(split(sent.orders[0])[1].substr(2 * (16 + place), 4),
              to_hex(bytes_of(c.bytes)).substr(2 * place, 4));
    expect_unsent(vek(with(c.most + 1)), 1, "", report(with(1), c.text, "para is too long!"));
  }
}

TEST(Rule, AccessLists) {
  shows(
      "rule acc list", {11, 12, 102400}, "",
      "4:u32 3 +8 0:text {n}*64 64:hex ffffffff 96:u16 -1 99:u8 2 1 103:u8 3 1 120:u16 2 1 1 1"
      " 132:u16 3 3 5 9 140:u32 0x01020304 0x01020305 148:hex fd{00}*14 01 fd{00}*14 01 +188" +
          kBlockBytes +
          "6:u8 8 9 +228 0:text mac 104:u8 4 108:hex a01122334455 120:u16 1 9 132:u16 8 8"
          " +364 0:text groups 104:u8 7 122:u16 2 132:u16 5 5 7 9",
      unfolded(
          "num:3\nname:{n}*64 prio:65535 log:1 act:drop thd_type:3 thd:3,5-9 ip_duan:1.2.3.4-1.2.3.5,fd00::1,"
          " cl_type:3 cl_type_fei:1 f_ip:10.0.0.0-10.255.255.255, proto:tcp:80,"
          " dns_en:1,dns_typeid:7,dns_typeid_fei:8 dns_wanid:2,dns_wanid_fei:1,dns_fei:9\n"
          "name:mac prio:0 log:0 act:accept thd_type:0 thd:8 mac: a0:11:22:33:44:55 ") +
          kNoBlockOut + "name:groups prio:0 log:0 act:accept thd_type:0 thd: user_group:5,7-9, " +
          kNoBlockOut);
  expect_end(vek("rule acc list", {.answer = "4:u32 -1 +8 0:text name"}), 0, "num:-1\n");
  shows("rule whitelist list", {11, 42, 102400}, "",
        "4:u32 2 +8 0:text w1 64:u8 1 68:u16 1 72:u16 40 80:u32 1 2 +96" + kBlockBytes +
            "+136 0:text w2 64:u8 4 68:u16 1 80:u16 5 9",
        "num:2\nname:w1  ip_duan:0.0.0.1-0.0.0.2, cl_type:3 cl_type_fei:1 f_ip:10.0.0.0-10.255.255.255," +
            kBlockOut + "name:w2  user_group:5-9, " + kNoBlockOut);
}

TEST(Rule, RouteAndFilterLists) {
  shows(
      "rule mroute list", {11, 16, 102400}, "",
      "4:u32 2 +8 0:text m1 96:u16 1 99:u8 2 103:u8 3 4 5 108:u16 1 121 -1 0 200 620:u16 1 1 0 2 20 630:u8 1"
      " 636:u16 1 2 640:u32 0x01020304 0x01020304 0x00010002 0x0001FFFF 0x20 0x20"  // and a block of zeros
      " +692 0:text m2 622:u16 1 636:u16 5 5",
      "num:2\nname:m1 prio:1 log:2 no_change:4 rule_type:5  wans[512]:1,121,65535 thd_type:3  thd:1-2"
      " ip_duan:1.2.3.4, shibie_duan:00010002-0001ffff,00000020, cl_type:0 cl_type_fei:0 f_ip: proto:"
      " dns_en:0,dns_typeid:0,dns_typeid_fei:0 dns_wanid:0,dns_wanid_fei:0,dns_fei:0\n"
      "name:m2 prio:0 log:0 no_change:0 rule_type:0  wans[512]: thd_type:0  thd: user_group:5, shibie_duan:" +
          kNoBlockOut);
  const std::string filter = "0:text {f}*32 32:u16 1 34:u8 2 3 4 5 38:u16 ";
  const std::string line = std::string(32, 'f') + " 1 2 3 drop 5  ";
  shows("rule filter list 259", {11, 22, 102400}, "45:u8 3",
        "4:u32 2 +8 " + filter + "2 8 8 100 120 +56 " + filter + "0",
        "num:2\n name prio hi_type log act gid  shibie_ids\n" + line + "8,100-120\n" + line + "\n");
  shows("rule mroute hit", {11, 51, 102400}, "",
        list_of(72, {"0:text m 64:u64 -1", "0:text {m}*64 64:u64 7"}),
        "num: 2\nname                hit\nm                    18446744073709551615\n" +
            std::string(64, 'm') + " 7\n");
}

// Counts that claim more than the record holds end the list, and the record that made the claim is the last.
TEST(Rule, ListsEndWithTheRecord) {
  const auto lines = [](const std::string& family, const std::string& payload, size_t count) {
    expect_lines("rule " + family + " list 1", "4:u32 0x7FFFFFFF +8 " + payload, count);
  };
  constexpr size_t kRoom = 102400 - 16 - 8;
  lines("acc", "", 1 + kRoom / 132);
  lines("filter", "", 2 + kRoom / 40);
  lines("mroute", "", 1 + kRoom / 636);
  for (const std::string place : {"120", "122", "124"}) lines("acc", "104:u8 1 " + place + ":u16 -1", 2);
  for (const std::string place : {"140", "142", "144"}) {
    lines("acc", "104:u8 1 126:u16 1 " + place + ":u16 -1", 2);
  }
  lines("acc", "104:u8 1 126:u16 1 120:u16 " + std::to_string((kRoom - 132 - 8) / 4), 2);
  lines("acc", "120:u16 25528 +102252 0:text last", 3);  // it ends where the record does
  lines("mroute", "626:u16 -1", 2);
  lines("filter", "38:u16 -1", 3);
  // The 20 bytes that the IPv6 ranges leave over are no destination block.
  const std::string leftover =
      "4:u32 1 +8 104:u8 1 120:u16 4 124:u16 -1 1 +" + std::to_string(8 + kRoom - 20) + " 0:u8 3";
  EXPECT_NE(vek("rule acc list", {.answer = leftover}).out.find(" cl_type:0 "), std::string::npos);
}

}  // namespace
