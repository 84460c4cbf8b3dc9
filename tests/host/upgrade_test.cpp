// Upgrades of the filter module from a server of the test's, files, and the programs that load modules.
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <map>
#include <thread>

#include "host.h"
#include "platform/file.h"
#include "platform/flash.h"
#include "platform/nvram.h"

namespace {

struct Response {
  std::string bytes;
  bool is_endless = false;
  bool stalls = false;
};

// Answers one request after the other.
class HttpServer {
 public:
  explicit HttpServer(std::map<std::string, Response> responses) : responses_(std::move(responses)) {
    socklen_t size = sizeof address_;
    bind(listener_, reinterpret_cast<sockaddr*>(&address_), size);
    listen(listener_, 8);
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address_), &size);
    thread_ = std::thread([this] { serve(); });
  }
  ~HttpServer() {
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
  }
  std::string url() const { return "http://127.0.0.1:" + std::to_string(ntohs(address_.sin_port)); }

 private:
  void serve() {
    for (int client; (client = accept(listener_, nullptr, nullptr)) >= 0; close(client)) {
      char request[4096] = "";
      if (read(client, request, sizeof request - 1) <= 0) continue;
      const Response& response = responses_[split(request).at(1)];
      const std::string& bytes = response.bytes;
      while (send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL) > 0 && response.is_endless) continue;
      while (response.stalls && read(client, request, sizeof request) > 0) continue;
    }
  }

  std::map<std::string, Response> responses_;
  sockaddr_in address_ = {.sin_family = AF_INET, .sin_addr = {htonl(INADDR_LOOPBACK)}};
  const int listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::thread thread_;
};

std::string served(const std::string& body, size_t more = 0) {
  return "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size() + more) +
         "\r\n\r\n" + body;
}

// The part of a module that anybody looks at, and as many bytes as make it that long.
std::string module_file(size_t size) {
  std::string file(
      "\x7f"
      "ELF\2\1\1\0\0\0\0\0\0\0\0\0\1\0",
      18);
  file.resize(size);
  return file;
}

class Upgrade : public HostTest {
 protected:
  std::string shell(const std::string& line) const {
    const RunResult result = run({"/bin/sh", "-c", "cd " + state.path() + " && " + line});
    EXPECT_EQ(result.err, "") << line;
    return result.out;
  }
  std::string packed(const std::string& module, const std::string& how) const {
    std::ofstream(state.file("vek_pg2.ko")) << module;
    return shell(how);
  }
  std::string package(const std::string& version, const std::string& body, int packing,
                      const std::string& platform = "rkchip") const {
    std::ofstream(state.file("body")) << body;
    std::string header = "pg2ko";
    header.resize(8);
    header += shell("md5sum body").substr(0, 32) + version;
    header.resize(56);
    header += platform;
    header.resize(68);
    header += static_cast<char>(packing);
    header.resize(128);
    return header + body;
  }
  static std::string modules() {
    char list[1024] = "";
    const int length = f_read("/proc/modules", list, sizeof list);
    EXPECT_GE(length, 0);
    return {list, static_cast<size_t>(length)};
  }
  static std::string value(const char* key) {
    const char* const text = nvram_get(key);
    return text == nullptr ? "" : text;
  }
};

constexpr const char* kTar = "tar -cj vek_pg2.ko";
constexpr const char* kLzma = "xz --format=lzma --stdout vek_pg2.ko";

