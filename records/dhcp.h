// Payloads of the DHCP server (module 5).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum DhcpCommand : uint32_t {
  kDhcpAdd = 1,
  kDhcpDel = 2,
  kDhcpShow = 3,
  kDhcpMemberList = 4,
  kDhcpBind = 5,
  kDhcpReserveAdd = 6,
  kDhcpReserveDel = 7,
  kDhcpReserveDelAll = 8,
  kDhcpReserveShow = 9,
  kDhcpNotAssignAdd = 12,
  kDhcpNotAssignDel = 13,
  kDhcpNotAssignDelAll = 14,
  kDhcpNotAssignShow = 15,
  kDhcpNewAdd = 16,
  kDhcpDefenseSet = 24,
  kDhcpDefenseGet = 25,
};

// What an interface's clients are given, from up to three pools. The addresses of lists travel one way in
// host byte order, as the readers of lists write them, and the other way in network byte order, as they are
// shown: requests have HostIp4 for ListIp4, answers have Ip4.
template <typename ListIp4>
struct DhcpSettings {
  char dev[16];
  Ip4 srv_ip;
  ListIp4 dnss[3];
  ListIp4 start_addr[3];  // of the three pools, as the next four; 0: no such pool
  ListIp4 end_addr[3];
  ListIp4 snmask[3];
  ListIp4 gwaddr[3];
  uint32_t filter[3];
  uint32_t leasetime;
  char domain_name[16];

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("srv_ip", r.srv_ip), field("dnss", r.dnss), field("start_addr", r.start_addr),
        field("end_addr", r.end_addr), field("snmask", r.snmask), field("gwaddr", r.gwaddr),
        field("filter", r.filter), field("leasetime", r.leasetime), field("domain_name", r.domain_name);
  }
};

struct DhcpOption43 {
  uint32_t length;
  uint8_t bytes[128];

  static constexpr void each_field(auto& r, auto&& field) {
    field("option43_length", r.length), field("option43", r.bytes);
  }
};

template <typename ListIp4>
struct DhcpPool {
  DhcpSettings<ListIp4> settings;
  Mac srv_mac;  // only in the answer, as the two counters
  Unused<2> unused;
  DhcpOption43 option43;
  uint32_t rcv;
  uint32_t send;
  Unused<4> unused2;

  static constexpr void each_field(auto& r, auto&& field) {
    field("settings", r.settings), field("srv_mac", r.srv_mac), field("", r.unused),
        field("option43", r.option43), field("rcv", r.rcv), field("send", r.send), field("", r.unused2);
  }
};

template <typename ListIp4>
struct DhcpTypedPool {
  DhcpPool<ListIp4> pool;
  uint32_t dhcp_type;  // 1: for administrators

  static constexpr void each_field(auto& r, auto&& field) {
    field("pool", r.pool), field("dhcp_type", r.dhcp_type);
  }
};
using DhcpPoolRequest = DhcpTypedPool<HostIp4>;
using DhcpPoolAnswer = DhcpTypedPool<Ip4>;
static_assert(sizeof(DhcpPoolRequest) == 268 && offsetof(DhcpPoolRequest, pool.settings.dnss) == 20 &&
              offsetof(DhcpPoolRequest, pool.settings.start_addr) == 32 &&
              offsetof(DhcpPoolRequest, pool.settings.end_addr) == 44 &&
              offsetof(DhcpPoolRequest, pool.settings.snmask) == 56 &&
              offsetof(DhcpPoolRequest, pool.settings.gwaddr) == 68 &&
              offsetof(DhcpPoolRequest, pool.settings.filter) == 80 &&
              offsetof(DhcpPoolRequest, pool.settings.domain_name) == 96 &&
              offsetof(DhcpPoolRequest, pool.srv_mac) == 112 &&
              offsetof(DhcpPoolRequest, pool.option43) == 120 && offsetof(DhcpPoolRequest, pool.rcv) == 252 &&
              offsetof(DhcpPoolRequest, dhcp_type) == 264);
