// What the running Linux knows of its network, by rtnetlink. The few messages are read with the macros of
// Linux's own headers: the smallest library for them would take a tenth of the time that every vek starts in.
#include "linux/net.h"

#include <linux/ethtool.h>
#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace {

constexpr int kMaxTries = 10;

// A message of Linux: something of this kind, and its attributes by their type.
template <typename Kind>
class Message {
 public:
  explicit Message(const nlmsghdr* message) : kind_(static_cast<const Kind*>(NLMSG_DATA(message))) {
    const auto* attribute = reinterpret_cast<const rtattr*>(kind_ + 1);
    auto left = static_cast<int>(NLMSG_PAYLOAD(message, sizeof(Kind)));
    for (; RTA_OK(attribute, left); attribute = RTA_NEXT(attribute, left)) {
      if (attribute->rta_type < attributes_.size()) attributes_[attribute->rta_type] = attribute;
    }
  }

  const Kind* operator->() const { return kind_; }

  // Copies an attribute's value, as much of it as there is: newer versions of Linux add to the end of some.
  // False when the message has none.
  template <typename Value>
  bool read(uint16_t type, Value& value) const {
    const rtattr* attribute = attributes_[type];
    if (attribute == nullptr) return false;
    memcpy(&value, RTA_DATA(attribute), std::min<size_t>(RTA_PAYLOAD(attribute), sizeof value));
    return true;
  }
  // The same for a value that has this very length.
  bool read_bytes(uint16_t type, uint8_t* bytes, size_t length) const {
    const rtattr* attribute = attributes_[type];
    if (attribute == nullptr || RTA_PAYLOAD(attribute) != length) return false;
    memcpy(bytes, RTA_DATA(attribute), length);
    return true;
  }

 private:
  static_assert(sizeof(Kind) % NLMSG_ALIGNTO == 0);
  const Kind* kind_;
  std::array<const rtattr*, 32> attributes_ = {};
};

// Asks for all of a kind, or for the interface named.
template <typename Kind>
struct Request {
  nlmsghdr header;
  Kind kind;
  rtattr name_header;
  char name[IFNAMSIZ];
};

template <typename Kind>
Request<Kind> make_request(uint16_t what, uint8_t family, std::string_view dev) {
  Request<Kind> request = {};
  request.header.nlmsg_type = what;
  request.header.nlmsg_flags = static_cast<uint16_t>(NLM_F_REQUEST | (dev.empty() ? NLM_F_DUMP : 0));
  request.header.nlmsg_len = dev.empty() ? offsetof(Request<Kind>, name_header) : sizeof request;
  memcpy(&request.kind, &family, sizeof family);  // the first byte of each kind
  request.name_header = {sizeof request.name_header + sizeof request.name, IFLA_IFNAME};
  memcpy(request.name, dev.data(), std::min(dev.size(), sizeof request.name - 1));
  return request;
}

[[noreturn]] void fail(int error) { throw std::runtime_error(std::string("netlink: ") + strerror(error)); }

class Socket {
 public:
  Socket() {
    if (fd_ < 0) fail(errno);
  }
  ~Socket() { close(fd_); }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  // Sends a request and calls visit(const nlmsghdr*) with each message of the answer. Returns Linux's error,
  // 0 for none, and EINTR when what was listed has changed on the way.
  template <typename Visit>
  int ask(const nlmsghdr& request, Visit visit) {
    const sockaddr_nl linux_side = {.nl_family = AF_NETLINK, .nl_pad = 0, .nl_pid = 0, .nl_groups = 0};
    // A socket that is connected hears Linux alone.
    if (connect(fd_, reinterpret_cast<const sockaddr*>(&linux_side), sizeof linux_side) != 0 ||
        send(fd_, &request, request.nlmsg_len, 0) < 0) {
      return errno;
    }
    alignas(nlmsghdr) char buffer[32768];  // more than Linux puts into one packet
    for (bool is_changed = false;;) {
      const ssize_t received = recv(fd_, buffer, sizeof buffer, MSG_TRUNC);
      if (received < 0) return errno;
      if (static_cast<size_t>(received) > sizeof buffer) return EMSGSIZE;
      auto left = static_cast<uint32_t>(received);
      const auto* message = reinterpret_cast<const nlmsghdr*>(buffer);
      for (; NLMSG_OK(message, left); message = NLMSG_NEXT(message, left)) {
        is_changed |= (message->nlmsg_flags & NLM_F_DUMP_INTR) != 0;
        if (message->nlmsg_type == NLMSG_DONE) return is_changed ? EINTR : 0;
        if (message->nlmsg_type == NLMSG_ERROR)
          return -static_cast<const nlmsgerr*>(NLMSG_DATA(message))->error;
        visit(message);
        if ((message->nlmsg_flags & NLM_F_MULTI) == 0) return 0;
      }
    }
  }

 private:
  int fd_ = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
};

// What Linux has of a kind, or of the interface named alone. read(const Message<Kind>&, Entry&) fills an
// entry; those for which it returns false are left out.
template <typename Entry, typename Kind, typename Read>
std::vector<Entry> ask(uint16_t what, uint8_t family, std::string_view dev, Read read) {
  const auto request = make_request<Kind>(what, family, dev);
  int error = EINTR;
  std::vector<Entry> entries;
  for (int i = 0; i < kMaxTries && error == EINTR; ++i) {
    entries.clear();
    error = Socket().ask(request.header, [&](const nlmsghdr* message) {
      if (message->nlmsg_len < NLMSG_LENGTH(sizeof(Kind))) return;
      Entry entry = {};
      if (read(Message<Kind>(message), entry)) entries.push_back(std::move(entry));
    });
  }
  if (error != 0 && error != ENODEV) fail(error);
  return entries;
}

