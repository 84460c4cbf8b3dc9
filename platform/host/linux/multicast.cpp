// Which multicast groups the running Linux is in, from the table that it shows of them.
#include "linux/multicast.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>

// A line for each interface that begins with its number, and behind it one for each of its groups, indented.
std::vector<MulticastGroup> linux_multicast_groups(std::string_view dev) {
  std::ifstream file("/proc/net/igmp");
  if (!file) throw std::runtime_error("/proc/net/igmp cannot be read");
  file.exceptions(std::ios::badbit);  // nor a part of it taken for the whole
  std::vector<MulticastGroup> groups;
  bool is_ours = false;
  for (std::string line; std::getline(file, line);) {
    char name[16];  // a colon follows, with or without blanks in front of it
    MulticastGroup group = {};
    if (!line.starts_with('\t')) {
      is_ours = sscanf(line.c_str(), "%*d %15[^: ]", name) == 1 && dev == name;
    } else if (is_ours && sscanf(line.c_str(), " %8x %u", &group.ip.value, &group.users) == 2) {
      groups.push_back(group);
    }
  }
  return groups;
}
