// Payloads of the host table (module 13). Addresses of hosts are combined address values
// (platform/address.h), single IPv4 addresses are in network byte order. A text ends at its NUL or where its
// field does.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "records/order.h"

enum HostCommand : uint32_t {
  kHostList = 1,
  kHostRunInfo = 8,
  kHostConnections = 19,
  kHostSetAgeing = 24,
  kHostSetAgeing3 = 29,
  kHostThirdList = 40,
  kHostRedirect = 51,
  kHostWsList = 62,
  kHostSetMac = 63,
  kHostSnmpScan = 64,
  kHostAiList = 72,
};

// Lists of hosts: a u32 count and the entries, where most lists stand. A scan is answered as a list, too.
struct HostEntry {
  uint64_t flag;  // bits 0 to 31 are told apart
  uint64_t creat_tm;
  uint64_t last_tm;
  uint64_t del_tm;
  uint8_t unused[8];
  uint64_t sp_up;  // bytes per second
  uint64_t sp_down;
  uint8_t ip[20];
  uint32_t arp_ip;
  uint32_t local_ip;
  int32_t speed_limit_up;
  int32_t speed_limit_down;
  int32_t tmp_speed_limit_up;
  int32_t tmp_speed_limit_down;
  uint8_t local_mac[6];
  uint8_t real_mac[6];
  uint8_t block;
  uint8_t no_snmp;  // the kernel's mark on a host that a scan leaves out: nobody is to be asked for its MAC
  uint8_t portal;
  uint8_t user_login_type;
  uint8_t auto_jb;
  uint8_t typeid_;
  uint8_t unused2;
  uint8_t apidx;
  uint8_t is_5g;
  uint8_t unused3;
  uint16_t typeid_user;
  uint16_t mr_id;
  uint16_t vlanid;
  uint8_t unused4[280];
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
  uint8_t unused5[71];
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

// An entry of the extended list. The four fields behind the common part have no layout from elsewhere: this
// one is the contract between the tool and whoever answers.
struct HostAiEntry {
  HostEntry host;
  char in_devname[48];   // at 1144: the device that the host's packets come in by
  uint32_t vek_out_id;   // at 1192: number of its line
  char ssid[36];         // at 1196: its wireless network
  uint32_t ssid_out_id;  // at 1232: number of that network's line
  uint8_t unused[4];
};
static_assert(sizeof(HostAiEntry) == 1240 && offsetof(HostAiEntry, in_devname) == 1144 &&
              offsetof(HostAiEntry, vek_out_id) == 1192 && offsetof(HostAiEntry, ssid) == 1196 &&
              offsetof(HostAiEntry, ssid_out_id) == 1232);

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
};
static_assert(sizeof(HostRunInfo) == 44);

// The request for a host's connections; the answer is a list with places of its own.
struct HostKey {
  uint8_t ip[20];
};
static_assert(sizeof(HostKey) == 20);

constexpr uint32_t kConnectionCountOffset = 20;
constexpr uint32_t kConnectionEntriesOffset = 44;

struct HostConnection {
  uint8_t far_ip[20];
  uint16_t in_port;  // network byte order
  uint8_t unused[2];
  uint16_t far_port;  // network byte order
  uint8_t unused2[2];
  uint16_t protocol;
  uint8_t unused3[6];
  std::array<uint32_t, 2> tm;  // a u64 where none is aligned
  uint8_t unused4[24];
  uint32_t id;
  char name[36];
  uint32_t s_up;  // s, sz and z: bytes
  uint32_t s_down;
  uint8_t unused5[8];
  uint32_t packets_up;
  uint32_t packets_down;
  uint32_t sz_up;
  uint32_t sz_down;
  uint8_t unused6[8];
  uint32_t z_up;
  uint32_t z_down;
  uint8_t unused7[148];
};
static_assert(sizeof(HostConnection) == 304 && offsetof(HostConnection, in_port) == 20 &&
              offsetof(HostConnection, far_port) == 24 && offsetof(HostConnection, protocol) == 28 &&
              offsetof(HostConnection, tm) == 36 && offsetof(HostConnection, id) == 68 &&
              offsetof(HostConnection, name) == 72 && offsetof(HostConnection, s_up) == 108 &&
              offsetof(HostConnection, packets_up) == 124 && offsetof(HostConnection, sz_up) == 132 &&
              offsetof(HostConnection, z_up) == 148);

struct HostAgeing {
  uint32_t minutes;
};

struct ThirdEntry {
  uint64_t creat_tm;
  uint8_t ip[20];
  uint8_t mac[6];
  uint8_t clt_installed;
  uint8_t device_type;
  uint8_t unused[4];
};
static_assert(sizeof(ThirdEntry) == 40 && offsetof(ThirdEntry, mac) == 28 &&
              offsetof(ThirdEntry, device_type) == 35);

struct HostRedirect {
  uint32_t set;  // 1 to set, 0 to get
  uint8_t ip[20];
  uint32_t flag;
};
static_assert(sizeof(HostRedirect) == 28 && offsetof(HostRedirect, flag) == 24);

// What a scan has found out about a host.
struct HostMac {
  uint8_t ip[20];
  uint8_t mac[6];
};
static_assert(sizeof(HostMac) == 26 && offsetof(HostMac, mac) == 20);

// It is sent in a record of its own.
struct HostMacRecord {
  OrderRecord header;
  HostMac found;
  uint8_t unused[470];
};
static_assert(sizeof(HostMacRecord) == 512);
