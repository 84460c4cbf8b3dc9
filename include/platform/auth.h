// Portal authentication: logins, white and black lists, on-line hosts, settings.
// Every function returns a negative value on failure (also for a null or empty text where one is needed,
// unless said otherwise) and 0 or more on success. Texts passed in are read during the call only. IP
// addresses and MAC addresses are text, as StrToIp and StrToMac take them; times are in seconds.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// One host that is on line. Texts end at their NUL; one is empty where the host is not known by it.
struct OnlineInfo {
  char ip[48];
  char mac[24];
  uint64_t up;    // present rate, bytes per second
  uint64_t down;  // the same
  uint64_t send;  // bytes since the login
  uint64_t recv;  // the same
};

// ---- Log in and out ----

// Log a host in for `timeout` seconds; 0 takes the time that logins are set to. `user` may be null: a login
// without a name. A host that is on line is logged in anew, whichever of its addresses is the same.
int ApiLoginByIpName(const char* user, const char* ip, uint32_t timeout);
int ApiLoginByMacName(const char* user, const char* mac, uint32_t timeout);
int ApiLoginByIpAndMacName(const char* user, const char* ip, const char* mac, uint32_t timeout);

// Log a host out; negative when it is not on line.
int ApiLogoutByIp(const char* ip);
int ApiLogoutByMac(const char* mac);
int ApiLogoutByIpAndMac(const char* ip, const char* mac);

// ---- Who is on line ----

// 0 or more when the host is on line, negative when it is not. With both addresses, it must be known by both.
int ApiIsIpOnline(const char* ip);
int ApiIsMacOnline(const char* mac);
int ApiIsIpMacOnline(const char* ip, const char* mac);

// Fill `info`, which the caller owns; negative when the host is not on line, and then `info` is not touched.
int ApiGetOnlineInfoByIp(struct OnlineInfo* info, const char* ip);
int ApiGetOnlineInfoByMac(struct OnlineInfo* info, const char* mac);
int ApiGetOnlineInfoByIpAndMac(struct OnlineInfo* info, const char* ip, const char* mac);

// Fills at most `room` records at `infos` and returns the number of records filled. With `infos` null and
// `room` 0: returns the number of hosts on line now; there may be more of them at the next call.
int ApiGetAllOnlineInfo(struct OnlineInfo* infos, uint32_t room);

// ---- White lists and black list ----

// Add, Del: one entry. Adding what is there is no error, deleting what is not there is one. An add checks its
// value.
// Get: the whole list as text, entries separated by ',', without quotes or backslashes. Writes as much as
// fits into `room` bytes, NUL included, and returns the length of the whole text without its NUL (so a result
// of `room` or more asks for a larger buffer); with `buffer` null or `room` 0 nothing is written. Delall:
// empties the list.
int ApiAddWhiteMac(const char* mac);
int ApiDelWhiteMac(const char* mac);
int ApiGetWhiteMac(char* buffer, uint32_t room);
int ApiDelallWhiteMac(void);

int ApiAddWhiteDomain(const char* domain);
int ApiDelWhiteDomain(const char* domain);
int ApiGetWhiteDomain(char* buffer, uint32_t room);
int ApiDelallWhiteDomain(void);

// Hosts that need no login.
int ApiAddWhiteIp(const char* ip);
int ApiDelWhiteIp(const char* ip);
int ApiGetWhiteIp(char* buffer, uint32_t room);
int ApiDelallWhiteIp(void);

// Far addresses that may be reached without a login.
int ApiAddWhiteFip(const char* ip);
int ApiDelWhiteFip(const char* ip);
int ApiGetWhiteFip(char* buffer, uint32_t room);
int ApiDelallWhiteFip(void);

// Far ports, 1 to 65535.
int ApiAddWhitePort(uint32_t port);
int ApiDelWhitePort(uint32_t port);
int ApiGetWhitePort(char* buffer, uint32_t room);
int ApiDelallWhitePort(void);

// Hosts that may not log in; adding one logs it out.
int ApiAddBlackMac(const char* mac);
int ApiDelBlackMac(const char* mac);
int ApiGetBlackMac(char* buffer, uint32_t room);
int ApiDelallBlackMac(void);

// ---- Settings ----

// state: 1 when hosts have to log in, else 0; savemac: 1 when a login is remembered for the host's MAC, else
// 0; time: how long a login lasts, 0 for no end; loginmax: how many hosts one user may log in, 0 for no
// limit.
int ApiGetAuthenticateState(uint32_t* state, uint32_t* savemac, uint32_t* time, uint32_t* loginmax);
int ApiSetAuthenticateState(uint32_t state, uint32_t savemac, uint32_t time, uint32_t loginmax);

// The address of the portal page, at most 1023 characters. Get works as that of a list does; before the first
// set the address is the empty text.
int ApiGetPortal(char* buffer, uint32_t room);
int ApiSetPortal(const char* url);

#ifdef __cplusplus
}
#endif
