// The command table, the request runner with its reports, and the commands on the general services.
#include <cstdlib>

#include "tool/driver.h"

namespace {

const std::string kHelp =
#include "help.txt"
    ;

TEST(CommandTable, HelpAndUnknownWords) {
  expect_unsent(vek("help"), 0, kHelp);
  expect_end(vek("? ignored"), 0, kHelp);
  expect_end(vek(""), 1, kHelp);
  for (const std::string word : {"HELP", "''", "'arp '", "hel", "helpp"}) {
    expect_unsent(vek(word + " list"), 1, "", "no order,please help\n");
  }
  // Words that a command does not know, some of which its usage does.
  for (const std::string& words : split(
           "devmg 'devmg LIST' 'devmg \\'\\'' arp 'arp LIST' qos 'qos speed_coeff' mr 'mr jhx' hi 'hi \\'\\''"
           " 'hi qq' 'hi gxcfg_set' 'hi gxcfg_get' user 'user voucher_list' macuser 'macuser SET' rule"
           " dhcp 'dhcp list' dhcp_reserve dhcp_not_assign dns 'dns type_add' 'dns info' 'dns tebie' 'dns "
           "tebie x'"
           " tmp_qos_xz 'tmp_qos_xz get' 'spzn list' hictlist_show ip_options_srr skb_delay 'alg ftp' igmp "
           "vek_netlink"
           " ac_server ap_balanced 'ap_rssi num' ap_rssi_5g ap_rssi_3w 5g_prio 'rssi set' 'vlan get' "
           "pingfast")) {
    const Outcome outcome = vek(words);
    expect_unsent(outcome, 1, "", outcome.err);
    EXPECT_TRUE(outcome.err.starts_with(" " + split(words)[0] + "\t")) << outcome.err;
    EXPECT_NE(kHelp.find("\n" + outcome.err.substr(1)), kHelp.npos) << outcome.err;
  }
}

TEST(Runner, KernelErrors) {
  for (const auto& [result, text] : {std::pair(1u, "first error"),
                                     {51u, "error fifty-one"},
                                     {2u, "not find err!"},
                                     {52u, "not find err!"},
                                     {0xFFFFFFFFu, "not find err!"}}) {
    expect_end(vek("arp get eth0", {.answer = "0:text eth0", .result = result}), 3, "",
               "err:" + std::string(text) + " \n");
  }
  expect_end(vek("arp list eth0", {.returned = -1}), 1, "",
             " " + vek_path() + " arp list dev\n\t\terr:order_opt_fun false!\n");
}

// A count far beyond the record, and one below 1.
TEST(Runner, ListsEndWithTheRecord) {
  constexpr size_t kLong = 0x400000 - 16 - 8;
  const struct {
    const char* words;
    size_t lines_around, entries, lines;
  } kLists[] = {{"devmg list", 2, kLong / 36, 1},
                {"arp list eth0", 1, kLong / 104, 1},
                {"mr list", 3, kLong / 416, 7},
                {"mr lr_list", 3, kLong / 24, 1},
                {"user list", 2, kLong / 488, 3},
                {"user online_list", 2, (204800 - 8) / 488, 3},
                {"macuser list", 1, kLong / 32, 1},
                {"dhcp member_list x", 3, (40480 - 8) / 112, 1},
                {"qos ip_rule_list", 1, (102400 - 8) / 36, 1}};
  for (const auto& [words, lines_around, entries, lines] : kLists) {
    expect_lines(words, "4:u32 0x7FFFFFFF", lines_around + entries * lines);
    expect_lines(words, "4:u32 -1", lines_around);
  }
}

TEST(Runner, NoMemory) {
  if (getenv("VEK_TEST_RUNNER") != nullptr) GTEST_SKIP() << "the limit would bind the emulator";
  expect_unsent(vek("devmg list", {.shell = "ulimit -d 3000; exec \"$@\""}), 1, "",
                " " + vek_path() + " devmg list  \n\t\terr:can't alloc 4194304 bytes buffer!! -- error!\n");
}

TEST(Runner, Streams) {
  expect_end(vek("arp del eth0 0", {.shell = "exec \"$@\" 2>&1"}), 1,
             "ip err:0/ngo to help\n " + vek_path() + " arp del dev ip\n");
  // A setting whose "ok" could not be written has been made.
  expect_end(vek("arp debug", {.shell = "exec \"$@\" >/dev/full"}), 0, "");
}

TEST(ErrorInfo, Exchange) {
  for (const auto& [words, payload] : {std::pair<const char*, const char*>("", ""),
                                       {"7", "0:u32 7"},
                                       {"-1", "0:u32 -1"},
                                       {"0x10", ""},
                                       {"erase", "4:u32 3"},
                                       {"erase word", "4:u32 2 8:text word"},
                                       {"7 word more", "0:u32 7 2 8:text word"},
                                       {"7 {x}*5000", "0:u32 7 2 8:text {x}*4095"}}) {
    shows(std::string("errinfo ") + words, {1, 5, 6000}, payload, "", "not info\n");
  }
  shows("errinfo 1", {1, 5, 6000}, "0:u32 1", "4:u32 1 8:text AB 39:hex ff",
        unfolded("AB\nsid:41 42 {00 }*29") + "ff ");
  shows("errinfo 1", {1, 5, 6000}, "0:u32 1", "4:u32 2 8:text AB", "not info\n");
  expect_end(vek("errinfo", {.returned = 1}), 3, "", " errinfo : set_opt false \n");
  expect_end(vek("errinfo", {.result = 3}), 3, "", "err:no such entry \n");
}

TEST(ErrorInfo, TextIsAFormatWithoutArguments) {
  const auto shown = [](const std::string& text) {
    const std::string out = vek("errinfo 1", {.answer = "4:u32 1 8:text '" + text + "'"}).out;
    return out.substr(0, out.find("\nsid:"));
  };
  EXPECT_EQ(shown("100%% at %d, %5u|%-4x|%04lld|%+i|%#o"), "100% at 0,     0|0   |0000|+0|0");
  EXPECT_EQ(shown("[%s][%8s][%.3s][%ls]"), "[(null)][  (null)][(nu][(null)]");
  EXPECT_EQ(shown("[%n%hhn%ln%1$n]"), "[]");
  EXPECT_EQ(shown("[%2$d %1$s %*d %.*f %-*.*x]"), "[0 (null) 0 0 ]");
  EXPECT_EQ(shown("%f %.1e %Lg"), "0.000000 0.0e+00 0");
  EXPECT_EQ(shown("50%"), "50%");
  EXPECT_EQ(shown("%y %5"), "%y %5");
  EXPECT_LE(shown("%2147483647d").size(), 4096u);
  EXPECT_EQ(shown("{x}*4096"), std::string(4096, 'x'));  // no NUL in the whole field
  EXPECT_EQ(shown("{x}*4095%"), std::string(4095, 'x') + "%");
}

TEST(Services, MemoryReportAndFlush) {
  sends("malloc ignored", {1, 7, 1024}, "");
  expect_end(vek("malloc", {.returned = 1}), 3, "", " malloc : set_opt false \n");
  const Outcome flush = vek("fls 0x12", {.result = 3});
  expect_order(flush, {7, 12, 256}, "0:u32 0x12");
  expect_end(flush, 0, "");
  expect_end(vek("fls 1", {.returned = 1}), 1, "");
  expect_unsent(vek("fls"), 1, "");
}

}  // namespace
