// Which multicast groups the running Linux is in, from the table that it shows of them.
#include "linux/multicast.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace {

struct FileCloser {
  void operator()(FILE* file) const { fclose(file); }
};

}  // namespace

// A line for each interface that begins with its number, and behind it one for each of its groups, indented.
std::vector<MulticastGroup> linux_multicast_groups(std::string_view dev) {
  const std::unique_ptr<FILE, FileCloser> file(fopen("/proc/net/igmp", "re"));
  if (file == nullptr) throw std::runtime_error("/proc/net/igmp cannot be read");
  std::vector<MulticastGroup> groups;
  bool is_ours = false;
  char line[256];
  while (fgets(line, sizeof line, file.get()) != nullptr) {
    char name[16];
    MulticastGroup group = {};
    if (line[0] != '\t') {
      is_ours = sscanf(line, "%*d %15s", name) == 1 && dev == name;
    } else if (is_ours && sscanf(line, " %8x %u", &group.ip.value, &group.users) == 2) {
      groups.push_back(group);
    }
  }
  return groups;
}
