// The DHCP server process of a plain Linux host: dnsmasq.
#include "platform/dhcp.h"

#include "api/guard.h"
#include "modules/dnsmasq.h"
#include "modules/modules.h"

namespace {

int change_server(void (*change)(Store&)) {
  const auto work = [change] {
    Store store = open_state(kWrites);
    change(store);
    return 0;
  };
  return guarded(work, -1);
}

}  // namespace

[[gnu::visibility("default")]] int start_dhcp_server() { return change_server(start_dnsmasq); }

[[gnu::visibility("default")]] int stop_dhcp_server() { return change_server(stop_dnsmasq); }
