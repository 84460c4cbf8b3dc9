// Commands from a person at a terminal: the line editor around them, and a process for each, so that it can
// be ended. The shell's own words are help, watch and exit.
#include "shell/terminal.h"

#include <fcntl.h>
#include <histedit.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>
#include <system_error>

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

void handle(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  sigaction(signal, &action, nullptr);
}

// Blocked, and read from a file: none is lost between a look at what has come and the wait for more.
class Signals {
 public:
  Signals() {
    sigemptyset(&all_);
    for (const int signal : {SIGINT, SIGCHLD, SIGWINCH, SIGCONT}) sigaddset(&all_, signal);
    handle(SIGINT, SIG_DFL);
    handle(SIGCHLD, SIG_DFL);
    sigprocmask(SIG_BLOCK, &all_, nullptr);
    file_ = signalfd(-1, &all_, SFD_CLOEXEC | SFD_NONBLOCK);
    if (file_ < 0) throw std::system_error(errno, std::generic_category(), "signalfd");
  }
  ~Signals() { close(file_); }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  void unblock() const { sigprocmask(SIG_UNBLOCK, &all_, nullptr); }
  int file() const { return file_; }
  // One that has come; 0 where there is none.
  int take() const {
    signalfd_siginfo signal;
    return read(file_, &signal, sizeof signal) == ssize_t{sizeof signal} ? static_cast<int>(signal.ssi_signo)
                                                                         : 0;
  }

 private:
  sigset_t all_;
  int file_;
};

// What a person types. It is read without waiting, and so by a description of the terminal that is nobody
// else's: Ctrl-C takes what was typed before it away, even when poll() has seen it already.
struct Typing {
  explicit Typing(const Signals& wanted) : signals(wanted) {
    const bool is_own_terminal = tcgetpgrp(STDIN_FILENO) >= 0;
    if (is_own_terminal) file = open("/dev/tty", O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) file = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
  }
  ~Typing() { close(file); }
  Typing(const Typing&) = delete;
  Typing& operator=(const Typing&) = delete;

  const Signals& signals;
  int file = -1;
  bool is_given_up = false;  // the line, with Ctrl-C
};

// Whether a character is complete with that byte. One that the byte cannot continue is left out.
bool complete_character(mbstate_t& state, char byte, wchar_t* character) {
  constexpr auto kInvalid = static_cast<size_t>(-1);
  const bool is_amid = mbsinit(&state) == 0;
  size_t length = mbrtowc(character, &byte, 1, &state);
  if (length == kInvalid) state = {};
  if (length == kInvalid && is_amid) return complete_character(state, byte, character);
  return length <= 1;
}

// The editor's own function would not see a Ctrl-C that comes just before it reads.
int read_character(EditLine* editor, wchar_t* character) {
  void* data = nullptr;
  el_get(editor, EL_CLIENTDATA, &data);
  auto& [signals, file, is_given_up] = *static_cast<Typing*>(data);
  for (mbstate_t state = {};;) {
    pollfd ready[] = {{file, POLLIN, 0}, {signals.file(), POLLIN, 0}};
    if (poll(ready, std::size(ready), -1) < 0 && errno != EINTR) return -1;
    if (ready[1].revents != 0) {
      const int signal = signals.take();
      is_given_up = signal == SIGINT;
      if (is_given_up) return -1;
      if (signal == SIGWINCH) el_resize(editor);
      if (signal == SIGCONT) el_set(editor, EL_PREP_TERM, 1);
      el_set(editor, EL_REFRESH);
    } else if (ready[0].revents != 0) {
      char byte;
      const ssize_t got = read(file, &byte, 1);
      if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
      if (got <= 0) return static_cast<int>(got);
      if (complete_character(state, byte, character)) return 1;
    }
  }
}

// Ctrl-C reaches the command as well, but not while the C library runs a program for it, nor when it comes
// before there is a process.
int wait_for(pid_t child, const Signals& signals, bool& is_ended) {
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    pollfd ready = {signals.file(), POLLIN, 0};
    poll(&ready, 1, -1);
    if (signals.take() != SIGINT) continue;
    is_ended = true;
    kill(child, SIGTERM);
  }
  return status;
}

// Runs a command in a process of its own, which a person can end.
int run(std::vector<std::string>& words, bool is_json, const Signals& signals) {
  fflush(stdout);
  const pid_t child = fork();
  if (child < 0) {
    fprintf(stderr, "vek-shell: %s\n", strerror(errno));
    return 1;
  }
  if (child == 0) {
    setlocale(LC_ALL, "C");  // the tool knows no other
    handle(SIGQUIT, SIG_DFL);
    handle(SIGCHLD, SIG_IGN);
    signals.unblock();
    Runner runner(is_json);
    const int status = runner.run(words);
    runner.flush();
    _exit(status == 0 && !runner.is_all_kept() ? 1 : status);
  }
  bool is_ended = false;
  const int status = wait_for(child, signals, is_ended);
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  printf("\n");
  if (!is_ended) fprintf(stderr, "vek-shell: %s\n", strsignal(WTERMSIG(status)));
  return 128 + WTERMSIG(status);
}

// Empty where nothing is to be kept: libedit takes a file away from all others, and /dev/null is theirs, too.
std::string history_path() {
  const char* const chosen = getenv("VEK_HISTORY");
  const char* const home = getenv("HOME");
  if (chosen == nullptr && home == nullptr) return "";
  const std::string path = chosen != nullptr ? chosen : std::string(home) + "/.vek_history";
  struct stat found;
  return stat(path.c_str(), &found) == 0 && !S_ISREG(found.st_mode) ? "" : path;
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
  handle(SIGQUIT, SIG_IGN);
  const Signals signals;
  Typing typing(signals);
  LineHistory lines;
  EditLine* const editor = el_init("vek-shell", stdin, stdout, stderr);
  if (editor == nullptr) return 1;
  el_set(editor, EL_PROMPT, prompt);
  el_set(editor, EL_EDITOR, "emacs");
  el_set(editor, EL_CLIENTDATA, &typing);
  el_set(editor, EL_GETCFN, read_character);
  el_set(editor, EL_HIST, history, lines.lines());
  el_set(editor, EL_ADDFN, "complete", "Completes the word", complete);
  el_set(editor, EL_BIND, "^I", "complete", nullptr);
  el_set(editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
  el_source(editor, nullptr);

  int status = 0;
  for (;;) {
    int length = 0;
    typing.is_given_up = false;
    while (signals.take() != 0) continue;  // what came for the last command
    el_resize(editor);                     // the terminal may have another size by now
    el_set(editor, EL_PREP_TERM, 1);  // who sees the prompt may type Ctrl-D, which was the terminal's own
    const char* const line = el_gets(editor, &length);
    if (line == nullptr || length <= 0) {
      printf("\n");
      if (typing.is_given_up) {
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
      status = run(words, is_json, signals);
    } catch (const LineError& error) {
      fprintf(stderr, "vek-shell: %s\n", error.what());
      status = 1;
    }
  }
  el_end(editor);
  return status;
}
