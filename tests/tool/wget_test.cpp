// wget: what is printed, called and given to the shell, all of it in its order.
#include <ctime>
#include <regex>

#include "tool/driver.h"

namespace {

const std::string kSum = "0123456789abcdef0123456789abcdef";
const std::string kHeader = "0:text pg2mark 8:text " + kSum + " 40:text 3.2.1 56:text rkchip ";
const std::string kPackage = kHeader + "128:text BODY ";

// What the functions answer: the package as it lies in the file, and the list of modules each time.
struct Answers {
  std::string more = {};  // lines of the script, which come first
  std::string package = kPackage;
  std::vector<std::string> lists = {"vek_pg2", "a vek_pg2"};
  long size = 132;
  long summed = 32;
};

// The log of calls stands between what is printed.
void runs(const std::string& words, const Answers& answers, int status, const std::string& out) {
  SCOPED_TRACE(words + " " + answers.more + answers.package);
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

// The run in which all goes well.
const std::string kNamed = "nvram_set tzk_name 3.2.1\nnvram_commit\n";
const std::string kUnloaded = "vek_sj_module_del\nrmmod old vek_pg2 modules!\nsystem rmmod vek_pg2.ko\n";
const std::string kGood =
    "cmd_wget 18757 path=http://h/a/p\nfilename is p \n"
    "system rm -rf /etc/upgrade\nsystem mkdir -p /etc/upgrade\n"
    "httpd_wget http://h/a/p /etc/upgrade/p\n"
    "f_size /etc/upgrade/p\nf_read /etc/upgrade/p 132\n"
    "md5sum=" +
    kSum +
    "\nf_write /etc/upgrade/xxxx 424f4459 4 0 448\n"
    "system md5sum  /etc/upgrade/xxxx > /etc/upgrade/ttt\nf_read /etc/upgrade/ttt 32\n"
    "md5=" +
    kSum +
    "\nsystem rm /etc/upgrade/ttt\n"
    "md5 checking succeed!\n"
    "system tar -xjf /etc/upgrade/xxxx -C /etc/upgrade\nsystem rm -f /etc/upgrade/xxxx\n"
    "f_read /proc/modules 1023\n" +
    kUnloaded + "haha,upgrading...\nsystem insmod /etc/upgrade/vek_pg2.ko\nf_read /proc/modules 1023\n" +
    kNamed + "general_flash_write modules " + to_hex(bytes_of(kPackage)) +
    " 0 132\nEND"
    "vek upgrade ok!\nvek_sj_module_add\nsystem vek qos sb_tj_init\n"
    "nvram_set last_filter_up_time NOW\nnvram_commit\nnvram_set tzk_state 0\n";

// The good run, changed in these places, up to and with a text, and what comes then.
std::string run_until(const std::string& end, const std::string& then, int result,
                      const std::vector<std::pair<std::string, std::string>>& changes = {}) {
  std::string out = kGood;
  for (const auto& [was, is] : changes) out.replace(out.find(was), was.size(), is);
  if (result != 0) {
    EXPECT_NE(out.find(end), out.npos) << end;
    out.resize(out.find(end) + end.size());
    out += then + "ENDvek_sj_module_add\nsystem vek qos sb_tj_init\nfile_upgrade failed,ret=" +
           std::to_string(result) + "\nnvram_set tzk_state 1\n";
  }
  return out.replace(out.find("END"), 3, "system rm -rf /etc/upgrade\n");
}

TEST(Wget, Urls) {
  for (const char* words : {"wget", "wget download", "wget anything"}) {
    runs(words, {}, 1, "cmd_wget 18752\nnvram_set tzk_state 1\n");
  }
  runs("wget download p", {}, 1, "cmd_wget 18757 path=p\ncmd_wget 18763 get:p \nnvram_set tzk_state 1\n");
  // No word gets into a shell line, and no more than 127 characters of a name anywhere.
  for (const std::string name : {"", "..", "$(reboot) `id`; \"%s", "{x}*127", "{x}*200"}) {
    const std::string cut = unfolded(name).substr(0, 127);
    runs("wget download 'http://h/" + name + "'", {"httpd_wget 0\n"}, 10,
         "cmd_wget 18757 path=http://h/" + name + "\nfilename is " + cut + " \nsystem rm -rf /etc/upgrade\n" +
             "system mkdir -p /etc/upgrade\nhttpd_wget http://h/" + name + " /etc/upgrade/" + cut +
             "\nwget failed,ret=0\nnvram_set tzk_state 1\n");
  }
}

TEST(Wget, Packages) {
  const std::string hex = to_hex(bytes_of(kPackage));
  const std::string by_lzma = "8:text " + kSum + " 56:text rkchip 68:u32 1 128:text BODY";
  const std::string long_version = kPackage + "40:text 0123456789abcdef 68:u32 2";
  const std::string sum_of_header = "md5sum=" + kSum + "\n";
  const std::string written = "424f4459 4 0 448\n";
  const std::string summed = "system rm /etc/upgrade/ttt\n";
  const std::string checked = "md5 checking succeed!\n";
  const std::string loading = "insmod /etc/upgrade/vek_pg2.ko\nf_read /proc/modules 1023\n";
  const std::string fell_back =
      "insmod vek_pg2.ko failed!\npg2_download_from_flash\nf_read /proc/modules 1023\n";
  const std::string modified = "the file hase been modified,not legal\n";
  const std::string no_platform = "platfrom error,cunrrent platform is ralink\n";
  const std::string unread = "read file /etc/upgrade failed\n";
  const auto upgrade = [](const Answers& answers, int result, const std::string& out) {
    runs("wget download http://h/a/p", answers, result & 255, out);
  };

  upgrade({}, 0, run_until("", "", 0));
  upgrade({"general_flash_write -1\n"}, 8, run_until(hex + " 0 132\n", "", 8));
  // Without a version, and no list that is long enough to name a module.
  const std::string unpacking = "lzma_sdk d /etc/upgrade/xxxx /etc/upgrade/vek_pg2.ko";
  upgrade({"", by_lzma, {"vek_pg", "vek_pg2x"}}, 0,
          run_until("", "", 0,
                    {{"tar -xjf /etc/upgrade/xxxx -C /etc/upgrade", unpacking},
                     {kUnloaded, ""},
                     {kNamed, ""},
                     {hex, to_hex(bytes_of(by_lzma))}}));
  upgrade({"", long_version}, 0,
          run_until("", "", 0, {{"3.2.1", "0123456789abcdef"}, {hex, to_hex(bytes_of(long_version))}}));
  upgrade({"", kPackage, {"vek_pg2", "a", "vek_pg2 old"}}, 9, run_until(loading, fell_back, 9));
  const std::string spare = "proc_modules_buff:b c\nd\n!!xxxx!!\nsystem insmod /lib/vek_pg2.ko\n";
  upgrade({"", kPackage, {"vek_pg2", "a", "b c\nd"}}, 9, run_until(loading, fell_back + spare, 9));

  // Refused before anything is unloaded.
  upgrade({"", kPackage + "39:text e"}, 1,
          run_until(summed, modified, 1, {{sum_of_header, "md5sum=0123456789abcdef0123456789abcdee\n"}}));
  upgrade({"", "56:text rkchip 128:text BODY", {}, 132, -1}, 1,
          run_until(summed, modified, 1, {{sum_of_header, "md5sum=\n"}}));
  upgrade({"", kPackage + "56:text rkchip2"}, 2, run_until(checked, no_platform, 2));
  upgrade({"", kPackage + "56:text rkchi 61:hex 00"}, 2, run_until(checked, no_platform, 2));
  upgrade({"f_write -5\n"}, -5, run_until(written, "f_write failed ret=-5", -5));
  upgrade({"f_read -1\n"}, -1, run_until("/p 132\n", unread, -1));
  upgrade({"f_size -1\n"}, -1, run_until("f_size /etc/upgrade/p\n", unread, -1));
  upgrade({"f_size 2147483647\n"}, -1,
          run_until("f_size /etc/upgrade/p\n", "malloc 2147483648 failed\n", -1));
  // Shorter than a header.
  upgrade({"", "0:text pg2mark 8:text abcd", {}, 12}, 1,
          run_until(summed, modified, 1,
                    {{"/p 132", "/p 12"}, {sum_of_header, "md5sum=abcd\n"}, {written, " 0 0 448\n"}}));
}

TEST(Wget, WhatFlashHolds) {
  const std::string call = "general_flash_read modules 0 128\n";
  const std::string shown = call + "information on flash:\n";
  runs("wget readold", {"general_flash_read -1\n"}, 0, call + "general_flash_read pg2 failed!\n");
  runs("wget readold more", {answer("general_flash_read", 128, kHeader)}, 0,
       shown + "is_pg2_ko:pg2mark\nplatform:rkchip\nversion:3.2.1\n");
  // Each text ends with its field.
  runs("wget readold", {answer("general_flash_read", 0, "0:text '{a}*8{b}*32{c}*16{d}*12{e}*60'")}, 0,
       shown + "is_pg2_ko:{a}*8\nplatform:{d}*12\nversion:{c}*16\n");
}

}  // namespace
