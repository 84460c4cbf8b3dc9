// Payloads of the DNS proxy (module 4).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum DnsCommand : uint32_t {
  kDnsSet = 1,
  kDnsGet = 2,
  kDnsList = 3,
  kDnsCacheClear = 5,
  kDnsGetIp = 7,
  kDnsTebieAdd = 14,
  kDnsTebieDel = 15,
  kDnsUrlAdd = 17,
  kDnsUrlDel = 18,
  kDnsUrlDelAll = 19,
  kDnsUrlList = 20,
  kDnsDebug = 26,
  kDnsTebieTest = 27,
  kDnsSpecialDebug = 28,
};

struct DnsSettings {
  uint32_t en;
  Ip4 dns4[3];
  Ip6 dns6[3];
  uint32_t acc_act;  // 1 drops
  uint32_t max_tm;
  uint32_t min_tm;
  uint32_t ct_show_name;
  uint32_t log;

  static constexpr void each_field(auto& r, auto&& field) {
    field("en", r.en), field("dns4", r.dns4), field("dns6", r.dns6), field("acc_act", r.acc_act),
        field("max_tm", r.max_tm), field("min_tm", r.min_tm), field("ct_show_name", r.ct_show_name),
        field("log", r.log);
  }
};
static_assert(sizeof(DnsSettings) == 84 && offsetof(DnsSettings, dns6) == 16 &&
              offsetof(DnsSettings, acc_act) == 64);
static_assert(is_described<DnsSettings>());

// A name of the cache; it follows in name_length bytes, its IPv4 addresses, and its IPv6 addresses.
struct DnsCacheEntry {
  uint16_t v4_count;
  uint16_t v6_count;
  uint32_t name_length;
  uint32_t ttd;  // seconds that are left to it
  uint8_t typeid_;
  uint8_t wanid;
  Unused<2> unused;
  uint64_t tm;  // seconds since it was learnt

  static constexpr void each_field(auto& r, auto&& field) {
    field("v4_count", r.v4_count), field("v6_count", r.v6_count), field("name_length", r.name_length),
        field("ttd", r.ttd), field("typeid", r.typeid_), field("wanid", r.wanid), field("", r.unused),
        field("tm", r.tm);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("name", ListOf<char>{r.name_length}), list("v4", ListOf<Ip4>{r.v4_count}),
        list("v6", ListOf<Ip6>{r.v6_count});
  }
};
static_assert(sizeof(DnsCacheEntry) == 24 && offsetof(DnsCacheEntry, ttd) == 8 &&
              offsetof(DnsCacheEntry, tm) == 16);
static_assert(is_described<DnsCacheEntry>());

struct DnsLookup {
  uint32_t count;  // this and the addresses: only in the answer
  uint32_t trys;
  Ip4 ips[4];
  char name[128];

  static constexpr void each_field(auto& r, auto&& field) {
    field("count", r.count), field("trys", r.trys), field("ips", r.ips), field("name", r.name);
  }
};
static_assert(offsetof(DnsLookup, ips) == 8 && offsetof(DnsLookup, name) == 24);
static_assert(is_described<DnsLookup>());

// A domain that is treated apart ("tebie").
struct DnsTebie {
  char name[128];
  Unused<256> unused;
  Ip4 ip;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("", r.unused), field("ip", r.ip);
  }
};
static_assert(sizeof(DnsTebie) == 388 && offsetof(DnsTebie, ip) == 384);
static_assert(is_described<DnsTebie>());

// What a fixed answer ("url") is: the address given, that of another name, or the router's own.
enum DnsUrlKind : uint8_t { kUrlIp = 1, kUrlName = 2, kUrlGateway = 3, kUrlGatewayCompared = 4 };

struct DnsUrl {
  char name[127];
  uint8_t kind;  // DnsUrlKind
  Ip4 ip;        // of another kind than kUrlName
  Unused<60> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("kind", r.kind), field("ip", r.ip), field("", r.unused);
  }
};
static_assert(sizeof(DnsUrl) == 192 && offsetof(DnsUrl, ip) == 128);
static_assert(is_described<DnsUrl>());

// The same for kUrlName.
struct DnsUrlOtherName {
  char name[127];
  uint8_t kind;
  char other_name[64];

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.name), field("kind", r.kind), field("other_name", r.other_name);
  }
};
static_assert(sizeof(DnsUrlOtherName) == sizeof(DnsUrl) && offsetof(DnsUrlOtherName, other_name) == 128);
static_assert(is_described<DnsUrlOtherName>());

// A fixed answer of the list, whose entries begin with the payload and are counted by the header's result.
// Its name and the other name follow.
struct DnsUrlEntry {
  Ip4 ip;
  uint8_t kind;
  uint8_t name_length;
  uint8_t other_name_length;
  Unused<1> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("ip", r.ip), field("kind", r.kind), field("name_length", r.name_length),
        field("other_name_length", r.other_name_length), field("", r.unused);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("name", ListOf<char>{r.name_length}), list("other_name", ListOf<char>{r.other_name_length});
  }
};
static_assert(sizeof(DnsUrlEntry) == 8 && offsetof(DnsUrlEntry, name_length) == 5);
static_assert(is_described<DnsUrlEntry>());

struct DnsSwitch {
  uint32_t en;

  static constexpr void each_field(auto& r, auto&& field) { field("en", r.en); }
};
static_assert(is_described<DnsSwitch>());
