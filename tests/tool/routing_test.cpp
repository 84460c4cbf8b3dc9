// The routing commands: the line that the routing client is run by, and what becomes of words in it.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tool/driver.h"

namespace {

// The line that goes to the shell; how it ends is no matter.
std::string line_of(const std::string& words) {
  const Outcome outcome = vek(words, {.script = "system 256\n"});
  expect_unsent(outcome, 0, "");
  std::string lines;
  for (const std::string& call : outcome.calls) lines += (lines.empty() ? "" : "\n") + call;
  EXPECT_TRUE(lines.starts_with("system ")) << lines;
  return lines.substr(std::min<size_t>(7, lines.size()));
}

void runs(const std::string& words, const std::string& line) {
  EXPECT_EQ(line_of(words), "quagga_telnet " + line) << words;
}

void complains(const std::string& words, const std::string& usage) {
  SCOPED_TRACE(words);
  const Outcome outcome = vek(words);
  EXPECT_TRUE(outcome.calls.empty());
  expect_unsent(outcome, 1, "", "vek " + usage + "\n");
}

TEST(Routing, LinesOfActionsWithWords) {
  const struct {
    std::string words;
    std::string line;
    size_t needed;
    size_t passed;
    std::string usage;
  } kRows[] = {
      {"ospfv3 dev add", R"(4 0 "add")", 1, 2, "ospfv3 dev add [dev] [area_id]"},
      {"ospfv3 dev del", R"(4 0 "del")", 1, 2, "ospfv3 dev del [dev] [area_id]"},
      {"ospfv3 interface mod", "4 1 mod", 7, 7,
       "ospfv3 interface mod dev passive cost neighbor_age hello_interval pri retrans_interval"},
      {"ospfv3 interface add", R"(4 1 "add")", 1, 1, "ospfv3 interface add dev"},
      {"ospfv3 interface del", R"(4 1 "del")", 1, 1, "ospfv3 interface del dev"},
      {"ospf subnet add", R"(2 0 "add")", 1, 2, "ospf subnet add subnet area_id"},
      {"ospf subnet del", R"(2 0 "del")", 1, 2, "ospf subnet del subnet area_id"},
      {"ospf interface mod", "2 1 mod", 11, 11,
       "ospf interface mod devname ip passive auth_mode auth_password cost neighbor_age hello_interval pri "
       "retrans_interval network"},
      {"ospf interface add", R"(2 1 "add")", 1, 1, "ospf interface add devname"},
      {"ospf interface del", R"(2 1 "del")", 1, 1, "ospf interface del devname"},
      {"ospf vlink add", R"(2 3 "add")", 8, 8,
       "ospf vlink add area_id router_id hello_interval retrans_interval trans_delay dead_interval auth_mode "
       "auth_password"},
      {"ospf vlink del", R"(2 3 "del")", 1, 2, "ospf vlink del area_id router_id"},
      {"rip subnet add", R"(3 0 "add")", 1, 1, "rip subnet add subnet"},
      {"rip subnet del", R"(3 0 "del")", 1, 1, "rip subnet del subnet"},
      {"rip keychain add", R"(3 1 "add")", 3, 3, "rip keychain add name key_id key_string"},
      {"rip keychain del", R"(3 1 "del")", 1, 1, "rip keychain del name"},
      {"rip interface mod", R"(3 2 "mod")", 9, 9,
       "rip interface mod devname ip passive auth_mode password_type password split_horizon send_version "
       "rcv_version"},
      {"rip interface add", R"(3 2 "add")", 1, 1, "rip interface add devname"},
      {"rip interface del", R"(3 2 "del")", 1, 1, "rip interface del devname"},
      {"ripng subnet add", R"(5 0 "add")", 1, 1, "ripng dev add dev"},
      {"ripng subnet del", R"(5 0 "del")", 1, 1, "ripng dev del dev"},
      {"ripng interface mod", R"(5 1 "mod")", 3, 3, "ripng interface devname passive split_horizon"},
      {"ripng interface add", R"(5 1 "add")", 1, 1, "ripng interface add devname"},
      {"ripng interface del", R"(5 1 "del")", 1, 1, "ripng interface del devname"},
      {"ipv6 router add", R"(1 0 "add")", 3, 3, "ipv6 router add dst gw dev"},
      {"ipv6 router del", R"(1 0 "del")", 3, 3, "ipv6 router del dst gw dev"},
  };
  for (const auto& row : kRows) {
    std::string words = row.words;
    std::string line = row.line;
    for (size_t i = 0; i <= row.passed; ++i) {
      if (i < row.needed) {
        complains(words, row.usage);
      } else {
        runs(words, line + (i < row.passed ? " \"\"" : ""));  // what is absent is empty
      }
      words += " w" + std::to_string(i);
      if (i < row.passed) line += " \"w" + std::to_string(i) + "\"";
    }
    runs(words, line);
  }
}

TEST(Routing, SectionsAndActionsAlone) {
  const struct {
    std::string words;
    std::string line;  // the numbers, and what each of the actions adds
    std::string usage;
  } kSections[] = {
      {"ospfv3", "", "ospfv3 dev/interface/parm/info"},
      {"ospfv3 dev", "4 0 delall init", "ospfv3 dev add/del/delall/init"},
      {"ospfv3 interface", "4 1 init delall", "ospfv3 interface mod/init/add/del/delall"},
      {"ospfv3 parm", "4 2 init", "ospfv3 parm init"},
      {"ospfv3 info", "4 3 database route neighbor interface",
       "ospfv3 info database/route/neighbor/interface"},
      {"ospf", "", "ospf subnet/interface/parm/vlink/router_id"},
      {"ospf subnet", "2 0 delall init", "ospf subnet add/del/mod/delall"},
      {"ospf interface", "2 1 init delall", "ospf interface mod/init"},
      {"ospf parm", "2 2 init", "ospf parm init"},
      {"ospf vlink", "2 3 delall init", "ospf vlink add/del/delall/init"},
      {"ospf info", "2 4 database route neighbor interface", "ospf info database/route/neighbor/interface"},
      {"ospf router_id", "", "ospf router_id set/get"},
      {"rip", "", "rip subnet/keychain/interface/parm/info"},
      {"rip subnet", "3 0 delall init", "rip subnet add/del/mod/delall"},
      {"rip keychain", "3 1 init", "rip keychain add/del"},
      {"rip interface", "3 2 init delall", "rip interface mod/init"},
      {"rip parm", "3 3 init delall", "rip parm init/delall"},
      {"ripng", "", "ripng dev/interface/parm/info"},
      {"ripng subnet", "5 0 delall init", "ripng dev add/del/delall/init"},
      {"ripng interface", "5 1 init delall", "rip interface mod/init/add/del/delall"},
      {"ripng parm", "5 2 init delall", "ripng parm init/delall"},
      {"ipv6", "", "ipv6 router add/del/info"},
      {"ipv6 router", "1 0 info init", "ipv6 router add/del/info"},
      {"zebra", "", "zebra check_log"},
  };
  for (const auto& [words, line, usage] : kSections) {
    const std::vector<std::string> parts = split(line);
    for (size_t i = 2; i < parts.size(); ++i) {
      runs(words + " " + parts[i] + " more", line.substr(0, 4) + "\"" + parts[i] + "\"");
    }
    for (const char* wrong : {"", " ADD a b", " ''"}) complains(words + wrong, usage);
  }
  for (const char* more : {"", " add more"}) {
    runs(std::string("rip info") + more, R"(3 4 "get")");
    runs(std::string("ripng info") + more, R"(5 3 "get")");
  }
  complains("ripng dev add eth1", "ripng dev/interface/parm/info");
  complains("rip keychain delall", "rip keychain add/del");
}

// Runs a line as system does, in a folder with a client that writes down its words. Whatever else the line
// runs shows by a file.
class Shell {
 public:
  Shell() {
    std::ofstream(folder_.file("quagga_telnet")) << "#!/bin/sh\nprintf '%s\\n.\\n' \"$@\" >words\n";
    std::filesystem::permissions(folder_.file("quagga_telnet"), std::filesystem::perms::owner_all);
  }
  // Empty where nothing was run.
  std::string words_of(const std::vector<std::string>& shell, const std::string& line) const {
    std::vector<std::string> argv = {"/bin/sh", "-c", "cd \"$0\" && rm -f words && PATH=. exec \"$@\"",
                                     folder_.path()};
    argv.insert(argv.end(), shell.begin(), shell.end());
    argv.insert(argv.end(), {"-c", line});
    run(argv);
    std::ifstream file(folder_.file("words"));
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
      const std::string name = entry.path().filename();
      EXPECT_TRUE(name == "words" || name == "quagga_telnet") << name << " by " << line;
    }
    return std::string((std::istreambuf_iterator<char>(file)), {});
  }

