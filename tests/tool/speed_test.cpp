// qos: traffic types, speed rules, priority rules and recognition lists.
#include "tool/driver.h"

namespace {

const std::string kAdd =
    "add type[xz bz pri] name run_prio dev_prio hi_prio is_and sp_type  thd_type up down user_group dev_duan "
    "thd_duan shibie_duan ipport_duan sp_check";

TEST(Speed, Rules) {
  sends("qos spset add bz r 1.2.3.4-1.2.3.5 1,64 gx 5 6 0,120,200", {14, 9, 20496},
        "0:u16 1 1 4:text r 39:u8 1 40:u64 5 6 56:u64 2 0x200000000000000 0 0x100 88:u64 2 1 120:u16 1 8"
        " 124:u32 0x01020304 0x01020305");
  sends("qos spset add xz {r}*40 1.2.3.4 all dl 1 2 all", {14, 9, 20496},
        "0:u16 1 4:text {r}*31 37:u8 1 1 40:u64 1 2 120:u16 1 8 124:u32 0x01020304 0x01020304");
  sends("qos spset del bz r", {14, 9, 20496}, "0:u16 2 1 4:text r");
  rejects("cmd[add del] type[xz bz] name ipduan qostype[id,id] mode[gx dl] up down wans[0,1,2] ",
          {"qos spset del bz", "qos spset del pri r", "qos spset set xz r",
           "qos spset add xz r 1.2.3.4 1 gx 1 2"});
  rejects("type[xz bz]", {"qos splist", "qos splist pri"});
  // Bit 3 of a word tells of 32 + 3 as well, and bit 35 of none.
  shows("qos splist bz", {14, 10, 20496}, "10:u16 1",
        "4:u32 2 +8 4:text one 39:u8 1 40:u64 5 6 56:u64 8 0x800000000 88:u64 0 0 0 1 120:u16 1 8 124:u32 "
        "0x01020304"
        " 0x01020305 +140 4:text two 37:u8 1 1",
        "num: 2\nname\t sp[up]\t sp[down]\t gongx\t user\t qostype\t dev\n\n"
        "one\t 5\t 6\t 1\tips:1.2.3.4-1.2.3.5,\tqostype:192,224,\tdev:3,35,\n"
        "two\t 0\t 0\t 0\tips:\tqostype:all\tdev:all\n");
}

TEST(Speed, Types) {
  shows("qos typelist", {14, 8, 20496}, "",
        "4:u32 4 +8 0:u8 1 1 8:u64 2048 4096 1024 7 3072 9 +64 0:u8 2 0 +120 0:u8 3 2 +176 0:u8 4 7",
        "num: 4\nid\tpri\t sp[up]\t sp[down]\tcount[up] count_skb[up] count[down] count_skb[down]\n\n"
        "1\thigh\t2K/s\t  4K/s\t\t 1K\t  7\t3K\t  9\t\n2\tnormal\t0K/s\t  0K/s\t\t 0K\t  0\t0K\t  0\t\n"
        "3\tlow\t0K/s\t  0K/s\t\t 0K\t  0\t0K\t  0\t\n4\terr\t0K/s\t  0K/s\t\t 0K\t  0\t0K\t  0\t\n");
}

TEST(Speed, PriorityRules) {
  sends("qos sprule add pri p 7 3 2 1 4 1 5 6 1.2.3.4,::1 1-2 8 00010002 class=3 9", {14, 20, 102400},
        "0:text p 64:u16 7 66:u8 2 0 2 1 4 1 72:u32 5 6 81:u8 1 84:u32 9 92:u16 1 1 1 1 1 20 104:u32 76"
        " 108:u32 0x01020304 0x01020304 131:u8 1 147:u8 1 148:u16 1 2 8 8 156:u32 0x10002 0x10002 164:u8 3 "
        "179:u8 1");
  const std::string groups = "0:text p 64:u16 1 66:u8 1 81:u8 7 92:u16 1 104:u32 4 108:u16 5 5";
  sends("qos sprule add xz p 1 1 0 0 0 0 0 0 5>7 '' 8 '' '' 0", {14, 20, 102400}, groups);
  sends("qos sprule add xz p 1 1 0 0 0 3 0 0 5>7 '' 8 '' '' 0", {14, 20, 102400},
        groups + " 98:u16 1 104:u32 8");
  const Outcome deleted = vek("qos sprule del bz p");
  expect_order(deleted, {14, 21, 10240}, "0:text p 68:u8 1");
  expect_end(deleted, 0, "", "ok\n");

  const std::string rule =
      " 0:text p 64:u16 7 66:u8 2 0 2 1 4 1 72:u32 5 6 81:u8 1 84:u32 9 92:u16 1 0 1 1 1 20 108:u32 "
      "0x01020304"
      " 0x01020305 116:u16 1 2 8 8 124:u32 0x10002 0x10003 132:u8 3 1 1 2 4 0 7 0 ";
  const std::string block =
      "]\t f_ip:[]\t proto:[]\tcl_type:[3]\tcl_type_fei:[1]\tdns_en:[1]\tdns_typeid:[4]\tdns_typeid_fei:[7]\t"
      "dns_wanid[2]\tdns_wanid_fei[0]\tdns_fei[0]\n";
  shows("qos sprule list pri", {14, 23, 1024000}, "68:u8 2",
        "4:u32 2 +8" + rule + "+160 0:text q 92:u16 1 108:u16 5 6",
        "num: 2\nname:[p]\t run_prio:[7]\t dev_prio:[2]\t hi_prio:[0]\t is_and:[1]\t sp_type:[4]\t "
        "thd_type:[1]\t up:[5]"
        "\t dowm:[6]\t sp_check:[9]\t user_group:[1.2.3.4-1.2.3.5,]\t dev_duan:[1-2,]\t thdduan:[8,]\t "
        "shibie_duan:[00010002-00010003," +
            block +
            "name:[q]\t run_prio:[0]\t dev_prio:[0]\t hi_prio:[0]\t is_and:[0]\t sp_type:[0]\t "
            "thd_type:[0]\t up:[0]\t "
            "dowm:[0]\t sp_check:[0]\t user_group:[5-6,]\t dev_duan:[]\t thdduan:[]\t shibie_duan:[]\t "
            "f_ip:[]\t "
            "proto:[]\t f_dns:[]\n");
  const std::string head =
      "name:[p]\trun_prio:[7]\tdev_prio:[2]\thi_prio:[0]\tis_and:[1]\tsp_type:[4]\tthd_type:[1]\tup:[5]"
      "\tdowm:[6]\t"
      "sp_check:[9]\tuser_group:[1.2.3.4-1.2.3.5,]\tdev_duan:[1-2,]\tthdduan:[8,]\tsb_duan:[00010002-"
      "00010003,";
  shows("qos sprule get xz p", {14, 22, 10240}, "0:text p", rule, head + block);
  shows("qos sprule get xz p", {14, 22, 10240}, "0:text p", rule + " 102:u16 0",
        head +
            "]\t f_ip:[]\t "
            "proto:[]\tcl_type:[0]\tcl_type_fei:[0]\tdns_en:[0]\tdns_typeid:[0]\tdns_typeid_fei:[0]\t"
            "dns_wanid[0]\tdns_wanid_fei[0]\tdns_fei[0]\n");
}

TEST(Speed, PriorityRulesRefused) {
  const std::string head = " " + vek_path() + " qos sprule ";
  expect_unsent(vek("qos sprule"), 1, "", "vek qos sprule add/del/list\n");
  expect_unsent(vek("qos sprule set"), 0, "");
  expect_unsent(vek("qos sprule add pri p"), 1, "", head + kAdd + "\n\t\terr:para is not enough!\n");
  expect_unsent(vek("qos sprule add x p 1 1 0 0 0 0 0 0 5 '' '' '' '' 0"), 1, "",
                head + kAdd + "\n\t\terr:type should be xz , bz pri\n");
  expect_unsent(vek("qos sprule del x p"), 1, "",
                head + "del type[xz bz pri] name\n\t\terr:type should be xz or bz\n");
  expect_unsent(vek("qos sprule get x p"), 1, "", head + "get type[xz bz pri] name\n");
  expect_unsent(vek("qos sprule list x"), 1, "", head + "type[xz bz pri]\n");
  expect_end(vek("qos sprule del xz p", {.returned = 1}), 1, "",
             head + "del type[xz bz pri] name\n\t\terr: order_opt_fun false!\n");
}

TEST(Speed, Recognition) {
  sends("qos dns_ip a.b,{n}*70 1.2.3.4-1.2.3.5,1.2.3.6 tcp:80 1.1.1.1|2,2.2.2.2|-1,3.3.3.3", {14, 11, 20496},
        "0:u16 2 2 1 3 8:text a.b 72:text {n}*63 136:ip 1.2.3.4 1.2.3.5 1.2.3.6 1.2.3.6 152:hex "
        "060000000000ffff50005000 164:ip 1.1.1.1 1.1.1.1 3.3.3.3 3.3.3.3");
  sends("qos dns_ip ZENTRIK not '' not", {14, 11, 20496}, "");
  sends("qos app_dns_ip dns a", {14, 12, 20496}, "0:u16 1 8:text a");
  sends("qos app_dns_ip fip x 1.2.3.4", {14, 13, 20496}, "2:u16 1 8:ip 1.2.3.4 1.2.3.4");
  sends("qos app_dns_ip prot x y icmp", {14, 14, 20496}, "4:u16 1 8:hex 010000000000ffff0000ffff");
  sends("qos app_dns_ip hi x y z 1.2.3.4", {14, 15, 20496}, "6:u16 1 8:ip 1.2.3.4 1.2.3.4");
  rejects("dns fip prot hi", {"qos dns_ip a b c", "qos app_dns_ip hi x y z"});
  for (const char* words : {"qos app_dns_ip", "qos app_dns_ip x a"}) {
    expect_unsent(vek(words), 1, "", "vek qos app_dns_ip dns/fip/prot/hi dns fip prot hi\n");
  }
}

}  // namespace
