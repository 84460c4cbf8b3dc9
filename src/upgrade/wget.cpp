// wget: puts a filter module from a web server in the place of the one that runs, and tells which package is
// kept in flash.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include "args/args.h"
#include "args/print.h"
#include "args/shell.h"
#include "order/order.h"
#include "platform/file.h"
#include "platform/flash.h"
#include "platform/nvram.h"
#include "records/upgrade.h"
#include "upgrade/commands.h"

namespace {

// All shell lines are made of these, while compiling: no word of the user's ever reaches a shell.
#define FOLDER "/etc/upgrade"
#define BODY FOLDER "/xxxx"
#define SUM FOLDER "/ttt"
#define MODULE "/vek_pg2.ko"

constexpr size_t kMaxName = 127;
constexpr char kFlashArea[] = "modules";  // has the package that was loaded last

enum Result : int {
  kDone = 0,
  kUnreadable = -1,
  kBadUrl = 1,
  kWrongSum = 1,
  kWrongPlatform = 2,
  kFlashFailed = 8,
  kNotLoaded = 9,
  kNotDownloaded = 10,
};

void put_line(const char* line) { print("%s\n", line); }

// Reads the beginning of the list, which is where the newest modules stand.
bool is_filter_loaded(char (&list)[1024]) {
  memset(list, 0, sizeof list);
  const int room = sizeof list - 1;
  const int length = std::clamp(f_read("/proc/modules", list, room), 0, room);
  return std::string_view(list, static_cast<size_t>(length)).find("vek_pg2") != std::string_view::npos;
}

int keep_loaded(const UpgradePackageHeader& header, const char* package, int size) {
  char version[sizeof header.version + 1] = {};
  memcpy(version, header.version, sizeof header.version);
  if (version[0] != '\0') {
    nvram_set("tzk_name", version);
    nvram_commit();
  }
  const bool is_kept = general_flash_write(kFlashArea, package, 0, static_cast<uint32_t>(size)) >= 0;
  return is_kept ? kDone : kFlashFailed;
}

int load_what_was_before(char (&list)[1024]) {
  put_line("insmod vek_pg2.ko failed!");
  fflush(stdout);
  pg2_download_from_flash();
  if (!is_filter_loaded(list)) {
    print("proc_modules_buff:%s\n", list);
    put_line("!!xxxx!!");
    run_shell("insmod /lib" MODULE);
  }
  return kNotLoaded;
}

// The package is a whole file, of which the header or the body may be missing.
int install(const char* package, int size) {
  UpgradePackageHeader header = {};
  const int header_size = std::min<int>(size, sizeof header);
  memcpy(&header, package, static_cast<size_t>(header_size));
  print("md5sum=%s\n", header.md5);
  const int written = f_write(BODY, package + header_size, size - header_size, 0, 0700);
  if (written < 0) {
    print("f_write failed ret=%d", written);
    return written;
  }

  run_shell("md5sum  " BODY " > " SUM);
  char sum[sizeof header.md5] = {};
  const bool is_summed = f_read(SUM, sum, sizeof sum) == sizeof sum;
  print("md5=%s\n", sum);
  run_shell("rm " SUM);
  if (!is_summed || memcmp(sum, header.md5, sizeof sum) != 0) {
    put_line("the file hase been modified,not legal");
    return kWrongSum;
  }
  put_line("md5 checking succeed!");
  if (strncmp(header.platform, kUpgradePlatform, sizeof header.platform) != 0) {
    put_line("platfrom error,cunrrent platform is ralink");
    return kWrongPlatform;
  }

  run_shell(header.packing == kPackedByLzma ? "lzma_sdk d " BODY " " FOLDER MODULE
                                            : "tar -xjf " BODY " -C " FOLDER);
  run_shell("rm -f " BODY);
  char list[1024];
  if (is_filter_loaded(list)) {
    vek_sj_module_del();
    put_line("rmmod old vek_pg2 modules!");
    run_shell("rmmod vek_pg2.ko");
  }
  put_line("haha,upgrading...");
  run_shell("insmod " FOLDER MODULE);
  return is_filter_loaded(list) ? keep_loaded(header, package, size) : load_what_was_before(list);
}

int file_upgrade(const char* path) {
  // A file that is not there has size -1: no room is needed to find out that it cannot be read.
  const int64_t size = f_size(path);
  const bool is_possible = size >= -1 && size < INT32_MAX;
  char* const package = is_possible ? static_cast<char*>(malloc(static_cast<size_t>(size + 1))) : nullptr;
  int result = kUnreadable;
  if (package == nullptr) {
    print("malloc %ld failed\n", size + 1);
  } else {
    const int length = size < 0 ? -1 : f_read(path, package, static_cast<int>(size));
    if (length < 0) {
      print("read file " FOLDER " failed\n");
    } else {
      result = install(package, std::min(length, static_cast<int>(size)));
    }
  }
  run_shell("rm -rf " FOLDER);
  if (result == kDone) put_line("vek upgrade ok!");
  vek_sj_module_add();
  run_shell("vek qos sb_tj_init");
  free(package);
  return result;
}

// As the page that waits for the upgrade knows it.
int end_with(int result) {
  nvram_set("tzk_state", result == kDone ? "0" : "1");
  return result;
}

int download(const Args& args, const CommandEntry*) {
  char* const url = args.get(3);
  if (url == nullptr) {
    put_line("cmd_wget 18752");
    return end_with(kBadUrl);
  }
  print("cmd_wget 18757 path=%s\n", url);
  const char* const slash = strrchr(url, '/');
  if (slash == nullptr) {
    print("cmd_wget 18763 get:%s \n", url);
    return end_with(kBadUrl);
  }
  char path[sizeof FOLDER + kMaxName + 1] = FOLDER "/";
  char* const name = path + sizeof FOLDER;
  memcpy(name, slash + 1, strnlen(slash + 1, kMaxName));
  print("filename is %s \n", name);
  run_shell("rm -rf " FOLDER);
  run_shell("mkdir -p " FOLDER);
  if (httpd_wget(url, path) == 0) {
    put_line("wget failed,ret=0");
    return end_with(kNotDownloaded);
  }
  const int result = file_upgrade(path);
  if (result != kDone) {
    print("file_upgrade failed,ret=%d\n", result);
    return end_with(result);
  }
  char now[21];
  snprintf(now, sizeof now, "%lu", static_cast<unsigned long>(time(nullptr)));
  nvram_set("last_filter_up_time", now);
  nvram_commit();
  return end_with(kDone);
}

int show_package_in_flash(const Args&, const CommandEntry*) {
  UpgradePackageHeader header = {};
  if (general_flash_read(kFlashArea, &header, 0, sizeof header) < 0) {
    put_line("general_flash_read pg2 failed!");
    return kDone;
  }
  put_line("information on flash:");
  print("is_pg2_ko:%s\nplatform:%s\nversion:%s\n", header.is_pg2_ko, header.platform, header.version);
  return kDone;
}

constexpr SubCommand kWget[] = {
    handled("download", download),
    handled("readold", show_package_in_flash),
};

}  // namespace

int cmd_wget(int argc, char** argv, const CommandEntry* entry) {
  const Args args(argc, argv);
  const bool is_known = find_sub_command(kWget, args, 2) != nullptr;
  return is_known ? run_sub_command({kWget}, args, entry) : download(args, entry);  // whatever the word is
}
