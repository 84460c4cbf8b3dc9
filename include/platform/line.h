// Lines (uplinks), their names and protocols, and their settings in the parameter store.
//
// Lines are numbered from 0: 0 to 120 are the lines of WAN interfaces, 121 to 255 the VPN links, entry 0
// first. On a plain host an interface that is marked as WAN becomes the line with the lowest number that is
// free, and stays it until it loses the mark.
//
// Texts returned belong to the library, stay as they are until the next call of the same function, and must
// not be freed or written to.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// The number of a line protocol given by name: 1 "static", 2 "dhcp", 3 "pppoe", 4 "pptp", 5 "l2tp", 6 "3g" or
// "4g"; 0 for any other name, for the empty text and for null. Names are compared exactly.
int vek_get_wan_proto(const char* name);

// The name of the network device of line `line` (0 to 120), at most 15 characters. Null or empty when there
// is no such line.
const char* tvl_get_wan_name(uint32_t line);

// The parameter-store key (see nvram.h) that holds the device name of entry `index`, counted from 0, of the
// family `name`; the one family in use is "vpn_link", with entries 0 to 134. Null when the family or the
// entry is unknown, or `name` is null.
const char* tvl_vpnget(const char* name, uint32_t index);

// The value of a parameter-store key, or its factory default where it was never set. Null when there is
// neither, or `key` is null or empty.
const char* tvl_nv_get_def(const char* key);

#ifdef __cplusplus
}
#endif