// All interfaces for the empty name.
std::vector<Interface> ask_interfaces(std::string_view dev) {
  return ask<Interface, ifinfomsg>(
      RTM_GETLINK, AF_UNSPEC, dev, [](const Message<ifinfomsg>& message, Interface& interface) {
        char name[IFNAMSIZ] = {};
        if (!message.read(IFLA_IFNAME, name)) return false;
        interface.dev.assign(name, strnlen(name, sizeof name));
        interface.index = static_cast<uint32_t>(message->ifi_index);
        interface.flags = message->ifi_flags & UINT16_MAX;
        message.read_bytes(IFLA_ADDRESS, interface.mac.bytes, sizeof interface.mac);
        message.read(IFLA_STATS64, interface.counters);
        return true;
      });
}

std::map<uint32_t, std::string> names_by_index() {
  std::map<uint32_t, std::string> names;
  for (Interface& interface : ask_interfaces("")) names.emplace(interface.index, std::move(interface.dev));
  return names;
}

using OwnIp = std::pair<std::string, Ip4>;

std::vector<OwnIp> ask_own_ips() {
  const std::map<uint32_t, std::string> names = names_by_index();
  return ask<OwnIp, ifaddrmsg>(RTM_GETADDR, AF_INET, "", [&](const Message<ifaddrmsg>& message, OwnIp& own) {
    const auto name = names.find(message->ifa_index);
    if (name == names.end() || !message.read(IFA_LOCAL, own.second)) return false;
    own.first = name->second;
    return true;
  });
}

// Reads the address that an attribute holds as a combined value.
template <typename Kind>
bool read_address(const Message<Kind>& message, uint16_t type, uint8_t family, IpAddress& address) {
  address.family = family == AF_INET ? 4 : 6;
  return (family == AF_INET || family == AF_INET6) &&
         message.read_bytes(type, address.bytes, family == AF_INET ? 4 : 16);
}

// fe80::/10
bool is_of_the_link_alone(const IpAddress& address) {
  return address.family.value() == 6 && address.bytes[0] == 0xfe && (address.bytes[1] & 0xc0) == 0x80;
}

bool read_neighbour(const Message<ndmsg>& message, Neighbour& neighbour) {
  constexpr int kUsable = NUD_REACHABLE | NUD_STALE | NUD_DELAY | NUD_PROBE | NUD_PERMANENT;
  static const auto kTicks = static_cast<uint32_t>(sysconf(_SC_CLK_TCK));
  nda_cacheinfo times = {};
  message.read(NDA_CACHEINFO, times);
  neighbour.idle_seconds = std::min(times.ndm_confirmed, times.ndm_used) / kTicks;
  neighbour.state = message->ndm_state;
  return (message->ndm_state & kUsable) != 0 &&
         message.read_bytes(NDA_LLADDR, neighbour.mac.bytes, sizeof neighbour.mac) &&
         read_address(message, NDA_DST, message->ndm_family, neighbour.address) &&
         !is_of_the_link_alone(neighbour.address);
}

}  // namespace

bool is_interface_name(std::string_view name) {
  return !name.empty() && name.size() < IFNAMSIZ && name != "." && name != ".." &&
         std::ranges::all_of(name, [](char c) { return c > ' ' && c != '/' && c != 0x7f; });
}

std::vector<Interface> linux_interfaces() { return ask_interfaces(""); }

std::optional<Interface> linux_interface(std::string_view dev) {
  if (!is_interface_name(dev)) return std::nullopt;
  std::vector<Interface> found = ask_interfaces(dev);
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

std::optional<LinkSpeed> linux_link_speed(const std::string& dev) {
  ethtool_cmd settings = {};
  settings.cmd = ETHTOOL_GSET;
  ifreq request = {};
  memcpy(request.ifr_name, dev.data(), std::min(dev.size(), sizeof request.ifr_name - 1));
  request.ifr_data = reinterpret_cast<char*>(&settings);
  const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const bool is_told = fd >= 0 && ioctl(fd, SIOCETHTOOL, &request) == 0;
  if (fd >= 0) close(fd);
  const uint32_t mbps = ethtool_cmd_speed(&settings);
  if (!is_told || mbps == 0 || mbps == static_cast<uint32_t>(SPEED_UNKNOWN)) return {};
  return LinkSpeed{mbps, settings.duplex != DUPLEX_HALF};
}

std::map<std::string, Ip4> linux_own_ips() {
  const std::vector<OwnIp> all = ask_own_ips();
  return {all.begin(), all.end()};  // of those with the same name the first
}

bool linux_has_address(std::string_view dev, Ip4 ip) {
  return std::ranges::count(ask_own_ips(), OwnIp(dev, ip)) != 0;
}

std::vector<Neighbour> linux_neighbours() {
  const std::map<uint32_t, std::string> names = names_by_index();
  return ask<Neighbour, ndmsg>(RTM_GETNEIGH, AF_UNSPEC, "",
                               [&](const Message<ndmsg>& message, Neighbour& neighbour) {
                                 const auto name = names.find(static_cast<uint32_t>(message->ndm_ifindex));
                                 if (name == names.end() || !read_neighbour(message, neighbour)) return false;
                                 neighbour.dev = name->second;
                                 return true;
                               });
}
