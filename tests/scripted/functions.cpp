// The other functions of the scripted platform library: each logs its call and answers what it is told to.
#include <fcntl.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/auth.h"
#include "platform/board.h"
#include "platform/dhcp.h"
#include "platform/file.h"
#include "platform/flash.h"
#include "platform/line.h"
#include "platform/nvram.h"
#include "platform/snmp.h"
#include "platform/switch_chip.h"
#include "script.h"

namespace {

using Text = const char*;
using Number = uint32_t;

// A call with its arguments that answers a number and fills something in, which is no argument in the log.
template <typename... Values>
int fill(Text function, void* destination, size_t room, Values... values) {
  log_call({function, values...});
  return static_cast<int>(next_answer(function, destination, room));
}
template <typename... Values>
int call(Text function, Values... values) {
  return fill(function, nullptr, 0, values...);
}

// A text whose number is not 0, which the next one of the function overwrites; null else.
Text next_text(Text function, char (&text)[1024]) {
  memset(text, 0, sizeof text);
  return next_answer(function, text, sizeof text - 1) == 0 ? nullptr : text;
}

// The answer of "FUNCTION:KEY".
Text text_of_key(Text function, Text key) {
  log_call({function, key});
  static char value[1024];
  char name[128];
  snprintf(name, sizeof name, "%s:%s", function, key);
  return next_text(name, value);
}

// As the log has bytes.
Text hex_of(const void* data, size_t length) {
  static char digits[2 * 32768 + 1];
  length = std::min<size_t>(length, 32768);
  for (size_t i = 0; i < length; ++i) {
    snprintf(digits + 2 * i, 3, "%02x", static_cast<const uint8_t*>(data)[i]);
  }
  digits[2 * length] = '\0';
  return digits;
}

// A call with a record of the switch chip, all of whose bytes are logged, as digits.
template <typename... Op>
int operate(Text function, void* record, size_t size, Op... op) {
  return fill(function, record, size, hex_of(record, size), op...);
}

}  // namespace

#pragma GCC visibility push(default)

int ApiLoginByIpName(Text user, Text ip, Number seconds) { return call(__func__, user, ip, seconds); }
int ApiLoginByMacName(Text user, Text mac, Number seconds) { return call(__func__, user, mac, seconds); }
int ApiLoginByIpAndMacName(Text user, Text ip, Text mac, Number seconds) {
  return call(__func__, user, ip, mac, seconds);
}

int ApiLogoutByIp(Text ip) { return call(__func__, ip); }
int ApiLogoutByMac(Text mac) { return call(__func__, mac); }
int ApiIsIpOnline(Text ip) { return call(__func__, ip); }
int ApiIsMacOnline(Text mac) { return call(__func__, mac); }
int ApiIsIpMacOnline(Text ip, Text mac) { return call(__func__, ip, mac); }

int ApiGetOnlineInfoByIp(OnlineInfo* info, Text ip) { return fill(__func__, info, sizeof *info, ip); }
int ApiGetOnlineInfoByMac(OnlineInfo* info, Text mac) { return fill(__func__, info, sizeof *info, mac); }
int ApiGetOnlineInfoByIpAndMac(OnlineInfo* info, Text ip, Text mac) {
  return fill(__func__, info, sizeof *info, ip, mac);
}
int ApiGetAllOnlineInfo(OnlineInfo* infos, Number room) {
  return fill(__func__, infos, room * sizeof *infos, room);
}

#define LIST(Name, Value)                                                                    \
  int ApiAdd##Name(Value value) { return call(__func__, value); }                            \
  int ApiDel##Name(Value value) { return call(__func__, value); }                            \
  int ApiGet##Name(char* buffer, Number room) { return fill(__func__, buffer, room, room); } \
  int ApiDelall##Name(void) { return call(__func__); }
LIST(WhiteMac, Text)
LIST(WhiteDomain, Text)
LIST(WhiteIp, Text)
LIST(WhiteFip, Text)
LIST(WhitePort, Number)
LIST(BlackMac, Text)
#undef LIST

int ApiGetAuthenticateState(Number* state, Number* savemac, Number* time, Number* loginmax) {
  Number values[4] = {};
  const int returned = fill(__func__, values, sizeof values);
  *state = values[0], *savemac = values[1], *time = values[2], *loginmax = values[3];
  return returned;
}
int ApiSetAuthenticateState(Number state, Number savemac, Number time, Number loginmax) {
  return call(__func__, state, savemac, time, loginmax);
}

int ApiGetPortal(char* buffer, Number room) { return fill(__func__, buffer, room, room); }
int ApiSetPortal(Text url) { return call(__func__, url); }

