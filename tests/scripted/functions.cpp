// The other functions of the scripted platform library: each logs its call and answers what it is told to.
#include <cstdio>
#include <cstring>

#include "platform/auth.h"
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

// The answer of "FUNCTION:KEY", which the next one overwrites.
const char* text_of_key(const char* function, const char* key) {
  log_call("%s %s", function, key);
  static char value[1024];
  char name[128];
  snprintf(name, sizeof name, "%s:%s", function, key);
  return next_text(name, value);
}

// A call that answers a number.
int call(const char* function) {
  log_call("%s", function);
  return static_cast<int>(next_answer(function));
}

int call(const char* function, const char* text) {
  log_call("%s %s", function, text);
  return static_cast<int>(next_answer(function));
}

int call(const char* function, uint32_t number) {
  log_call("%s %u", function, number);
  return static_cast<int>(next_answer(function));
}

int call_for_text(const char* function, char* buffer, uint32_t room) {
  log_call("%s %u", function, room);
  return static_cast<int>(next_answer(function, buffer, room));
}

}  // namespace

#pragma GCC visibility push(default)

int ApiLoginByIpName(const char* user, const char* ip, uint32_t timeout) {
  log_call("%s %s %s %u", __func__, user, ip, timeout);
  return static_cast<int>(next_answer(__func__));
}

int ApiLoginByMacName(const char* user, const char* mac, uint32_t timeout) {
  log_call("%s %s %s %u", __func__, user, mac, timeout);
  return static_cast<int>(next_answer(__func__));
}

int ApiLoginByIpAndMacName(const char* user, const char* ip, const char* mac, uint32_t timeout) {
  log_call("%s %s %s %s %u", __func__, user, ip, mac, timeout);
  return static_cast<int>(next_answer(__func__));
}

int ApiLogoutByIp(const char* ip) { return call(__func__, ip); }

int ApiLogoutByMac(const char* mac) { return call(__func__, mac); }

int ApiIsIpOnline(const char* ip) { return call(__func__, ip); }

int ApiIsMacOnline(const char* mac) { return call(__func__, mac); }

int ApiIsIpMacOnline(const char* ip, const char* mac) {
  log_call("%s %s %s", __func__, ip, mac);
  return static_cast<int>(next_answer(__func__));
}

int ApiGetOnlineInfoByIp(OnlineInfo* info, const char* ip) {
  log_call("%s %s", __func__, ip);
  return static_cast<int>(next_answer(__func__, info, sizeof *info));
}

int ApiGetOnlineInfoByMac(OnlineInfo* info, const char* mac) {
  log_call("%s %s", __func__, mac);
  return static_cast<int>(next_answer(__func__, info, sizeof *info));
}

int ApiGetOnlineInfoByIpAndMac(OnlineInfo* info, const char* ip, const char* mac) {
  log_call("%s %s %s", __func__, ip, mac);
  return static_cast<int>(next_answer(__func__, info, sizeof *info));
}

int ApiGetAllOnlineInfo(OnlineInfo* infos, uint32_t room) {
  log_call("%s %u", __func__, room);
  return static_cast<int>(next_answer(__func__, infos, room * sizeof *infos));
}

int ApiAddWhiteMac(const char* value) { return call(__func__, value); }
int ApiDelWhiteMac(const char* value) { return call(__func__, value); }
int ApiGetWhiteMac(char* buffer, uint32_t room) { return call_for_text(__func__, buffer, room); }
int ApiDelallWhiteMac(void) { return call(__func__); }

int ApiAddWhiteDomain(const char* value) { return call(__func__, value); }
int ApiDelWhiteDomain(const char* value) { return call(__func__, value); }
int ApiGetWhiteDomain(char* buffer, uint32_t room) { return call_for_text(__func__, buffer, room); }
int ApiDelallWhiteDomain(void) { return call(__func__); }

int ApiAddWhiteIp(const char* value) { return call(__func__, value); }
int ApiDelWhiteIp(const char* value) { return call(__func__, value); }
int ApiGetWhiteIp(char* buffer, uint32_t room) { return call_for_text(__func__, buffer, room); }
int ApiDelallWhiteIp(void) { return call(__func__); }

int ApiAddWhiteFip(const char* value) { return call(__func__, value); }
int ApiDelWhiteFip(const char* value) { return call(__func__, value); }
int ApiGetWhiteFip(char* buffer, uint32_t room) { return call_for_text(__func__, buffer, room); }
int ApiDelallWhiteFip(void) { return call(__func__); }

int ApiAddWhitePort(uint32_t port) { return call(__func__, port); }
int ApiDelWhitePort(uint32_t port) { return call(__func__, port); }
int ApiGetWhitePort(char* buffer, uint32_t room) { return call_for_text(__func__, buffer, room); }
int ApiDelallWhitePort(void) { return call(__func__); }

int ApiAddBlackMac(const char* value) { return call(__func__, value); }
int ApiDelBlackMac(const char* value) { return call(__func__, value); }
int ApiGetBlackMac(char* buffer, uint32_t room) { return call_for_text(__func__, buffer, room); }
int ApiDelallBlackMac(void) { return call(__func__); }

int ApiGetAuthenticateState(uint32_t* state, uint32_t* savemac, uint32_t* time, uint32_t* loginmax) {
  log_call("%s", __func__);
  uint32_t values[4] = {};
  const auto number = static_cast<int>(next_answer(__func__, values, sizeof values));
  *state = values[0];
  *savemac = values[1];
  *time = values[2];
  *loginmax = values[3];
  return number;
}

int ApiSetAuthenticateState(uint32_t state, uint32_t savemac, uint32_t time, uint32_t loginmax) {
  log_call("%s %u %u %u %u", __func__, state, savemac, time, loginmax);
  return static_cast<int>(next_answer(__func__));
}

int ApiGetPortal(char* buffer, uint32_t room) { return call_for_text(__func__, buffer, room); }
int ApiSetPortal(const char* url) { return call(__func__, url); }

const char* nvram_get(const char* key) { return text_of_key("nvram_get", key); }

const char* tvl_nv_get_def(const char* key) { return text_of_key("tvl_nv_get_def", key); }

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
