// Payloads of the QoS engine's control (module 14). Rates are in bytes a second, counts in bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"
#include "records/list.h"

enum QosCommand : uint32_t {
  kQosSet = 1,
  kQosGet = 2,
  kQosState = 3,
  kQosTypeList = 8,
  kQosSpeedSet = 9,
  kQosSpeedList = 10,
  kQosDnsIp = 11,
  kQosAppDns = 12,
  kQosAppIp = 13,
  kQosAppProtocol = 14,
  kQosAppHost = 15,
  kQosDebug = 16,
  kQosExtSet = 17,
  kQosExtGet = 18,
  kQosLevel = 19,
  kQosRuleAdd = 20,
  kQosRuleDel = 21,
  kQosRuleGet = 22,
  kQosRuleList = 23,
  kQosDelaySet = 24,
  kQosDelayGet = 25,
  kQosSkb = 26,
  kQosDevInfo = 27,
  kQosVpnLimit = 30,
  kQosSingleCt = 31,
  kQosStatisticsInit = 32,
  kQosIpRuleList = 33,
  kQosSpeedLimit = 34,
  kQosQueueWait = 35,
  kQosSpeedValue = 37,
  kQosNoQueue = 38,
  kQosLineSpeedValue = 40,
};

struct QosDevSettings {
  char dev[16];
  uint8_t type;  // 0 "hi", 1 "type"
  uint8_t en;
  Unused<2> unused;
  uint16_t ge_tm;
  uint16_t tcpwin;
  uint64_t up;
  uint64_t down;
  uint16_t up_fast;
  uint16_t down_fast;
  uint16_t up_ctskb;  // buffers of one connection
  uint16_t down_ctskb;
  uint16_t up_skb;  // buffers of all
  uint16_t down_skb;
  uint32_t hi_up;  // a host's minimum
  uint32_t hi_down;
  Unused<4> unused2;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("type", r.type), field("en", r.en), field("", r.unused),
        field("ge_tm", r.ge_tm), field("tcpwin", r.tcpwin), field("up", r.up), field("down", r.down),
        field("up_fast", r.up_fast), field("down_fast", r.down_fast), field("up_ctskb", r.up_ctskb),
        field("down_ctskb", r.down_ctskb), field("up_skb", r.up_skb), field("down_skb", r.down_skb),
        field("hi_up", r.hi_up), field("hi_down", r.hi_down), field("", r.unused2);
  }
};
static_assert(sizeof(QosDevSettings) == 64 && offsetof(QosDevSettings, type) == 16 &&
              offsetof(QosDevSettings, ge_tm) == 20 && offsetof(QosDevSettings, up) == 24 &&
              offsetof(QosDevSettings, up_fast) == 40 && offsetof(QosDevSettings, up_ctskb) == 44 &&
              offsetof(QosDevSettings, up_skb) == 48 && offsetof(QosDevSettings, hi_up) == 52);
static_assert(is_described<QosDevSettings>());

struct QosCount {
  uint64_t bytes;
  uint64_t skb;

  static constexpr void each_field(auto& r, auto&& field) { field("bytes", r.bytes), field("skb", r.skb); }
};
static_assert(is_described<QosCount>());