TEST_F(Upgrade, FromAServer) {
  const std::string first = package("1", packed(module_file(100), kTar), 0);
  const std::string second = package("2", packed(module_file(200), kLzma), 1);
  std::string changed = second;
  changed[150] ^= 1;
  // More than the flash has room for; what unpacks it stops before the end.
  const std::string large = package("3", packed(module_file(300), kTar) + std::string(17 << 20, '\0'), 0);
  HttpServer server({
      {"/first", {served(first)}},
      {"/second", {served(second)}},
      {"/moved", {"HTTP/1.1 302 Found\r\nLocation: second\r\nContent-Length: 0\r\n\r\n"}},
      {"/ftp", {"HTTP/1.1 302 Found\r\nLocation: ftp://127.0.0.1/second\r\nContent-Length: 0\r\n\r\n"}},
      {"/circle", {"HTTP/1.1 302 Found\r\nLocation: circle\r\nContent-Length: 0\r\n\r\n"}},
      {"/changed", {served(changed)}},
      {"/platform", {served(package("4", packed(module_file(400), kTar), 0, "rkchips"))}},
      {"/short", {served(first.substr(0, 140))}},
      {"/tiny", {served("pg2ko")}},
      {"/empty", {served("")}},
      {"/no-module", {served(package("5", packed("#!/bin/sh", kLzma), 1))}},
      {"/no-archive", {served(package("6", "nothing", 0))}},
      {"/large", {served(large)}},
      {"/cut", {served(second, 1)}},
      {"/missing", {"HTTP/1.1 404 Not Found\r\nContent-Length: 3\r\n\r\nno!"}},
      {"/stalls", {served(second, 1), false, true}},
      {"/too-large", {served("", (64 << 20) + 1)}},
      {"/endless", {"HTTP/1.0 200 OK\r\n\r\n" + std::string(1 << 20, 'x'), true}},
  });

  // What is left where no module could be loaded at all, and by a download that failed.
  const struct {
    std::string path;
    int status;
    std::string name, flash;  // the versions that are known and kept then
    size_t loaded;            // the size of the module
    std::string why;
  } cases[] = {
      {"/no-module", 9, "", "", 0, "insmod: /lib/vek_pg2.ko: "},
      {"/first", 0, "1", "1", 100, ""},
      {"/moved", 0, "2", "2", 200, ""},
      {"/second", 0, "2", "2", 200, ""},
      {"/changed", 1, "2", "2", 200, ""},
      {"/short", 1, "2", "2", 200, ""},
      {"/tiny", 1, "2", "2", 200, ""},
      {"/empty", 1, "2", "2", 200, ""},
      {"/platform", 2, "2", "2", 200, ""},
      {"/no-module", 9, "2", "2", 200, "insmod: /etc/upgrade/vek_pg2.ko: no kernel module\n"},
      {"/no-archive", 9, "2", "2", 200, "tar: "},
      {"/large", 8, "3", "2", 300, "the flash partition modules has 16777216 bytes"},
      {"/ftp", 10, "3", "2", 300, "\"ftp\""},
      {"/circle", 10, "3", "2", 300, "redirects"},
      {"/cut", 10, "3", "2", 300, "1 bytes remaining"},
      {"/missing", 10, "3", "2", 300, "404"},
      {"/stalls", 10, "3", "2", 300, "too slow"},
      {"/too-large", 10, "3", "2", 300, "Maximum file size exceeded"},
      {"/endless", 10, "3", "2", 300, "more than 64 MiB"},
      {"/", 10, "3", "2", 300, "no regular file"},
  };
  for (const auto& [path, status, name, flash, loaded, why] : cases) {
    SCOPED_TRACE(path);
    const RunResult result =
        run({"/bin/sh", "-c",
             "exec unshare -rm sh -c 'mount -t tmpfs none /etc || exit 77; mkdir -p /etc/upgrade/old;"
             " \"$@\"; status=$?; [ ! -e /etc/upgrade ] || find /etc/upgrade; exit $status' sh \"$@\"",
             "sh", VEK_BINARY, "wget", "download", server.url() + path},
            {"VEK_HTTP_STALL=1", "no_proxy=127.0.0.1"});
    if (result.status == 77) GTEST_SKIP() << "this machine allows no mounts of one's own";
    EXPECT_EQ(result.status, status) << result.err;
    EXPECT_NE(result.err.find(why), why.npos) << result.err;
    EXPECT_EQ(value("tzk_state"), status == 0 ? "0" : "1");
    EXPECT_EQ(value("tzk_name"), name);
    EXPECT_EQ(number_behind(vek("wget readold").out, "version:"), flash.empty() ? -1 : std::stol(flash));
    EXPECT_EQ(number_behind(modules(), "vek_pg2 "), loaded == 0 ? -1 : static_cast<long>(loaded));
    EXPECT_EQ(modules().starts_with("vek_sj "), loaded != 0);
    // A download that failed leaves the folder, with nothing in it.
    EXPECT_EQ(result.out.ends_with("\n/etc/upgrade\n"), status == 10) << result.out;
    EXPECT_EQ(result.out.find("/etc/upgrade/"), result.out.npos) << result.out;
  }
}

