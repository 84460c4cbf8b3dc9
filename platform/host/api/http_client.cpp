// Downloads by HTTP by way of the curl library: a file is there whole or not at all.
#include "api/http_client.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "api/guard.h"
#include "linux/file.h"

namespace {

constexpr curl_off_t kMaxSize = 64 << 20;
constexpr const char* kTooLarge = "more than 64 MiB";
constexpr long kMaxRedirects = 10;
constexpr long kConnectSeconds = 15;

// A download that has been slower than this for so long is given up.
constexpr long kBytesPerSecond = 100;
constexpr long kStallSeconds = 30;
constexpr long kMaxStallSeconds = 3600;

// VEK_HTTP_STALL says otherwise.
long stall_seconds() {
  const char* const text = getenv("VEK_HTTP_STALL");
  if (text == nullptr) return kStallSeconds;
  long seconds = 0;
  const char* const end = text + strlen(text);
  const auto [stop, error] = std::from_chars(text, end, seconds);
  if (error != std::errc() || stop != end || seconds < 1 || seconds > kMaxStallSeconds) {
    throw std::runtime_error("VEK_HTTP_STALL: 1 to 3600 seconds");
  }
  return seconds;
}

// A file beside the one that it takes the place of when it is whole.
class NewFile {
 public:
  explicit NewFile(const std::string& path)
      : path_(path),
        part_(path.substr(0, path.find_last_of('/') + 1) + ".download-XXXXXX"),
        file_(mkostemp(part_.data(), O_CLOEXEC)) {
    if (!file_.is_open()) throw_errno(part_);
  }
  ~NewFile() {
    if (!part_.empty()) unlink(part_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void add(std::string_view bytes) {
    size_ += static_cast<curl_off_t>(bytes.size());
    if (size_ > kMaxSize) throw std::runtime_error(path_ + ": " + kTooLarge);
    write_all(file_, path_, bytes);
  }
  void put_in_place() {
    if (rename(part_.c_str(), path_.c_str()) != 0) throw_errno(path_);
    part_.clear();
  }

 private:
  std::string path_;
  std::string part_;
  File file_;
  curl_off_t size_ = 0;
};

struct Transfer {
  NewFile file;
  std::string error = {};  // nothing may be thrown across the library
};

size_t take(const char* bytes, size_t, size_t length, void* context) {
  auto* const transfer = static_cast<Transfer*>(context);
  try {
    transfer->file.add({bytes, length});
    return length;
  } catch (const std::exception& error) {
    transfer->error = error.what();
    return CURL_WRITEFUNC_ERROR;
  }
}

int show_progress(void*, curl_off_t total, curl_off_t now, curl_off_t, curl_off_t) {
  if (now == 0) return 0;
  fprintf(stderr, "\r%lld", static_cast<long long>(now / 1024));
  if (total > 0) fprintf(stderr, " of %lld", static_cast<long long>(total / 1024));
  fputs(" KiB ", stderr);
  return 0;
}

struct CurlCloser {
  void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
};

void download(const char* url, const char* path) {
  struct stat found;
  if (stat(path, &found) == 0 && !S_ISREG(found.st_mode)) {
    throw std::runtime_error(std::string(path) + ": no regular file");
  }
  Transfer transfer{NewFile(path)};
  const std::unique_ptr<CURL, CurlCloser> handle(curl_easy_init());
  if (handle == nullptr) throw std::bad_alloc();
  CURL* const curl = handle.get();
  char error_text[CURL_ERROR_SIZE] = "";
  const bool is_watched = isatty(STDERR_FILENO) != 0;
  curl_easy_setopt(curl, CURLOPT_URL, url);
  curl_easy_setopt(curl, CURLOPT_DEFAULT_PROTOCOL, "http");
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");  // of redirects, too
  curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(curl, CURLOPT_MAXREDIRS, kMaxRedirects);
  curl_easy_setopt(curl, CURLOPT_FAILONERROR, 1L);
  curl_easy_setopt(curl, CURLOPT_USERAGENT, "vek");
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, kBytesPerSecond);
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, stall_seconds());
  curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE, kMaxSize);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, take);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &transfer);
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, error_text);
  curl_easy_setopt(curl, CURLOPT_NOPROGRESS, is_watched ? 0L : 1L);
  curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, show_progress);
  const CURLcode code = curl_easy_perform(curl);
  if (is_watched) fputc('\n', stderr);
  if (!transfer.error.empty()) throw std::runtime_error(transfer.error);
  if (code != CURLE_OK) {
    // Newer curls count what comes as well, and tell of it in words of their own.
    const char* const why = code == CURLE_FILESIZE_EXCEEDED ? kTooLarge
                            : *error_text != '\0'           ? error_text
                                                            : curl_easy_strerror(code);
    throw std::runtime_error(std::string("download: ") + why);
  }
  transfer.file.put_in_place();
}

}  // namespace

extern "C" [[gnu::visibility("default")]] HttpDownload vek_http_download;

int vek_http_download(const char* url, const char* path) {
  const auto work = [=] {
    download(url, path);
    return 1;
  };
  return guarded(work, 0);
}