struct QosDevStats {
  char dev[16];
  Unused<2> unused;
  uint8_t iptype;
  Unused<13> unused2;
  uint64_t sp_up;
  uint64_t sp_down;
  uint64_t sp_drop_up;
  uint64_t sp_drop_down;
  uint64_t sp_qos_up;
  uint64_t sp_qos_down;
  QosCount up;
  QosCount down;
  QosCount drop_up;
  QosCount drop_down;
  QosCount qos_up;
  QosCount qos_down;
  int32_t skb_num_up;
  int32_t skb_num_down;
  uint64_t sp_max_up;
  uint64_t sp_max_down;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("", r.unused), field("iptype", r.iptype), field("", r.unused2),
        field("sp_up", r.sp_up), field("sp_down", r.sp_down), field("sp_drop_up", r.sp_drop_up),
        field("sp_drop_down", r.sp_drop_down), field("sp_qos_up", r.sp_qos_up),
        field("sp_qos_down", r.sp_qos_down), field("up", r.up), field("down", r.down),
        field("drop_up", r.drop_up), field("drop_down", r.drop_down), field("qos_up", r.qos_up),
        field("qos_down", r.qos_down), field("skb_num_up", r.skb_num_up),
        field("skb_num_down", r.skb_num_down), field("sp_max_up", r.sp_max_up),
        field("sp_max_down", r.sp_max_down);
  }
};
static_assert(sizeof(QosDevStats) == 200 && offsetof(QosDevStats, iptype) == 18 &&
              offsetof(QosDevStats, sp_up) == 32 && offsetof(QosDevStats, sp_qos_up) == 64 &&
              offsetof(QosDevStats, up) == 80 && offsetof(QosDevStats, drop_up) == 112 &&
              offsetof(QosDevStats, qos_up) == 144 && offsetof(QosDevStats, skb_num_up) == 176 &&
              offsetof(QosDevStats, sp_max_up) == 184);
static_assert(is_described<QosDevStats>());

struct QosExtSettings {
  uint32_t hi_up;
  uint32_t hi_down;
  uint32_t ct_num1;
  uint32_t ct_num2;
  uint32_t ct_udp_num1;
  uint32_t ct_udp_num2;
  uint32_t tcpwin;
  uint32_t hi_wait_tm;
  uint32_t ct_wait_tm;
  uint32_t sqos_limit_num;
  uint32_t sqos_ct_limit_num;

  static constexpr void each_field(auto& r, auto&& field) {
    field("hi_up", r.hi_up), field("hi_down", r.hi_down), field("ct_num1", r.ct_num1),
        field("ct_num2", r.ct_num2), field("ct_udp_num1", r.ct_udp_num1), field("ct_udp_num2", r.ct_udp_num2),
        field("tcpwin", r.tcpwin), field("hi_wait_tm", r.hi_wait_tm), field("ct_wait_tm", r.ct_wait_tm),
        field("sqos_limit_num", r.sqos_limit_num), field("sqos_ct_limit_num", r.sqos_ct_limit_num);
  }
};
static_assert(sizeof(QosExtSettings) == 44);
static_assert(is_described<QosExtSettings>());

struct QosLevel {
  uint32_t level;

  static constexpr void each_field(auto& r, auto&& field) { field("level", r.level); }
};
static_assert(is_described<QosLevel>());

// In the records below the first word is 1 to set and 0 to get.

struct QueueWaitMatrix {
  uint32_t is_set;
  uint32_t wait[3][3];  // from a priority level to one: 0 normal, 1 high, 2 low

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("wait", r.wait);
  }
};
static_assert(sizeof(QueueWaitMatrix) == 40);
static_assert(is_described<QueueWaitMatrix>());

struct QosVpnLimit {
  uint32_t is_set;
  uint32_t limit;
  uint32_t up;  // this and the next: only in the answer
  uint32_t down;

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("limit", r.limit), field("up", r.up), field("down", r.down);
  }
};
static_assert(sizeof(QosVpnLimit) == 16);
static_assert(is_described<QosVpnLimit>());

struct QosSingleCt {
  uint32_t is_set;
  uint32_t iface;  // line number
  uint32_t up;
  uint32_t down;

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("iface", r.iface), field("up", r.up), field("down", r.down);
  }
};
static_assert(sizeof(QosSingleCt) == 16);
static_assert(is_described<QosSingleCt>());

struct QosSpeedLimit {
  uint32_t is_set;
  uint32_t off;  // the engine keeps what is switched off

  static constexpr void each_field(auto& r, auto&& field) { field("is_set", r.is_set), field("off", r.off); }
};
static_assert(sizeof(QosSpeedLimit) == 8);
static_assert(is_described<QosSpeedLimit>());

