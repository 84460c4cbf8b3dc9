// Upgrades of the filter module from a server of the test's, files, and the programs that load modules.
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "host.h"
#include "platform/file.h"
#include "platform/flash.h"
#include "platform/nvram.h"

namespace {

// Answers each request with the next of the responses, the last one for good.
class HttpServer {
 public:
  HttpServer(std::vector<std::string> responses, bool is_endless, bool stalls)
      : responses_(std::move(responses)), is_endless_(is_endless), stalls_(stalls) {
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
    size_t next = 0;
    for (int client; (client = accept(listener_, nullptr, nullptr)) >= 0; close(client)) {
      char request[4096];
      const std::string& bytes = responses_[std::min(next++, responses_.size() - 1)];
      bool goes_on = read(client, request, sizeof request) > 0;
      while (goes_on) goes_on = send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL) > 0 && is_endless_;
      while (stalls_ && read(client, request, sizeof request) > 0) continue;
    }
  }

  std::vector<std::string> responses_;
  bool is_endless_;
  bool stalls_;
  sockaddr_in address_ = {.sin_family = AF_INET, .sin_addr = {htonl(INADDR_LOOPBACK)}};
  const int listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::thread thread_;
};

std::string response(const std::string& head, const std::string& body = "", size_t missing = 0) {
  return "HTTP/1.1 " + head +
         "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size() + missing) + "\r\n\r\n" +
         body;
}
std::string served(const std::string& body, size_t missing = 0) { return response("200 OK", body, missing); }
std::string moved(const std::string& where) { return response("302 Found\r\nLocation: " + where); }

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
  RunResult in_folder(const std::string& line) const {
    return run({"/bin/sh", "-c", "cd " + state.path() + " && " + line});
  }
  std::string tar(const std::string& module) const {
    std::ofstream(state.file("vek_pg2.ko")) << module;
    return in_folder("tar -cj vek_pg2.ko").out;
  }
  std::string lzma(const std::string& module) const {
    std::ofstream(state.file("vek_pg2.ko")) << module;
    return in_folder("xz --format=lzma --stdout vek_pg2.ko").out;
  }
  std::string package(const std::string& version, const std::string& body, char packing,
                      const std::string& platform = "rkchip") const {
    std::ofstream(state.file("body")) << body;
    std::string header(128, '\0');
    header.replace(8, 32, in_folder("md5sum body").out, 0, 32).replace(40, version.size(), version);
    header.replace(56, platform.size(), platform)[68] = packing;
    return header + body;
  }
  static int write_to_flash(const std::string& bytes) {
    return general_flash_write("modules", bytes.data(), 0, static_cast<uint32_t>(bytes.size()));
  }
  static std::string modules() {
    char list[1024] = "";
    return {list, static_cast<size_t>(f_read("/proc/modules", list, sizeof list))};
  }
  static std::string value(const char* key) {
    const char* const text = nvram_get(key);
    return text == nullptr ? "" : text;
  }
};

