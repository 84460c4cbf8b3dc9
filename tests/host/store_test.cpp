// The state store in trouble: what was answered with ok is there, and nothing else.
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "host.h"

namespace {

using StoreTest = HostTest;

bool is_listed(const std::string& list, const std::string& dev) {
  return list.find("\n" + dev + " ") != std::string::npos;
}

TEST_F(StoreTest, IsMadeWithItsFolders) {
  const auto in = [](const std::string& setting) {
    return run({"/usr/bin/env", "-u", "VEK_STATE", setting, VEK_BINARY, "devmg", "add", "lan0", "250"});
  };
  EXPECT_EQ(in("VEK_STATE=" + state.file("a/b/c")).out, "ok\n");
  struct stat folder;
  ASSERT_EQ(stat(state.file("a/b/c").c_str(), &folder), 0);
  EXPECT_EQ(folder.st_mode & 0777, 0700u);

  std::ofstream(state.file("file"));
  const RunResult result = in("VEK_STATE=" + state.file("file/folder"));
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("vek: state folder " + state.file("file/folder") + ": Not a directory\n"),
            std::string::npos)
      << result.err;
}

TEST_F(StoreTest, LeavesAloneWhatIsNotItsOwn) {
  const auto contents = [this] {
    std::ifstream file(state.file("state.db"), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  sql("state.db", "PRAGMA journal_mode = WAL; CREATE TABLE letters (text)");
  const std::string foreign = contents();
  expect_failed("devmg add lan0 250", "state.db: is not a state file of vek\n");
  EXPECT_EQ(contents(), foreign);

  std::ofstream(state.file("state.db")) << std::string(5000, 'x');
  expect_failed("devmg add lan0 250", "state.db: file is not a database\n");
  EXPECT_EQ(contents(), std::string(5000, 'x'));

  std::filesystem::remove(state.file("state.db"));
  expect_ok("devmg add lan0 250");
  std::string damaged = contents();
  damaged.replace(4096, std::string::npos, damaged.size() - 4096, '\xff');
  std::ofstream(state.file("state.db"), std::ios::binary) << damaged;
  expect_failed("devmg list", "state.db: database disk image is malformed\n");
  EXPECT_EQ(contents(), damaged);
}

TEST_F(StoreTest, GrowsWithItsModules) {
  expect_ok("devmg add lan0 250");
  sql("state.db",
      "DROP TABLE arp_learnt; DROP TABLE arp_binding; DROP TABLE arp_settings;"
      "DELETE FROM schema_part WHERE part = 3; PRAGMA user_version = 3");
  expect_ok("arp add lan0 192.168.1.5 00:11:22:33:44:55 1 pc");
  EXPECT_TRUE(is_listed(vek("devmg list").out, "lan0"));
  sql("state.db", "PRAGMA user_version = 99999");
  expect_failed("devmg list", "state.db: was written by a newer vek\n");
}

TEST_F(StoreTest, ManyWriteAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 6; ++i) {
    threads.emplace_back([i] {  // the first of them make the store
      for (int j = 0; j < 10; ++j) expect_ok("devmg add port" + std::to_string(i * 10 + j) + " 0");
    });
  }
  for (std::thread& thread : threads) thread.join();
  const std::string list = vek("devmg list").out;
  for (int i = 0; i < 60; ++i) EXPECT_TRUE(is_listed(list, "port" + std::to_string(i))) << i;
}

TEST_F(StoreTest, SurvivesAWriterThatIsKilled) {
  expect_ok("devmg add lan0 250");
  const auto start = std::chrono::steady_clock::now();
  expect_ok("devmg add lan1 250");
  const std::chrono::duration<double> usual_time = std::chrono::steady_clock::now() - start;

  int answered = 0;
  constexpr int kRuns = 200;
  for (int i = 1; i <= kRuns; ++i) {
    const std::string port = "port" + std::to_string(i);
    const std::string moment = std::to_string(usual_time.count() * 3 * i / kRuns);
    const RunResult result =
        run({"/usr/bin/timeout", "-s", "KILL", moment, VEK_BINARY, "devmg", "add", port, "0"});
    const bool is_answered = result.out == "ok\n";
    const bool is_kept = is_listed(vek("devmg list").out, port);
    EXPECT_TRUE(is_kept || !is_answered) << i;
    if (is_kept) expect_ok("devmg del " + port);
    answered += is_answered ? 1 : 0;
  }
  EXPECT_GT(answered, 0);
  EXPECT_LT(answered, kRuns);
  expect_ok("devmg add port 0");
}

TEST_F(StoreTest, SurvivesAFullDisk) {
  expect_ok("devmg add lan0 250");
  int failed = 0;
  for (int blocks = 0; blocks <= 96; blocks += 4) {  // files may have this many blocks of 512 bytes
    const std::string dev = "port" + std::to_string(blocks);
    const RunResult result = run({"/bin/sh", "-c",
                                  "trap '' XFSZ; ulimit -f " + std::to_string(blocks) +
                                      "; exec " VEK_BINARY " devmg add " + dev + " 0"});
    if (result.status != 0) {
      ++failed;
      EXPECT_NE(result.err.find("vek: " + state.file("state.db") + ": "), std::string::npos) << result.err;
    }
    EXPECT_EQ(is_listed(vek("devmg list").out, dev), result.status == 0) << blocks;
  }
  EXPECT_GT(failed, 0);
  expect_ok("devmg add last 0");
}

}  // namespace
