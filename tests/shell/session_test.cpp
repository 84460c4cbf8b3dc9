// vek-shell as a process: batches, a person at a terminal, recordings, and the library for a plain vek.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "support/process.h"

namespace {

const std::string kAdd = "arp add lan0 192.168.1.9 00:11:22:33:44:55 1 ";
const std::string kHead = "ip \t\t check_ip \t\t org_ip \t \t mac \t \t dev \t  type \t state \t del_time\n";
const std::string kDesk = "192.168.1.9\t0.0.0.0\t192.168.1.9\t00:11:22:33:44:55\tlan0\t1\t1[0|]0\t0\n";

class Shell : public testing::Test {
 protected:
  RunResult shell(const std::string& options, const std::string& input, const std::string& more_env = "A=") {
    std::ofstream(folder.file("input")) << input;
    std::vector<std::string> argv = {"/bin/sh", "-c", "exec \"$@\" <\"$INPUT\"", "sh", VEK_SHELL};
    for (const std::string& word : split(options)) argv.push_back(word);
    return run(argv, {"INPUT=" + folder.file("input"), "VEK_STATE=" + folder.file("state"), more_env});
  }
  std::string content(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(folder.file(name)).rdbuf();
    return text.str();
  }

  TempFolder folder;
};

TEST_F(Shell, RunsLinesAndReportsThoseThatFail) {
  const std::string kWords = "not as in {\"words\": [\"arp\", \"list\"]}\n";
  const std::string input = "# a start\ndevmg add lan0 250\n\n\t" + kAdd +
                            "\"front \\\"desk\\\"\" # not a word\n"
                            "arp add 'lan0' 192.168.1.1\\0 00:11:22:33:44:56 1 a\\ b\r\n"
                            "arp del lan0 192.168.1.11\n"
                            "nothing\n"
                            "arp 'open\n"
                            "arp list\\\n"
                            " {\"words\": [\"arp\", \"del\", \"lan0\", \"192.168.1.10\"]}\n"
                            "{\"words\": []}\n"
                            "{\"words\": [\"arp\"], \"words\": [\"help\"]}\n"
                            "{\"words\": [\n"
                            "{\"words\": [3]}\n"
                            "{\"words\": [\"a\\u0000b\"]}\n" +
                            std::string(1100000, 'x') + "\narp list lan0";
  const RunResult all = shell("", input);
  EXPECT_EQ(all.out, "ok\nok\nok\nok\n" + kHead + kDesk);
  EXPECT_EQ(all.err,
            "err:no such entry \nstdin:6: status 3\n"
            "no order,please help\nstdin:7: status 1\n"
            "stdin:8: a quote is open at the end\n"
            "stdin:9: nothing stands behind the last backslash\n"
            "stdin:11: " +
                kWords + "stdin:12: " + kWords + "stdin:13: " + kWords +
                "stdin:14: a word is no text\n"
                "stdin:15: a character of no value\n"
                "stdin:16: the line is too long\n");
  EXPECT_EQ(all.status, 1);

  const RunResult first = shell("-e", input);
  EXPECT_EQ(first.out, "ok\nok\nok\n");
  EXPECT_EQ(first.err, "err:no such entry \nstdin:6: status 3\n");
  EXPECT_EQ(first.status, 1);
  EXPECT_EQ(shell("-e", "arp list lan0\n# the end").status, 0);
  EXPECT_EQ(run({"/bin/sh", "-c", "echo arp disonline_get | \"$@\" >/dev/full", "sh", VEK_SHELL, "-j"}).err,
            "vek-shell: standard output cannot be written\n");
  EXPECT_EQ(shell("--trace=/dev/full", "arp disonline_get").status, 1);
  EXPECT_EQ(shell("-x", "").status, 2);
  EXPECT_EQ(shell(folder.file("none"), "").status, 2);
}

TEST_F(Shell, AnswersInJson) {
  const RunResult result = shell("-j", "devmg add lan0 250\n" + kAdd +
                                           "desk\narp list lan0\narp del lan0 192.168.1.10\nrtl switch id\n"
                                           "\xff\xc3\xa9\narp 'x\n");
  std::vector<nlohmann::json> objects;
  std::istringstream lines(result.out);
  for (std::string line; std::getline(lines, line);) objects.push_back(nlohmann::json::parse(line));
  ASSERT_EQ(objects.size(), 7);
  EXPECT_EQ(
      objects[1],
      (nlohmann::json{{"words", split(kAdd + "desk")}, {"answer", nullptr}, {"status", 0}, {"report", ""}}));
  EXPECT_EQ(objects[2]["answer"]["list"][0]["mac"], "00:11:22:33:44:55");
  EXPECT_FALSE(objects[2].contains("text"));
  EXPECT_EQ(objects[3], (nlohmann::json{{"words", split("arp del lan0 192.168.1.10")},
                                        {"error", {{"code", 1}, {"text", "no such entry"}}},
                                        {"status", 3},
                                        {"report", "err:no such entry \n"}}));
  EXPECT_EQ(objects[4]["text"], run({VEK_BINARY, "rtl", "switch", "id"}).out);
  EXPECT_EQ(objects[5]["words"][0], "\xef\xbf\xbd\xc3\xa9");
  EXPECT_EQ(objects[6]["report"], "stdin:7: a quote is open at the end\n");
  EXPECT_EQ(result.status, 1);
}

// A program that writes a command when it has read the answer to the last one.
TEST_F(Shell, AnswersBeforeItWaits) {
  for (const std::string option : {"-j", "-e"}) {
    const RunResult result = run({"/bin/sh", "-c",
                                  "{ echo arp disonline_get; until [ -s \"$OUT\" ]; do sleep 0.01; done; } |"
                                  "\"$@\" >\"$OUT\"",
                                  "sh", VEK_SHELL, option},
                                 {"OUT=" + folder.file("out" + option), "VEK_STATE=" + folder.file("state")});
    EXPECT_EQ(result.status, 0) << option;
  }
}

TEST_F(Shell, ReplaysWhatItHasRecorded) {
  const std::string input =
      "devmg add lan0 250\narp list lan0\n" + kAdd + "desk\narp list lan0\narp del lan0 192.168.1.10\n";
  const std::string recording = folder.file("recording");
  const RunResult live = shell("--record " + recording, input);
  EXPECT_EQ(live.out, "ok\n" + kHead + "ok\n" + kHead + kDesk);
  std::filesystem::remove_all(folder.file("state"));

  const RunResult again = shell("--replay " + recording, input + "arp list lan0\narp list lan1\n");
  EXPECT_EQ(again.out, live.out + kHead + kDesk);
  EXPECT_EQ(again.err, live.err +
                           "vek-shell: missing in the recording: arp list, module 3 command 8\n vek arp " +
                           "list dev\n\t\terr:order_opt_fun false!\nstdin:7: status 1\n");
  EXPECT_FALSE(std::filesystem::exists(folder.file("state")));
}

TEST_F(Shell, RecordsAPlainVek) {
  const std::vector<std::string> env = {"LD_PRELOAD=" VEK_TRACE_LIBRARY,
                                        "VEK_RECORD=" + folder.file("recording"),
                                        "VEK_TRACE=" + folder.file("trace")};
  const std::vector<std::string> list = {VEK_BINARY, "arp", "disonline_get"};
  EXPECT_EQ(run(list, env).out, run(list).out);
  // Who dies amid an exchange spoils nothing for the next.
  const uintmax_t whole = std::filesystem::file_size(folder.file("recording"));
  EXPECT_EQ(run(list, env).status, 0);
  std::filesystem::resize_file(folder.file("recording"), 2 * (whole - 16) + 16 - 5);
  const RunResult torn = shell("--dump " + folder.file("recording"), "");
  EXPECT_EQ(torn.err, "vek-shell: " + folder.file("recording") + ": the last exchange is not whole\n");
  EXPECT_EQ(torn.status, 0);
  EXPECT_EQ(run(list, env).status, 0);
  const RunResult dump = shell("--dump " + folder.file("recording"), "");
  EXPECT_EQ(dump.err, "");
  EXPECT_EQ(std::filesystem::file_size(folder.file("recording")), 2 * (whole - 16) + 16);
  EXPECT_NE(dump.out.find("order arp disonline_"), std::string::npos) << dump.out;
  EXPECT_TRUE(content("trace").starts_with(dump.out.substr(0, dump.out.find('\n')))) << content("trace");
}

TEST_F(Shell, RefusesDamagedRecordings) {
  const std::string path = folder.file("recording");
  shell("--record " + path, "arp list lan0\narp disonline_get\n");
  const std::string whole = content("recording");
  const struct {
    size_t at;
    std::string bytes, why;
  } kDamages[] = {
      {0, "V", ": no recording"},
      {8, "\2", ": a recording of an unknown version"},
      {12, "\1\2\3\4", ": of a machine of another byte order"},
      {16, std::string(4, '\0'), ": damaged at byte 16"},  // an entry of no size
      {16, "\xff\xff\xff\x7f", ": damaged at byte 16"},    // of a size that its parts do not have
      {20, std::string(4, '\0'), ": damaged at byte 16"},  // a record without a header
      {20, "\xff\xff\xff\xff", ": damaged at byte 16"},    // of more than 4 MiB
      {28, "\1\1\1\1", ": damaged at byte 16"},            // a request longer than its record
      {32, std::string(4, '\0'), ": damaged at byte 16"},  // an answer without a header
      {whole.size() - 9, "?", ": damaged at byte "},       // what the checksum is for
  };
  for (const auto& [at, bytes, why] : kDamages) {
    std::ofstream(path) << std::string(whole).replace(at, bytes.size(), bytes);
    for (const std::string option : {"--dump ", "--replay "}) {
      const RunResult result = shell(option + path, "");
      EXPECT_EQ(result.err.substr(0, 11 + path.size() + why.size()), "vek-shell: " + path + why) << at;
      EXPECT_EQ(result.status, 2) << option << at;
    }
  }
  // Nor is anything written into them.
  std::ofstream(path) << "vek-rec";
  EXPECT_EQ(shell("--record " + path, "arp disonline_get\n").status, 0);
  std::ofstream(path) << "somebody's letters";
  EXPECT_EQ(shell("--record " + path, "arp list lan0\n").status, 2);
  EXPECT_EQ(content("recording"), "somebody's letters");
}

// What a person types, and what must then come to stand on the screen.
TEST_F(Shell, AtATerminal) {
  shell("", "devmg add lan0 250\n" + kAdd + "desk\n");
  setenv("VEK_HISTORY", folder.file("history").c_str(), 1);
  const std::string state = "VEK_STATE=" + folder.file("state");
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  ASSERT_GE(child, 0);
  if (child == 0) {
    putenv(const_cast<char*>(state.c_str()));
    setenv("TERM", "xterm", 1);
    execl(VEK_SHELL, "vek-shell", nullptr);
    _exit(127);
  }
  const std::string kPrompt = "vek> ";
  const std::string kShown = "192.168.1.9\t0.0.0.0";
  const std::string kWatched = "every 1 s: arp list lan0";
  // Each is waited for behind the one before. What is typed while a command ends might go to the command.
  const std::pair<std::string, std::vector<std::string>> kSteps[] = {
      {"", {kPrompt}},
      {"ar\tlis\tlan0\r", {kShown, kPrompt}},  // words are completed
      {"arp \t", {"disonline_get", "arp "}},   // or shown
      {"\x15", {}},                            // or given up
      {"arp del\x03", {kPrompt}},
      {"help ar\tadd\r", {"dev ip mac type[1|2|3|4] name", kPrompt}},
      {"watch 1 arp l\tlan0\r", {kWatched, kWatched}},
      {"\x03", {kPrompt}},
      {"arp 'list' \"lan0\"\r", {kShown, kPrompt}},
      {"\x1b[A\x1b[A\r", {kWatched}},  // the line before the last
      {"\x03", {kPrompt}},
      {"arp '\r", {"a quote is open", kPrompt}},
      {"\x04", {}},
  };
  std::string seen;
  for (const auto& [typed, all_wanted] : kSteps) {
    ASSERT_EQ(write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    for (const std::string& wanted : all_wanted) {
      char buffer[4096];
      size_t at;
      for (pollfd ready = {terminal, POLLIN, 0}; (at = seen.find(wanted)) == std::string::npos;) {
        ASSERT_EQ(poll(&ready, 1, 10000), 1) << typed << "\n" << seen;
        const ssize_t got = read(terminal, buffer, sizeof buffer);
        ASSERT_GT(got, 0) << typed << "\n" << seen;
        seen.append(buffer, static_cast<size_t>(got));
      }
      seen.erase(0, at + wanted.size());
    }
  }
  for (char rest[256]; read(terminal, rest, sizeof rest) > 0;)
    continue;  // else the terminal would wait for it
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status)) << status;
  close(terminal);
  EXPECT_NE(content("history").find("arp"), std::string::npos);
}

}  // namespace