TEST_F(Upgrade, FromAServer) {
  const std::string first = package("1", tar(module_file(100)), 0);
  const std::string second = package("2", lzma(module_file(200)), 1);
  const std::string no_module = package("5", lzma("#!/bin/sh"), 1);
  std::string changed = second;
  changed[150] ^= 1;
  // More than the flash has room for; what unpacks it stops before the end.
  const std::string large = package("3", tar(module_file(300)) + std::string(17 << 20, '\0'), 0);
  const struct {
    std::vector<std::string> responses;
    int status;
    std::string name, flash;  // the versions that are known and kept then
    long loaded;              // the size of the module, -1 where none could be loaded at all
    std::string why;
    bool is_endless = false, stalls = false;
  } cases[] = {
      {{served(no_module)}, 9, "", "", -1, "insmod: /lib/vek_pg2.ko: "},
      {{served(first)}, 0, "1", "1", 100, ""},
      {{moved("other"), served(second)}, 0, "2", "2", 200, ""},
      {{served(second)}, 0, "2", "2", 200, ""},
      {{served(changed)}, 1, "2", "2", 200, ""},
      {{served(first.substr(0, 140))}, 1, "2", "2", 200, ""},
      {{served("short")}, 1, "2", "2", 200, ""},
      {{served("")}, 1, "2", "2", 200, ""},
      {{served(package("4", tar(module_file(400)), 0, "rkchips"))}, 2, "2", "2", 200, ""},
      {{served(no_module)}, 9, "2", "2", 200, "insmod: /etc/upgrade/vek_pg2.ko: no kernel module\n"},
      {{served(package("6", "nothing", 0))}, 9, "2", "2", 200, "tar: "},
      {{served(large)}, 8, "3", "2", 300, "the flash partition modules has 16777216 bytes"},
      {{moved("ftp://127.0.0.1/other"), served(second)}, 10, "3", "2", 300, "\"ftp\""},
      {{moved("circle")}, 10, "3", "2", 300, "redirects"},
      {{served(second, 1)}, 10, "3", "2", 300, "download: "},
      {{response("404 Not Found", second)}, 10, "3", "2", 300, "404"},
      {{served(second, 1)}, 10, "3", "2", 300, "too slow", false, true},
      {{served("", (64 << 20) + 1)}, 10, "3", "2", 300, "more than 64 MiB"},
      {{"HTTP/1.0 200 OK\r\n\r\n" + std::string(1 << 20, 'x')}, 10, "3", "2", 300, "more than 64 MiB", true},
  };
  for (const auto& [responses, status, name, flash, loaded, why, is_endless, stalls] : cases) {
    SCOPED_TRACE(responses[0].substr(0, 200));
    const HttpServer server(responses, is_endless, stalls);
    const RunResult result =
        run({"/bin/sh", "-c",
             "unshare -rm true || exit 77; exec unshare -rm sh -c 'mount -t tmpfs none /etc || exit 77; "
             "mkdir -p /etc/upgrade/old; \"$@\";"
             " status=$?; [ ! -e /etc/upgrade ] || find /etc/upgrade; exit $status' sh \"$@\"",
             "sh", VEK_BINARY, "wget", "download", server.url() + "/package"},
            {"VEK_HTTP_STALL=1", "no_proxy=127.0.0.1"});
    if (result.status == 77) GTEST_SKIP() << "this machine allows no mounts of one's own";
    EXPECT_EQ(result.status, status) << result.err;
    EXPECT_NE(result.err.find(why), why.npos) << result.err;
    EXPECT_EQ(value("tzk_state"), status == 0 ? "0" : "1");
    EXPECT_EQ(value("tzk_name"), name);
    EXPECT_EQ(number_behind(vek("wget readold").out, "version:"), flash.empty() ? -1 : std::stol(flash));
    EXPECT_EQ(number_behind(modules(), "vek_pg2 "), loaded);
    EXPECT_EQ(modules().starts_with("vek_sj "), loaded > 0);
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
  const std::string list =
      "a_b 64 0 - Live 0x0000000000000000\n"
      "vek_sj 65536 0 - Live 0x0000000000000000\n"
      "vek_pg2 65536 1 vek_sj, Live 0x0000000000000000\n";
  EXPECT_EQ(in_folder("insmod a-b.ko").err, "");
  for (const char* line :
       {"insmod", "insmod a-b.ko", "insmod vek_pg2.ko", "insmod short.ko", "insmod 'a b.ko'",
        "insmod program.ko", "insmod missing.ko", "insmod .", "rmmod vek_pg2", "rmmod c", "rmmod ''",
        "lzma_sdk d", "lzma_sdk e a-b.ko x", "lzma_sdk d a-b.ko x"}) {
    const RunResult result = in_folder(line);
    EXPECT_NE(result.err, "") << line;
    EXPECT_EQ(result.status, 1) << line;
  }
  EXPECT_NE(access(state.file("x").c_str(), F_OK), 0);
  EXPECT_EQ(modules().substr(0, list.size()), list);
  for (int pass = 0; pass < 2; ++pass) EXPECT_EQ(vek_sj_module_del(), 0);
  EXPECT_EQ(in_folder("rmmod a_b && rmmod vek_pg2.ko").err, "");
  EXPECT_LT(vek_sj_module_add(), 0);

  const std::string body = tar(module_file(70));
  const std::string good = package("1", body, 0);
  // What unpacks the second would ignore the byte behind its end.
  for (const std::string& bytes :
       {good.substr(0, 128), good + "x", package("1", body, 0, "other"), package("1", body, 1)}) {
    write_to_flash(bytes);
    EXPECT_LT(pg2_download_from_flash(), 0);
    EXPECT_EQ(modules().find("vek_"), std::string::npos);
  }
  write_to_flash(good);
  EXPECT_EQ(pg2_download_from_flash(), 0);
  for (int pass = 0; pass < 2; ++pass) EXPECT_EQ(vek_sj_module_add(), 0);
  EXPECT_EQ(number_behind(modules(), "vek_pg2 "), 70);
}

TEST_F(Upgrade, Files) {
  const std::string path = state.file("file");
  char bytes[16] = "";
  EXPECT_EQ(f_write(path.c_str(), "abcdef", 6, 0, 0700), 6);
  EXPECT_EQ(in_folder("stat -c %a file").out, "700\n");
  EXPECT_EQ(f_write(path.c_str(), "gh", 2, 1, 0600), 2);
  EXPECT_EQ(f_size(path.c_str()), 8);
  EXPECT_EQ(f_read(path.c_str(), bytes, 7), 7);
  EXPECT_STREQ(bytes, "abcdefg");
  EXPECT_EQ(f_write(path.c_str(), "", 0, 0, 0600), 0);
  EXPECT_EQ(f_size(path.c_str()), 0);
  EXPECT_GT(f_read("/proc/self/stat", bytes, sizeof bytes), 0);
  for (const char* wrong : {"", static_cast<const char*>(nullptr), state.path().c_str(), "/nowhere/file"}) {
    EXPECT_LT(f_write(wrong, "a", 1, 0, 0600), 0);
    EXPECT_EQ(f_read(wrong, bytes, 1), -1);
    EXPECT_EQ(httpd_wget("http://127.0.0.1/", wrong), 0);
  }
  EXPECT_LT(f_size("/nowhere/file"), 0);
  EXPECT_LT(f_write("/dev/full", "a", 1, 0, 0600), 0);
}

}  // namespace
