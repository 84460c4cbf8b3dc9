// Commands from a person at a terminal: the line editor around them, and a process for each, so that it can
// be ended. The shell's own words are help, watch and exit.
#include "shell/terminal.h"

#include <histedit.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "shell/line.h"
#include "shell/runner.h"
#include "shell/vocabulary.h"

namespace {

constexpr int kMaxHistory = 1000;

char* prompt(EditLine*) {
  static char text[] = "vek> ";
  return text;
}

// What may stand where the last word is.
std::vector<std::string_view> candidates(const UnfinishedLine& line) {
  std::span<const std::string> before = line.words;
  const bool is_help = !before.empty() && before[0] == "help";
  if (is_help) before = before.subspan(1);
  if (!before.empty() && before[0] == "watch") {
    before = before.subspan(1);
    const bool has_seconds =
        !before.empty() && before[0].find_first_not_of("0123456789") == std::string::npos;
    if (has_seconds) before = before.subspan(1);
  }
  std::vector<std::string_view> words = words_behind(before);
  if (line.words.empty()) words.insert(words.end(), {"watch", "exit"});
  std::erase_if(words, [&](std::string_view word) { return !word.starts_with(line.last); });
  return words;
}

std::string_view common_start(const std::vector<std::string_view>& words) {
  std::string_view start = words[0];
  for (const std::string_view word : words) {
    start = start.substr(0, static_cast<size_t>(std::ranges::mismatch(start, word).in1 - start.begin()));
  }
  return start;
}

void show(const std::vector<std::string_view>& words) {
  size_t widest = 0;
  for (const std::string_view word : words) widest = std::max(widest, word.size());
  const size_t columns = std::max<size_t>(1, 80 / (widest + 2));
  std::string text = "\n";
  for (size_t i = 0; i < words.size(); ++i) {
    text += words[i];
    const bool is_last = (i + 1) % columns == 0 || i + 1 == words.size();
    text += is_last ? "\n" : std::string(widest + 2 - words[i].size(), ' ');
  }
  fputs(text.c_str(), stdout);
  fflush(stdout);
}

unsigned char complete(EditLine* editor, int) {
  const LineInfo* const info = el_line(editor);
  const UnfinishedLine line =
      words_of_unfinished_line({info->buffer, static_cast<size_t>(info->cursor - info->buffer)});
  const std::vector<std::string_view> words = candidates(line);
  if (words.empty()) return CC_REFRESH_BEEP;
  std::string more(common_start(words).substr(line.last.size()));
  if (words.size() == 1) more += ' ';
  if (!more.empty()) return el_insertstr(editor, more.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
  show(words);
  return CC_REDISPLAY;
}

// Breaks what waits: the line that is being written is given up.
volatile sig_atomic_t is_interrupted = 0;
void on_interrupt(int) { is_interrupted = 1; }

void handle(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  sigaction(signal, &action, nullptr);
}

// Runs a command in a process of its own, which a person can end.
int run(std::vector<std::string>& words, bool is_json) {
  fflush(stdout);
  const pid_t child = fork();
  if (child < 0) {
    fprintf(stderr, "vek-shell: %s\n", strerror(errno));
    return 1;
  }
  if (child == 0) {
    setlocale(LC_ALL, "C");  // the tool knows no other
    handle(SIGINT, SIG_DFL);
    handle(SIGQUIT, SIG_DFL);
    handle(SIGCHLD, SIG_IGN);
    Runner runner(is_json);
    const int status = runner.run(words);
    runner.flush();
    _exit(status);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  printf("\n");
  if (WTERMSIG(status) != SIGINT) fprintf(stderr, "vek-shell: %s\n", strsignal(WTERMSIG(status)));
  return 128 + WTERMSIG(status);
}

std::string history_path() {
  const char* const path = getenv("VEK_HISTORY");
  const char* const home = getenv("HOME");
  if (path != nullptr) return path;
  return home == nullptr ? "" : std::string(home) + "/.vek_history";
}

class LineHistory {
 public:
  LineHistory() : path_(history_path()), lines_(history_init()) {
    HistEvent event;
    history(lines_, &event, H_SETSIZE, kMaxHistory);
    history(lines_, &event, H_SETUNIQUE, 1);
    if (!path_.empty()) history(lines_, &event, H_LOAD, path_.c_str());
  }
  ~LineHistory() { history_end(lines_); }
  LineHistory(const LineHistory&) = delete;
  LineHistory& operator=(const LineHistory&) = delete;

  // Lines that start with a blank are nobody's business.
  void add(const char* line) {
    HistEvent event;
    if (*line == ' ' || *line == '\n') return;
    history(lines_, &event, H_ENTER, line);
    if (!path_.empty()) history(lines_, &event, H_SAVE, path_.c_str());
  }
  History* lines() const { return lines_; }

 private:
  std::string path_;
  History* lines_;
};

}  // namespace

int run_terminal(bool is_json) {
  setlocale(LC_CTYPE, "");
  handle(SIGINT, on_interrupt);
  handle(SIGQUIT, SIG_IGN);
  handle(SIGCHLD, SIG_DFL);
  LineHistory lines;
  EditLine* const editor = el_init("vek-shell", stdin, stdout, stderr);
  if (editor == nullptr) return 1;
  el_set(editor, EL_PROMPT, prompt);
  el_set(editor, EL_EDITOR, "emacs");
  el_set(editor, EL_HIST, history, lines.lines());
  el_set(editor, EL_ADDFN, "complete", "Completes the word", complete);
  el_set(editor, EL_BIND, "^I", "complete", nullptr);
  el_set(editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
  el_source(editor, nullptr);

  int status = 0;
  for (;;) {
    int length = 0;
    is_interrupted = 0;
    el_resize(editor);  // the terminal may have another size by now
    const char* const line = el_gets(editor, &length);
    if (line == nullptr || length <= 0) {
      printf("\n");
      if (is_interrupted != 0) {
        el_reset(editor);
        continue;
      }
      break;
    }
    lines.add(line);
    try {
      std::string_view text(line, static_cast<size_t>(length));
      if (text.ends_with('\n')) text.remove_suffix(1);
      std::vector<std::string> words = words_of_line(text);
      if (words.empty()) continue;
      if (words[0] == "exit") break;
      status = run(words, is_json);
    } catch (const LineError& error) {
      fprintf(stderr, "vek-shell: %s\n", error.what());
      status = 1;
    }
  }
  el_end(editor);
  return status;
}
