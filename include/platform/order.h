// The order gateway: one request to a kernel module, answered in the same storage.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Delivers `length` bytes at `record` to the kernel module that the record names, waits until the module has
// handled it, and leaves the module's answer (result and payload) in the same storage.
//
// A record is a header of four words in the machine's byte order, then the payload:
//    0  uint32_t module   number of the kernel module
//    4  uint32_t length   of the whole record in bytes, this header included
//    8  uint32_t result   0 in the request; in the answer 0 for success, else an index of tvlret_err_str
//   12  uint32_t command  number of the command within the module
//   16  payload, length - 16 bytes, zero where the caller writes nothing
// The library reads and writes nothing beyond `length` bytes, keeps no pointer to the record, and takes the
// length argument, not the header's word, as the size of the storage.
//
// Returns 0 when the exchange took place, whatever the module's result; non-zero when it could not be carried
// out (no gateway, `record` null, or `length` below 16), and then the record is as it was.
int tesvel_order_opt_fun(void* record, uint32_t length);

// The text for each result code a module answers; null where a code is not in use. The texts have no newline
// and live as long as the process.
extern const char* const tvlret_err_str[52];

#ifdef __cplusplus
}
#endif
