// Asking DNS servers by way of the c-ares library.
#include <ares.h>
#include <netinet/in.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <optional>
#include <vector>

#include "linux/resolver.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kMaxTry = std::chrono::seconds(2);

// What the library tells, once it has anything to tell.
struct Answer {
  std::optional<int> status;
  Resolved* resolved;
};

void take_address(const ares_addrinfo_node& node, Resolved& resolved) {
  if (node.ai_family == AF_INET && resolved.v4_count < kMaxResolved) {
    sockaddr_in address;
    memcpy(&address, node.ai_addr, sizeof address);
    resolved.v4[resolved.v4_count++] = {address.sin_addr.s_addr};
  } else if (node.ai_family == AF_INET6 && resolved.v6_count < kMaxResolved) {
    sockaddr_in6 address;
    memcpy(&address, node.ai_addr, sizeof address);
    memcpy(&resolved.v6[resolved.v6_count++], &address.sin6_addr, sizeof(Ip6));
  }
  resolved.ttl = std::min(resolved.ttl, static_cast<uint32_t>(std::max(node.ai_ttl, 0)));
}

void take_answer(void* argument, int status, int /*timeouts*/, ares_addrinfo* found) {
  auto& answer = *static_cast<Answer*>(argument);
  answer.status = status;
  if (status != ARES_SUCCESS) return;
  *answer.resolved = {};
  answer.resolved->ttl = UINT32_MAX;
  for (const ares_addrinfo_node* node = found->nodes; node != nullptr; node = node->ai_next) {
    take_address(*node, *answer.resolved);
  }
  ares_freeaddrinfo(found);
}

// The library tells what it waits for on a socket of its own: neither is that it has closed it.
void note_socket(void* argument, ares_socket_t socket, int readable, int writable) {
  auto& fds = *static_cast<std::vector<pollfd>*>(argument);
  std::erase_if(fds, [socket](const pollfd& fd) { return fd.fd == socket; });
  const int events = (readable != 0 ? POLLIN : 0) | (writable != 0 ? POLLOUT : 0);
  if (events != 0) fds.push_back({socket, static_cast<short>(events), 0});
}

// Lets the library work until it has an answer or the time is over.
void work(ares_channel channel, const std::vector<pollfd>& sockets, const Answer& answer,
          Clock::time_point deadline) {
  while (!answer.status && Clock::now() < deadline) {
    const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now()).count();
    timeval most = {left / 1000, left % 1000 * 1000};
    timeval room;
    const timeval wait = *ares_timeout(channel, &most, &room);
    std::vector<pollfd> fds = sockets;  // the library changes its own as it works
    poll(fds.data(), fds.size(), static_cast<int>(wait.tv_sec * 1000 + wait.tv_usec / 1000 + 1));
    ares_process_fd(channel, ARES_SOCKET_BAD, ARES_SOCKET_BAD);  // what has taken too long
    for (const pollfd& fd : fds) {
      ares_process_fd(channel, (fd.revents & ~POLLOUT) != 0 ? fd.fd : ARES_SOCKET_BAD,
                      (fd.revents & POLLOUT) != 0 ? fd.fd : ARES_SOCKET_BAD);
    }
  }
}

// One question to each of the servers, until one answers.
int ask(const char* servers, const char* name, Resolved* resolved) {
  ares_options options = {};
  char lookups[] = "b";
  options.flags = ARES_FLAG_NOSEARCH | ARES_FLAG_NOALIASES;
  options.tries = 1;
  options.lookups = lookups;
  const auto server_count = 1 + std::count(servers, servers + strlen(servers), ',');
  options.timeout = static_cast<int>(kMaxTry.count() / server_count);
  std::vector<pollfd> sockets;
  options.sock_state_cb = note_socket;
  options.sock_state_cb_data = &sockets;
  constexpr int kGiven =
      ARES_OPT_FLAGS | ARES_OPT_TIMEOUTMS | ARES_OPT_TRIES | ARES_OPT_LOOKUPS | ARES_OPT_SOCK_STATE_CB;
  ares_channel channel = nullptr;
  if (ares_init_options(&channel, &options, kGiven) != ARES_SUCCESS) {
    return ARES_ENOMEM;
  }
  Answer answer = {{}, resolved};
  if (ares_set_servers_csv(channel, servers) == ARES_SUCCESS) {
    ares_addrinfo_hints hints = {};
    hints.ai_family = AF_UNSPEC;
    hints.ai_flags = ARES_AI_NOSORT;
    ares_getaddrinfo(channel, name, nullptr, &hints, take_answer, &answer);
    work(channel, sockets, answer, Clock::now() + kMaxTry);
  }
  ares_destroy(channel);  // tells of a question that is still open
  return answer.status.value_or(ARES_ETIMEOUT);
}

}  // namespace

extern "C" [[gnu::visibility("default")]] ResolveName vek_resolve_name;

int vek_resolve_name(const char* servers, const char* name, uint32_t tries, Resolved* resolved) {
  for (uint32_t left = std::max(tries, 1u); left > 0; --left) {
    const int status = ask(servers, name, resolved);
    if (status == ARES_SUCCESS) return kResolved;
    if (status == ARES_ENOTFOUND || status == ARES_ENODATA) return kNoSuchName;
  }
  return kNobodyAnswers;
}
