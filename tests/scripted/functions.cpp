// The other functions of the scripted platform library: each logs its call and answers what it is told to.
#include <fcntl.h>

#include <cstdio>
#include <cstring>

#include "platform/auth.h"
#include "platform/file.h"
#include "platform/line.h"
#include "platform/nvram.h"
#include "platform/snmp.h"
#include "script.h"

namespace {

// A call with its arguments that answers a number.
template <typename... Values>
int call(const char* function, Values... values) {
  log_call({function, values...});
  return static_cast<int>(next_answer(function));
}

// The same with something to fill in, which is no argument in the log.
template <typename... Values>
int fill(const char* function, void* destination, size_t room, Values... values) {
  log_call({function, values...});
  return static_cast<int>(next_answer(function, destination, room));
}

// A text whose number is not 0; null else.
template <size_t kSize>
const char* next_text(const char* function, char (&text)[kSize]) {
  memset(text, 0, kSize);
  return next_answer(function, text, kSize - 1) == 0 ? nullptr : text;
}

// The answer of "FUNCTION:KEY", which the next one overwrites.
const char* text_of_key(const char* function, const char* key) {
  log_call({function, key});
  static char value[1024];
  char name[128];
  snprintf(name, sizeof name, "%s:%s", function, key);
  return next_text(name, value);
}

}  // namespace

#pragma GCC visibility push(default)

int ApiLoginByIpName(const char* user, const char* ip, uint32_t timeout) {
  return call(__func__, user, ip, timeout);
}
int ApiLoginByMacName(const char* user, const char* mac, uint32_t timeout) {
  return call(__func__, user, mac, timeout);
}
int ApiLoginByIpAndMacName(const char* user, const char* ip, const char* mac, uint32_t timeout) {
  return call(__func__, user, ip, mac, timeout);
}

int ApiLogoutByIp(const char* ip) { return call(__func__, ip); }
int ApiLogoutByMac(const char* mac) { return call(__func__, mac); }
int ApiIsIpOnline(const char* ip) { return call(__func__, ip); }
int ApiIsMacOnline(const char* mac) { return call(__func__, mac); }
int ApiIsIpMacOnline(const char* ip, const char* mac) { return call(__func__, ip, mac); }

int ApiGetOnlineInfoByIp(OnlineInfo* info, const char* ip) { return fill(__func__, info, sizeof *info, ip); }
int ApiGetOnlineInfoByMac(OnlineInfo* info, const char* mac) {
  return fill(__func__, info, sizeof *info, mac);
}
int ApiGetOnlineInfoByIpAndMac(OnlineInfo* info, const char* ip, const char* mac) {
  return fill(__func__, info, sizeof *info, ip, mac);
}
int ApiGetAllOnlineInfo(OnlineInfo* infos, uint32_t room) {
  return fill(__func__, infos, room * sizeof *infos, room);
}

#define LIST(Name, Value)                                                                      \
  int ApiAdd##Name(Value value) { return call(__func__, value); }                              \
  int ApiDel##Name(Value value) { return call(__func__, value); }                              \
  int ApiGet##Name(char* buffer, uint32_t room) { return fill(__func__, buffer, room, room); } \
  int ApiDelall##Name(void) { return call(__func__); }
LIST(WhiteMac, const char*)
LIST(WhiteDomain, const char*)
LIST(WhiteIp, const char*)
LIST(WhiteFip, const char*)
LIST(WhitePort, uint32_t)
LIST(BlackMac, const char*)
#undef LIST

int ApiGetAuthenticateState(uint32_t* state, uint32_t* savemac, uint32_t* time, uint32_t* loginmax) {
  uint32_t values[4] = {};
  const int number = fill(__func__, values, sizeof values);
  *state = values[0];
  *savemac = values[1];
  *time = values[2];
  *loginmax = values[3];
  return number;
}
int ApiSetAuthenticateState(uint32_t state, uint32_t savemac, uint32_t time, uint32_t loginmax) {
  return call(__func__, state, savemac, time, loginmax);
}

int ApiGetPortal(char* buffer, uint32_t room) { return fill(__func__, buffer, room, room); }
int ApiSetPortal(const char* url) { return call(__func__, url); }

const char* nvram_get(const char* key) { return text_of_key(__func__, key); }
const char* tvl_nv_get_def(const char* key) { return text_of_key(__func__, key); }
int nvram_set(const char* key, const char* value) { return call(__func__, key, value); }
int nvram_commit(void) { return call(__func__); }

int vek_get_wan_proto(const char* name) { return call(__func__, name); }

const char* tvl_get_wan_name(uint32_t line) {
  log_call({__func__, line});
  static char name[64];
  return next_text(__func__, name);
}
const char* tvl_vpnget(const char* name, uint32_t index) {
  log_call({__func__, name, index});
  static char key[64];
  return next_text(__func__, key);
}

// Done for real: what is sent is received by the tests.
int setnonblocking(int descriptor) {
  log_call({__func__});
  return fcntl(descriptor, F_SETFL, O_NONBLOCK);
}

int snmp_get_mac_by_ipstr(const char* community, const char* peer, const char* ip, void* mac) {
  return fill(__func__, mac, 6, community, peer, ip);
}

#pragma GCC visibility pop