Text nvram_get(Text key) { return text_of_key(__func__, key); }
Text tvl_nv_get_def(Text key) { return text_of_key(__func__, key); }
int nvram_set(Text key, Text value) { return call(__func__, key, value); }
int nvram_commit(void) { return call(__func__); }

int start_dhcp_server(void) { return call(__func__); }
int stop_dhcp_server(void) { return call(__func__); }

int vek_get_wan_proto(Text name) { return call(__func__, name); }
Text tvl_get_wan_name(Number line) {
  log_call({__func__, line});
  static char name[1024];
  return next_text(__func__, name);
}
Text tvl_vpnget(Text name, Number index) {
  log_call({__func__, name, index});
  static char key[1024];
  return next_text(__func__, key);
}

int ap_led_ctrl(int value) { return call(__func__, static_cast<Number>(value)); }
int usblog_mount_state(void) { return call(__func__); }
int _eval(char* const argv[], Text path, int timeout, int* pid) {
  char words[1024] = {};
  for (; *argv != nullptr; ++argv) {
    const size_t length = strlen(words);
    snprintf(words + length, sizeof words - length, "[%s]", *argv);
  }
  return call(__func__, static_cast<Text>(words), path, static_cast<Number>(timeout),
              pid == nullptr ? "(null)" : "");
}
int sys_log_write(Number type, Text format, ...) {
  char line[1024];
  va_list values;
  va_start(values, format);
  vsnprintf(line, sizeof line, format, values);
  va_end(values);
  return call(__func__, type, static_cast<Text>(line));
}

int flash_erase_mtd(Text name, Number offset, Number length) { return call(__func__, name, offset, length); }
int flash_zentrik_plugin_write(Text path) { return call(__func__, path); }
int flash_zentrik_plugin_read(Text path) { return call(__func__, path); }
int flash_zentrik_plugin_clean(Text path) { return call(__func__, path); }

int rtl8367_reg_opt(SwitchRegRecord* record, int op) {
  return operate(__func__, record, sizeof *record, static_cast<Number>(op));
}
int rtl8367_port_opt(PortStatusRecord* record, int op) {
  return operate(__func__, record, sizeof *record, static_cast<Number>(op));
}
#define CHIP(name, Record) \
  int rtl8367_##name##_opt(Record* record) { return operate(__func__, record, sizeof *record); }
CHIP(phy, SwitchPhyRecord)
CHIP(vlan, SwitchVlanRecord)
CHIP(pvid, SwitchPvidRecord)
CHIP(efid, SwitchEfidRecord)
CHIP(mirror, SwitchMirrorRecord)
CHIP(mib, SwitchMibRecord)
CHIP(acl, AclMacRecord)
CHIP(acl_port, SwitchAclPortRecord)
CHIP(acl_etype, SwitchAclEtypeRecord)
CHIP(rate_ctl, SwitchRateRecord)
CHIP(delay, SwitchDelayRecord)
CHIP(switch_id, SwitchIdRecord)
#undef CHIP
int turn_on_phy(int on, int chip_type) {
  return call(__func__, static_cast<Number>(on), static_cast<Number>(chip_type));
}

int64_t f_size(Text path) {
  log_call({__func__, path});
  return next_answer(__func__);
}
int f_read(Text path, void* buffer, int most) {
  return fill(__func__, buffer, static_cast<size_t>(std::max(most, 0)), path, static_cast<Number>(most));
}
int f_write(Text path, const void* data, int length, int flags, Number mode) {
  const auto size = static_cast<size_t>(std::max(length, 0));
  return call(__func__, path, hex_of(data, size), static_cast<Number>(length), static_cast<Number>(flags),
              mode);
}
int general_flash_read(Text area, void* buffer, Number offset, Number length) {
  return fill(__func__, buffer, length, area, offset, length);
}
int general_flash_write(Text area, const void* data, Number offset, Number length) {
  return call(__func__, area, hex_of(data, length), offset, length);
}
int httpd_wget(Text url, Text path) { return call(__func__, url, path); }
int pg2_download_from_flash(void) { return call(__func__); }
int vek_sj_module_add(void) { return call(__func__); }
int vek_sj_module_del(void) { return call(__func__); }

// In place of the C library's: nothing is run.
int system(Text line) { return call(__func__, line); }

// Done for real: what is sent is received by the tests.
int setnonblocking(int descriptor) {
  log_call({__func__});
  return fcntl(descriptor, F_SETFL, O_NONBLOCK);
}

int snmp_get_mac_by_ipstr(Text community, Text peer, Text ip, void* mac) {
  return fill(__func__, mac, 6, community, peer, ip);
}

#pragma GCC visibility pop
