// The command table, the request runner with its reports, and the commands on the general services.
#include <cstdlib>

#include "tool/driver.h"

namespace {

TEST(CommandTable, HelpListsEveryRowInOrder) {
  const Outcome help = vek("help");
  expect_unsent(help, 0, help.out);
  EXPECT_TRUE(help.out.starts_with("errinfo\tnum string\nrzglset\ttype[0 | 1 | 3] tq  notify_type"));
  EXPECT_TRUE(help.out.ends_with("zentrik_plugin\tset get clean filename\nwatchdog\tstart stop ping\n"));
  for (const char* rows :
       {"\n?\thelp\nhelp\thelp\ndevmg\tadd del set get list\narp\tset get add del", "\nmalloc\t\n",
        "\nrtl\trtl reg r [addr]\nrtl reg w ", "\nrtl switch id\n\nlvrule\t"}) {
    EXPECT_NE(help.out.find(rows), help.out.npos) << rows;
  }
  // 105 rows, and the line breaks inside usages: qos 1, smtp 6, rtl 19, shibie 1, sj2 6, vek_netlink 2.
  EXPECT_EQ(lines_of(help.out), 105u + 35u);
  expect_end(vek("? ignored"), 0, help.out);
  expect_end(vek(""), 1, help.out);
  for (const std::string word : {"HELP", "''", "'arp '", "hel", "helpp"}) {
    expect_unsent(vek(word + " list"), 1, "", "no order,please help\n");
  }
  expect_unsent(vek("vlan get"), 1, "", " vlan\tset get list\n");
  expect_unsent(vek("pingfast"), 1, "", " pingfast\tfast_en tracert_en fip dns\n");
  for (const std::string words : {"devmg", "devmg LIST", "devmg ''"}) {
    expect_unsent(vek(words), 1, "", " devmg\tadd del set get list\n");
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

// A count far beyond the record, and a header length that the kernel wrote over; and a count below 1.
TEST(Runner, ListsEndWithTheRecord) {
  constexpr size_t kLong = 0x400000 - 16 - 8;
  const struct {
    const char* words;
    size_t lines_around, entries, lines;
  } kLists[] = {{"devmg list", 2, kLong / 36, 1},   {"arp list eth0", 1, kLong / 104, 1},
                {"mr list", 3, kLong / 416, 7},     {"mr lr_list", 3, kLong / 24, 1},
                {"user list", 2, kLong / 488, 3},   {"user online_list", 2, (204800 - 8) / 488, 3},
                {"macuser list", 1, kLong / 32, 1}, {"qos ip_rule_list", 1, (102400 - 8) / 36, 1}};
  for (const auto& list : kLists) {
    SCOPED_TRACE(list.words);
    const Outcome cut = vek(list.words, {.answer = "4:u32 0x7FFFFFFF", .header = "4:u32 -1"});
    expect_end(cut, 0, cut.out);
    EXPECT_EQ(lines_of(cut.out), list.lines_around + list.entries * list.lines);
    const Outcome negative = vek(list.words, {.answer = "4:u32 -1 0 0"});
    expect_end(negative, 0, negative.out);
    EXPECT_EQ(lines_of(negative.out), list.lines_around);
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
