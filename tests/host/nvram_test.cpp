// The parameter store, from two processes.
#include "platform/nvram.h"

#include <sys/wait.h>
#include <unistd.h>

#include "host.h"
#include "platform/line.h"

namespace {

using Nvram = HostTest;

template <typename Action>
void in_another_process(Action action) {
  const pid_t child = fork();
  if (child == 0) _exit(action() ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST_F(Nvram, IsSeenByEveryoneAtOnce) {
  EXPECT_EQ(nvram_get("lan"), nullptr);
  in_another_process([] { return nvram_set("lan", "a b=c") == 0 && nvram_set("empty", "") == 0; });
  EXPECT_STREQ(nvram_get("lan"), "a b=c");
  EXPECT_STREQ(nvram_get("empty"), "");
  EXPECT_EQ(nvram_set("lan", "new"), 0);
  in_another_process([] { return std::string("new") == nvram_get("lan") && nvram_set("lan", nullptr) == 0; });
  EXPECT_EQ(nvram_get("lan"), nullptr);
  for (const char* key : {"", "a=b", static_cast<const char*>(nullptr)}) {
    EXPECT_NE(nvram_set(key, "x"), 0);
    EXPECT_EQ(nvram_get(key), nullptr);
  }
}

TEST_F(Nvram, OnlyWhatWasCommittedOutlivesABoot) {
  nvram_set("kept", "1");
  nvram_set("removed", "1");
  nvram_set("changed", "1");
  EXPECT_EQ(nvram_commit(), 0);
  nvram_set("removed", nullptr);
  nvram_set("changed", "2");
  nvram_set("new", "1");
  sql("nvram.db", "UPDATE boot SET id = 'an earlier one'");
  for (int pass = 0; pass < 2; ++pass) {
    EXPECT_STREQ(nvram_get("kept"), "1");
    EXPECT_STREQ(nvram_get("removed"), "1");
    EXPECT_STREQ(nvram_get("changed"), "1");
    EXPECT_EQ(nvram_get("new"), nullptr);
    nvram_set("other", "1");  // the first change of this boot must not bring the others back
  }
}

TEST_F(Nvram, FactoryDefaultsStandIn) {
  EXPECT_STREQ(tvl_nv_get_def("snmp_prro"), "public");
  nvram_set("snmp_prro", "secret");
  EXPECT_STREQ(tvl_nv_get_def("snmp_prro"), "secret");
  EXPECT_EQ(tvl_nv_get_def("nothing"), nullptr);
  EXPECT_EQ(tvl_nv_get_def(nullptr), nullptr);
}

TEST_F(Nvram, SaysWhenItCannotBeUsed) {
  sql("nvram.db", "CREATE TABLE letters (text)");
  testing::internal::CaptureStderr();
  EXPECT_EQ(nvram_get("lan"), nullptr);
  EXPECT_NE(nvram_set("lan", "1"), 0);
  EXPECT_NE(nvram_commit(), 0);
  const std::string line = "vek: " + state.file("nvram.db") + ": is not a state file of vek\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), line + line + line);
}

}  // namespace
