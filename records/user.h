// Payloads of the local user accounts (module 16).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

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

// An account, as it is added and named. The ends of its bound range are in host byte order in a request, and
// in network byte order in an answer.
template <typename Ip>
struct UserAccount {
  char name[64];
  char pwd[64];
  char mem[128];
  uint32_t userid;
  Ip ip_start;
  Ip ip_end;
  uint32_t ddate;
  uint32_t max;
  uint32_t up_speed;
  uint32_t down_speed;
  Mac mac;
  uint8_t gid;
  uint8_t mode_speed;  // 1 "gx", 0 "dl"
  uint8_t mod_pwd;     // 1 when the user may change the password
  Unused<15> unused;
  uint16_t flags;  // UserFlags
  Unused<130> unused2;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("pwd", r.pwd), field("mem", r.mem), field("userid", r.userid),
        field("ip_start", r.ip_start), field("ip_end", r.ip_end), field("ddate", r.ddate),
        field("max", r.max), field("up_speed", r.up_speed), field("down_speed", r.down_speed),
        field("mac", r.mac), field("gid", r.gid), field("mode_speed", r.mode_speed),
        field("mod_pwd", r.mod_pwd), field("", r.unused), field("flags", r.flags), field("", r.unused2);
  }
};

using UserRequest = UserAccount<HostIp4>;
static_assert(sizeof(UserRequest) == 440 && offsetof(UserRequest, mem) == 128 &&
              offsetof(UserRequest, userid) == 256 && offsetof(UserRequest, mac) == 284 &&
              offsetof(UserRequest, mod_pwd) == 292 && offsetof(UserRequest, flags) == 308);
static_assert(is_described<UserRequest>());

struct UserEntry {
  UserAccount<Ip4> account;
  Unused<8> unused;
  uint32_t login_num;
  Unused<28> unused2;
  uint32_t zup;
  uint32_t zdown;

  static constexpr void each_field(auto& r, auto&& field) {
    field("account", r.account), field("", r.unused), field("login_num", r.login_num), field("", r.unused2),
        field("zup", r.zup), field("zdown", r.zdown);
  }
};
static_assert(sizeof(UserEntry) == 488 && offsetof(UserEntry, login_num) == 448 &&
              offsetof(UserEntry, zup) == 480);
static_assert(is_described<UserEntry>());

struct UserDelAll {
  uint32_t type;  // 0 all, 1 web, 2 PPPoE: not as in UserKick
  uint32_t expired_type;

  static constexpr void each_field(auto& r, auto&& field) {
    field("type", r.type), field("expired_type", r.expired_type);
  }
};
static_assert(sizeof(UserDelAll) == 8);
static_assert(is_described<UserDelAll>());

struct UserKick {
  uint32_t type;  // 0 all, 1 PPPoE, 2 web: not as in UserDelAll

  static constexpr void each_field(auto& r, auto&& field) { field("type", r.type); }
};
static_assert(is_described<UserKick>());

struct UserAutoscan {
  uint32_t enable;
  uint32_t interval_time;  // minutes

  static constexpr void each_field(auto& r, auto&& field) {
    field("enable", r.enable), field("interval_time", r.interval_time);
  }
};
static_assert(sizeof(UserAutoscan) == 8);
static_assert(is_described<UserAutoscan>());

struct UserStat {
  char name[64];
  uint64_t down;  // bytes
  uint64_t up;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("down", r.down), field("up", r.up);
  }
};
static_assert(sizeof(UserStat) == 80 && offsetof(UserStat, down) == 64 && offsetof(UserStat, up) == 72);
static_assert(is_described<UserStat>());

struct UserNameInfo {
  char name[64];
  int32_t login_num;
  int32_t web_login_num;
  int32_t num;
  // num entries follow

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("login_num", r.login_num), field("web_login_num", r.web_login_num),
        field("num", r.num);
  }
};
static_assert(sizeof(UserNameInfo) == 76);
static_assert(is_described<UserNameInfo>());

struct UserNameEntry {
  IpAddress ip;
  Mac mac;
  Unused<6> unused;
  uint64_t flags;

  static constexpr void each_field(auto& r, auto&& field) {
    field("ip", r.ip), field("mac", r.mac), field("", r.unused), field("flags", r.flags);
  }
};
static_assert(sizeof(UserNameEntry) == 40 && offsetof(UserNameEntry, mac) == 20 &&
              offsetof(UserNameEntry, flags) == 32);
static_assert(is_described<UserNameEntry>());

struct UserJsMod {
  uint32_t seconds;

  static constexpr void each_field(auto& r, auto&& field) { field("seconds", r.seconds); }
};
static_assert(is_described<UserJsMod>());

struct UserCard {
  uint32_t op;  // 1 set, 0 get
  uint32_t type;
  uint32_t en;

  static constexpr void each_field(auto& r, auto&& field) {
    field("op", r.op), field("type", r.type), field("en", r.en);
  }
};
static_assert(sizeof(UserCard) == 12);
static_assert(is_described<UserCard>());

struct UserSsid {
  uint32_t op;  // 1 set, 0 get
  uint32_t assid;
  uint32_t lssid;
  uint32_t dssid;
  uint32_t ussid;
  uint32_t gssid;

  static constexpr void each_field(auto& r, auto&& field) {
    field("op", r.op), field("assid", r.assid), field("lssid", r.lssid), field("dssid", r.dssid),
        field("ussid", r.ussid), field("gssid", r.gssid);
  }
};
static_assert(sizeof(UserSsid) == 24);
static_assert(is_described<UserSsid>());

struct UserLock {
  char name[64];
  uint32_t all;
  uint32_t lock;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("all", r.all), field("lock", r.lock);
  }
};
static_assert(sizeof(UserLock) == 72 && offsetof(UserLock, all) == 64);
static_assert(is_described<UserLock>());
