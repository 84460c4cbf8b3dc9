// A router of its own for each test: a fresh state folder, commands run on it, and a look into its files.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/process.h"

class HostTest : public testing::Test {
 protected:
  HostTest() { setenv("VEK_STATE", state.path().c_str(), 1); }
  ~HostTest() override { unsetenv("VEK_STATE"); }

  // The words are separated by blanks.
  static RunResult vek(const std::string& words) {
    std::vector<std::string> argv = {VEK_BINARY};
    std::istringstream stream(words);
    for (std::string word; stream >> word;) argv.push_back(word);
    return run(argv);
  }

  static void expect_out(const std::string& words, const std::string& out) {
    const RunResult result = vek(words);
    EXPECT_EQ(result.out, out) << words;
    EXPECT_EQ(result.err, "") << words;
    EXPECT_EQ(result.status, 0) << words;
  }
  static void expect_ok(const std::string& words) { expect_out(words, "ok\n"); }

  static void expect_refused(const std::string& words, const std::string& why) {
    const RunResult result = vek(words);
    EXPECT_EQ(result.out, "") << words;
    EXPECT_EQ(result.err, "err:" + why + " \n") << words;
    EXPECT_EQ(result.status, 3) << words;
  }

  // Puts a scenario in place.
  void load(const std::string& scenario) const {
    std::ofstream(state.file("scenario")) << scenario;
    const RunResult result = run({VEK_LAB, "load", state.file("scenario")});
    EXPECT_EQ(result.err, "") << scenario;
    EXPECT_EQ(result.status, 0);
  }

  // What the commands, which find vek in $vek, write in a network of their own, with bridges lan0 and wan0.
  // Empty where the machine allows none.
  static std::string in_own_network(const std::string& commands) {
    return run({"/bin/sh", "-c",
                "exec unshare -rn sh -ec 'PATH=$PATH:/sbin:/usr/sbin; vek=" VEK_BINARY
                "; for dev in lan0 wan0; do ip link add $dev type bridge; ip link set $dev up; done;" +
                    commands + "'"})
        .out;
  }

  // The order could not be handled at all, and the message says why.
  static void expect_failed(const std::string& words, const std::string& why) {
    const RunResult result = vek(words);
    EXPECT_EQ(result.out, "") << words;
    EXPECT_NE(result.err.find(why), std::string::npos) << words << ": " << result.err;
    EXPECT_EQ(result.status, 1) << words;
  }

  void sql(const std::string& file, const std::string& statements) const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(state.file(file).c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(database);
    sqlite3_close(database);
  }

  TempFolder state;
};

const std::string kArpHeader =
    "ip \t\t check_ip \t\t org_ip \t \t mac \t \t dev \t  type \t state \t del_time\n";
