// Payloads of the PPPoE server and of the client that probes lines (module 9).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum PppoeCommand : uint32_t {
  kPppoeSet = 1,
  kPppoeShow = 2,
  kPppoeDebug = 9,
  kPppoeGroupAdd = 10,
  kPppoeGroupDel = 11,
  kPppoeGroupMod = 12,
  kPppoeGroupDelAll = 13,
  kPppoeGroupList = 14,
  kPppoeGroupSpeed = 15,
  kPppoeGroupDebug = 16,
  kPppoeProbeStart = 17,
  kPppoeProbeStop = 18,
  kPppoeProbeStatus = 19,
  kPppoeTimeChange = 20,
};

// Which half of the server's settings a record is about.
enum PppoeHalf : uint32_t { kPppoeBase = 2, kPppoeOptions = 3 };

struct PppoeServerConfig {
  uint32_t half;  // PppoeHalf; 0 to read both
  uint32_t sys_run_flag;
  char acname[64];  // of the access concentrator
  char dev[16];
  Ip4 srv_ip;
  Ip4 netmask;
  Ip4 start_ip;  // this and the next: only in an answer
  Ip4 end_ip;
  Ip4 dns[2];
  uint32_t en;
  uint32_t check_tm;
  uint32_t check_max;
  uint8_t pap;
  uint8_t chap;
  uint8_t mschap;
  uint8_t mschap2;
  uint8_t any_acname;
  uint8_t any_user;
  Unused<2> unused;
  uint32_t rcv_padi;  // packets; this and the next: only in an answer
  uint32_t send_pado;

  static constexpr void each_field(auto& r, auto&& field) {
    field("half", r.half), field("sys_run_flag", r.sys_run_flag), field("acname", r.acname),
        field("dev", r.dev), field("srv_ip", r.srv_ip), field("netmask", r.netmask),
        field("start_ip", r.start_ip), field("end_ip", r.end_ip), field("dns", r.dns), field("en", r.en),
        field("check_tm", r.check_tm), field("check_max", r.check_max), field("pap", r.pap),
        field("chap", r.chap), field("mschap", r.mschap), field("mschap2", r.mschap2),
        field("any_acname", r.any_acname), field("any_user", r.any_user), field("", r.unused),
        field("rcv_padi", r.rcv_padi), field("send_pado", r.send_pado);
  }
};
static_assert(sizeof(PppoeServerConfig) == 140 && offsetof(PppoeServerConfig, dev) == 72 &&
              offsetof(PppoeServerConfig, srv_ip) == 88 && offsetof(PppoeServerConfig, en) == 112 &&
              offsetof(PppoeServerConfig, pap) == 124 && offsetof(PppoeServerConfig, rcv_padi) == 132);
static_assert(is_described<PppoeServerConfig>());

struct PppoeRange {
  Ip4 start;
  Ip4 end;

  static constexpr void each_field(auto& r, auto&& field) { field("start", r.start), field("end", r.end); }
};
static_assert(sizeof(PppoeRange) == 8);
static_assert(is_described<PppoeRange>());

struct PppoeSession {
  Ip4 ip;
  Unused<4> unused;

  static constexpr void each_field(auto& r, auto&& field) { field("ip", r.ip), field("", r.unused); }
};
static_assert(sizeof(PppoeSession) == 8);
static_assert(is_described<PppoeSession>());

struct PppoeDebug {
  uint32_t mode;  // 1 set, 0 get
  uint32_t en;
  uint32_t log_en;
  uint32_t pool_num;  // this and what follows: only in an answer
  uint32_t bl_num;
  uint32_t ipused_num;
  uint32_t session_num;

  static constexpr void each_field(auto& r, auto&& field) {
    field("mode", r.mode), field("en", r.en), field("log_en", r.log_en), field("pool_num", r.pool_num),
        field("bl_num", r.bl_num), field("ipused_num", r.ipused_num), field("session_num", r.session_num);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("pool", ListOf<PppoeRange>{r.pool_num}), list("bl", ListOf<PppoeRange>{r.bl_num}),
        list("ipused", ListOf<PppoeRange>{r.ipused_num}),
        list("session", ListOf<PppoeSession>{r.session_num});
  }
};
static_assert(sizeof(PppoeDebug) == 28);
static_assert(is_described<PppoeDebug>());

struct PppoeGroup {
  uint32_t sys_run_flag;
  char name[32];
  Ip4 ip;
  Ip4 mask;
  uint32_t up;
  uint32_t down;
  Ip4 dns[2];
  uint32_t user;  // how many; only in an answer

  static constexpr void each_field(auto& r, auto&& field) {
    field("sys_run_flag", r.sys_run_flag), field("name", r.name), field("ip", r.ip), field("mask", r.mask),
        field("up", r.up), field("down", r.down), field("dns", r.dns), field("user", r.user);
  }
};
static_assert(sizeof(PppoeGroup) == 64 && offsetof(PppoeGroup, ip) == 36 && offsetof(PppoeGroup, dns) == 52);
static_assert(is_described<PppoeGroup>());

struct PppoeGroupDebug {
  char name[32];
  uint32_t pool_num;  // this and what follows: only in an answer
  uint32_t bl_num;
  uint32_t ipused_num;
  Unused<8> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("pool_num", r.pool_num), field("bl_num", r.bl_num),
        field("ipused_num", r.ipused_num), field("", r.unused);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("pool", ListOf<PppoeRange>{r.pool_num}), list("bl", ListOf<PppoeRange>{r.bl_num}),
        list("ipused", ListOf<PppoeRange>{r.ipused_num});
  }
};
static_assert(sizeof(PppoeGroupDebug) == 52 && offsetof(PppoeGroupDebug, pool_num) == 32);
static_assert(is_described<PppoeGroupDebug>());

// A client that dials on a device to see what answers there.
struct PppoeProbe {
  char dev[32];
  uint32_t enable;
  uint32_t status;  // this and what follows: only in an answer
  char username[64];
  char userpwd[64];
  int32_t numbers[4];

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("enable", r.enable), field("status", r.status), field("username", r.username),
        field("userpwd", r.userpwd), field("numbers", r.numbers);
  }
};
static_assert(sizeof(PppoeProbe) == 184 && offsetof(PppoeProbe, username) == 40 &&
              offsetof(PppoeProbe, userpwd) == 104 && offsetof(PppoeProbe, numbers) == 168);
static_assert(is_described<PppoeProbe>());

// The clock has been set.
struct PppoeTimeChange {
  uint32_t tm;

  static constexpr void each_field(auto& r, auto&& field) { field("tm", r.tm); }
};
static_assert(is_described<PppoeTimeChange>());
