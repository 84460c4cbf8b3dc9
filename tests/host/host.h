// A router of its own for each test: a fresh state folder, commands run on it, and a look into its files.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include "support/process.h"

class HostTest : public testing::Test {
 protected:
  HostTest() { setenv("VEK_STATE", state.path().c_str(), 1); }
  ~HostTest() override { setenv("VEK_STATE", state_of_others.c_str(), 1); }

  static RunResult vek(const std::string& words) {
    std::vector<std::string> argv = split(words);
    argv.insert(argv.begin(), VEK_BINARY);
    return run(argv);
  }

  static void shows(const std::string& words, const std::string& out, int status = 0) {
    const RunResult result = vek(words);
    EXPECT_EQ(result.out, out) << words;
    EXPECT_EQ(result.err, "") << words;
    EXPECT_EQ(result.status, status) << words;
  }
  // Begins with this, the rest is no matter.
  static void begins(const std::string& words, const std::string& out) {
    const RunResult result = vek(words);
    EXPECT_EQ(result.out.substr(0, out.size()), out) << words;
    EXPECT_EQ(result.status, 0) << words;
  }
  // Each of these stands somewhere in it.
  static void holds(const std::string& words, std::initializer_list<std::string> texts) {
    const std::string out = vek(words).out;
    for (const std::string& text : texts) EXPECT_NE(out.find(text), out.npos) << text << " in " << out;
  }
  // Each of these orders is answered with ok.
  static void ok(std::initializer_list<std::string> orders) {
    for (const std::string& words : orders) shows(words, "ok\n");
  }
  static void refused(const std::string& why, std::initializer_list<std::string> orders) {
    for (const std::string& words : orders) {
      const RunResult result = vek(words);
      EXPECT_EQ(result.out, "") << words;
      EXPECT_EQ(result.err, "err:" + why + " \n") << words;
      EXPECT_EQ(result.status, 3) << words;
    }
  }

  static long number_behind(const std::string& text, const std::string& word) {
    const size_t at = text.find(word);
    return at == text.npos ? -1 : atol(text.c_str() + at + word.size());
  }
  // The words of a text that are not those of another, in the same places, each with a blank behind it.
  static std::string changes(const std::string& before, const std::string& after) {
    std::istringstream old_words(before);
    std::istringstream new_words(after);
    std::string changed;
    for (std::string was, is; new_words >> is; was.clear()) {
      old_words >> was;
      if (is != was) changed += is + " ";
    }
    return changed;
  }

  // Puts a scenario in place.
  void load(const std::string& scenario) const {
    std::ofstream(state.file("scenario")) << scenario;
    const RunResult result = run({VEK_LAB, "load", state.file("scenario")});
    EXPECT_EQ(result.err, "") << scenario;
    EXPECT_EQ(result.status, 0);
  }

  // What the commands write in a network of their own, with bridges lan0 and wan0. Empty where the machine
  // allows none.
  static std::string in_own_network(const std::string& commands) {
    return run({"/bin/sh", "-c",
                "exec unshare -rn sh -ec 'PATH=$PATH:/sbin:/usr/sbin;"
                "for dev in lan0 wan0; do ip link add $dev type bridge; ip link set $dev up; done;" +
                    commands + "'"})
        .out;
  }

  // Statements on a file of the state.
  void sql(const std::string& statements, const std::string& file = "state.db") const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(state.file(file).c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(database);
    sqlite3_close(database);
  }
  // "INSERT INTO" what is said, with i from the first to the last number.
  void insert(int first, int last, const std::string& into_and_select) const {
    sql("WITH RECURSIVE n(i) AS (SELECT " + std::to_string(first) +
        " UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(last) + ") INSERT INTO " +
        into_and_select + " FROM n");
  }

  const std::string state_of_others = getenv("VEK_STATE");
  TempFolder state;
};
