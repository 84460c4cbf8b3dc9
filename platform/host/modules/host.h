// What is kept of hosts, for those who put some in place.
#pragma once

#include <cstdint>

#include "records/host.h"

// A run counter that only packets would move, or a limit of the machine; kept as a setting of the module.
struct HostCounter {
  const char* name;
  uint32_t HostRunInfo::*field;
  uint32_t at_first;
};
constexpr HostCounter kHostCounters[] = {
    {"rt_max", &HostRunInfo::rt_max, 65536},           {"rt_num", &HostRunInfo::rt_num, 0},
    {"ct_max", &HostRunInfo::ct_max, 65536},           {"ct_alloc_max", &HostRunInfo::ct_alloc_max, 0},
    {"skb_zong", &HostRunInfo::skb_zong, 0},           {"skb_data", &HostRunInfo::skb_data, 0},
    {"ddos_drop_pkt", &HostRunInfo::ddos_drop_pkt, 0}, {"broadcast_pkt", &HostRunInfo::broadcast_pkt, 0},
};

constexpr int kMaxHosts = 8192;
