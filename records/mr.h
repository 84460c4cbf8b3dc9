// Payloads of multi-line selection (module 10).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

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
  Ip4 gw;
  Ip4 second_ip;
  Ip4 target_ips[3];
  char target_names[3][48];  // of the targets that are no addresses
  uint8_t state;             // this and the next two: only in the list
  uint8_t trys;
  uint8_t ret_state;
  uint8_t mobile;  // a 3G or 4G line
  uint8_t option;
  Unused<3> unused;
  char option_text[32];
  Ip4 option_ip;

  static constexpr void each_field(auto& r, auto&& field) {
    field("en", r.en), field("act", r.act), field("has_gw", r.has_gw), field("has_targets", r.has_targets),
        field("tm", r.tm), field("times", r.times), field("sd", r.sd), field("gw", r.gw),
        field("second_ip", r.second_ip), field("target_ips", r.target_ips),
        field("target_names", r.target_names), field("state", r.state), field("trys", r.trys),
        field("ret_state", r.ret_state), field("mobile", r.mobile), field("option", r.option),
        field("", r.unused), field("option_text", r.option_text), field("option_ip", r.option_ip);
  }
};
static_assert(sizeof(LineDetection) == 224 && offsetof(LineDetection, tm) == 4 &&
              offsetof(LineDetection, sd) == 8 && offsetof(LineDetection, gw) == 16 &&
              offsetof(LineDetection, target_ips) == 24 && offsetof(LineDetection, target_names) == 36 &&
              offsetof(LineDetection, state) == 180 && offsetof(LineDetection, mobile) == 183 &&
              offsetof(LineDetection, option_text) == 188 && offsetof(LineDetection, option_ip) == 220);
static_assert(is_described<LineDetection>());

struct LineRecord {
  uint8_t operation;  // LineOperation
  uint8_t jh;         // balancing switch
  Unused<1> unused;
  uint8_t is_qosval;
  uint8_t wan_proto;
  Unused<1> unused2;
  uint8_t ppp_demand;
  Unused<1> unused3;
  uint16_t wanid;
  uint8_t flow_limit;
  Unused<13> unused4;
  uint64_t val;  // weight
  Unused<40> unused5;
  uint32_t host_num;
  uint32_t ct_num;
  Ip4 dns4[3];
  Ip6 dns6[3];
  uint32_t prio;
  Unused<8> unused6;
  LineDetection zc;

  static constexpr void each_field(auto& r, auto&& field) {
    field("operation", r.operation), field("jh", r.jh), field("", r.unused), field("is_qosval", r.is_qosval),
        field("wan_proto", r.wan_proto), field("", r.unused2), field("ppp_demand", r.ppp_demand),
        field("", r.unused3), field("wanid", r.wanid), field("flow_limit", r.flow_limit),
        field("", r.unused4), field("val", r.val), field("", r.unused5), field("host_num", r.host_num),
        field("ct_num", r.ct_num), field("dns4", r.dns4), field("dns6", r.dns6), field("prio", r.prio),
        field("", r.unused6), field("zc", r.zc);
  }
};
static_assert(sizeof(LineRecord) == 376 && offsetof(LineRecord, is_qosval) == 3 &&
              offsetof(LineRecord, ppp_demand) == 6 && offsetof(LineRecord, wanid) == 8 &&
              offsetof(LineRecord, flow_limit) == 10 && offsetof(LineRecord, val) == 24 &&
              offsetof(LineRecord, host_num) == 72 && offsetof(LineRecord, dns4) == 80 &&
              offsetof(LineRecord, dns6) == 92 && offsetof(LineRecord, prio) == 140 &&
              offsetof(LineRecord, zc) == 152);
static_assert(is_described<LineRecord>());

struct LineEntry {
  Unused<1> unused;
  uint8_t jh;
  uint8_t state_v4;
  uint8_t chk_qosval;
  uint8_t wan_proto;
  uint8_t change_id;
  uint8_t ppp_demand;
  uint8_t state_v6;
  uint16_t wanid;
  uint8_t flow_limit;
  Unused<1> unused2;
  int32_t hi;
  int32_t hi_bracket[2];
  int32_t ct;
  Unused<4> unused3;
  uint64_t val;
  uint64_t hi_val;
  uint64_t ct_val;
  uint64_t qos_val;
  uint64_t qos_speed[2];
  int32_t host_num;
  int32_t ct_limit_num;
  Ip4 dns4[3];
  Ip6 dns6[3];
  uint32_t dns_pri;
  uint32_t false_tm;
  uint32_t create_tm;
  Ip6 ula;
  int32_t ula_length;
  Unused<12> unused4;
  LineDetection zc;

