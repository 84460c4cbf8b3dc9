// The lines by number and by protocol, and settings of theirs that stand in the parameter store.
#include "platform/line.h"

#include <cstdio>
#include <string>
#include <string_view>

#include "api/guard.h"
#include "modules/modules.h"
#include "modules/mr.h"
#include "platform/nvram.h"

namespace {

struct FactoryDefault {
  std::string_view key;
  const char* value;
};

constexpr FactoryDefault kFactoryDefaults[] = {
    {"LedStatus", "1"},
    {"snmp_prro", "public"},
};

struct Protocol {
  std::string_view name;
  int number;
};

constexpr Protocol kProtocols[] = {
    {"static", 1}, {"dhcp", 2}, {"pppoe", 3}, {"pptp", 4}, {"l2tp", 5}, {"3g", 6}, {"4g", 6},
};

constexpr uint32_t kVpnLinks = kLastLine + 1 - kFirstVpnLine;

}  // namespace

[[gnu::visibility("default")]] int vek_get_wan_proto(const char* name) {
  if (name == nullptr) return 0;
  for (const Protocol& protocol : kProtocols) {
    if (protocol.name == name) return protocol.number;
  }
  return 0;
}

[[gnu::visibility("default")]] const char* tvl_get_wan_name(uint32_t line) {
  static std::string name;
  const auto read = [line] {
    Store store = open_state(kReads);
    name = line_device(store, line);
    return name.c_str();
  };
  return guarded(read, nullptr);
}

[[gnu::visibility("default")]] const char* tvl_vpnget(const char* name, uint32_t index) {
  static char key[32];
  if (name == nullptr || std::string_view(name) != "vpn_link" || index >= kVpnLinks) return nullptr;
  snprintf(key, sizeof key, "vpn_link%u", index);
  return key;
}

[[gnu::visibility("default")]] const char* tvl_nv_get_def(const char* key) {
  if (key == nullptr) return nullptr;
  const char* value = nvram_get(key);
  if (value != nullptr) return value;
  for (const FactoryDefault& factory : kFactoryDefaults) {
    if (factory.key == key) return factory.value;
  }
  return nullptr;
}
