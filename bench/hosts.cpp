// Writes the answer to a list of made-up hosts: the payload that bench/gateway.cpp gives out. The count is
// that of the first argument, the size of an entry that of the second.
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "lab/made_hosts.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const uint32_t head[2] = {0, static_cast<uint32_t>(atol(argv[1]))};
  const auto entry_size = static_cast<size_t>(atol(argv[2]));
  fwrite(head, sizeof head, 1, stdout);
  for (uint32_t i = 0; i < head[1]; ++i) {
    HostAiEntry entry = make_host(i);
    entry.host.creat_tm = 1750000000 - entry.host.creat_tm;
    entry.host.last_tm = 1750000000 - entry.host.last_tm;
    fwrite(&entry, entry_size, 1, stdout);
  }
  return fflush(stdout) == 0 ? 0 : 1;
}
