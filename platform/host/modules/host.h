// Hosts, for those who look for one, and what is kept of them, for those who put some in place.
#pragma once

#include <cstdint>
#include <vector>

#include "records/host.h"
#include "state/store.h"

// Addresses of one host; zero where one is not known.
struct HostAddress {
  Ip4 ip;
  Mac mac;

  static constexpr void each_field(auto& r, auto&& field) { field("ip", r.ip), field("mac", r.mac); }
};

// The pairs of addresses with one of these, from all who know of some: the hosts that are logged in, the host
// table, the ARP bindings, Linux, in this order.
std::vector<HostAddress> known_addresses(Store& store, const HostAddress& host);

// A run counter that only packets would move, or a limit of the machine; kept as a setting of the module.
struct HostCounter {
  using Field = uint32_t HostRunInfo::*;
  const char* name;
  Field field;
  uint32_t at_first;
};
constexpr HostCounter kHostCounters[] = {
    {"rt_max", &HostRunInfo::rt_max, 65536},           {"rt_num", &HostRunInfo::rt_num, 0},
    {"ct_max", &HostRunInfo::ct_max, 65536},           {"ct_alloc_max", &HostRunInfo::ct_alloc_max, 0},
    {"skb_zong", &HostRunInfo::skb_zong, 0},           {"skb_data", &HostRunInfo::skb_data, 0},
    {"ddos_drop_pkt", &HostRunInfo::ddos_drop_pkt, 0}, {"broadcast_pkt", &HostRunInfo::broadcast_pkt, 0},
};

constexpr int kMaxHosts = 8192;
