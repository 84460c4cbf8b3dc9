// Payloads of the QoS engine's control (module 14). Rates are in bytes a second, counts in bytes.
#pragma once

#include <cstddef>
#include <cstdint>

enum QosCommand : uint32_t {
  kQosSet = 1,
  kQosGet = 2,
  kQosState = 3,
  kQosDebug = 16,
  kQosExtSet = 17,
  kQosExtGet = 18,
  kQosLevel = 19,
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
  uint8_t unused[2];
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
  uint32_t unused2;
};
static_assert(sizeof(QosDevSettings) == 64 && offsetof(QosDevSettings, type) == 16 &&
              offsetof(QosDevSettings, ge_tm) == 20 && offsetof(QosDevSettings, up) == 24 &&
              offsetof(QosDevSettings, up_fast) == 40 && offsetof(QosDevSettings, up_ctskb) == 44 &&
              offsetof(QosDevSettings, up_skb) == 48 && offsetof(QosDevSettings, hi_up) == 52);

struct QosCount {
  uint64_t bytes;
  uint64_t skb;
};

struct QosDevStats {
  char dev[16];
  uint8_t unused[2];
  uint8_t iptype;
  uint8_t unused2[13];
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
};
static_assert(sizeof(QosDevStats) == 200 && offsetof(QosDevStats, iptype) == 18 &&
              offsetof(QosDevStats, sp_up) == 32 && offsetof(QosDevStats, sp_qos_up) == 64 &&
              offsetof(QosDevStats, up) == 80 && offsetof(QosDevStats, drop_up) == 112 &&
              offsetof(QosDevStats, qos_up) == 144 && offsetof(QosDevStats, skb_num_up) == 176 &&
              offsetof(QosDevStats, sp_max_up) == 184);

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
};
static_assert(sizeof(QosExtSettings) == 44);

struct QosLevel {
  uint32_t level;
};

// In the records below the first word is 1 to set and 0 to get.

struct QueueWaitMatrix {
  uint32_t is_set;
  uint32_t wait[3][3];  // from a priority level to one: 0 normal, 1 high, 2 low
};
static_assert(sizeof(QueueWaitMatrix) == 40);

struct QosVpnLimit {
  uint32_t is_set;
  uint32_t limit;
  uint32_t up;  // this and the next: only in the answer
  uint32_t down;
};
static_assert(sizeof(QosVpnLimit) == 16);

struct QosSingleCt {
  uint32_t is_set;
  uint32_t iface;  // line number
  uint32_t up;
  uint32_t down;
};
static_assert(sizeof(QosSingleCt) == 16);

struct QosSpeedLimit {
  uint32_t is_set;
  uint32_t off;  // the engine keeps what is switched off
};
static_assert(sizeof(QosSpeedLimit) == 8);

struct QosSpeedValues {
  uint32_t is_set;
  uint32_t line;
  uint8_t values[256];  // by line
};
static_assert(sizeof(QosSpeedValues) == 264 && offsetof(QosSpeedValues, values) == 8);

struct QosNoQueue {
  char dev[16];
  uint32_t is_set;
  uint32_t up;
  uint32_t down;
};
static_assert(sizeof(QosNoQueue) == 28);

// Packet buffers that a device holds; the entries of its hosts follow.
struct SkbReport {
  char dev[16];
  int32_t dev_skb[2];  // up, down, here and below
  int32_t no_queue[2];
  int32_t skb_head;
  int32_t skb_data;
  uint8_t unused[2];
  uint16_t count;
};
static_assert(sizeof(SkbReport) == 44 && offsetof(SkbReport, count) == 42);

struct SkbHost {
  uint32_t ip;  // network byte order
  uint8_t hi_prio;
  uint8_t dev_prio;
  uint8_t is_udp;
  uint8_t unused;
  uint8_t ct_err[2];
  uint8_t hi_err[2];
  int32_t hi_skb[2];
  int32_t hi_udp_skb[2];
  int32_t ct_skb[2];
};
static_assert(sizeof(SkbHost) == 36 && offsetof(SkbHost, ct_err) == 8 && offsetof(SkbHost, hi_skb) == 12);

// Packet buffers of all devices; their entries follow.
struct DevSkbReport {
  int32_t dev_skb[2];
  int32_t skb_head;
  int32_t skb_data;
  uint8_t unused[2];
  uint16_t count;
};
static_assert(sizeof(DevSkbReport) == 20 && offsetof(DevSkbReport, count) == 18);

struct DevSkb {
  char dev[16];
  int32_t iface;  // line number
  int32_t up;
  int32_t down;
};
static_assert(sizeof(DevSkb) == 28);

struct QosIpRule {
  uint8_t ip[20];  // combined address value
  uint32_t up;
  uint32_t down;
  uint32_t max_up;
  uint32_t max_down;
};
static_assert(sizeof(QosIpRule) == 36);
