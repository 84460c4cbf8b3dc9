// Payloads of multi-line selection (module 10). Single IPv4 addresses are in network byte order.
#pragma once

#include <cstddef>
#include <cstdint>

enum MrCommand : uint32_t {
  kMrLine = 1,
  kMrMode = 2,
  kMrOnlyWan = 3,
  kMrGet = 4,
  kMrRouteAdd = 6,
  kMrRouteDel = 7,
  kMrRouteList = 8,
  kMrDnsCache = 18,
  kMrIpv6 = 22,
  kMrList = 23,
  kMrUla = 25,
};

// Which part of a line's record an order is about.
enum LineOperation : uint8_t {
  kLineBalance = 0,
  kLineWeight = 1,
  kLineDetect = 2,
  kLineDns = 3,
  kLineDetectStop = 5,
  kLineFlow = 6,
};

// Detection of a line's health ("zc"), as it is set and as the list shows it.
struct LineDetection {
  uint8_t en;
  uint8_t act;  // 1 or 2
  uint8_t has_gw;
  uint8_t has_targets;
  uint16_t tm;
  uint16_t times;
  uint64_t sd;
  uint32_t gw;
  uint32_t second_ip;
  uint32_t target_ips[3];
  char target_names[3][48];  // of the targets that are no addresses
  uint8_t state;             // this and the next two: only in the list
  uint8_t trys;
  uint8_t ret_state;
  uint8_t mobile;  // a 3G or 4G line
  uint8_t option;
  uint8_t unused[3];
  char option_text[32];
  uint32_t option_ip;
};
static_assert(sizeof(LineDetection) == 224 && offsetof(LineDetection, tm) == 4 &&
              offsetof(LineDetection, sd) == 8 && offsetof(LineDetection, gw) == 16 &&
              offsetof(LineDetection, target_ips) == 24 && offsetof(LineDetection, target_names) == 36 &&
              offsetof(LineDetection, state) == 180 && offsetof(LineDetection, mobile) == 183 &&
              offsetof(LineDetection, option_text) == 188 && offsetof(LineDetection, option_ip) == 220);

struct LineRecord {
  uint8_t operation;  // LineOperation
  uint8_t jh;         // balancing switch
  uint8_t unused;
  uint8_t is_qosval;
  uint8_t wan_proto;
  uint8_t unused2;
  uint8_t ppp_demand;
  uint8_t unused3;
  uint16_t wanid;
  uint8_t flow_limit;
  uint8_t unused4[13];
  uint64_t val;  // weight
  uint8_t unused5[40];
  uint32_t host_num;
  uint32_t ct_num;
  uint32_t dns4[3];
  uint8_t dns6[3][16];
  uint32_t prio;
  uint8_t unused6[8];
  LineDetection zc;
};
static_assert(sizeof(LineRecord) == 376 && offsetof(LineRecord, is_qosval) == 3 &&
              offsetof(LineRecord, ppp_demand) == 6 && offsetof(LineRecord, wanid) == 8 &&
              offsetof(LineRecord, flow_limit) == 10 && offsetof(LineRecord, val) == 24 &&
              offsetof(LineRecord, host_num) == 72 && offsetof(LineRecord, dns4) == 80 &&
              offsetof(LineRecord, dns6) == 92 && offsetof(LineRecord, prio) == 140 &&
              offsetof(LineRecord, zc) == 152);

struct LineEntry {
  uint8_t unused;
  uint8_t jh;
  uint8_t state_v4;
  uint8_t chk_qosval;
  uint8_t wan_proto;
  uint8_t change_id;
  uint8_t ppp_demand;
  uint8_t state_v6;
  uint16_t wanid;
  uint8_t flow_limit;
  uint8_t unused2;
  int32_t hi;
  int32_t hi_bracket[2];
  int32_t ct;
  uint64_t val;
  uint64_t hi_val;
  uint64_t ct_val;
  uint64_t qos_val;
  uint64_t qos_speed[2];
  int32_t host_num;
  int32_t ct_limit_num;
  uint32_t dns4[3];
  uint8_t dns6[3][16];
  uint32_t dns_pri;
  uint32_t false_tm;
  uint32_t create_tm;
  uint8_t ula[16];
  int32_t ula_length;
  uint8_t unused3[12];
  LineDetection zc;
};
static_assert(sizeof(LineEntry) == 416 && offsetof(LineEntry, state_v6) == 7 &&
              offsetof(LineEntry, wanid) == 8 && offsetof(LineEntry, hi) == 12 &&
              offsetof(LineEntry, ct) == 24 && offsetof(LineEntry, val) == 32 &&
              offsetof(LineEntry, qos_speed) == 64 && offsetof(LineEntry, host_num) == 80 &&
              offsetof(LineEntry, dns4) == 88 && offsetof(LineEntry, dns6) == 100 &&
              offsetof(LineEntry, dns_pri) == 148 && offsetof(LineEntry, ula) == 160 &&
              offsetof(LineEntry, ula_length) == 176 && offsetof(LineEntry, zc) == 192);

enum LineModeType : uint32_t { kByHost = 1, kByConnection = 2, kByFlow = 3, kByWeights = 4 };

struct LineMode {
  uint32_t type;  // LineModeType
  uint32_t onlywan;
  uint32_t onlywan_tcp;
  uint32_t zn_val;
  uint32_t ct_rule_name;
};
static_assert(sizeof(LineMode) == 20);

struct LineRoute {
  uint32_t src;
  uint32_t srcmask;
  uint32_t dst;
  uint32_t dstmask;
  uint16_t prio;
  uint16_t wanid;
  uint8_t unused[4];
};
static_assert(sizeof(LineRoute) == 24 && offsetof(LineRoute, prio) == 16);

struct LineIpv6 {
  uint16_t wanid;
  uint8_t unused[2];
  uint8_t state;
};
static_assert(offsetof(LineIpv6, state) == 4);

struct LineUla {
  uint16_t wanid;
  uint16_t prefix_length;
  uint8_t prefix[16];
};
static_assert(sizeof(LineUla) == 20 && offsetof(LineUla, prefix) == 4);
