// What the process writes, kept in memory.
#include "shell/capture.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace {

int checked(int result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

}  // namespace

Capture::Capture() : output_(redirect(STDOUT_FILENO)), report_(redirect(STDERR_FILENO)) {}

Capture::~Capture() {
  fflush(stdout);
  for (const Stream& stream : {output_, report_}) {
    dup2(stream.before, stream.number);
    close(stream.before);
    close(stream.memory);
  }
}

Capture::Stream Capture::redirect(int number) {
  fflush(stdout);
  const int memory = checked(memfd_create("vek-shell", MFD_CLOEXEC), "memfd_create");
  const int before = checked(fcntl(number, F_DUPFD_CLOEXEC, 3), "standard output");
  checked(dup2(memory, number), "dup2");
  return {number, memory, before};
}

std::string Capture::take(const Stream& stream) {
  fflush(stdout);
  const off_t size = lseek(stream.memory, 0, SEEK_CUR);
  if (size <= 0) return {};
  std::string text(static_cast<size_t>(size), '\0');
  const ssize_t got = pread(stream.memory, text.data(), text.size(), 0);
  text.resize(got < 0 ? 0 : static_cast<size_t>(got));
  [[maybe_unused]] const int left = ftruncate(stream.memory, 0);
  lseek(stream.memory, 0, SEEK_SET);
  return text;
}
