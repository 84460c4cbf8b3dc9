// The parameter store: settings of the router by key. A change is seen by every process at once; the commit
// makes it last over a reboot.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// The value of a key, null when it is not set or `key` is null or empty. The text belongs to the library and
// stays as it is until the next call of any function here.
const char* nvram_get(const char* key);

// Stores a copy of `value` under `key`; a null value removes the key. Returns 0 on success, non-zero on
// failure (also for a null or empty key, or one with '=' in it).
int nvram_set(const char* key, const char* value);

// Makes all that was set last. Returns 0 on success.
int nvram_commit(void);

#ifdef __cplusplus
}
#endif
