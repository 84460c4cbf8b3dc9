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

Capture::Capture()
    : output_(redirect(STDOUT_FILENO)),
      report_(redirect(STDERR_FILENO)),
      nowhere_(checked(open("/dev/null", O_WRONLY | O_CLOEXEC), "/dev/null")) {}

Capture::~Capture() {
  fflush(stdout);
  for (const Stream& stream : {output_, report_}) {
    dup2(stream.before, stream.number);
    close(stream.before);
    close(stream.memory);
  }
  close(nowhere_);
}

void Capture::drop_output() {
  if (is_output_dropped_) return;
  is_output_dropped_ = true;
  dup2(nowhere_, STDOUT_FILENO);
}

std::string Capture::take_output() {
  fflush(stdout);
  std::string text = take(output_);
  if (!is_output_dropped_) return text;
  is_output_dropped_ = false;
  dup2(output_.memory, STDOUT_FILENO);
  return {};
}

Capture::Stream Capture::redirect(int number) {
  fflush(stdout);
  const int memory = checked(memfd_create("vek-shell", MFD_CLOEXEC), "memfd_create");
  const int before = checked(fcntl(number, F_DUPFD_CLOEXEC, 3), "standard output");
  checked(dup2(memory, number), "dup2");
  return {number, memory, before};
}

std::string Capture::take(const Stream& stream) {
  const off_t size = lseek(stream.memory, 0, SEEK_CUR);
  if (size <= 0) return {};
  std::string text(static_cast<size_t>(size), '\0');
  const ssize_t got = pread(stream.memory, text.data(), text.size(), 0);
  text.resize(got < 0 ? 0 : static_cast<size_t>(got));
  [[maybe_unused]] const int left = ftruncate(stream.memory, 0);
  lseek(stream.memory, 0, SEEK_SET);
  return text;
}
