// What the running Linux knows of its network: interfaces, their flags and counters, neighbours.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Whether Linux could have an interface of this name: 1 to 15 printing characters, neither '/' nor blank, and
// not "." or "..".
bool is_interface_name(std::string_view name);

// The names of all interfaces but the loopback.
std::vector<std::string> linux_interfaces();

bool linux_has_interface(std::string_view name);

// Below, an interface that Linux does not have has the value 0.
uint32_t linux_interface_flags(std::string_view name);

// The machine's own IPv4 address on an interface, in network byte order.
uint32_t linux_interface_ip(std::string_view name);

// A counter of an interface by the name that Linux gives it, "rx_packets" and the like.
uint64_t linux_interface_counter(std::string_view name, const char* counter);

struct Neighbour {
  std::string dev;
  uint32_t ip;  // in network byte order
  uint8_t mac[6];
};

// The hosts whose MAC address Linux has learnt or was told.
std::vector<Neighbour> linux_neighbours();
