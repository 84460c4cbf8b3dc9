// Converts the addresses of a list of hosts to texts, as hi list does, and prints the microseconds that it
// takes: the part of the list's time that is the platform's.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "lab/made_hosts.h"
#include "platform/address.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::vector<HostEntry> hosts;
  for (uint32_t i = 0; i < static_cast<uint32_t>(atol(argv[1])); ++i) hosts.push_back(make_host(i).host);
  constexpr int kRounds = 100;
  char text[64];
  const auto start = std::chrono::steady_clock::now();
  for (int round = 0; round < kRounds; ++round) {
    for (const HostEntry& host : hosts) {
      IpaddrToStr(text, &host.ip);
      IpToStr(text, host.arp_ip.value);
      IpToStr(text, host.local_ip.value);
      MacToStr(text, &host.local_mac);
      MacToStr(text, &host.real_mac);
    }
  }
  const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
  printf("%.1f\n", time.count() / kRounds);
}
