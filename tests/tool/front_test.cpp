// The command table, the request runner with its reports, and the commands on the general services.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "tool/driver.h"

namespace {

size_t lines_of(const std::string& text) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(CommandTable, HelpListsEveryRowInOrder) {
  const Outcome help = vek({"help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.err, "");
  EXPECT_TRUE(help.out.starts_with("errinfo\tnum string\nrzglset\ttype[0 | 1 | 3] tq  notify_type"));
  EXPECT_TRUE(help.out.ends_with("zentrik_plugin\tset get clean filename\nwatchdog\tstart stop ping\n"));
  EXPECT_NE(help.out.find("\n?\thelp\nhelp\thelp\ndevmg\tadd del set get list\narp\tset get add del"),
            help.out.npos);
  EXPECT_NE(help.out.find("\nmalloc\t\n"), help.out.npos);
  EXPECT_NE(
      help.out.find("\nrtl\trtl reg r [addr]\nrtl reg w [addr] [val]   -- [addr] and [val] are in hex\n"),
      help.out.npos);
  EXPECT_NE(help.out.find("\nrtl switch id\n\nlvrule\t"), help.out.npos);
  // 105 rows, and the line breaks inside usages: qos 1, smtp 6, rtl 19, shibie 1, sj2 6, vek_netlink 2.
  EXPECT_EQ(lines_of(help.out), 105u + 35u);
  expect_end(vek({"?", "ignored"}), 0, help.out);
  expect_end(vek({}), 1, help.out);
}

TEST(CommandTable, UnknownWords) {
  for (const char* word : {"HELP", "", "arp ", "hel", "helpp"}) {
    expect_end(vek({word, "list"}), 1, "", "no order,please help\n");
  }
  expect_end(vek({"vlan", "get"}), 1, "", " vlan\tset get list\n");
  expect_end(vek({"pingfast"}), 1, "", " pingfast\tfast_en tracert_en fip dns\n");
  for (const char* command : {"arp", "devmg"}) {
    const std::string usage = vek({command}).err;
    EXPECT_EQ(usage.find(" " + std::string(command) + "\t"), 0u);
    expect_end(vek({command, "LIST"}), 1, "", usage);
    expect_end(vek({command, ""}), 1, "", usage);
  }
}

TEST(Runner, KernelErrors) {
  const auto refused = [](uint32_t result) {
    const Outcome outcome =
        vek({"arp", "get", "eth0"}, {{.result = result, .payload = Bytes().text(0, "eth0")}});
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, 3);
    return outcome.err;
  };
  EXPECT_EQ(refused(1), "err:first error \n");
  EXPECT_EQ(refused(51), "err:error fifty-one \n");
  EXPECT_EQ(refused(2), "err:not find err! \n");  // an entry without text
  EXPECT_EQ(refused(52), "err:not find err! \n");
  EXPECT_EQ(refused(0xFFFFFFFF), "err:not find err! \n");
}

TEST(Runner, FailedGateway) {
  const Outcome outcome = vek({"arp", "list", "eth0"}, {{.returned = -1}});
  expect_end(outcome, 1, "", " " + vek_path() + " arp list dev\n\t\terr:order_opt_fun false!\n");
}

TEST(Runner, RecordsAreCappedAtFourMebibytes) {
  expect_order(vek({"devmg", "list"}), 2, 5, 0x400000, Bytes());
  expect_order(vek({"devmg", "dev_get"}), 2, 9, 1040, Bytes());
}

TEST(Runner, NoMemory) {
  if (getenv("VEK_TEST_RUNNER") != nullptr) GTEST_SKIP() << "the limit would bind the emulator";
  const Outcome outcome = vek({"devmg", "list"}, {}, {.shell = "ulimit -d 3000; exec \"$@\""});
  EXPECT_TRUE(outcome.orders.empty());
  expect_end(outcome, 1, "",
             " " + vek_path() + " devmg list  \n\t\terr:can't alloc 4194304 bytes buffer!! -- error!\n");
}

TEST(Runner, WhatAPersonSeesIsInOrder) {
  const Outcome outcome = vek({"arp", "del", "eth0", "0"}, {}, {.shell = "exec \"$@\" 2>&1"});
  expect_end(outcome, 1, "ip err:0/ngo to help\n " + vek_path() + " arp del dev ip\n");
}

TEST(Runner, AnswerThatCannotBeWritten) {
  expect_end(vek({"arp", "debug"}, {}, {.shell = "exec \"$@\" >/dev/full"}), 1, "", "vek: write error\n");
}

TEST(ErrorInfo, Requests) {
  const auto sends = [](std::vector<std::string> words, const Bytes& payload) {
    words.insert(words.begin(), "errinfo");
    const Outcome outcome = vek(words);
    expect_order(outcome, 1, 5, 6000, payload);
    expect_end(outcome, 0, "not info\n");
  };
  sends({}, Bytes());
  sends({"7"}, Bytes().u32(0, 7));
  sends({"-1"}, Bytes().u32(0, 0xFFFFFFFF));
  sends({"0x10"}, Bytes());  // plain decimal
  sends({"erase"}, Bytes().u32(4, 3));
  sends({"erase", "text"}, Bytes().u32(4, 2).text(8, "text"));
  sends({"7", "text", "more"}, Bytes().u32(0, 7).u32(4, 2).text(8, "text"));
  sends({"7", std::string(5000, 'x')}, Bytes().u32(0, 7).u32(4, 2).text(8, std::string(4095, 'x')));
}

std::string errinfo_of(const std::string& text) {
  return vek({"errinfo", "1"}, {{.payload = Bytes().u32(4, 1).text(8, text)}}).out;
}

TEST(ErrorInfo, Answer) {
  const Outcome outcome = vek({"errinfo", "1"}, {{.payload = Bytes().u32(4, 1).text(8, "AB").hex(39, "ff")}});
  std::string dump = "41 42 ";
  for (int i = 2; i < 31; ++i) dump += "00 ";
  expect_end(outcome, 0, "AB\nsid:" + dump + "ff ");
  expect_end(vek({"errinfo", "1"}, {{.payload = Bytes().u32(4, 2).text(8, "AB")}}), 0, "not info\n");
  expect_end(vek({"errinfo"}, {{.returned = 1}}), 3, "", " errinfo : set_opt false \n");
  expect_end(vek({"errinfo"}, {{.result = 3}}), 3, "", "err:no such entry \n");
}

TEST(ErrorInfo, TextIsAFormatWithoutArguments) {
  const auto shown = [](const std::string& text) {
    const std::string out = errinfo_of(text);
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
  EXPECT_EQ(shown(std::string(4096, 'x')), std::string(4096, 'x'));  // no NUL in the whole field
  EXPECT_EQ(shown(std::string(4095, 'x') + "%"), std::string(4095, 'x') + "%");
}

TEST(Services, MemoryReportAndFlush) {
  const Outcome report = vek({"malloc", "ignored"});
  expect_order(report, 1, 7, 1024, Bytes());
  expect_end(report, 0, "ok\n");
  expect_end(vek({"malloc"}, {{.returned = 1}}), 3, "", " malloc : set_opt false \n");
  expect_end(vek({"malloc"}, {{.result = 51}}), 3, "", "err:error fifty-one \n");

  const Outcome flush = vek({"fls", "0x12"}, {{.result = 3}});
  expect_order(flush, 7, 12, 256, Bytes().u32(0, 0x12));
  expect_end(flush, 0, "");
  expect_end(vek({"fls", "1"}, {{.returned = 1}}), 1, "");
  const Outcome missing = vek({"fls"});
  EXPECT_TRUE(missing.orders.empty());
  expect_end(missing, 1, "");
}

}  // namespace