static_assert(is_described<DhcpPoolRequest>() && is_described<DhcpPool<HostIp4>>() &&
              is_described<DhcpSettings<HostIp4>>() && is_described<DhcpOption43>());

// Of new_add, which says nothing of the type.
struct DhcpNewPool {
  DhcpPool<HostIp4> pool;
  Unused<36> unused;

  static constexpr void each_field(auto& r, auto&& field) { field("pool", r.pool), field("", r.unused); }
};
static_assert(sizeof(DhcpNewPool) == 300);
static_assert(is_described<DhcpNewPool>());

struct DhcpReservation {
  char dev[16];
  Ip4 ip;
  Mac mac;
  Unused<2> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("ip", r.ip), field("mac", r.mac), field("", r.unused);
  }
};
static_assert(sizeof(DhcpReservation) == 28 && offsetof(DhcpReservation, mac) == 20);
static_assert(is_described<DhcpReservation>());

struct DhcpExclusion {
  char dev[16];
  Ip4 ip;
  Ip4 netmask;  // or the last address of a range; 0: the one address

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("ip", r.ip), field("netmask", r.netmask);
  }
};
static_assert(sizeof(DhcpExclusion) == 24 && offsetof(DhcpExclusion, netmask) == 20);
static_assert(is_described<DhcpExclusion>());

// Where the lists of reservations and exclusions stand in their answers: behind the room of a dev.
constexpr uint32_t kDhcpCountOffset = 20;
constexpr uint32_t kDhcpEntriesOffset = 24;

// Whether a word is a network's mask, and not the last address of a range.
constexpr bool is_mask(uint32_t host_order_word) {
  return ((host_order_word - 1) | host_order_word) == UINT32_MAX;
}

struct DhcpBind {
  uint32_t operation;  // 1 set, 0 get
  uint32_t value;

  static constexpr void each_field(auto& r, auto&& field) {
    field("operation", r.operation), field("value", r.value);
  }
};
static_assert(sizeof(DhcpBind) == 8);
static_assert(is_described<DhcpBind>());

struct DhcpTrustedMac {
  Mac mac;
  Unused<2> unused;

  static constexpr void each_field(auto& r, auto&& field) { field("mac", r.mac), field("", r.unused); }
};
static_assert(sizeof(DhcpTrustedMac) == 8);
static_assert(is_described<DhcpTrustedMac>());

struct DhcpDefense {
  uint32_t en;
  uint32_t mac_num;
  uint32_t drop_num;  // only in the answer

  static constexpr void each_field(auto& r, auto&& field) {
    field("en", r.en), field("mac_num", r.mac_num), field("drop_num", r.drop_num);
  }
  static constexpr void each_list(auto& r, auto&& list) { list("macs", ListOf<DhcpTrustedMac>{r.mac_num}); }
};
static_assert(sizeof(DhcpDefense) == 12);
static_assert(is_described<DhcpDefense>());
constexpr uint32_t kMaxTrustedMacs = 128;

struct DhcpLeaseFilter {
  Unused<8> unused;
  char dev[64];

  static constexpr void each_field(auto& r, auto&& field) { field("", r.unused), field("dev", r.dev); }
};
static_assert(offsetof(DhcpLeaseFilter, dev) == 8);
static_assert(is_described<DhcpLeaseFilter>());

struct DhcpLease {
  char hostname[64];
  Ip4 ip;
  Mac mac;
  uint8_t state;
  uint8_t type;
  char in_dev[16];
  Unused<4> unused;
  uint64_t lease;  // seconds
  uint64_t start;  // seconds since 1970

  static constexpr void each_field(auto& r, auto&& field) {
    field("hostname", r.hostname), field("ip", r.ip), field("mac", r.mac), field("state", r.state),
        field("type", r.type), field("in_dev", r.in_dev), field("", r.unused), field("lease", r.lease),
        field("start", r.start);
  }
};
static_assert(sizeof(DhcpLease) == 112 && offsetof(DhcpLease, ip) == 64 && offsetof(DhcpLease, state) == 74 &&
              offsetof(DhcpLease, in_dev) == 76 && offsetof(DhcpLease, lease) == 96);
static_assert(is_described<DhcpLease>());
