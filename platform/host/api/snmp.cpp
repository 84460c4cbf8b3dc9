// Asking for MAC addresses by SNMP. Every vek loads this library, and few ask: the library that does the
// asking comes with the net-snmp library and all that needs, and is loaded when the first question is asked.
#include "platform/snmp.h"

#include <dlfcn.h>

#include <cstdio>

#include "api/snmp_client.h"

namespace {

SnmpGetMac* load_client() {
  void* library = dlopen("libvek_snmp_client.so", RTLD_NOW | RTLD_LOCAL);
  void* function = library == nullptr ? nullptr : dlsym(library, "vek_snmp_get_mac");
  if (function == nullptr) fprintf(stderr, "vek: no SNMP: %s\n", dlerror());
  return reinterpret_cast<SnmpGetMac*>(function);
}

bool is_empty(const char* text) { return text == nullptr || *text == '\0'; }

}  // namespace

[[gnu::visibility("default")]] int snmp_get_mac_by_ipstr(const char* community, const char* peer,
                                                         const char* ip, void* mac) {
  if (is_empty(community) || is_empty(peer) || is_empty(ip)) return -1;
  static SnmpGetMac* const get_mac = load_client();
  return get_mac == nullptr ? -1 : get_mac(community, peer, ip, mac);
}
