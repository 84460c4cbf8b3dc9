// Receives the audit's notices and prints them.
#include "lab/audit_listen.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <system_error>

#include "platform/address.h"
#include "records/audit.h"

namespace {

[[noreturn]] void fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// Only this machine can tell it anything.
int open_port() {
  const int port = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(kNoticePort);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (port < 0 || bind(port, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    fail("port " + std::to_string(kNoticePort));
  }
  return port;
}

// Readable when it is time to end.
int open_signals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  const int descriptor = signalfd(-1, &signals, SFD_CLOEXEC);
  if (descriptor < 0) fail("signals");
  return descriptor;
}

void print_notice(int port) {
  AuditNotice notice;
  const ssize_t size = recv(port, &notice, sizeof notice, MSG_TRUNC | MSG_DONTWAIT);
  if (size < 0) return;
  if (size != sizeof notice) {
    printf("%zd bytes are no notice\n", size);
    return;
  }
  std::string account(notice.account, strnlen(notice.account, sizeof notice.account));
  const auto is_hidden = [](char c) { return c < ' ' || c > '~'; };
  std::ranges::replace_if(account, is_hidden, '?');
  char mac[64];
  char ip[64];
  printf("mac=%s ip=%s account=%s state=%d type=%d\n", MacToStr(mac, &notice.mac),
         IpToStr(ip, notice.ip.value), account.c_str(), notice.state, notice.type);
}

}  // namespace

void audit_listen(const char*) {
  pollfd wakers[] = {{open_port(), POLLIN, 0}, {open_signals(), POLLIN, 0}};
  setlinebuf(stdout);
  while (wakers[1].revents == 0) {
    if (poll(wakers, std::size(wakers), -1) < 0 && errno != EINTR) fail("poll");
    if (wakers[0].revents != 0) print_notice(wakers[0].fd);
  }
}
