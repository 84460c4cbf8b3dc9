// The other functions of the scripted platform library: each logs its call and answers what it is told to.
#include <cstdio>
#include <cstring>

#include "platform/line.h"
#include "platform/nvram.h"
#include "platform/snmp.h"
#include "script.h"

namespace {

// A text whose number is not 0; null else.
template <size_t kSize>
const char* next_text(const char* function, char (&text)[kSize]) {
  memset(text, 0, kSize);
  return next_answer(function, text, kSize - 1) == 0 ? nullptr : text;
}

}  // namespace

#pragma GCC visibility push(default)

const char* nvram_get(const char* key) {
  log_call("nvram_get %s", key);
  static char value[1024];
  char name[128];
  snprintf(name, sizeof name, "nvram_get:%s", key);
  return next_text(name, value);
}

int nvram_set(const char* key, const char* value) {
  log_call("nvram_set %s %s", key, value);
  return static_cast<int>(next_answer("nvram_set"));
}

int nvram_commit(void) {
  log_call("nvram_commit");
  return static_cast<int>(next_answer("nvram_commit"));
}

int vek_get_wan_proto(const char* name) {
  log_call("vek_get_wan_proto %s", name);
  return static_cast<int>(next_answer("vek_get_wan_proto"));
}

const char* tvl_get_wan_name(uint32_t line) {
  log_call("tvl_get_wan_name %u", line);
  static char name[64];
  return next_text("tvl_get_wan_name", name);
}

const char* tvl_vpnget(const char* name, uint32_t index) {
  log_call("tvl_vpnget %s %u", name, index);
  static char key[64];
  return next_text("tvl_vpnget", key);
}

int snmp_get_mac_by_ipstr(const char* community, const char* peer, const char* ip, void* mac) {
  log_call("snmp_get_mac_by_ipstr %s %s %s", community, peer, ip);
  return static_cast<int>(next_answer("snmp_get_mac_by_ipstr", mac, 6));
}

#pragma GCC visibility pop