 private:
  TempFolder folder_;
};

std::vector<std::vector<std::string>> shells() {
  std::vector<std::vector<std::string>> all = {{"/bin/sh"}, {"/bin/bash"}, {"/bin/busybox", "sh"}};
  std::erase_if(all, [](const auto& shell) { return !std::filesystem::exists(shell[0]); });
  return all;
}

// As the driver reads it: a backslash stands before each of these.
std::string word(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\\' || c == '\'') quoted += '\\';
    quoted += c;
  }
  return quoted + "'";
}

const std::string kHostile[] = {"\"; echo >x; \"",
                                "$(echo >x)",
                                "`echo >x`",
                                "\\$(echo >x)",
                                "\\\"; echo >x #",
                                "a\nb; echo >x",
                                "\\\n",
                                "\\",
                                "\\\\",
                                "$HOME $PATH $$",
                                "*",
                                "~",
                                "'; echo >x; '",
                                "!x",
                                "#x",
                                "& echo >x",
                                "\x81\xff\"\x88",
                                "",
                                " ",
                                "-n"};

TEST(Routing, WordsReachTheClientAsTheyAre) {
  const Shell shell;
  for (const std::string& text : kHostile) {
    const std::string line = line_of("rip keychain add " + word(text) + " 7 " + word(text + text));
    for (const auto& each : shells()) {
      EXPECT_EQ(shell.words_of(each, line),
                "3\n.\n1\n.\nadd\n.\n" + text + "\n.\n7\n.\n" + text + text + "\n.\n");
    }
  }
}

