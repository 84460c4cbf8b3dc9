// The state store in trouble: what was answered with ok is there, and nothing else.
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "host.h"

namespace {

class StoreTest : public HostTest {
 protected:
  static bool is_listed(const std::string& dev) {
    return vek("devmg list").out.find("\n" + dev + " ") != std::string::npos;
  }
  // The order could not be handled at all, and the message says why.
  static void failed(const std::string& words, const std::string& why) {
    const RunResult result = vek(words);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find(why), std::string::npos) << result.err;
    EXPECT_EQ(result.status, 1);
  }
  std::string contents() const {
    std::ifstream file(state.file("state.db"), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }
};

TEST_F(StoreTest, IsMadeWithItsFolders) {
  setenv("VEK_STATE", state.file("a/b/c").c_str(), 1);
  ok({"devmg add lan0 250"});
  struct stat folder;
  ASSERT_EQ(stat(state.file("a/b/c").c_str(), &folder), 0);
  EXPECT_EQ(folder.st_mode & 0777, 0700u);

  std::ofstream(state.file("file"));
  setenv("VEK_STATE", state.file("file/folder").c_str(), 1);
  failed("devmg add lan0 250", "vek: state folder " + state.file("file/folder") + ": Not a directory\n");
}

TEST_F(StoreTest, LeavesAloneWhatIsNotItsOwn) {
  sql("PRAGMA journal_mode = WAL; CREATE TABLE letters (text)");
  const std::string foreign = contents();
  failed("devmg add lan0 250", "state.db: is not a state file of vek\n");
  EXPECT_EQ(contents(), foreign);

  std::ofstream(state.file("state.db")) << std::string(5000, 'x');
  failed("devmg add lan0 250", "state.db: file is not a database\n");
  EXPECT_EQ(contents(), std::string(5000, 'x'));

  std::filesystem::remove(state.file("state.db"));
  ok({"devmg add lan0 250"});
  std::string damaged = contents();
  damaged.replace(4096, std::string::npos, damaged.size() - 4096, '\xff');
  std::ofstream(state.file("state.db"), std::ios::binary) << damaged;
  failed("devmg list", "state.db: database disk image is malformed\n");
  EXPECT_EQ(contents(), damaged);
}

TEST_F(StoreTest, GrowsWithItsModules) {
  ok({"devmg add lan0 250"});
  sql("DROP TABLE arp_learnt; DROP TABLE arp_binding; DROP TABLE arp_settings;"
      "DELETE FROM schema_part WHERE part = 3; PRAGMA user_version = 3");
  ok({"arp add lan0 192.168.1.5 00:11:22:33:44:55 1 pc"});
  EXPECT_TRUE(is_listed("lan0"));
  sql("PRAGMA user_version = 99999");
  failed("devmg list", "state.db: was written by a newer vek\n");
}

TEST_F(StoreTest, ManyWriteAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 6; ++i) {
    threads.emplace_back([i] {  // the first of them make the store
      for (int j = 0; j < 10; ++j) ok({"devmg add port" + std::to_string(i * 10 + j) + " 0"});
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < 60; ++i) EXPECT_TRUE(is_listed("port" + std::to_string(i))) << i;
}

TEST_F(StoreTest, SurvivesAWriterThatIsKilled) {
  ok({"devmg add lan0 250"});
  const auto start = std::chrono::steady_clock::now();
  ok({"devmg add lan1 250"});
  const std::chrono::duration<double> usual_time = std::chrono::steady_clock::now() - start;

  int answered = 0;
  constexpr int kRuns = 200;
  for (int i = 1; i <= kRuns; ++i) {
    const std::string port = "port" + std::to_string(i);
    const std::string moment = std::to_string(usual_time.count() * 3 * i / kRuns);
    const RunResult result =
        run({"/usr/bin/timeout", "-s", "KILL", moment, VEK_BINARY, "devmg", "add", port, "0"});
    const bool is_answered = result.out == "ok\n";
    const bool is_kept = is_listed(port);
    EXPECT_TRUE(is_kept || !is_answered) << i;
    if (is_kept) ok({"devmg del " + port});
    answered += is_answered ? 1 : 0;
  }
  EXPECT_GT(answered, 0);
  EXPECT_LT(answered, kRuns);
  ok({"devmg add port 0"});
}

TEST_F(StoreTest, SurvivesAFullDisk) {
  ok({"devmg add lan0 250"});
  int failures = 0;
  for (int blocks = 0; blocks <= 96; blocks += 4) {  // files may have this many blocks of 512 bytes
    const std::string dev = "port" + std::to_string(blocks);
    const RunResult result = run({"/bin/sh", "-c",
                                  "trap '' XFSZ; ulimit -f " + std::to_string(blocks) +
                                      "; exec " VEK_BINARY " devmg add " + dev + " 0"});
    if (result.status != 0) {
      ++failures;
      EXPECT_NE(result.err.find("vek: " + state.file("state.db") + ": "), std::string::npos) << result.err;
    }
    EXPECT_EQ(is_listed(dev), result.status == 0) << blocks;
  }
  EXPECT_GT(failures, 0);
  ok({"devmg add last 0"});
}

}  // namespace
