// dns: what it sends and what it prints.
#include <algorithm>
#include <cstdlib>

#include "tool/driver.h"

namespace {

TEST(Dns, Settings) {
  const std::string numbers = "0:u32 1 64:u32 1 90 60 2 ";
  const std::string words = "dns set 1 1 60 90 2 ";
  sends(words + "1.1.1.1 '' 9", {4, 1}, numbers + "4:ip 1.1.1.1 1.1.1.1 80:u32 9");
  sends(words + "1.1.1.1:53,x,3.3.3.3 'fd00::1  fd00::3 fd00::4'", {4, 1},
        numbers + "4:ip 1.1.1.1 16:hex fd{00}*14 01 {00}*16 fd{00}*14 03");
  // The lists are read as far as 255 characters.
  sends(words + "'{ }*246,1.1.1.1' '{1}*248 fd00::1'", {4, 1}, numbers + "8:ip 1.1.1.1 32:hex fd{00}*15");
  rejects("en[1:on]  acc_act(1:drop) min_tm max_tm ct_show_name dns(dns1,dns2) log", {words + "1.1.1.1"});
  shows("dns get", {4, 2}, "", numbers + "4:ip 1.1.1.1 0.0.0.0 3.3.3.3 32:hex fd{00}*14 01 80:u32 -1",
        " en: 1  acc_act: 1  max_tm=90 min_tm=60 ct_show_name=2 log=-1\ndns=1.1.1.1  3.3.3.3\ndns6= fd00::1 "
        "\n");
  sends("dns dnsc_clear x", {4, 5}, "");
  sends("dns debug", {4, 26}, "");
  sends("dns special_debug 7", {4, 28}, "0:u32 7");
  rejects("en[1:on]", {"dns special_debug"});
}

TEST(Dns, CacheAndQuestions) {
  const std::string header = "id    typeid wanid ttd tm  dns\t\t ip_list\t \n\n";
  shows("dns list", {4, 3, 40496}, "",
        "4:u32 2 8:u16 2 1 12:u32 3 1000 20:u8 9 255 24:u64 -1 32:text a.b 35:ip 1.1.1.1 2.2.2.2 43:hex "
        "fd{00}*14 01 63:u32 4 5 75:u64 7 83:text c.de",
        "num: 2\n" + header +
            "    0      9   255 1000 18446744073709551615 a.b  1.1.1.1, 2.2.2.2, fd00::1,\n"
            "    1      0     0   5   7 c.de \n");
  // What does not fit is cut, and nothing comes behind it.
  const std::string entry = "num: 9\n" + header + "    0      0     0   0   0 ";
  expect_end(vek("dns list", {.answer = "4:u32 9 8:u16 -1 -1"}), 0,
             entry + unfolded(" " + std::string("{ 0.0.0.0,}*10112")) + "\n");
  expect_end(vek("dns list", {.answer = "4:u32 9 12:u32 -1 40477:text abcd"}), 0, entry + " \n");
  shows("dns getip {n}*130 4294967295", {4, 7}, "4:u32 -1 24:text {n}*127",
        "0:u32 5 8:ip 1.1.1.1 2.2.2.2 3.3.3.3", "ip_num: 5 \n  1.1.1.1 \n  2.2.2.2 \n  3.3.3.3 \n");
  shows("dns getip a.b", {4, 7}, "24:text a.b", "0:u32 1", "ip_num: 1 \n  0.0.0.0 \n");
  rejects("dns trys", {"dns getip"});
}

TEST(Dns, NamesOfTheirOwn) {
  shows("dns tebie add {n}*130 http://1.2.3.4/x", {4, 14}, "0:text {n}*127 384:ip 1.2.3.4", "",
        "add tebie " + std::string(127, 'n') + " ,0x4030201 \nok\n");
  shows("dns tebie del a.b", {4, 15}, "0:text a.b", "", "del tebie dns a.b\nok\n");
  shows("dns tebie del", {4, 15}, "", "", "del all tebie\nok\n");
  shows("dns tebie test a.b", {4, 27}, "0:text a.b", "", "test tebie dns a.b\nok\n");
  rejects("dnsname, ip", {"dns tebie add a.b", "dns tebie test"});

  for (const auto& [words, payload] : {std::pair("10.1.1.1 0", "1 128:ip 10.1.1.1"),
                                       {"http://10.1.1.1:80/x 0", "1 128:ip 10.1.1.1"},
                                       {"http://b.c 0", "2 128:text b.c"},
                                       {"http:// 0", "2"},
                                       {"{b}*70 0", "2 128:text {b}*63"},
                                       {"10.1.1.1 1", "3"},
                                       {"'' 2", "4"},
                                       {"'' -1", "3"}}) {
    sends(std::string("dns url add a.b ") + words, {4, 17}, std::string("0:text a.b 127:u8 ") + payload);
  }
  sends("dns url add {n}*130 '' 3", {4, 17}, "0:text {n}*126 127:u8 3");
  sends("dns url del {n}*130", {4, 18}, "0:text {n}*126");
  sends("dns url delall", {4, 19}, "");
  rejects("add dnsname ip gw_flag[0/1/2]", {"dns url add a.b 10.1.1.1", "dns url add a.b '' 0"});
  rejects("del dnsname", {"dns url del"});
  for (const std::string words : {"dns url", "dns url LIST"}) {
    expect_unsent(vek(words), 1, "", " vek dns url add/del/delall/list\n");
  }
}

TEST(Dns, FixedAnswersAreCountedByTheResult) {
  const std::string header = "id  name                ipstr                type\n";
  Outcome outcome =
      vek("dns url list", {.answer = "0:ip 1.2.3.4 4:u8 1 3 2 8:text a.bxx +13 4:u8 2 1 3 8:text"
                                     " cd.e +25 0:ip 1.2.3.4 4:u8 3 1 1 8:text fg +35 4:u8 4 1 "
                                     "8:text h +44 0:ip 1.2.3.4 4:u8 5 0 1 8:text i",
                           .result = 5});
  expect_order(outcome, {4, 20, 0x400000}, "");
  const std::string blanks(21, ' ');
  expect_end(outcome, 1,
             header + "0   a.b                  1.2.3.4              IP\n1   c                    d.e" +
                 std::string(18, ' ') + "\n2   f                    " + blanks +
                 "GWIP\n3   h                    " + blanks + "GWIP_CMP\n4   " + blanks + "i" +
                 std::string(20, ' ') + "\n");
  const std::string most = vek("dns url list", {.result = UINT32_MAX}).out;
  EXPECT_EQ(std::ranges::count(most, '\n'), 1 + (0x400000 - 16) / 8);
  expect_end(vek("dns url list", {.result = 1, .returned = -1}), 1, "");
  if (getenv("VEK_TEST_RUNNER") != nullptr) return;  // the limit would bind the emulator
  expect_unsent(vek("dns url list", {.shell = "ulimit -d 3000; exec \"$@\""}), 255, "");
}

}  // namespace
