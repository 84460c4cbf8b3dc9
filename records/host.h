// Payloads of the host table (module 13).
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum HostCommand : uint32_t {
  kHostList = 1,
  kHostRunInfo = 8,
  kHostConnections = 19,
  kHostSetAgeing = 24,
  kHostSetAgeing3 = 29,
  kHostThirdList = 40,
  kHostTmpLimit = 41,
  kHostConnectionShowSet = 43,
  kHostConnectionShowGet = 44,
  kHostSignal = 46,
  kHostRedirect = 51,
  kHostWsList = 62,
  kHostSetMac = 63,
  kHostSnmpScan = 64,
  kHostAiList = 72,
};

// Lists of hosts: a u32 count and the entries, where most lists stand. A scan is answered as a list, too.
struct HostEntry {
  Bits<uint64_t, 32> flag;
  uint64_t creat_tm;
  uint64_t last_tm;
  uint64_t del_tm;
  Unused<8> unused;
  uint64_t sp_up;  // bytes per second
  uint64_t sp_down;
  IpAddress ip;
  Ip4 arp_ip;
  Ip4 local_ip;
  int32_t speed_limit_up;
  int32_t speed_limit_down;
  int32_t tmp_speed_limit_up;
  int32_t tmp_speed_limit_down;
  Mac local_mac;
  Mac real_mac;
  uint8_t block;
  uint8_t no_snmp;  // the kernel's mark on a host that a scan leaves out: nobody is to be asked for its MAC
  uint8_t portal;
  uint8_t user_login_type;
  uint8_t auto_jb;
  uint8_t typeid_;
  Unused<1> unused2;
  uint8_t apidx;
  uint8_t is_5g;
  Unused<1> unused3;
  uint16_t typeid_user;
  uint16_t mr_id;
  uint16_t vlanid;
  Unused<280> unused4;
  uint64_t up_bytes;
  uint64_t up_packets;
  uint64_t down_bytes;
  uint64_t down_packets;
  char hostname[128];
  uint8_t third0;
  uint8_t third2;  // the middle one stands last
  uint8_t third1;
  uint8_t user_card_type;
  char portal_text[286];  // token of the portal or URL of the redirect
  uint16_t pppdp_mr_id;
  char user_agent[128];
  char devname[49];
  char device_name[31];
  uint32_t sys_type;
  uint8_t pc_flag;
  Unused<71> unused5;

  static constexpr void each_field(auto& r, auto&& field) {
    field("flag", r.flag), field("creat_tm", r.creat_tm), field("last_tm", r.last_tm),
        field("del_tm", r.del_tm), field("", r.unused), field("sp_up", r.sp_up), field("sp_down", r.sp_down),
        field("ip", r.ip), field("arp_ip", r.arp_ip), field("local_ip", r.local_ip),
        field("speed_limit_up", r.speed_limit_up), field("speed_limit_down", r.speed_limit_down),
        field("tmp_speed_limit_up", r.tmp_speed_limit_up),
        field("tmp_speed_limit_down", r.tmp_speed_limit_down), field("local_mac", r.local_mac),
        field("real_mac", r.real_mac), field("block", r.block), field("no_snmp", r.no_snmp),
        field("portal", r.portal), field("user_login_type", r.user_login_type), field("auto_jb", r.auto_jb),
        field("typeid", r.typeid_), field("", r.unused2), field("apidx", r.apidx), field("5g", r.is_5g),
        field("", r.unused3), field("typeid_user", r.typeid_user), field("mr_id", r.mr_id),
        field("vlanid", r.vlanid), field("", r.unused4), field("up_bytes", r.up_bytes),
        field("up_packets", r.up_packets), field("down_bytes", r.down_bytes),
        field("down_packets", r.down_packets), field("hostname", r.hostname), field("third0", r.third0),
        field("third2", r.third2), field("third1", r.third1), field("user_card_type", r.user_card_type),
        field("portal_text", r.portal_text), field("pppdp_mr_id", r.pppdp_mr_id),
        field("user_agent", r.user_agent), field("devname", r.devname), field("device_name", r.device_name),
        field("sys_type", r.sys_type), field("pc_flag", r.pc_flag), field("", r.unused5);
  }
};
static_assert(sizeof(HostEntry) == 1144 && offsetof(HostEntry, sp_up) == 40 &&
              offsetof(HostEntry, ip) == 56 && offsetof(HostEntry, arp_ip) == 76 &&
              offsetof(HostEntry, speed_limit_up) == 84 && offsetof(HostEntry, local_mac) == 100 &&
              offsetof(HostEntry, block) == 112 && offsetof(HostEntry, portal) == 114 &&
              offsetof(HostEntry, apidx) == 119 && offsetof(HostEntry, typeid_user) == 122 &&
              offsetof(HostEntry, vlanid) == 126 && offsetof(HostEntry, up_bytes) == 408 &&
              offsetof(HostEntry, hostname) == 440 && offsetof(HostEntry, third1) == 570 &&
              offsetof(HostEntry, portal_text) == 572 && offsetof(HostEntry, pppdp_mr_id) == 858 &&
              offsetof(HostEntry, user_agent) == 860 && offsetof(HostEntry, devname) == 988 &&
              offsetof(HostEntry, device_name) == 1037 && offsetof(HostEntry, sys_type) == 1068 &&
              offsetof(HostEntry, pc_flag) == 1072);
