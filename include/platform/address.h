// Single values as text and in records: numbers, IPv4, IPv6 and MAC addresses, byte strings.
// Nothing here allocates, keeps state or depends on the locale. A null text is taken as the empty text. The
// addresses and destinations behind `void*` need no alignment; a destination must be there and hold the bytes
// stated, a text buffer must hold the characters stated. A null text buffer gives null.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// ---- Numbers ----
//
// Leading blanks (space, tab) are skipped, then an optional '-' is read, then digits up to the first
// character that is none; what follows is ignored. No digits give 0. A value too large becomes UINT32_MAX. A
// negative value comes in two's complement ("-1" is 0xFFFFFFFF), one below INT32_MIN becomes 0x80000000: no
// large number ever wraps to a small one.

// Decimal, or hexadecimal after "0x".
uint32_t J_atoi(const char* text);
// Decimal only: "0x10" is 0.
uint32_t J_ato10(const char* text);
// Hexadecimal, with or without "0x".
uint32_t J_atohx16(const char* text);

// ---- IPv4: a uint32_t in network byte order ----

// Four decimal parts of one to three digits, 0 to 255, with a dot between and nothing before or behind.
// Returns the address, 0 for any other text (and so for "0.0.0.0").
uint32_t StrToIp(const char* text);

// Writes the dotted quad and its NUL into `buffer` (at least 16 bytes are needed, callers give 64) and
// returns `buffer`.
char* IpToStr(char* buffer, uint32_t address);

// The first IPv4 address that stands by itself in a text that may carry more: "10.0.0.1:53", "10.0.0.1/24",
// "http://user@10.0.0.1/index", "line 10.0.0.1". A scheme in front ("http://") is stepped over, and the
// search ends at the next '/', '?' or '#', so that an address in the path of a URL does not count as its
// host. Part of a name or of a longer dotted number ("1.2.3.4.example.com", "1.2.3.4.5") is no address.
// Returns it as StrToIp does, 0 when there is none.
uint32_t get_ip_from_str(const char* text);

// The mask of `bits` leading one bits, in StrToIp's representation; more than 32 count as 32. `base` has no
// influence: the result is the mask alone, never an address combined with it.
uint32_t get_ip_from_mask_wei(uint32_t base, uint32_t bits);

// ---- IPv6: 16 bytes in network byte order ----

// Reads the text forms of RFC 4291, section 2.2 (with "::" and with an IPv4 tail), without zone, brackets or
// prefix length. Returns non-zero on success; for any other text 0, with all 16 bytes of `address` zeroed.
int StrToIp6(const char* text, void* address);
// The same function under the name that the line commands know.
int StrToIPv6(const char* text, void* address);

// Writes the canonical form of RFC 5952 (IPv4-mapped addresses with a dotted tail) and its NUL into `buffer`
// (at least 46 bytes are needed, callers give 64) and returns `buffer`. A null `address` gives "::".
char* Ip6ToStr(char* buffer, const void* address);

// ---- Combined address value: 20 bytes ----
//
//   0  uint32_t family  4 or 6, in the machine's byte order; 0 for no address
//   4  16 bytes         the IPv6 address, or the IPv4 address in network byte order and 12 zero bytes

// Reads an IPv4 (as StrToIp) or IPv6 text (as StrToIp6). Returns non-zero on success ("0.0.0.0" and "::"
// included); for any other text 0, with all 20 bytes of `value` zeroed.
int StrToIpaddr(const char* text, void* value);

// Writes the address as IpToStr or Ip6ToStr do and returns `buffer`. A value of any other family, or a null
// `value`, gives "0.0.0.0".
char* IpaddrToStr(char* buffer, const void* value);

// ---- MAC: 6 bytes in wire order ----

// Six groups of two hexadecimal digits, all separated by ':' or all by '-', or twelve digits without
// separators; nothing before or behind. Returns 0 on success (the opposite sense of the functions above); for
// any other text 1, with all 6 bytes of `mac` zeroed.
int StrToMac(const char* text, void* mac);

// Takes what hexadecimal digits there are, whatever stands between: one or two of them make a byte ("1-2-3",
// "0011.2233.4455"); bytes that the text does not reach become 0, digits beyond the sixth byte are ignored.
void str2mac_nocheck(const char* text, void* mac);

// Writes the lower-case form with colons and its NUL into `buffer` (18 bytes) and returns `buffer`. A null
// `mac` gives all zeros.
char* MacToStr(char* buffer, const void* mac);

// Adds `step` to a MAC address in place. The last `bytes` bytes (0 to 6) count as one number, with carry from
// byte to byte, and wrap around; the bytes before them stay. A `bytes` of 4 keeps the first two bytes
// whatever the step.
void mac_add(void* mac, uint32_t step, int bytes);

// ---- Byte strings ----

// Reads pairs of hexadecimal digits into at most `most` bytes; ':', '-' or a blank may stand between two
// pairs. Pairs beyond `most` are not looked at. Returns the number of bytes written; a text with anything
// else in it, half a pair included, gives 0 and leaves zeros where bytes had been written.
int string_to_hex(const char* text, void* destination, int most);

// Decodes base64 (RFC 4648, section 4; the padding may be missing, blanks do not count) from at most `length`
// characters of `text`, fewer when a NUL comes first, into at most `room` bytes. Adds no NUL. Returns the
// number of bytes: 0, with nothing written, when the text is not base64 or does not fit.
int base64_decode2(const char* text, void* destination, int length, int room);

#ifdef __cplusplus
}
#endif
