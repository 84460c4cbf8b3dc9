// vek-shell: the commands of vek, many in one process, from a terminal, a file or a pipe.
#include <fcntl.h>
#include <getopt.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "shell/batch.h"
#include "shell/gateway.h"
#include "shell/recording.h"
#include "shell/runner.h"
#include "shell/terminal.h"
#include "shell/tracer.h"

namespace {

constexpr const char* kUsage =
    "Usage: vek-shell [OPTION]... [FILE]\n"
    "       vek-shell --dump RECORDING\n"
    "Runs the commands of vek that are typed, or that FILE or standard input has, one a line: words, quoted "
    "as\n"
    "a shell has it, or {\"words\": [\"arp\", \"list\"]}; '#' starts a comment. There are also\n"
    "  help COMMAND             its usage, and that of its sub-commands\n"
    "  watch [SECONDS] COMMAND  its answer again and again, with what changed set off\n"
    "  exit                     the end, at a terminal\n"
    "\n"
    "  -e                   stop at the first command that fails\n"
    "  -j                   answer each command with a line of JSON\n"
    "      --trace[=FILE]   show every order field by field, on standard error or in FILE\n"
    "      --record FILE    add every order and its answer to FILE\n"
    "      --replay FILE    answer orders from FILE, in place of the kernel modules\n"
    "      --dump FILE      show a recording field by field\n"
    "      --help, --version\n"
    "\n"
    "The status is 0 when all commands were well, 1 when one was not or something could not be written, 2 "
    "when\n"
    "the shell could not start.\n";

enum Option { kTrace = 256, kRecord, kReplay, kDump, kHelp, kVersion };
constexpr option kOptions[] = {{"trace", optional_argument, nullptr, kTrace},
                               {"record", required_argument, nullptr, kRecord},
                               {"replay", required_argument, nullptr, kReplay},
                               {"dump", required_argument, nullptr, kDump},
                               {"help", no_argument, nullptr, kHelp},
                               {"version", no_argument, nullptr, kVersion},
                               {nullptr, 0, nullptr, 0}};

struct Options {
  bool stops_at_first = false;
  bool is_json = false;
  std::unique_ptr<Tracer> tracer;
  std::unique_ptr<Recorder> recorder;
  std::unique_ptr<Replay> replay;
};

int say_usage() {
  fputs("Try 'vek-shell --help'.\n", stderr);
  return 2;
}

void say_if_torn(bool ends_amid_entry, const char* path) {
  if (ends_amid_entry) fprintf(stderr, "vek-shell: %s: the last exchange is not whole\n", path);
}

int dump(const char* path) {
  RecordingReader reader(open_recording(path), path);
  Tracer tracer(STDOUT_FILENO);
  for (Exchanged exchanged; reader.next(exchanged);) tracer.show(exchanged);
  say_if_torn(reader.ends_amid_entry(), path);
  return 0;
}

int run_commands(const Options& options, const char* path) {
  gateway().recorder = options.recorder.get();
  gateway().replay = options.replay.get();
  if (options.tracer != nullptr) {
    gateway().is_request_wanted = true;
    gateway().watchers.emplace_back([&](const Exchanged& exchanged) { options.tracer->show(exchanged); });
  }
  if (path == nullptr && isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0) {
    return run_terminal(options.is_json);
  }
  // What commands run must not read the commands behind them.
  const int file =
      path == nullptr ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3) : open(path, O_RDONLY | O_CLOEXEC);
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  if (file < 0 || nothing < 0 || (path == nullptr && dup2(nothing, STDIN_FILENO) < 0)) {
    fprintf(stderr, "vek-shell: %s: %s\n", path == nullptr ? "standard input" : path, strerror(errno));
    return 2;
  }
  signal(SIGCHLD, SIG_IGN);  // as vek does
  static char output_buffer[64 * 1024];
  if (isatty(STDOUT_FILENO) == 0) setvbuf(stdout, output_buffer, _IOFBF, sizeof output_buffer);
  Runner runner(options.is_json);
  return run_batch(runner, file, path == nullptr ? "stdin" : path, options.stops_at_first);
}

// No file that is opened later may take the place of a standard stream that is closed.
void open_standard_streams() {
  int lowest;
  do lowest = open("/dev/null", O_RDWR);
  while (lowest >= 0 && lowest <= STDERR_FILENO);
  close(lowest);
}

int run_shell_program(int argc, char** argv) {
  Options options;
  for (int option; (option = getopt_long(argc, argv, "ej", kOptions, nullptr)) != -1;) {
    switch (option) {
      case 'e':
        options.stops_at_first = true;
        break;
      case 'j':
        options.is_json = true;
        break;
      case kTrace:
        options.tracer = optarg == nullptr ? std::make_unique<Tracer>(STDERR_FILENO)
                                           : std::make_unique<Tracer>(std::string(optarg));
        break;
      case kRecord:
        options.recorder = std::make_unique<Recorder>(optarg);
        break;
      case kReplay:
        options.replay = std::make_unique<Replay>(RecordingReader(open_recording(optarg), optarg));
        say_if_torn(options.replay->ends_amid_entry(), optarg);
        break;
      case kDump:
        return optind == argc ? dump(optarg) : say_usage();
      case kHelp:
        fputs(kUsage, stdout);
        return 0;
      case kVersion:
        puts("vek-shell " VEK_VERSION);
        return 0;
      default:
        return say_usage();
    }
  }
  if (argc - optind > 1) return say_usage();
  return run_commands(options, argv[optind]);
}

}  // namespace

Gateway first_gateway() { return {}; }

int main(int argc, char** argv) {
  open_standard_streams();
  try {
    return run_shell_program(argc, argv);
  } catch (const std::exception& error) {
    fprintf(stderr, "vek-shell: %s\n", error.what());
    return 2;
  }
}
