// The board: LED, USB log storage, system log, programs.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Switches the front-panel LED: 0 on, 1 off (the line is active low). Returns 0 on success.
int ap_led_ctrl(int value);

// Non-zero when the USB log storage is mounted and can be written to.
int usblog_mount_state(void);

// Runs the program argv[0], found through PATH, with the arguments up to the null entry; nothing goes through
// a shell. `path`: where its output goes, null for the caller's own output; `timeout`: seconds after which it
// is killed, 0 for never; `pid`: null to wait for its end, else it runs on and its process id is stored.
// Returns the exit status of a program that was waited for (0 for one that was not), -1 when it could not be
// started or argv or argv[0] is null.
int _eval(char* const argv[], const char* path, int timeout, int* pid);

// Writes one line to the system log under a numeric log type; format and arguments as for printf, cut at 1023
// bytes. Returns 0 on success, a negative value on failure (also for a null format).
int sys_log_write(uint32_t type, const char* format, ...) __attribute__((format(printf, 2, 3)));

#ifdef __cplusplus
}
#endif
