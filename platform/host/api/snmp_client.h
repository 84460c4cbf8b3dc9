// The part of libvek_snmp that needs the net-snmp library, in a library of its own.
#pragma once

// As snmp_get_mac_by_ipstr, with texts that are not empty. Its name there is "vek_snmp_get_mac".
using SnmpGetMac = int(const char* community, const char* peer, const char* ip, void* mac);
