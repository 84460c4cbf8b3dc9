// Files, downloads, and the loading and unloading of what depends on the filter module.
// A null or empty path or URL is a failure.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// The size of a file in bytes, negative when there is none.
int64_t f_size(const char* path);

// Reads at most `most` bytes from the start of a file into `buffer`; adds no NUL. Files of the kernel, which
// have no size, are read too. Returns the number of bytes, -1 on failure.
int f_read(const char* path, void* buffer, int most);

// Writes `length` bytes to a file, which is made with the permissions `mode` when it is not there. `flags`: 0
// to replace what the file holds, 1 to append. Returns the number of bytes, a negative value on failure.
int f_write(const char* path, const void* data, int length, int flags, uint32_t mode);

// Fetches `url` over HTTP into the file `path`. Returns non-zero when the file was downloaded whole, 0 when
// not.
int httpd_wget(const char* url, const char* path);

// Unpacks the filter module that the flash area "modules" keeps, and loads it. Returns 0 on success.
int pg2_download_from_flash(void);

// Attach and detach the audit module, which has to be out of the way while the filter module is exchanged.
// Return 0 on success, also when it was so already.
int vek_sj_module_add(void);
int vek_sj_module_del(void);

// Makes a descriptor non-blocking. Returns 0 on success, -1 on failure with errno set.
int setnonblocking(int descriptor);

#ifdef __cplusplus
}
#endif
