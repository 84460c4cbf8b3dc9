// What the running Linux knows of its network.
#include "linux/net.h"

#include <net/if.h>
#include <net/if_arp.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/address.h"

namespace {

struct FileCloser {
  void operator()(FILE* file) const { fclose(file); }
};
using File = std::unique_ptr<FILE, FileCloser>;

// All zero when Linux does not have the interface, or nothing to say of it.
struct ifreq ask_interface(std::string_view name, unsigned long what) {
  struct ifreq request = {};
  memcpy(request.ifr_name, name.data(), std::min(name.size(), sizeof request.ifr_name - 1));
  const int socket_fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const bool is_answered = socket_fd >= 0 && ioctl(socket_fd, what, &request) == 0;
  if (socket_fd >= 0) close(socket_fd);
  return is_answered ? request : ifreq{};
}

}  // namespace

bool is_interface_name(std::string_view name) {
  return !name.empty() && name.size() < IFNAMSIZ && name != "." && name != ".." &&
         std::ranges::all_of(name, [](char c) { return c > ' ' && c != '/' && c != 0x7f; });
}

std::vector<std::string> linux_interfaces() {
  std::vector<std::string> names;
  struct if_nameindex* all = if_nameindex();
  for (const struct if_nameindex* each = all; each != nullptr && each->if_name != nullptr; ++each) {
    if ((linux_interface_flags(each->if_name) & IFF_LOOPBACK) == 0) names.emplace_back(each->if_name);
  }
  if (all != nullptr) if_freenameindex(all);
  return names;
}

bool linux_has_interface(std::string_view name) {
  return is_interface_name(name) && if_nametoindex(std::string(name).c_str()) != 0;
}

uint32_t linux_interface_flags(std::string_view name) {
  return static_cast<uint16_t>(ask_interface(name, SIOCGIFFLAGS).ifr_flags);
}

uint32_t linux_interface_ip(std::string_view name) {
  const struct ifreq answer = ask_interface(name, SIOCGIFADDR);
  struct sockaddr_in address;
  memcpy(&address, &answer.ifr_addr, sizeof address);
  return address.sin_addr.s_addr;
}

uint64_t linux_interface_counter(std::string_view name, const char* counter) {
  if (!is_interface_name(name)) return 0;
  const std::string path = "/sys/class/net/" + std::string(name) + "/statistics/" + counter;
  const File file(fopen(path.c_str(), "re"));
  char line[32];
  if (file == nullptr || fgets(line, sizeof line, file.get()) == nullptr) return 0;
  return strtoull(line, nullptr, 10);
}

std::vector<Neighbour> linux_neighbours() {
  std::vector<Neighbour> neighbours;
  const File file(fopen("/proc/net/arp", "re"));
  char line[256];
  while (file != nullptr && fgets(line, sizeof line, file.get()) != nullptr) {
    char ip[32];
    char mac[32];
    char dev[IFNAMSIZ];
    unsigned flags;
    // The header line has no number in these places.
    if (sscanf(line, "%31s 0x%*x 0x%x %31s %*s %15s", ip, &flags, mac, dev) != 4) continue;
    Neighbour neighbour{.dev = dev, .ip = StrToIp(ip), .mac = {}};
    const bool is_complete = (flags & ATF_COM) != 0 && StrToMac(mac, neighbour.mac) == 0;
    if (is_complete && neighbour.ip != 0) neighbours.push_back(neighbour);
  }
  return neighbours;
}