struct QosSpeedValues {
  uint32_t is_set;
  uint32_t line;
  uint8_t values[256];  // by line

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_set", r.is_set), field("line", r.line), field("values", r.values);
  }
};
static_assert(sizeof(QosSpeedValues) == 264 && offsetof(QosSpeedValues, values) == 8);
static_assert(is_described<QosSpeedValues>());

struct QosNoQueue {
  char dev[16];
  uint32_t is_set;
  uint32_t up;
  uint32_t down;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("is_set", r.is_set), field("up", r.up), field("down", r.down);
  }
};
static_assert(sizeof(QosNoQueue) == 28);
static_assert(is_described<QosNoQueue>());

// Control of a device's speed by the delay on the way to a server.
struct QosDelayControl {
  char dev[16];
  uint8_t en;
  uint8_t level;
  Unused<2> unused;
  uint16_t dely_min;
  uint16_t dely_max;
  char server_name[24];  // where the server is no address
  Ip4 server;
  Ip4 tmp_ip;  // this and the next: only in the answer
  int32_t up_max;
  int32_t down_max;
  int32_t up_set;
  int32_t down_set;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("en", r.en), field("level", r.level), field("", r.unused),
        field("dely_min", r.dely_min), field("dely_max", r.dely_max), field("server_name", r.server_name),
        field("server", r.server), field("tmp_ip", r.tmp_ip), field("up_max", r.up_max),
        field("down_max", r.down_max), field("up_set", r.up_set), field("down_set", r.down_set);
  }
};
static_assert(sizeof(QosDelayControl) == 72 && offsetof(QosDelayControl, dely_min) == 20 &&
              offsetof(QosDelayControl, server_name) == 24 && offsetof(QosDelayControl, server) == 48 &&
              offsetof(QosDelayControl, up_max) == 56);
static_assert(is_described<QosDelayControl>());

// Packet buffers that a device holds; the entries of its hosts follow.
struct SkbReport {
  char dev[16];
  int32_t dev_skb[2];  // up, down, here and below
  int32_t no_queue[2];
  int32_t skb_head;
  int32_t skb_data;
  Unused<2> unused;
  uint16_t count;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("dev_skb", r.dev_skb), field("no_queue", r.no_queue),
        field("skb_head", r.skb_head), field("skb_data", r.skb_data), field("", r.unused),
        field("count", r.count);
  }
};
static_assert(sizeof(SkbReport) == 44 && offsetof(SkbReport, count) == 42);
static_assert(is_described<SkbReport>());

struct SkbHost {
  Ip4 ip;
  uint8_t hi_prio;
  uint8_t dev_prio;
  uint8_t is_udp;
  Unused<1> unused;
  uint8_t ct_err[2];
  uint8_t hi_err[2];
  int32_t hi_skb[2];
  int32_t hi_udp_skb[2];
  int32_t ct_skb[2];

  static constexpr void each_field(auto& r, auto&& field) {
    field("ip", r.ip), field("hi_prio", r.hi_prio), field("dev_prio", r.dev_prio), field("is_udp", r.is_udp),
        field("", r.unused), field("ct_err", r.ct_err), field("hi_err", r.hi_err), field("hi_skb", r.hi_skb),
        field("hi_udp_skb", r.hi_udp_skb), field("ct_skb", r.ct_skb);
  }
};
static_assert(sizeof(SkbHost) == 36 && offsetof(SkbHost, ct_err) == 8 && offsetof(SkbHost, hi_skb) == 12);
static_assert(is_described<SkbHost>());

// Packet buffers of all devices; their entries follow.
struct DevSkbReport {
  int32_t dev_skb[2];
  int32_t skb_head;
  int32_t skb_data;
  Unused<2> unused;
  uint16_t count;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev_skb", r.dev_skb), field("skb_head", r.skb_head), field("skb_data", r.skb_data),
        field("", r.unused), field("count", r.count);
  }
};
static_assert(sizeof(DevSkbReport) == 20 && offsetof(DevSkbReport, count) == 18);
static_assert(is_described<DevSkbReport>());

