// Asking hosts behind another router for their MAC address by SNMP.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// Asks the SNMP agent `peer` (an IPv4 text, with ":PORT" behind it where that is not 161) in version 2c with
// the community `community` for the MAC address that it has in its neighbour table for the host `ip` (IPv4 or
// IPv6 text), and writes its 6 bytes in wire order to `mac`. Returns 0 on success; non-zero when the agent
// does not answer or does not know the host, or when a text is null, empty or of another form, and then `mac`
// is not touched. Takes a bounded time, two seconds in all: a question that is not answered is asked once
// more.
//
// A process that asks for one host after the other does not wait for each of them: when an agent has not
// answered three calls in a row with this peer and community, the next ones fail at once, for a minute. Any
// answer, "no such entry" too, lets the agent be asked again, and so does a call with another peer or
// community in between.
int snmp_get_mac_by_ipstr(const char* community, const char* peer, const char* ip, void* mac);

#ifdef __cplusplus
}
#endif
