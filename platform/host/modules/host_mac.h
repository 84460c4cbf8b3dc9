// Which MAC addresses hosts have.
#pragma once

#include "records/field.h"

// Neither all zero nor that of a group of hosts.
inline bool is_host_mac(const Mac& mac) { return (mac.bytes[0] & 1) == 0 && mac != Mac{}; }