// A line is cut at 511 characters, wherever that is: in a word, within its quotes, behind a backslash.
TEST(Routing, CutLinesRunTheClientOrNothing) {
  const Shell shell;
  const std::string text = "\"$(echo >x)`echo >x`\\\";echo >x;\"\\\\";
  for (int before = 400; before < 520; ++before) {
    const std::string filler(static_cast<size_t>(before), 'f');
    const std::string line =
        line_of("rip keychain add " + filler + " " + word(text) + " " + word("\\" + text));
    EXPECT_LE(line.size(), 511u);
    const std::string begin = "3\n.\n1\n.\nadd\n.\n" + filler + "\n.\n";
    const bool is_cut = line.size() == 511;
    for (const auto& each : shells()) {
      const std::string words = shell.words_of(each, line);
      const bool has_words = words == begin || words == begin + text + "\n.\n";
      EXPECT_TRUE(is_cut ? words.empty() || has_words : words == begin + text + "\n.\n\\" + text + "\n.\n")
          << line;
    }
  }
  const std::string line = line_of("rip subnet add {x}*600");
  EXPECT_EQ(line, unfolded("quagga_telnet 3 0 \"add\" \"{x}*486"));
}

TEST(Routing, RouterId) {
  shows("ospf router_id set 1.2.3.4", {1, 72}, "0:u32 1 4:ip 1.2.3.4", "", "router id: 1.2.3.4\n");
  shows("ospf router_id get more", {1, 72}, "", "4:ip 9.8.7.6", "router id: 9.8.7.6\n");
  rejects("set router_id", {"ospf router_id set", "ospf router_id set 1.2.3"});
}

TEST(Routing, ZebraLog) {
  const std::string size_of = "f_size /var/log/zebra.log";
  for (const auto& [size, is_emptied] : {std::pair("-1", false), {"1048576", false}, {"1048577", true}}) {
    const Outcome outcome =
        vek("zebra check_log", {.script = std::string("f_size ") + size + "\nsystem 256\n"});
    const std::string line = "system echo \"\" > /var/log/zebra.log";
    EXPECT_EQ(outcome.calls, is_emptied ? std::vector({size_of, line}) : std::vector({size_of})) << size;
    expect_unsent(outcome, 0, is_emptied ? "ok\n" : "");
  }
}

}  // namespace