struct DevSkb {
  char dev[16];
  int32_t iface;  // line number
  int32_t up;
  int32_t down;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("iface", r.iface), field("up", r.up), field("down", r.down);
  }
};
static_assert(sizeof(DevSkb) == 28);
static_assert(is_described<DevSkb>());

struct QosIpRule {
  IpAddress ip;
  uint32_t up;
  uint32_t down;
  uint32_t max_up;
  uint32_t max_down;

  static constexpr void each_field(auto& r, auto&& field) {
    field("ip", r.ip), field("up", r.up), field("down", r.down), field("max_up", r.max_up),
        field("max_down", r.max_down);
  }
};
static_assert(sizeof(QosIpRule) == 36);
static_assert(is_described<QosIpRule>());

// ---- Speed rules ----

// Traffic types, from a table of the engine's.
struct QosTypeEntry {
  uint8_t id;
  uint8_t priority;  // QosPriority
  Unused<6> unused;
  uint64_t sp_up;
  uint64_t sp_down;
  uint64_t count_up;
  uint64_t count_skb_up;
  uint64_t count_down;
  uint64_t count_skb_down;

  static constexpr void each_field(auto& r, auto&& field) {
    field("id", r.id), field("priority", r.priority), field("", r.unused), field("sp_up", r.sp_up),
        field("sp_down", r.sp_down), field("count_up", r.count_up), field("count_skb_up", r.count_skb_up),
        field("count_down", r.count_down), field("count_skb_down", r.count_skb_down);
  }
};
static_assert(sizeof(QosTypeEntry) == 56 && offsetof(QosTypeEntry, sp_up) == 8);
static_assert(is_described<QosTypeEntry>());

enum QosPriority : uint8_t { kPriorityNormal = 0, kPriorityHigh = 1, kPriorityLow = 2 };

enum SpeedRuleAction : uint16_t { kSpeedRuleAdd = 1, kSpeedRuleDel = 2 };
enum SpeedRuleKind : uint8_t { kSpeedLimited = 0, kSpeedGuaranteed = 1, kSpeedPriority = 2 };

// Ids from 0 to 255, 64 a word.
struct IdSet {
  Unaligned<uint64_t> words[4];

  static constexpr void each_field(auto& r, auto&& field) { field("words", r.words); }
};
static_assert(is_described<IdSet>());

// A limit or a guarantee; the IPv4 ranges that it is for follow, in whose place the next rule of a list
// begins: no padding may come between.
struct SpeedRule {
  uint16_t action;  // SpeedRuleAction
  uint16_t kind;    // SpeedRuleKind
  char name[32];
  Unused<1> unused;
  uint8_t all_lines;
  uint8_t all_types;
  uint8_t is_shared;  // "gx"; else each address has the rate for itself
  Unaligned<uint64_t> up;
  Unaligned<uint64_t> down;
  IdSet lines;
  IdSet types;
  uint16_t range_count;
  uint16_t range_bytes;

  static constexpr void each_field(auto& r, auto&& field) {
    field("action", r.action), field("kind", r.kind), field("name", r.name), field("", r.unused),
        field("all_lines", r.all_lines), field("all_types", r.all_types), field("is_shared", r.is_shared),
        field("up", r.up), field("down", r.down), field("lines", r.lines), field("types", r.types),
        field("range_count", r.range_count), field("range_bytes", r.range_bytes);
  }
  static constexpr void each_list(auto& r, auto&& list) { list("ranges", ListOf<V4Range>{r.range_count}); }
};
static_assert(sizeof(SpeedRule) == 124 && offsetof(SpeedRule, all_lines) == 37 &&
              offsetof(SpeedRule, up) == 40 && offsetof(SpeedRule, lines) == 56 &&
              offsetof(SpeedRule, types) == 88 && offsetof(SpeedRule, range_count) == 120);
static_assert(is_described<SpeedRule>());

// The kind stands where the first rule of the answer has its own.
struct SpeedListRequest {
  Unused<10> unused;
  uint16_t kind;