static_assert(is_described<HostEntry>());

// An entry of the extended list. The four fields behind the common part have no layout from elsewhere: this
// one is the contract between the tool and whoever answers.
struct HostAiEntry {
  HostEntry host;
  char in_devname[48];   // at 1144: the device that the host's packets come in by
  uint32_t vek_out_id;   // at 1192: number of its line
  char ssid[36];         // at 1196: its wireless network
  uint32_t ssid_out_id;  // at 1232: number of that network's line
  Unused<4> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("host", r.host), field("in_devname", r.in_devname), field("vek_out_id", r.vek_out_id),
        field("ssid", r.ssid), field("ssid_out_id", r.ssid_out_id), field("", r.unused);
  }
};
static_assert(sizeof(HostAiEntry) == 1240 && offsetof(HostAiEntry, in_devname) == 1144 &&
              offsetof(HostAiEntry, vek_out_id) == 1192 && offsetof(HostAiEntry, ssid) == 1196 &&
              offsetof(HostAiEntry, ssid_out_id) == 1232);
static_assert(is_described<HostAiEntry>());

struct HostRunInfo {
  uint32_t rt_max;
  uint32_t rt_num;
  uint32_t ct_max;
  uint32_t ct_num;
  uint32_t ct_alloc_max;
  uint32_t skb_zong;
  uint32_t skb_data;
  uint32_t host_num;
  uint32_t host_list_num;
  uint32_t ddos_drop_pkt;
  uint32_t broadcast_pkt;

  static constexpr void each_field(auto& r, auto&& field) {
    field("rt_max", r.rt_max), field("rt_num", r.rt_num), field("ct_max", r.ct_max),
        field("ct_num", r.ct_num), field("ct_alloc_max", r.ct_alloc_max), field("skb_zong", r.skb_zong),
        field("skb_data", r.skb_data), field("host_num", r.host_num), field("host_list_num", r.host_list_num),
        field("ddos_drop_pkt", r.ddos_drop_pkt), field("broadcast_pkt", r.broadcast_pkt);
  }
};
static_assert(sizeof(HostRunInfo) == 44);
static_assert(is_described<HostRunInfo>());

// The request for a host's connections; the answer is a list with places of its own.
struct HostKey {
  IpAddress ip;

  static constexpr void each_field(auto& r, auto&& field) { field("ip", r.ip); }
};
static_assert(sizeof(HostKey) == 20);
static_assert(is_described<HostKey>());

constexpr uint32_t kConnectionCountOffset = 20;
constexpr uint32_t kConnectionEntriesOffset = 44;

struct HostConnection {
  IpAddress far_ip;
  Port in_port;
  Unused<2> unused;
  Port far_port;
  Unused<2> unused2;
  uint16_t protocol;
  Unused<6> unused3;
  Unaligned<uint64_t> tm;
  Unused<24> unused4;
  uint32_t id;
  char name[36];
  uint32_t s_up;  // s, sz and z: bytes
  uint32_t s_down;
  Unused<8> unused5;
  uint32_t packets_up;
  uint32_t packets_down;
  uint32_t sz_up;
  uint32_t sz_down;
  Unused<8> unused6;
  uint32_t z_up;
  uint32_t z_down;
  Unused<148> unused7;

