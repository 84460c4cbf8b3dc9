// Asking hosts behind another router for their MAC address by SNMP.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// Asks the SNMP agent `peer` (name or IPv4 text) with the community `community` for the MAC address that it
// has in its neighbour table for the host `ip` (IPv4 or IPv6 text), and writes its 6 bytes in wire order to
// `mac`. Returns 0 on success; non-zero when the agent does not answer or does not know the host, or when a
// text is null or empty, and then `mac` is not touched. Takes a bounded time: two tries of at most one second
// each.
int snmp_get_mac_by_ipstr(const char* community, const char* peer, const char* ip, void* mac);

#ifdef __cplusplus
}
#endif
