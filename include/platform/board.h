// The board: LED, flash partitions, USB log storage, plug-in area, system log, programs.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Switches the front-panel LED: 0 on, 1 off (the line is active low). Returns 0 on success.
int ap_led_ctrl(int value);

// Erases `length` bytes of the flash partition `name` from `offset`, both multiples of the erase block; a
// length of 0 means to the end of the partition, so 0, 0 erases all of it. Returns 0 on success, non-zero
// when there is no such partition, the name is null, or the erase fails.
int flash_erase_mtd(const char* name, uint32_t offset, uint32_t length);

// Non-zero when the USB log storage is mounted and can be written to.
int usblog_mount_state(void);

// Runs the program argv[0], found through PATH, with the arguments up to the null entry; nothing goes through
// a shell. `path`: where its output goes, null for the caller's own output; `timeout`: seconds after which it
// is killed, 0 for never; `pid`: null to wait for its end, else it runs on and its process id is stored.
// Returns the exit status of a program that was waited for (0 for one that was not), -1 when it could not be
// started or argv or argv[0] is null.
int _eval(char* const argv[], const char* path, int timeout, int* pid);

// The flash area of the plug-in file: copy the file at `path` into it, copy it out into the file at `path`,
// empty it. A write or read with a null or empty path fails; the clean does not need one. Return 0 on
// success, a negative value on failure.
int flash_zentrik_plugin_write(const char* path);
int flash_zentrik_plugin_read(const char* path);
int flash_zentrik_plugin_clean(const char* path);

// Writes one line to the system log under a numeric log type; format and arguments as for printf, cut at 1023
// bytes. Returns 0 on success, a negative value on failure (also for a null format).
int sys_log_write(uint32_t type, const char* format, ...) __attribute__((format(printf, 2, 3)));

#ifdef __cplusplus
}
#endif
