// Files, downloads and kernel modules of a plain Linux host.
#include "platform/file.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include "api/guard.h"
#include "api/http_client.h"
#include "linux/file.h"
#include "linux/process.h"
#include "records/upgrade.h"
#include "state/flash.h"
#include "state/kernel_modules.h"
#include "state/store.h"

namespace {

constexpr const char* kModuleList = "/proc/modules";

constexpr int kAppends = 1;  // a flag of f_write

bool is_empty(const char* text) { return text == nullptr || *text == '\0'; }

// As much as there is room for. Returns the number of bytes.
size_t read_start(const char* path, char* buffer, size_t room) {
  const File file(open(path, O_RDONLY | O_CLOEXEC));
  if (!file.is_open()) throw_errno(path);
  return read_all(file, path, buffer, room);
}

// Ours, and those of Linux, which may be built without any.
size_t read_module_list(char* buffer, size_t room) {
  const std::string ours = kernel_module_list();
  const size_t length = ours.copy(buffer, room);
  if (access(kModuleList, R_OK) != 0) return length;
  return length + read_start(kModuleList, buffer + length, room - length);
}

HttpDownload* load_client() {
  void* const library = dlopen("libvek_http.so", RTLD_NOW | RTLD_LOCAL);
  void* const function = library == nullptr ? nullptr : dlsym(library, "vek_http_download");
  if (function == nullptr) throw std::runtime_error(std::string("no HTTP: ") + dlerror());
  return reinterpret_cast<HttpDownload*>(function);
}

// ---- The package in the flash ----

class TempFolder {
 public:
  TempFolder() {
    if (mkdtemp(path_.data()) == nullptr) throw_errno(path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  std::string file(const char* name) const { return path_ + "/" + name; }

 private:
  std::string path_ = (std::filesystem::temp_directory_path() / "vek-XXXXXX").string();
};

void require(bool good, const char* why) {
  if (!good) throw std::runtime_error(std::string("package in the flash: ") + why);
}

void load_package(const std::string& package) {
  UpgradePackageHeader header;
  require(package.size() > sizeof header, "none");
  memcpy(&header, package.data(), sizeof header);
  require(text(header.platform) == kUpgradePlatform, "for another platform");
  const std::string sum(text(header.md5));
  require(sum.size() == sizeof header.md5 && sum.find_first_not_of("0123456789abcdef") == sum.npos,
          "no checksum");

  const TempFolder folder;
  const std::string body = folder.file("body");
  const std::string sums = folder.file("sums");
  const std::string module = folder.file("vek_pg2.ko");
  replace_file(body, std::string_view(package).substr(sizeof header));
  replace_file(sums, sum + "  " + body + "\n");
  require(run_program({"md5sum", "--check", "--status", sums}, kSilenced) == 0, "damaged");
  const bool is_unpacked = header.packing == kPackedByLzma
                               ? run_program({"lzma_sdk", "d", body, module}, kOurs) == 0
                               : run_program({"tar", "-xjf", body, "-C", folder.file("")}, kOurs) == 0;
  require(is_unpacked, "not to be unpacked");
  load_kernel_module(module);
}

int done(void (*work)()) {
  const auto call = [work] {
    work();
    return 0;
  };
  return guarded(call, -1);
}

}  // namespace

#pragma GCC visibility push(default)

int64_t f_size(const char* path) {
  struct stat found;
  return is_empty(path) || stat(path, &found) != 0 ? -1 : found.st_size;
}

int f_read(const char* path, void* buffer, int most) {
  if (is_empty(path) || buffer == nullptr || most < 0) return -1;
  const auto read = [=] {
    auto* const bytes = static_cast<char*>(buffer);
    const auto room = static_cast<size_t>(most);
    const bool is_list = strcmp(path, kModuleList) == 0;
    return static_cast<int>(is_list ? read_module_list(bytes, room) : read_start(path, bytes, room));
  };
  return guarded(read, -1);
}

int f_write(const char* path, const void* data, int length, int flags, uint32_t mode) {
  if (is_empty(path) || length < 0 || (data == nullptr && length > 0) || flags < 0 || flags > kAppends) {
    return -1;
  }
  const auto write = [=] {
    const int how = O_WRONLY | O_CREAT | O_CLOEXEC | (flags == kAppends ? O_APPEND : O_TRUNC);
    const File file(open(path, how, mode));
    if (!file.is_open()) throw_errno(path);
    write_all(file, path, {static_cast<const char*>(data), static_cast<size_t>(length)});
    return length;
  };
  return guarded(write, -1);
}

int httpd_wget(const char* url, const char* path) {
  if (is_empty(url) || is_empty(path)) return 0;
  return guarded([=] { return load_client()(url, path); }, 0);
}

int pg2_download_from_flash() {
  return done([] { load_package(read_partition(kModulesPartition)); });
}

int vek_sj_module_add() { return done(attach_audit_module); }
int vek_sj_module_del() { return done(detach_audit_module); }

int setnonblocking(int descriptor) {
  const int flags = fcntl(descriptor, F_GETFL);
  return flags < 0 ? -1 : fcntl(descriptor, F_SETFL, flags | O_NONBLOCK);
}

#pragma GCC visibility pop
