// Which MAC addresses hosts have.
#pragma once

#include <algorithm>
#include <cstdint>

// Neither all zero nor that of a group of hosts.
inline bool is_host_mac(const uint8_t (&mac)[6]) {
  return (mac[0] & 1) == 0 && std::ranges::any_of(mac, [](uint8_t byte) { return byte != 0; });
}