  static constexpr void each_field(auto& r, auto&& field) {
    field("far_ip", r.far_ip), field("in_port", r.in_port), field("", r.unused),
        field("far_port", r.far_port), field("", r.unused2), field("protocol", r.protocol),
        field("", r.unused3), field("tm", r.tm), field("", r.unused4), field("id", r.id),
        field("name", r.name), field("s_up", r.s_up), field("s_down", r.s_down), field("", r.unused5),
        field("packets_up", r.packets_up), field("packets_down", r.packets_down), field("sz_up", r.sz_up),
        field("sz_down", r.sz_down), field("", r.unused6), field("z_up", r.z_up), field("z_down", r.z_down),
        field("", r.unused7);
  }
};
static_assert(sizeof(HostConnection) == 304 && offsetof(HostConnection, in_port) == 20 &&
              offsetof(HostConnection, far_port) == 24 && offsetof(HostConnection, protocol) == 28 &&
              offsetof(HostConnection, tm) == 36 && offsetof(HostConnection, id) == 68 &&
              offsetof(HostConnection, name) == 72 && offsetof(HostConnection, s_up) == 108 &&
              offsetof(HostConnection, packets_up) == 124 && offsetof(HostConnection, sz_up) == 132 &&
              offsetof(HostConnection, z_up) == 148);
static_assert(is_described<HostConnection>());

struct HostAgeing {
  uint32_t minutes;

  static constexpr void each_field(auto& r, auto&& field) { field("minutes", r.minutes); }
};
static_assert(is_described<HostAgeing>());

struct ThirdEntry {
  uint64_t creat_tm;
  IpAddress ip;
  Mac mac;
  uint8_t clt_installed;
  uint8_t device_type;
  Unused<4> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("creat_tm", r.creat_tm), field("ip", r.ip), field("mac", r.mac),
        field("clt_installed", r.clt_installed), field("device_type", r.device_type), field("", r.unused);
  }
};
static_assert(sizeof(ThirdEntry) == 40 && offsetof(ThirdEntry, mac) == 28 &&
              offsetof(ThirdEntry, device_type) == 35);
static_assert(is_described<ThirdEntry>());

struct HostRedirect {
  uint32_t set;  // 1 to set, 0 to get
  IpAddress ip;
  uint32_t flag;

  static constexpr void each_field(auto& r, auto&& field) {
    field("set", r.set), field("ip", r.ip), field("flag", r.flag);
  }
};
static_assert(sizeof(HostRedirect) == 28 && offsetof(HostRedirect, flag) == 24);
static_assert(is_described<HostRedirect>());

// What a scan has found out about a host; sent in a record of 512 bytes.
struct HostMac {
  IpAddress ip;
  Mac mac;

  static constexpr void each_field(auto& r, auto&& field) { field("ip", r.ip), field("mac", r.mac); }
};
static_assert(sizeof(HostMac) == 26 && offsetof(HostMac, mac) == 20);
static_assert(is_described<HostMac>());

// A limit that a host has until it is gone.
struct HostTmpLimit {
  IpAddress ip;
  uint32_t sx;
  uint32_t xx;

  static constexpr void each_field(auto& r, auto&& field) {
    field("ip", r.ip), field("sx", r.sx), field("xx", r.xx);
  }
};
static_assert(sizeof(HostTmpLimit) == 28 && offsetof(HostTmpLimit, sx) == 20);
static_assert(is_described<HostTmpLimit>());

// Whether the lists of hosts' connections are on display.
struct HostConnectionShow {
  uint32_t en;

  static constexpr void each_field(auto& r, auto&& field) { field("en", r.en); }
};
static_assert(is_described<HostConnectionShow>());

// How well a wireless client is heard.
struct ClientSignal {
  Mac mac;
  int8_t rssi;  // dBm
  Unused<9> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("mac", r.mac), field("rssi", r.rssi), field("", r.unused);
  }
};
static_assert(sizeof(ClientSignal) == 16 && offsetof(ClientSignal, rssi) == 6);
static_assert(is_described<ClientSignal>());
