// The flash: partitions (areas) by their names.
// What was written is there whole or not at all, whatever happens meanwhile. A null or unknown name is a
// failure.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Erases `length` bytes of the flash partition `name` from `offset`, both multiples of the erase block; a
// length of 0 means to the end of the partition, so 0, 0 erases all of it. Returns 0 on success, non-zero
// when there is no such partition, the name is null, or the erase fails.
int flash_erase_mtd(const char* name, uint32_t offset, uint32_t length);

// Read or write `length` bytes at `offset` of the flash area `area`; the one area in use is "modules". A
// write erases the area from `offset` on first, so that its data are the last in there; a read of what was
// never written or was erased at the end is a failure. Return the number of bytes, a negative value on
// failure (also where the area is too small).
int general_flash_read(const char* area, void* buffer, uint32_t offset, uint32_t length);
int general_flash_write(const char* area, const void* data, uint32_t offset, uint32_t length);

// The flash area of the plug-in file: copy the file at `path` into it, copy it out into the file at `path`,
// empty it. A write or read with a null or empty path fails; the clean does not need one. Return 0 on
// success, a negative value on failure.
int flash_zentrik_plugin_write(const char* path);
int flash_zentrik_plugin_read(const char* path);
int flash_zentrik_plugin_clean(const char* path);

#ifdef __cplusplus
}
#endif
