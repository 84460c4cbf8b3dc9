// Programs that are run, and processes that live on.
#include "linux/process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "linux/file.h"

extern "C" {
#include <sys/pidfd.h>  // written for C alone in version 2.36 of the C library
}

namespace {

// While a child is waited for, nobody may ignore its end.
class ChildSignal {
 public:
  ChildSignal() {
    struct sigaction by_default = {};
    by_default.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &by_default, &before_);
  }
  ~ChildSignal() { sigaction(SIGCHLD, &before_, nullptr); }
  ChildSignal(const ChildSignal&) = delete;
  ChildSignal& operator=(const ChildSignal&) = delete;

 private:
  struct sigaction before_;
};

class FileActions {
 public:
  FileActions() {
    posix_spawn_file_actions_init(&actions_);
    open(STDIN_FILENO, "/dev/null", O_RDONLY);
  }
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  void open(int descriptor, const char* file, int flags) {
    posix_spawn_file_actions_addopen(&actions_, descriptor, file, flags, 0600);
  }
  void lead(int descriptor, int to) { posix_spawn_file_actions_adddup2(&actions_, to, descriptor); }
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

std::vector<char*> arguments(const std::vector<std::string>& words) {
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
  argv.push_back(nullptr);
  return argv;
}

pid_t spawn(char* const argv[], const FileActions& actions) {
  pid_t child = 0;
  const int error = posix_spawnp(&child, argv[0], actions.get(), nullptr, argv, environ);
  if (error != 0) throw std::runtime_error(std::string(argv[0]) + " cannot be run: " + strerror(error));
  return child;
}

int wait_for(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) throw_errno("a program's end");
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

struct FileCloser {
  void operator()(FILE* file) const { fclose(file); }
};

// A process as the kernel holds it for us: nobody else can get its number meanwhile.
class Held {
 public:
  explicit Held(const Process& process) : fd_(pidfd_open(static_cast<pid_t>(process.pid), 0)) {
    if (fd_ >= 0 && !is_alive(process)) {
      close(fd_);
      fd_ = -1;
    }
  }
  ~Held() {
    if (fd_ >= 0) close(fd_);
  }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

  void signal(int number) const {
    if (fd_ >= 0) pidfd_send_signal(fd_, number, nullptr, 0);
  }
  bool has_ended_within(int milliseconds) const {
    struct pollfd wait = {fd_, POLLIN, 0};
    return fd_ < 0 || poll(&wait, 1, milliseconds) != 0;
  }

 private:
  int fd_;
};

}  // namespace

int run_program(const std::vector<std::string>& words, Output output) {
  const ChildSignal child_signal;
  FileActions actions;
  if (output == kSilenced) {
    actions.open(STDOUT_FILENO, "/dev/null", O_WRONLY);
    actions.open(STDERR_FILENO, "/dev/null", O_WRONLY);
  }
  return wait_for(spawn(arguments(words).data(), actions));
}

ProgramEnd read_program(const std::vector<std::string>& words) {
  const ChildSignal child_signal;
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw_errno("pipe");
  const File output(ends[0]);
  std::optional<File> input(ends[1]);
  FileActions actions;
  actions.lead(STDOUT_FILENO, ends[1]);
  actions.open(STDERR_FILENO, "/dev/null", O_WRONLY);
  const pid_t child = spawn(arguments(words).data(), actions);
  input.reset();
  ProgramEnd end = {};
  char piece[4096];
  for (size_t got = 0; (got = read_all(output, words[0], piece, sizeof piece)) > 0;) {
    end.output.append(piece, got);
  }
  end.status = wait_for(child);
  return end;
}

int64_t start_program(char* const argv[], const char* output_file) {
  const ChildSignal child_signal;
  FileActions actions;
  if (output_file != nullptr) actions.open(STDOUT_FILENO, output_file, O_WRONLY | O_CREAT | O_TRUNC);
  return spawn(argv, actions);
}

int wait_for_program(int64_t pid, int seconds) {
  const ChildSignal child_signal;
  const auto child = static_cast<pid_t>(pid);
  if (seconds > 0) {
    struct pollfd end = {pidfd_open(child, 0), POLLIN, 0};
    if (poll(&end, 1, seconds > INT_MAX / 1000 ? -1 : seconds * 1000) == 0) kill(child, SIGKILL);
    if (end.fd >= 0) close(end.fd);
  }
  return wait_for(child);
}

std::optional<Process> find_process(int64_t pid) {
  const std::string path = "/proc/" + std::to_string(pid) + "/stat";
  errno = 0;
  const std::unique_ptr<FILE, FileCloser> file(fopen(path.c_str(), "re"));
  char line[1024];
  if (file == nullptr || fgets(line, sizeof line, file.get()) == nullptr) {
    if (errno != 0 && errno != ENOENT && errno != ESRCH) {  // it may be alive
      throw_errno(path);
    }
    return {};
  }
  // Behind the name, which may hold anything: the state, and as the twentieth from there the start.
  const char* const name_end = strrchr(line, ')');
  char state = 'X';
  long long start = 0;
  if (name_end == nullptr ||
      sscanf(name_end, ") %c %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %lld",
             &state, &start) != 2) {
    return {};
  }
  if (state == 'Z' || state == 'X') return {};
  return Process{pid, start};
}

bool is_alive(const Process& process) {
  const std::optional<Process> found = find_process(process.pid);
  return found && found->start == process.start;
}

void signal_process(const Process& process, int signal) { Held(process).signal(signal); }

void end_process(const Process& process) {
  constexpr int kPatienceMs = 5000;
  const Held held(process);
  held.signal(SIGTERM);
  if (held.has_ended_within(kPatienceMs)) return;
  held.signal(SIGKILL);
  held.has_ended_within(kPatienceMs);
}
