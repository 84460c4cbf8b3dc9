// The parameter store, from two processes.
#include "platform/nvram.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host.h"
#include "platform/line.h"

namespace {

using Nvram = HostTest;

void set_in_another_process(const char* key, const char* value) {
  const pid_t child = fork();
  if (child == 0) _exit(nvram_set(key, value));
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST_F(Nvram, IsSeenByEveryoneAtOnce) {
  EXPECT_EQ(nvram_get("lan"), nullptr);
  set_in_another_process("lan", "a b=c");
  set_in_another_process("empty", "");
  EXPECT_STREQ(nvram_get("lan"), "a b=c");
  EXPECT_STREQ(nvram_get("empty"), "");
  EXPECT_EQ(nvram_set("lan", "new"), 0);
  EXPECT_STREQ(nvram_get("lan"), "new");
  set_in_another_process("lan", nullptr);
  EXPECT_EQ(nvram_get("lan"), nullptr);
  for (const char* key : {"", "a=b", static_cast<const char*>(nullptr)}) {
    EXPECT_NE(nvram_set(key, "x"), 0);
    EXPECT_EQ(nvram_get(key), nullptr);
  }
}

TEST_F(Nvram, OnlyWhatWasCommittedOutlivesABoot) {
  for (const char* key : {"kept", "removed", "changed"}) nvram_set(key, "1");
  EXPECT_EQ(nvram_commit(), 0);
  nvram_set("removed", nullptr);
  nvram_set("changed", "2");
  nvram_set("new", "1");
  sql("UPDATE boot SET id = 'an earlier one'", "nvram.db");
  for (int pass = 0; pass < 2; ++pass) {
    for (const char* key : {"kept", "removed", "changed"}) EXPECT_STREQ(nvram_get(key), "1");
    EXPECT_EQ(nvram_get("new"), nullptr);
    nvram_set("other", "1");  // the first change of this boot must not bring the others back
  }
}

// In a world of its own, where Linux does not tell which boot this is.
TEST_F(Nvram, NothingIsLostWhenTheBootIsNotKnown) {
  nvram_set("lan", "1");
  constexpr int kNoSuchWorld = 77;
  const pid_t child = fork();
  if (child == 0) {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0 ||
        mount("/dev/null", "/proc/sys/kernel/random/boot_id", nullptr, MS_BIND, nullptr) != 0) {
      _exit(kNoSuchWorld);
    }
    const bool is_refused = nvram_set("wan", "1") != 0 && nvram_commit() != 0 && nvram_get("lan") == nullptr;
    _exit(is_refused ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  if (status == kNoSuchWorld << 8) GTEST_SKIP() << "this machine allows no mounts of one's own";
  EXPECT_EQ(status, 0);
  EXPECT_STREQ(nvram_get("lan"), "1");
  EXPECT_EQ(nvram_get("wan"), nullptr);
}

TEST_F(Nvram, FactoryDefaultsStandIn) {
  EXPECT_STREQ(tvl_nv_get_def("snmp_prro"), "public");
  nvram_set("snmp_prro", "secret");
  EXPECT_STREQ(tvl_nv_get_def("snmp_prro"), "secret");
  EXPECT_EQ(tvl_nv_get_def("nothing"), nullptr);
  EXPECT_EQ(tvl_nv_get_def(nullptr), nullptr);
}

TEST_F(Nvram, SaysWhenItCannotBeUsed) {
  sql("CREATE TABLE letters (text)", "nvram.db");
  testing::internal::CaptureStderr();
  EXPECT_EQ(nvram_get("lan"), nullptr);
  EXPECT_NE(nvram_set("lan", "1"), 0);
  EXPECT_NE(nvram_commit(), 0);
  const std::string line = "vek: " + state.file("nvram.db") + ": is not a state file of vek\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), line + line + line);
}

}  // namespace