TEST_F(Upgrade, ModulesAreLoadedByPrograms) {
  std::ofstream(state.file("a-b.ko")) << module_file(64);
  std::ofstream(state.file("vek_pg2.ko")) << module_file(64);
  std::ofstream(state.file("short.ko")) << module_file(51);
  std::ofstream(state.file("a b.ko")) << module_file(64);
  std::ofstream(state.file("program.ko")) << module_file(64).replace(16, 1, "\2");
  const std::string at_first =
      "vek_sj 65536 0 - Live 0x0000000000000000\n"
      "vek_pg2 65536 1 vek_sj, Live 0x0000000000000000\n";
  EXPECT_EQ(modules().substr(0, at_first.size()), at_first);
  shell("insmod a-b.ko");
  EXPECT_TRUE(modules().starts_with("a_b 64 0 - Live 0x0000000000000000\n" + at_first));
  for (const char* line :
       {"insmod", "insmod a-b.ko", "insmod vek_pg2.ko", "insmod short.ko", "insmod 'a b.ko'",
        "insmod program.ko", "insmod missing.ko", "insmod .", "rmmod vek_pg2", "rmmod c", "rmmod ''",
        "lzma_sdk d", "lzma_sdk e a-b.ko x", "lzma_sdk d a-b.ko x"}) {
    const RunResult result = run({"/bin/sh", "-c", "cd " + state.path() + " && " + line});
    EXPECT_NE(result.err, "") << line;
    EXPECT_EQ(result.status, 1) << line;
  }
  EXPECT_NE(access(state.file("x").c_str(), F_OK), 0);
  EXPECT_TRUE(modules().starts_with("a_b 64 0 - Live 0x0000000000000000\n" + at_first));
  shell("rmmod a_b.ko");
  for (int pass = 0; pass < 2; ++pass) EXPECT_EQ(vek_sj_module_del(), 0);
  shell("rmmod vek_pg2.ko");
  EXPECT_LT(vek_sj_module_add(), 0);
  const std::string good = package("1", packed(module_file(70), kTar), 0);
  std::string damaged = good;
  damaged += "x";  // which what unpacks it would ignore
  for (const std::string& bytes :
       {std::string(), good.substr(0, 128), damaged, package("1", packed(module_file(70), kTar), 0, "other"),
        package("1", packed(module_file(70), kTar), 1)}) {
    general_flash_write("modules", bytes.data(), 0, static_cast<uint32_t>(bytes.size()));
    EXPECT_LT(pg2_download_from_flash(), 0);
    EXPECT_EQ(modules().find("vek_"), std::string::npos);
  }
  general_flash_write("modules", good.data(), 0, static_cast<uint32_t>(good.size()));
  EXPECT_EQ(pg2_download_from_flash(), 0);
  for (int pass = 0; pass < 2; ++pass) EXPECT_EQ(vek_sj_module_add(), 0);
  EXPECT_EQ(number_behind(modules(), "vek_pg2 "), 70);
}

TEST_F(Upgrade, Files) {
  const std::string path = state.file("file");
  char bytes[16] = "";
  EXPECT_LT(f_size(path.c_str()), 0);
  EXPECT_EQ(f_read(path.c_str(), bytes, 4), -1);
  EXPECT_EQ(f_write(path.c_str(), "abcdef", 6, 0, 0700), 6);
  EXPECT_EQ(shell("stat -c %a file"), "700\n");
  EXPECT_EQ(f_write(path.c_str(), "gh", 2, 1, 0600), 2);
  EXPECT_EQ(f_size(path.c_str()), 8);
  EXPECT_EQ(f_read(path.c_str(), bytes, 7), 7);
  EXPECT_STREQ(bytes, "abcdefg");
  EXPECT_EQ(f_write(path.c_str(), "", 0, 0, 0600), 0);
  EXPECT_EQ(f_size(path.c_str()), 0);
  EXPECT_GT(f_read("/proc/self/stat", bytes, sizeof bytes), 0);
  for (const char* wrong : {"", static_cast<const char*>(nullptr), state.path().c_str()}) {
    EXPECT_LT(f_write(wrong, "a", 1, 0, 0600), 0);
    EXPECT_EQ(f_read(wrong, bytes, 1), -1);
    EXPECT_EQ(httpd_wget("http://127.0.0.1/", wrong), 0);
  }
  EXPECT_LT(f_write("/dev/full", "a", 1, 0, 0600), 0);
}

}  // namespace
