// The other functions of the scripted platform library: each logs its call and answers what it is told to.
#include <cstdio>

#include "platform/nvram.h"
#include "platform/snmp.h"
#include "script.h"

#pragma GCC visibility push(default)

const char* nvram_get(const char* key) {
  log_call("nvram_get %s", key);
  static char value[1024];
  char name[128];
  snprintf(name, sizeof name, "nvram_get:%s", key);
  return next_answer(name, value, sizeof value - 1) == 0 ? nullptr : value;
}

int nvram_set(const char* key, const char* value) {
  log_call("nvram_set %s %s", key, value);
  return static_cast<int>(next_answer("nvram_set"));
}

int nvram_commit(void) {
  log_call("nvram_commit");
  return static_cast<int>(next_answer("nvram_commit"));
}

int snmp_get_mac_by_ipstr(const char* community, const char* peer, const char* ip, void* mac) {
  log_call("snmp_get_mac_by_ipstr %s %s %s", community, peer, ip);
  return static_cast<int>(next_answer("snmp_get_mac_by_ipstr", mac, 6));
}

#pragma GCC visibility pop
