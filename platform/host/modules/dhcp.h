// The addresses of the DHCP server's pools, for those who serve them.
#pragma once

#include "records/dhcp.h"
#include "records/list.h"

inline bool contains(const V4Range& range, HostIp4 ip) {
  return range.first.value <= ip.value && ip.value <= range.last.value;
}

// The network that one of the pools stands in.
V4Range network_of(const DhcpSettings<HostIp4>& settings, int pool);

// Whether an address is in one of those networks.
bool has_network_for(const DhcpSettings<HostIp4>& settings, HostIp4 ip);

// The addresses that are not assigned. The range may end before it starts.
V4Range range_of(const DhcpExclusion& exclusion);
