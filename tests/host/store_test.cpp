// The state store in trouble: what was answered with ok is there, and nothing else.
#include "state/store.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "host.h"
#include "state/time.h"

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
  std::ofstream(state.file("file"));
  setenv("VEK_STATE", state.file("file/folder").c_str(), 1);
  failed("devmg add lan0 250", "vek: state folder " + state.file("file/folder") + ": Not a directory\n");
}

TEST_F(StoreTest, IsForItsOwnerOnly) {
  const auto mode = [this](const std::string& file) {
    struct stat found = {};
    stat(state.file(file).c_str(), &found);
    return found.st_mode & 0777;
  };
  for (const mode_t mask : {0000, 0777}) {
    const std::string folder = "a" + std::to_string(mask);
    setenv("VEK_STATE", state.file(folder + "/b").c_str(), 1);
    const mode_t usual = umask(mask);
    ok({"devmg add lan0 250"});
    umask(usual);
    for (const std::string& made : {folder, folder + "/b"}) EXPECT_EQ(mode(made), 0700u) << mask;
    for (const char* file : {"/b/state.db", "/b/state.db-journal"}) {
      EXPECT_EQ(mode(folder + file), 0600u) << mask << file;
      chmod(state.file(folder + file).c_str(), 0644);
    }
    ok({"devmg add lan1 250"});
    for (const char* file : {"/b/state.db", "/b/state.db-journal"}) EXPECT_EQ(mode(folder + file), 0600u);
  }

  setenv("VEK_STATE", state.path().c_str(), 1);
  for (const mode_t open : {0720, 0702}) {
    chmod(state.path().c_str(), open);
    failed("devmg add lan0 250", "vek: state folder " + state.path() + ": others may write to it\n");
  }
  chmod(state.path().c_str(), 0700);
  std::string foreign = "/";
  if (geteuid() == 0) {
    foreign = state.file("theirs");
    mkdir(foreign.c_str(), 0700);
    ASSERT_EQ(chown(foreign.c_str(), 1, 1), 0);
  }
  setenv("VEK_STATE", foreign.c_str(), 1);
  failed("devmg add lan0 250", "vek: state folder " + foreign + ": belongs to another user\n");
}

TEST_F(StoreTest, AFolderMayHaveAnyName) {
  const std::string order = "cd '" + state.path() + "'; VEK_STATE='file:a?mode=memory' exec vek devmg ";
  EXPECT_EQ(run({"/bin/sh", "-c", order + "add lan0 250"}).out, "ok\n");
  setenv("VEK_STATE", state.file("file:a?mode=memory").c_str(), 1);
  EXPECT_TRUE(is_listed("lan0"));
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

  std::filesystem::resize_file(state.file("state.db"), 0);
  failed("devmg list", "state.db: has lost all that it held; a new one is made when it is removed\n");
  EXPECT_EQ(contents(), "");
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
  setenv("VEK_STATE", state.file("a/b").c_str(), 1);
  std::vector<std::thread> threads;
  for (int i = 1; i <= 100; ++i) {  // the first of them make the store
    threads.emplace_back([i] {
      shows("errinfo " + std::to_string(i) + " x", "not info\n");
      shows("rzglapi white port add " + std::to_string(i), R"({"ret":"0"})", 1);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int i = 1; i <= 100; ++i) begins("errinfo " + std::to_string(i), "x\n");
  EXPECT_EQ(std::ranges::count(vek("rzglapi white port get").out, ','), 99);
}

TEST_F(StoreTest, SurvivesAFullDisk) {
  ok({"devmg add lan0 250"});
  int failures = 0;
  for (int blocks = 0; blocks <= 96; blocks += 4) {  // files may have this many blocks of 512 bytes
    const std::string dev = "port" + std::to_string(blocks);
    const RunResult result =
        run({"/bin/sh", "-c",
             "trap '' XFSZ; ulimit -f " + std::to_string(blocks) + "; exec vek devmg add " + dev + " 0"});
    if (result.status != 0) {
      ++failures;
      EXPECT_NE(result.err.find("vek: " + state.file("state.db") + ": "), std::string::npos) << result.err;
    }
    EXPECT_EQ(is_listed(dev), result.status == 0) << blocks;
  }
  EXPECT_GT(failures, 0);
  ok({"devmg add last 0"});
}

TEST_F(StoreTest, SurvivesALackOfMemory) {
  int failures = 0;
  for (int kilobytes = 4000; kilobytes <= 12'000; kilobytes += 40) {
    for (const char* order :
         {"vek rzglapi white mac add 02:00:00:00:00:01", "vek-lab load '" VEK_OFFICE "'"}) {
      const RunResult result =
          run({"/bin/sh", "-c", "ulimit -v " + std::to_string(kilobytes) + "; exec " + order});
      EXPECT_LT(result.status, 128) << kilobytes << order << result.err;
      failures += result.err.find("out of memory") != std::string::npos ? 1 : 0;
    }
  }
  EXPECT_GT(failures, 0);
}

// Moments as a table keeps them.
TEST_F(StoreTest, AgesRunOnTheClockThatNobodySets) {
  const char* const steps[] = {"CREATE TABLE seen (at INTEGER DEFAULT (present()))"};
  const Schema schemas[] = {{0, steps}};
  Store store("moments.db", schemas, kWrites);
  const int64_t since_boot = milliseconds_since_boot() / 1000;
  store.execute("INSERT INTO seen DEFAULT VALUES");
  const auto age = [&store](const std::string& moment) {
    return store.number(("SELECT age(" + moment + ") FROM seen").c_str());
  };
  EXPECT_EQ(age("at"), 0);
  EXPECT_EQ(age("at - 7"), 7);
  EXPECT_EQ(age("at + 7"), 0);
  for (const char* of_another_boot : {"at + (1 << 32)", "at - (1 << 32)", "0", "-1"}) {
    EXPECT_NEAR(static_cast<double>(age(of_another_boot)), static_cast<double>(since_boot), 2);
  }
  EXPECT_EQ(store.number("SELECT age(NULL) IS NULL"), 1);
}

}  // namespace
