// Payloads of the local user accounts (module 16) and of the MAC memory of logged-in users (module 62).
#pragma once

#include <cstddef>
#include <cstdint>

enum UserCommand : uint32_t {
  kUserAdd = 4,
  kUserStat = 7,
  kUserDel = 8,
  kUserDelAll = 9,
  kUserList = 10,
  kUserOnlineList = 12,
  kUserAutoscanSet = 23,
  kUserAutoscanGet = 24,
  kUserNameInfo = 38,
  kUserRdDownAll = 42,
  kUserDownAll = 43,
  kUserJsMod = 45,
  kUserCard = 46,
  kUserSsid = 48,
  kUserLock = 52,
};

enum MacUserCommand : uint32_t {
  kMacUserSet = 1,
  kMacUserGet = 2,
  kMacUserList = 3,
  kMacUserMacDel = 5,
  kMacUserIdDel = 6,
  kMacUserInit = 7,
};

enum UserFlags : uint16_t {
  kUserFixedIp = 0x0001,
  kUserFixedMac = 0x0002,
  kUserOff = 0x0004,
  kUserAnyIp = 0x0008,
  kUserAnyMac = 0x0010,
  kUserPppoe = 0x0020,
  kUserWeb = 0x0040,
  kUserMobile = 0x0400,  // only the module sets it
};

// An account. A request ends before login_num.
struct UserRecord {
  char name[64];
  char pwd[64];
  char mem[128];
  uint32_t userid;
  uint32_t ip_start;  // the bound range: in host byte order in a request, in network byte order in an answer
  uint32_t ip_end;
  uint32_t ddate;
  uint32_t max;
  uint32_t up_speed;
  uint32_t down_speed;
  uint8_t mac[6];
  uint8_t gid;
  uint8_t mode_speed;  // 1 "gx", 0 "dl"
  uint8_t mod_pwd;     // 1 when the user may change the password
  uint8_t unused[15];
  uint16_t flags;  // UserFlags
  uint8_t unused2[138];
  uint32_t login_num;
  uint8_t unused3[28];
  uint32_t zup;
  uint32_t zdown;
};
static_assert(sizeof(UserRecord) == 488 && offsetof(UserRecord, mem) == 128 &&
              offsetof(UserRecord, userid) == 256 && offsetof(UserRecord, mac) == 284 &&
              offsetof(UserRecord, mod_pwd) == 292 && offsetof(UserRecord, flags) == 308 &&
              offsetof(UserRecord, login_num) == 448 && offsetof(UserRecord, zup) == 480);
constexpr int kUserRequestSize = 440;

struct UserDelAll {
  uint32_t type;  // 0 all, 1 web, 2 PPPoE: not as in UserKick
  uint32_t expired_type;
};
static_assert(sizeof(UserDelAll) == 8);

struct UserKick {
  uint32_t type;  // 0 all, 1 PPPoE, 2 web: not as in UserDelAll
};

struct UserAutoscan {
  uint32_t enable;
  uint32_t interval_time;  // minutes
};
static_assert(sizeof(UserAutoscan) == 8);

struct UserStat {
  char name[64];
  uint64_t down;  // bytes
  uint64_t up;
};
static_assert(sizeof(UserStat) == 80 && offsetof(UserStat, down) == 64 && offsetof(UserStat, up) == 72);

struct UserNameInfo {
  char name[64];
  int32_t login_num;
  int32_t web_login_num;
  int32_t num;
  // num entries follow
};
static_assert(sizeof(UserNameInfo) == 76);

struct UserNameEntry {
  uint8_t ip[20];  // combined address value
  uint8_t mac[6];
  uint8_t unused[6];
  uint64_t flags;
};
static_assert(sizeof(UserNameEntry) == 40 && offsetof(UserNameEntry, mac) == 20 &&
              offsetof(UserNameEntry, flags) == 32);

struct UserJsMod {
  uint32_t seconds;
};

struct UserCard {
  uint32_t op;  // 1 set, 0 get
  uint32_t type;
  uint32_t en;
};
static_assert(sizeof(UserCard) == 12);

struct UserSsid {
  uint32_t op;  // 1 set, 0 get
  uint32_t assid;
  uint32_t lssid;
  uint32_t dssid;
  uint32_t ussid;
  uint32_t gssid;
};
static_assert(sizeof(UserSsid) == 24);

struct UserLock {
  char name[64];
  uint32_t all;
  uint32_t lock;
};
static_assert(sizeof(UserLock) == 72 && offsetof(UserLock, all) == 64);

struct MacUserSetting {
  uint32_t enable;
  uint8_t unused[4];
  uint64_t timeout;  // seconds
};
static_assert(sizeof(MacUserSetting) == 16 && offsetof(MacUserSetting, timeout) == 8);

struct MacUserEntry {
  uint64_t last;  // seconds since the host was seen
  uint8_t mac[6];
  uint8_t unused[6];
  uint32_t userid;
  uint8_t unused2[4];
  int32_t card_type;
};
static_assert(sizeof(MacUserEntry) == 32 && offsetof(MacUserEntry, mac) == 8 &&
              offsetof(MacUserEntry, userid) == 20 && offsetof(MacUserEntry, card_type) == 28);
