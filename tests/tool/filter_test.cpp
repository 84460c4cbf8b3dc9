// urlfilter, hpostfixfilter, hpostforbid, bbsfilter.
#include "tool/driver.h"

namespace {

TEST(Filters, Requests) {
  sends(
      "urlfilter add u 1.2.3.4,fd00::1 Zm9v 1 258 2", {82, 1, 10240},
      "0:text u 64:u8 1 2 1 68:u16 258 1 1 40 76:text foo 332:u32 0x01020304 0x01020304 340:hex fd{00}*14 01"
      " fd{00}*14 01");
  sends("urlfilter add u 5,7-9>258 ! 0 0 0", {82, 1, 10240},
        "0:text u 66:u8 2 70:u16 2 74:u16 8 332:u16 5 5 7 9");
  sends("urlfilter del {n}*70", {82, 2, 10240}, "0:text {n}*63");
  sends("urlfilter global 2 3", {82, 5, 1024}, "0:u32 2 3");
  sends("hpostfixfilter add p 1 1.2.3.4 ' exe, ,{x}*16,'", {36, 1, 10240},
        "0:text p 64:u8 1 66:u8 1 68:u16 2 1 74:u16 8 76:u8 3 77:text exe 88:u8 11 89:text {x}*11 100:u32 "
        "0x01020304 0x01020304");
  sends("hpostfixfilter add p", {36, 1, 10240}, "0:text p");
  sends("hpostfixfilter global 1x 00", {36, 4, 1024}, "0:u32 1 1");
  sends("hpostforbid add f 1 5", {37, 1, 10240}, "0:text f 64:u8 1 68:u16 1 72:u32 4 76:u16 5 5");
  sends("hpostforbid global 2x", {37, 4, 1024}, "0:u32 2");
  sends("bbsfilter add {w}*500 257", {35, 1, 10240}, "0:u16 500 1 8:text {w}*500");
  sends("bbsfilter del w 1", {35, 2, 10240}, "0:u16 1 1 8:text w");
  sends("bbsfilter global 0 1 x", {35, 5, 1024}, "4:u32 1 1");
  sends("urlfilter delall", {82, 3, 1024}, "");
  sends("bbsfilter delall", {35, 3, 1024}, "");
}

TEST(Filters, Lists) {
  shows("urlfilter list", {82, 4, 102400}, "",
        "4:u32 2 8:text u 72:u8 1 2 1 76:u16 3 1 1 40 84:text /x 340:u32 0x01020304 0x01020305 363:u8 1 "
        "379:u8 1"
        " +380 0:text g 70:u16 1 332:u16 5 6",
        "num:2\nname:u ,log:1, act:2, prio:3, ruleips:1, ,url:/x  ip_duan:1.2.3.4-1.2.3.5,::1,\n"
        "name:g ,log:0, act:0, prio:0, ruleips:0, ,url:  user_group:5-6,\n");
  // A suffix never runs on, whatever length it claims.
  shows("hpostfixfilter list", {36, 3, 102400}, "",
        "4:u32 1 8:text p 72:u8 1 76:u16 2 1 84:u8 200 85:text {x}*11 96:u8 1 97:text exe 108:u16 5 5",
        "count:1\nname:p  log:1  postfix: xxxxxxxxxxx,e, user_group:5,\n");
  shows("hpostforbid list", {37, 3, 102400}, "", "4:u32 1 8:text f 72:u8 1 76:u16 1 84:u16 5 5",
        "num:1\nname:f log:1 user_group:5,\n");
  // Words are shown as far as they lie inside the record: 102384 bytes.
  shows("bbsfilter list", {35, 4, 102400}, "",
        "0:u32 3 9 8:u32 32 12:u16 3 1 16:u32 102382 20:u16 9 2 24:u32 102385 28:u16 9 3 32:hex 610062 "
        "102382:text yz",
        std::string("item_cnt=3 need_size=9\ntype=1 data_offset=32 data_length=3  a\0b\n", 64) +
            "type=2 data_offset=102382 data_length=9  yz\ntype=3 data_offset=102385 data_length=9  \n\n");
  shows("bbsfilter list", {35, 4, 102400}, "", "4:u32 8", "item_cnt=0 need_size=8\n\n");
}

TEST(Filters, Refused) {
  const auto report = [](const std::string& words, const std::string& usage, const std::string& why) {
    const std::vector<std::string> all = split(words);
    expect_unsent(vek(words), 1, "",
                  " " + vek_path() + " " + all[0] + " " + all[1] + " " + usage + "\n" +
                      (why.empty() ? "" : "\t\terr:" + why + "\n"));
  };
  const std::string kFew = "para is not enough!";
  report("urlfilter add u 5 Zm9v 1 2", "vek urlfilter add/del name ips url log prio act", kFew);
  report("urlfilter add u 5 {Zm9v}*55A 1 2 3", "vek urlfilter add/del name ips url log prio act", "");
  report("urlfilter global 1", "vek urlfilter global acl block", kFew);
  report("hpostfixfilter del", "vek hpostfixfilter add/del name log ips_id  postfix", kFew);
  report("hpostfixfilter global x 1", "vek hpostfixfilter global", "");
  report("hpostfixfilter global 1", "vek hpostfixfilter global", kFew);
  report("hpostforbid add f 1", "vek hpostforbid add/del name log ips", kFew);
  report("hpostforbid global 3", "vek hpostforbid global acl", "");
  report("bbsfilter add w", "vek bbsfilter add/del string type", kFew);
  report("bbsfilter global 1 1", "vek bbsfilter global acl log", kFew);
  expect_unsent(vek("bbsfilter add {w}*501 1"), 1, "", "the string is too long!\n");
  expect_end(vek("urlfilter list", {.returned = 1}), 1, "",
             " " + vek_path() + " urlfilter list  vek urlfilter list\n\t\terr: order_opt_fun false!\n");
}

}  // namespace
