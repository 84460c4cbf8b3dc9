// wget: what is printed, called and given to the shell, all of it in its order.
#include <ctime>
#include <regex>

#include "tool/driver.h"

namespace {

const std::string kSum = "0123456789abcdef0123456789abcdef";
const std::string kHead = "0:text pg2mark 8:text " + kSum + " 40:text 3.2.1 56:text rkchip ";

// What the functions answer: the package as it lies in the file, the sum of its body, and the list of modules
// each time it is read.
struct Answers {
  std::string package = kHead + "128:text BODY";
  long size = 132;
  std::vector<std::string> lists = {"vek_pg2", "a vek_pg2"};
  std::string more = {};  // lines of the script, which come first
  long summed = 32;
};

// The log of calls stands between what is printed.
void runs(const std::string& words, const Answers& answers, int status, const std::string& out) {
  SCOPED_TRACE(words + " " + answers.package + " " + answers.more);
  std::string script = answers.more + "httpd_wget 1\nf_size " + std::to_string(answers.size) + "\n" +
                       answer("f_read", answers.size, answers.package) +
                       answer("f_read", answers.summed, "0:text " + kSum);
  for (const std::string& list : answers.lists) {
    script += answer("f_read", static_cast<long>(list.size()), "0:text '" + list + "'");
  }
  Outcome outcome = vek(words, {.script = script, .shell = "VEK_LOG=/dev/stdout exec \"$@\""});
  std::smatch match;
  if (std::regex_search(outcome.out, match, std::regex("last_filter_up_time ([0-9]+)"))) {
    EXPECT_NEAR(std::stod(match[1]), static_cast<double>(time(nullptr)), 100);
    outcome.out.replace(static_cast<size_t>(match.position(1)), static_cast<size_t>(match.length(1)), "NOW");
  }
  expect_end(outcome, status, unfolded(out));
}

// The parts of a run.
std::string asked(const std::string& url, const std::string& name) {
  return "cmd_wget 18757 path=" + url + "\nfilename is " + name + " \nsystem rm -rf /etc/upgrade\n" +
         "system mkdir -p /etc/upgrade\nhttpd_wget " + url + " /etc/upgrade/" + name + "\n";
}
const std::string kFetched = asked("http://host/a/p.bin", "p.bin") + "f_size /etc/upgrade/p.bin\n";
const std::string kRead = kFetched + "f_read /etc/upgrade/p.bin 132\n";
const std::string kBody = "f_write /etc/upgrade/xxxx 424f4459 4 0 448\n";
const std::string kTaken = kRead + "md5sum=" + kSum + "\n" + kBody;
const std::string kSummed =
    "system md5sum  /etc/upgrade/xxxx > /etc/upgrade/ttt\n"
    "f_read /etc/upgrade/ttt 32\n"
    "md5=" +
    kSum +
    "\n"
    "system rm /etc/upgrade/ttt\n";
const std::string kModified = "the file hase been modified,not legal\n";
const std::string kChecked = kTaken + kSummed + "md5 checking succeed!\n";
const std::string kNoPlatform = "platfrom error,cunrrent platform is ralink\n";
const std::string kTar = "system tar -xjf /etc/upgrade/xxxx -C /etc/upgrade\n";
const std::string kUnpacked = "system rm -f /etc/upgrade/xxxx\nf_read /proc/modules 1023\n";
const std::string kUnloaded = "vek_sj_module_del\nrmmod old vek_pg2 modules!\nsystem rmmod vek_pg2.ko\n";
const std::string kLoaded =
    "haha,upgrading...\n"
    "system insmod /etc/upgrade/vek_pg2.ko\n"
    "f_read /proc/modules 1023\n";
const std::string kExchanged = kChecked + kTar + kUnpacked + kUnloaded + kLoaded;
const std::string kNamed = "nvram_set tzk_name 3.2.1\nnvram_commit\n";
const std::string kFellBack = kExchanged +
                              "insmod vek_pg2.ko failed!\npg2_download_from_flash\n"
                              "f_read /proc/modules 1023\n";
const std::string kAttached = "vek_sj_module_add\nsystem vek qos sb_tj_init\n";
const std::string kSucceeded = "system rm -rf /etc/upgrade\nvek upgrade ok!\n" + kAttached +
                               "nvram_set last_filter_up_time NOW\nnvram_commit\nnvram_set tzk_state 0\n";

// The whole file.
std::string kept(const std::string& package) {
  return "general_flash_write modules " + to_hex(bytes_of(package)) + " 0 132\n";
}

std::string failed(const std::string& result) {
  return "system rm -rf /etc/upgrade\n" + kAttached + "file_upgrade failed,ret=" + result +
         "\nnvram_set tzk_state 1\n";
}

TEST(Wget, Urls) {
  for (const char* words : {"wget", "wget download", "wget anything"}) {
    runs(words, {}, 1, "cmd_wget 18752\nnvram_set tzk_state 1\n");
  }
  runs("wget download p.bin", {}, 1,
       "cmd_wget 18757 path=p.bin\ncmd_wget 18763 get:p.bin \nnvram_set tzk_state 1\n");
  // No word gets into a shell line, and no more than 127 characters of a name anywhere.
  for (const std::string name : {"", "..", "$(reboot) `id`; \"%s", "{x}*127", "{x}*200"}) {
    const std::string url = "http://host/" + name;
    runs("wget download '" + url + "'", {.more = "httpd_wget 0\n"}, 10,
         asked(unfolded(url), unfolded(name).substr(0, 127)) + "wget failed,ret=0\nnvram_set tzk_state 1\n");
  }
}

TEST(Wget, Packages) {
  const std::string package = Answers().package;
  const std::string by_lzma = "8:text " + kSum + " 56:text rkchip 68:u32 1 128:text BODY";
  const std::string long_version = package + " 40:text 0123456789abcdef 68:u32 2";
  const struct {
    Answers answers;
    int status;
    std::string out;
  } cases[] = {
      {{}, 0, kExchanged + kNamed + kept(package) + kSucceeded},
      {{.more = "general_flash_write -1\n"}, 8, kExchanged + kNamed + kept(package) + failed("8")},
      // Without a version, and no list that is long enough to name a module.
      {{.package = by_lzma, .lists = {"vek_pg", "vek_pg2x"}},
       0,
       kChecked + "system lzma_sdk d /etc/upgrade/xxxx /etc/upgrade/vek_pg2.ko\n" + kUnpacked + kLoaded +
           kept(by_lzma) + kSucceeded},
      {{.package = long_version},
       0,
       kExchanged + "nvram_set tzk_name 0123456789abcdef\nnvram_commit\n" + kept(long_version) + kSucceeded},
      {{.lists = {"vek_pg2", "a", "vek_pg2 old"}}, 9, kFellBack + failed("9")},
      {{.lists = {"vek_pg2", "a", "b c\nd"}},
       9,
       kFellBack + "proc_modules_buff:b c\nd\n!!xxxx!!\nsystem insmod /lib/vek_pg2.ko\n" + failed("9")},
      // Refused before anything is unloaded.
      {{.package = kHead + "39:text e 128:text BODY"},
       1,
       kRead + "md5sum=0123456789abcdef0123456789abcdee\n" + kBody + kSummed + kModified + failed("1")},
      {{.package = "56:text rkchip 128:text BODY", .summed = -1},
       1,
       kRead + "md5sum=\n" + kBody + kSummed + kModified + failed("1")},
      {{.package = kHead + "56:text rkchip2 128:text BODY"}, 2, kChecked + kNoPlatform + failed("2")},
      {{.package = kHead + "56:text rkchi 61:hex 00 128:text BODY"}, 2, kChecked + kNoPlatform + failed("2")},
      {{.more = "f_write -5\n"}, 251, kTaken + "f_write failed ret=-5" + failed("-5")},
      {{.more = "f_read -1\n"}, 255, kRead + "read file /etc/upgrade failed\n" + failed("-1")},
      {{.size = -1}, 255, kFetched + "read file /etc/upgrade failed\n" + failed("-1")},
      {{.size = 2147483647}, 255, kFetched + "malloc 2147483648 failed\n" + failed("-1")},
      // Shorter than a header.
      {{.package = "0:text pg2mark 8:text abcd", .size = 12},
       1,
       kFetched + "f_read /etc/upgrade/p.bin 12\nmd5sum=abcd\nf_write /etc/upgrade/xxxx  0 0 448\n" +
           kSummed + kModified + failed("1")},
  };
  for (const auto& [answers, status, out] : cases) {
    runs("wget download http://host/a/p.bin", answers, status, out);
  }
}

TEST(Wget, WhatFlashHolds) {
  const std::string call = "general_flash_read modules 0 128\n";
  runs("wget readold more", {.more = "general_flash_read -1\n"}, 0,
       call + "general_flash_read pg2 failed!\n");
  runs("wget readold", {.more = answer("general_flash_read", 128, kHead)}, 0,
       call + "information on flash:\nis_pg2_ko:pg2mark\nplatform:rkchip\nversion:3.2.1\n");
  // Each text ends with its field.
  runs("wget readold", {.more = answer("general_flash_read", 0, "0:text '{a}*8{b}*32{c}*16{d}*12{e}*60'")}, 0,
       call + "information on flash:\nis_pg2_ko:{a}*8\nplatform:{d}*12\nversion:{c}*16\n");
}

}  // namespace
