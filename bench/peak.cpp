// Runs a program and prints the most memory that it had in RAM, in KiB. The figure is the program's own: what
// its parent held before the exec, which rusage would count, is not in it.
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

long peak_of(pid_t child) {
  char path[64];
  snprintf(path, sizeof path, "/proc/%d/status", child);
  FILE* status = fopen(path, "r");
  if (status == nullptr) return -1;
  char line[256];
  long peak = -1;
  while (fgets(line, sizeof line, status) != nullptr) {
    if (strncmp(line, "VmHWM:", 6) == 0) peak = atol(line + 6);
  }
  fclose(status);
  return peak;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const pid_t child = fork();
  if (child == 0) {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    execv(argv[1], argv + 1);
    _exit(127);
  }
  long peak = -1;
  for (int status = 0; waitpid(child, &status, 0) == child && WIFSTOPPED(status);) {
    if (status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8))) peak = peak_of(child);
    const int signal = WSTOPSIG(status) == SIGTRAP ? 0 : WSTOPSIG(status);
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACEEXIT);
    ptrace(PTRACE_CONT, child, nullptr, signal);
  }
  fprintf(stderr, "%ld\n", peak);
  return peak < 0 ? 1 : 0;
}
