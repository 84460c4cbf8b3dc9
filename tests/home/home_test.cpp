// The manual pages shown and checked, and words completed at a terminal.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/process.h"

namespace {

RunResult shell(const std::string& line) {
  return run({"/bin/sh", "-c", line}, {"LC_ALL=C.UTF-8", "MANWIDTH=100"});
}

// The pages name each other, and stand in no folder that a checker knows.
TEST(ManualPages, AreWithoutFault) {
  for (const std::string page :
       {"man3/vek-platform.3", "man5/vek-scenario.5", "man8/vek.8", "man8/vek-lab.8", "man8/vek-shell.8"}) {
    const std::string path = VEK_PAGES "/" + page;
    EXPECT_EQ(shell("mandoc -T lint " + path + " | grep -v 'referenced manual not found: Xr vek'").out, "");
    EXPECT_EQ(shell("man --warnings -E UTF-8 -l " + path + " 2>&1 >/dev/null").out, "") << page;
  }
}

TEST(ManualPages, TellWhatTheTablesTell) {
  const std::pair<const char*, const char*> kTold[] = {
      {"man8/vek.8", "arp add dev ip mac type[1|2|3|4] name\n Order 3 of module 3, at least 2 words."},
      {"man8/vek.8", "rule acc del name\n"},
      {"man8/vek.8", "ospf subnet add subnet area_id\n"},
      {"man8/vek.8", "Words of other builds\n"},
      {"man5/vek-scenario.5", "local_mac (MAC address, required)\n"},
      {"man5/vek-scenario.5", "rssi (number, -128 to 127, required)\n"},
      {"man3/vek-platform.3", "uint32_t J_atoi(const char* text);\n"},
  };
  for (const auto& [page, text] : kTold) {
    const std::string shown = shell("man -P cat -l " VEK_PAGES "/" + std::string(page) + " | tr -s ' '").out;
    EXPECT_NE(shown.find(text), shown.npos) << text;
  }
}

// All completions of a line are put in, and the line is shown in place of being run.
TEST(Completion, OfWordsInBash) {
  const TempFolder state;
  setenv("VEK_STATE", state.path().c_str(), 1);
  shell("PATH=" VEK_FOLDER ":$PATH; vek devmg add lan0 250; vek devmg add wan0 0; vek devmg add 'a$(id)' 0");
  for (const auto& [typed, completed] : std::initializer_list<std::pair<std::string, std::string>>{
           {"vek ar", "vek arp"},
           {"vek arp a", "vek arp add addall"},
           {"vek arp add ", "vek arp add lan0 wan0"},
           {"vek arp add lan0 192.168.1.9 00:11:22:33:44:55 ",
            "vek arp add lan0 192.168.1.9 00:11:22:33:44:55 1 2 3 4"},
           {"vek rule acc def", "vek rule acc defget defset"},
           {"vek rtl port set 3 ", "vek rtl port set 3 down up"},
           {"vek led ", "vek led off on"},
           {"vek nothing ", "vek nothing"},
       }) {
    const RunResult result =
        shell("PATH=" VEK_FOLDER ":$PATH; printf 'source " VEK_PAGES "/vek.bash\\n" + typed +
              "\\033*\\001echo is \\nexit\\n' | TERM=dumb INPUTRC=/dev/null"
              " script -qec 'bash --norc --noprofile -i' /dev/null | tr -d '\\r' | grep '^is '");
    EXPECT_EQ(result.out, "is " + completed + "\n") << typed;
  }
}

}  // namespace
