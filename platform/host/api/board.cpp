// The board of a plain Linux host.
#include "platform/board.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdarg>

#include "api/transact.h"
#include "linux/process.h"
#include "modules/board.h"
#include "modules/checks.h"

#pragma GCC visibility push(default)

int ap_led_ctrl(int value) {
  return transact(kWrites, [value](Store& store) {
    refuse_unless(value == 0 || value == 1, kBadSwitch);
    set_led(store, value == 0);
    return 0;
  });
}

// The storage is there when its folder is a mount of its own.
int usblog_mount_state() {
  constexpr const char* kFolder = "/tmp/mnt/usblog";
  struct statx found = {};
  const bool is_mount =
      statx(AT_FDCWD, kFolder, 0, 0, &found) == 0 && (found.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  return is_mount && access(kFolder, W_OK) == 0 ? 1 : 0;
}

int _eval(char* const argv[], const char* path, int timeout, int* pid) {
  if (argv == nullptr || argv[0] == nullptr) return -1;
  const auto run = [=] {
    fflush(stdout);  // what the program writes comes behind it
    const int64_t child = start_program(argv, path);
    if (pid == nullptr) return wait_for_program(child, timeout);
    *pid = static_cast<int>(child);
    return 0;
  };
  return guarded(run, -1);
}

int sys_log_write(uint32_t type, const char* format, ...) {
  if (format == nullptr) return -1;
  char line[1024];
  va_list values;
  va_start(values, format);
  // Of several files at once, clang-tidy does not see va_start.
  const int length = vsnprintf(line, sizeof line, format, values);  // NOLINT(*-valist.Uninitialized)
  va_end(values);
  if (length < 0) return -1;
  for (char* at = line; *at != '\0'; ++at) {
    if (static_cast<unsigned char>(*at) < ' ' || *at == 0x7f) *at = ' ';  // one line, whatever is logged
  }
  syslog(LOG_USER | LOG_INFO, "[%u] %s", type, line);
  return 0;
}

#pragma GCC visibility pop
