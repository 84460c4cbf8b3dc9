// A command's answer, again and again, on the screen of a terminal.
#include "shell/watch.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <ctime>

#include "shell/capture.h"
#include "shell/line.h"
#include "shell/runner.h"

namespace {

constexpr unsigned kMaxSeconds = 24 * 60 * 60;

// A character a cell; nothing that a terminal would take for a command.
using Row = std::vector<std::string>;

std::vector<Row> screen_of(const std::string& text) {
  std::vector<Row> rows(1);
  for (const char c : text) {
    Row& row = rows.back();
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      rows.emplace_back();
    } else if (c == '\t') {
      do row.emplace_back(" ");
      while (row.size() % 8 != 0);
    } else if (byte >= 0x80 && byte < 0xc0 && !row.empty()) {
      row.back() += c;
    } else {
      row.emplace_back(1, byte < ' ' || byte == 0x7f ? '?' : c);
    }
  }
  return rows;
}

// The rows as far as they fit, with what differs from those before in reverse.
void paint(const std::string& title, const std::vector<Row>& rows, const std::vector<Row>& before) {
  winsize size = {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) {
    size = {.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
  }
  std::string text = "\033[H\033[2J" + title.substr(0, size.ws_col) + "\n";
  for (size_t i = 0; i < rows.size() && i + 2 < size.ws_row; ++i) {
    const Row* const old = i < before.size() ? &before[i] : nullptr;
    bool is_set_off = false;
    text += '\n';
    for (size_t j = 0; j < rows[i].size() && j < size.ws_col; ++j) {
      const bool is_same = before.empty() || (old != nullptr && j < old->size() && (*old)[j] == rows[i][j]);
      if (is_set_off == is_same) text += is_same ? "\033[27m" : "\033[7m";
      is_set_off = !is_same;
      text += rows[i][j];
    }
    if (is_set_off) text += "\033[27m";
  }
  fwrite(text.data(), 1, text.size(), stdout);
  fflush(stdout);
}

std::string answer_of(std::vector<std::string> words) {
  Capture capture;
  run_words(words);
  const std::string output = capture.take_output();
  return output + capture.take_report();
}

std::string time_of_day() {
  const time_t now = time(nullptr);
  char text[16];
  strftime(text, sizeof text, "%T", localtime(&now));
  return text;
}

}  // namespace

int watch(const std::vector<std::string>& words) {
  unsigned seconds = 2;
  size_t first = 0;
  if (!words.empty()) {
    const std::string& word = words[0];
    const char* const end = word.data() + word.size();
    const auto [behind, error] = std::from_chars(word.data(), end, seconds);
    const bool is_number = error == std::errc() && behind == end && seconds >= 1 && seconds <= kMaxSeconds;
    first = is_number ? 1 : 0;
    if (!is_number) seconds = 2;
  }
  if (first == words.size() || isatty(STDOUT_FILENO) == 0) {
    fputs("watch [SECONDS] COMMAND\tat a terminal, every 2 seconds if not said otherwise\n", stderr);
    return 1;
  }
  std::string line;
  for (size_t i = first; i < words.size(); ++i) line += " " + quoted(words[i]);
  std::vector<Row> before;
  for (;;) {
    const std::vector<Row> rows =
        screen_of(answer_of(std::vector(words.begin() + static_cast<ptrdiff_t>(first), words.end())));
    paint(time_of_day() + ", every " + std::to_string(seconds) + " s:" + line, rows, before);
    before = rows;
    sleep(seconds);
  }
}
