// What the running Linux knows of its network: interfaces, their flags and counters, neighbours. Each of the
// questions throws when Linux does not answer.
#pragma once

#include <linux/if_link.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "records/field.h"

// Whether Linux could have an interface of this name: 1 to 15 printing characters, neither '/' nor blank, and
// not "." or "..".
bool is_interface_name(std::string_view name);

struct Interface {
  std::string dev;
  uint32_t index;  // Linux's number of it
  uint32_t flags;  // those of <net/if.h>
  Mac mac;         // zero where it has none
  rtnl_link_stats64 counters;
};

// All interfaces, the loopback among them.
std::vector<Interface> linux_interfaces();

// None when Linux does not have it.
std::optional<Interface> linux_interface(std::string_view dev);

struct LinkSpeed {
  uint32_t mbps;
  bool is_full_duplex;
};

// None where the interface has no speed of its own, as bridges without ports.
std::optional<LinkSpeed> linux_link_speed(const std::string& dev);

// The machine's own IPv4 addresses, the first one of each interface that has any.
std::map<std::string, Ip4> linux_own_ips();

// Whether an address is one of the machine's own on an interface.
bool linux_has_address(std::string_view dev, Ip4 ip);

struct Neighbour {
  std::string dev;
  IpAddress address;
  Mac mac;
  uint32_t idle_seconds;  // since it was last used or shown to be there
  uint16_t state;         // NUD_REACHABLE and the like, of <linux/neighbour.h>

  Ip4 ip4() const { return ::ip4(address); }
};

// The hosts whose MAC address Linux has learnt or was told, but for IPv6 addresses of the link alone, by
// which nobody knows a host.
std::vector<Neighbour> linux_neighbours();