  static constexpr void each_field(auto& r, auto&& field) {
    field("", r.unused), field("jh", r.jh), field("state_v4", r.state_v4), field("chk_qosval", r.chk_qosval),
        field("wan_proto", r.wan_proto), field("change_id", r.change_id), field("ppp_demand", r.ppp_demand),
        field("state_v6", r.state_v6), field("wanid", r.wanid), field("flow_limit", r.flow_limit),
        field("", r.unused2), field("hi", r.hi), field("hi_bracket", r.hi_bracket), field("ct", r.ct),
        field("", r.unused3), field("val", r.val), field("hi_val", r.hi_val), field("ct_val", r.ct_val),
        field("qos_val", r.qos_val), field("qos_speed", r.qos_speed), field("host_num", r.host_num),
        field("ct_limit_num", r.ct_limit_num), field("dns4", r.dns4), field("dns6", r.dns6),
        field("dns_pri", r.dns_pri), field("false_tm", r.false_tm), field("create_tm", r.create_tm),
        field("ula", r.ula), field("ula_length", r.ula_length), field("", r.unused4), field("zc", r.zc);
  }
};
static_assert(sizeof(LineEntry) == 416 && offsetof(LineEntry, state_v6) == 7 &&
              offsetof(LineEntry, wanid) == 8 && offsetof(LineEntry, hi) == 12 &&
              offsetof(LineEntry, ct) == 24 && offsetof(LineEntry, val) == 32 &&
              offsetof(LineEntry, qos_speed) == 64 && offsetof(LineEntry, host_num) == 80 &&
              offsetof(LineEntry, dns4) == 88 && offsetof(LineEntry, dns6) == 100 &&
              offsetof(LineEntry, dns_pri) == 148 && offsetof(LineEntry, ula) == 160 &&
              offsetof(LineEntry, ula_length) == 176 && offsetof(LineEntry, zc) == 192);
static_assert(is_described<LineEntry>());

enum LineModeType : uint32_t { kByHost = 1, kByConnection = 2, kByFlow = 3, kByWeights = 4 };

struct LineMode {
  uint32_t type;  // LineModeType
  uint32_t onlywan;
  uint32_t onlywan_tcp;
  uint32_t zn_val;
  uint32_t ct_rule_name;

  static constexpr void each_field(auto& r, auto&& field) {
    field("type", r.type), field("onlywan", r.onlywan), field("onlywan_tcp", r.onlywan_tcp),
        field("zn_val", r.zn_val), field("ct_rule_name", r.ct_rule_name);
  }
};
static_assert(sizeof(LineMode) == 20);
static_assert(is_described<LineMode>());

struct LineRoute {
  Ip4 src;
  Ip4 srcmask;
  Ip4 dst;
  Ip4 dstmask;
  uint16_t prio;
  uint16_t wanid;
  Unused<4> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("src", r.src), field("srcmask", r.srcmask), field("dst", r.dst), field("dstmask", r.dstmask),
        field("prio", r.prio), field("wanid", r.wanid), field("", r.unused);
  }
};
static_assert(sizeof(LineRoute) == 24 && offsetof(LineRoute, prio) == 16);
static_assert(is_described<LineRoute>());

struct LineIpv6 {
  uint16_t wanid;
  Unused<2> unused;
  uint8_t state;
  Unused<1> unused2;

  static constexpr void each_field(auto& r, auto&& field) {
    field("wanid", r.wanid), field("", r.unused), field("state", r.state), field("", r.unused2);
  }
};
static_assert(offsetof(LineIpv6, state) == 4);
static_assert(is_described<LineIpv6>());

struct LineUla {
  uint16_t wanid;
  uint16_t prefix_length;
  Ip6 prefix;

  static constexpr void each_field(auto& r, auto&& field) {
    field("wanid", r.wanid), field("prefix_length", r.prefix_length), field("prefix", r.prefix);
  }
};
static_assert(sizeof(LineUla) == 20 && offsetof(LineUla, prefix) == 4);
static_assert(is_described<LineUla>());
