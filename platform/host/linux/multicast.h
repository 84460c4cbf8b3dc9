// Which multicast groups the running Linux is in.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "records/field.h"

struct MulticastGroup {
  Ip4 ip;
  uint32_t users;  // sockets, and Linux itself
};

// The IPv4 groups joined on an interface; none where Linux does not have it. Throws when Linux does not
// answer.
std::vector<MulticastGroup> linux_multicast_groups(std::string_view dev);
