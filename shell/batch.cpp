// Commands from a file or a pipe.
#include "shell/batch.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "shell/line.h"

namespace {

constexpr size_t kMaxLine = 1 << 20;

// The lines of a file, which may be one that a program writes as it gets its answers.
class Lines {
 public:
  Lines(int file, Runner& runner) : file_(file), runner_(runner), buffer_(64 << 10) {}
  ~Lines() { close(file_); }
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;

  // Of a line that is too long, what stands behind its permitted length is lost, and is_whole false.
  bool next(std::string& line, bool& is_whole) {
    line.clear();
    is_whole = true;
    for (bool is_any = false;; is_any = true) {
      if (at_ == end_ && !fill()) return is_any;
      const char* const from = buffer_.data() + at_;
      const auto* newline = static_cast<const char*>(memchr(from, '\n', end_ - at_));
      const size_t length = newline == nullptr ? end_ - at_ : static_cast<size_t>(newline - from);
      is_whole = is_whole && line.size() + length <= kMaxLine;
      if (is_whole) line.append(from, length);
      at_ += length + (newline == nullptr ? 0 : 1);
      if (newline != nullptr) return true;
    }
  }
  bool has_failed() const { return has_failed_; }

 private:
  bool fill() {
    runner_.flush();  // whoever writes the lines may wait for it
    ssize_t got;
    do got = read(file_, buffer_.data(), buffer_.size());
    while (got < 0 && errno == EINTR);
    has_failed_ = got < 0;
    at_ = 0;
    end_ = got < 0 ? 0 : static_cast<size_t>(got);
    return got > 0;
  }

  int file_;
  Runner& runner_;
  std::vector<char> buffer_;
  size_t at_ = 0;
  size_t end_ = 0;
  bool has_failed_ = false;
};

}  // namespace

int run_batch(Runner& runner, int file, const std::string& name, bool stops_at_first) {
  Lines lines(file, runner);
  bool are_all_well = true;
  bool is_whole = true;
  uint64_t number = 1;
  for (std::string line; (are_all_well || !stops_at_first) && lines.next(line, is_whole); ++number) {
    const std::string place = name + ":" + std::to_string(number) + ": ";
    try {
      if (!is_whole) throw LineError("the line is too long");
      std::vector<std::string> words = words_of_line(line);
      if (words.empty()) continue;
      const int status = runner.run(words);
      if (status == 0) continue;
      runner.say(place + "status " + std::to_string(status));
    } catch (const LineError& error) {
      runner.reject(place + error.what());
    }
    are_all_well = false;
  }
  if (lines.has_failed()) runner.say(name + ": " + strerror(errno));
  runner.flush();
  if (!runner.is_all_written()) runner.say("vek-shell: standard output cannot be written");
  return are_all_well && !lines.has_failed() && runner.is_all_kept() ? 0 : 1;
}