  static constexpr void each_field(auto& r, auto&& field) { field("", r.unused), field("kind", r.kind); }
};
static_assert(offsetof(SpeedListRequest, kind) == 10);
static_assert(is_described<SpeedListRequest>());

// A rule of all kinds; its lists follow. Requests that name a rule carry name and kind alone, that for a list
// the kind.
struct PriorityRule {
  char name[64];
  uint16_t run_prio;
  uint8_t dev_prio;  // QosPriority
  uint8_t hi_prio;   // QosPriority
  uint8_t kind;      // SpeedRuleKind
  uint8_t is_and;
  uint8_t sp_type;
  uint8_t thd_type;  // 1 when the word was 1
  uint32_t up;
  uint32_t down;
  Unused<1> unused;
  uint8_t type;  // of the hosts
  Unused<2> unused2;
  uint32_t sp_check;
  Unused<4> unused3;
  uint16_t address_count;
  uint16_t v6_count;
  uint16_t dev_count;
  uint16_t thd_count;
  uint16_t shibie_count;
  uint16_t ipport_bytes;
  uint32_t list_bytes;  // of all lists

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("run_prio", r.run_prio), field("dev_prio", r.dev_prio),
        field("hi_prio", r.hi_prio), field("kind", r.kind), field("is_and", r.is_and),
        field("sp_type", r.sp_type), field("thd_type", r.thd_type), field("up", r.up), field("down", r.down),
        field("", r.unused), field("type", r.type), field("", r.unused2), field("sp_check", r.sp_check),
        field("", r.unused3), field("address_count", r.address_count), field("v6_count", r.v6_count),
        field("dev_count", r.dev_count), field("thd_count", r.thd_count),
        field("shibie_count", r.shibie_count), field("ipport_bytes", r.ipport_bytes),
        field("list_bytes", r.list_bytes);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    each_host_list(r.type, r.address_count, r.v6_count, list);
    list("devs", ListOf<NumberRange>{r.dev_count}), list("thds", ListOf<NumberRange>{r.thd_count}),
        list("shibie", ListOf<IdRange>{r.shibie_count}),
        list("destination", ListOf<IpPortBlock>{r.ipport_bytes != 0});
  }
};
static_assert(sizeof(PriorityRule) == 108 && offsetof(PriorityRule, run_prio) == 64 &&
              offsetof(PriorityRule, up) == 72 && offsetof(PriorityRule, type) == 81 &&
              offsetof(PriorityRule, sp_check) == 84 && offsetof(PriorityRule, address_count) == 92 &&
              offsetof(PriorityRule, list_bytes) == 104);
static_assert(is_described<PriorityRule>());

// What recognition goes by: names, address ranges, protocols and hosts follow in that order.
struct RecognitionName {
  char name[64];

  static constexpr void each_field(auto& r, auto&& field) { field("name", r.name); }
};
static_assert(is_described<RecognitionName>());

struct RecognitionRange {
  Ip4 first;
  Ip4 last;

  static constexpr void each_field(auto& r, auto&& field) { field("first", r.first), field("last", r.last); }
};
static_assert(is_described<RecognitionRange>());

struct RecognitionLists {
  uint16_t name_count;
  uint16_t range_count;
  uint16_t protocol_count;
  uint16_t hi_count;  // of the items given, those that are left out included

  static constexpr void each_field(auto& r, auto&& field) {
    field("name_count", r.name_count), field("range_count", r.range_count),
        field("protocol_count", r.protocol_count), field("hi_count", r.hi_count);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("names", ListOf<RecognitionName>{r.name_count}),
        list("ranges", ListOf<RecognitionRange>{r.range_count}),
        list("protocols", ListOf<ProtocolEntry>{r.protocol_count}),
        list("hosts", ListOf<RecognitionRange>{r.hi_count});
  }
};
static_assert(sizeof(RecognitionLists) == 8);
static_assert(is_described<RecognitionLists>());
