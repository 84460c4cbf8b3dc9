// Payloads of the behaviour audit (module 69): settings, the records of what was seen, and the notice of its
// listener.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"
#include "records/list.h"

enum AuditCommand : uint32_t {
  kAuditSet = 1,
  kAuditGet = 2,
  kAuditPoolShow = 3,
  kAuditInfo = 4,
  kAuditPostSet = 5,
  kAuditPostGet = 6,
  kAuditCollectorSet = 7,
  kAuditCollectorGet = 8,
  kAuditPostInfo = 9,
  kAuditHttpGetInfo = 10,
  kAuditCtInfo = 11,
  kAuditZhanghao = 12,
  kAuditMailGet = 13,
  kAuditMemory = 14,
  kAuditDebug = 15,
  kAuditHostsSet = 16,
  kAuditHostsGet = 17,
  kAuditDefault = 18,
};

// ---- Settings ----

// How many records of each kind are kept.
struct AuditSettings {
  uint8_t en;
  uint8_t info_en;
  uint16_t ct_num;
  uint16_t url_num;
  uint16_t qq_num;
  uint16_t bbs_num;
  uint16_t mail_num;
  uint16_t dns_num;
  Unused<2> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("en", r.en), field("info_en", r.info_en), field("ct_num", r.ct_num), field("url_num", r.url_num),
        field("qq_num", r.qq_num), field("bbs_num", r.bbs_num), field("mail_num", r.mail_num),
        field("dns_num", r.dns_num), field("", r.unused);
  }
};
static_assert(sizeof(AuditSettings) == 16 && offsetof(AuditSettings, ct_num) == 2 &&
              offsetof(AuditSettings, dns_num) == 12);
static_assert(is_described<AuditSettings>());

struct AuditPostSettings {
  uint8_t en;
  Unused<1> unused;
  uint16_t post_maxnum;
  uint32_t post_maxlen;  // bytes of a body

  static constexpr void each_field(auto& r, auto&& field) {
    field("en", r.en), field("", r.unused), field("post_maxnum", r.post_maxnum),
        field("post_maxlen", r.post_maxlen);
  }
};
static_assert(sizeof(AuditPostSettings) == 8 && offsetof(AuditPostSettings, post_maxlen) == 4);
static_assert(is_described<AuditPostSettings>());

struct AuditCollectorSettings {
  uint8_t en;
  Unused<1> unused;
  uint16_t ct_num;
  uint16_t qq_num;
  uint16_t mail_num;
  uint16_t httpget_num;
  uint16_t post_num;
  Unused<4> unused2;
  uint32_t post_len;

  static constexpr void each_field(auto& r, auto&& field) {
    field("en", r.en), field("", r.unused), field("ct_num", r.ct_num), field("qq_num", r.qq_num),
        field("mail_num", r.mail_num), field("httpget_num", r.httpget_num), field("post_num", r.post_num),
        field("", r.unused2), field("post_len", r.post_len);
  }
};
static_assert(sizeof(AuditCollectorSettings) == 20 && offsetof(AuditCollectorSettings, ct_num) == 2 &&
              offsetof(AuditCollectorSettings, post_len) == 16);
static_assert(is_described<AuditCollectorSettings>());

// The hosts that are audited.
struct AuditHostList {
  uint8_t type;
  Unused<3> unused;
  AddrRangeList list;  // user groups count as v4

  static constexpr void each_field(auto& r, auto&& field) {
    field("type", r.type), field("", r.unused), field("list", r.list);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    each_host_list(r.type, r.list.v4_count, r.list.v6_count, list);
  }
};
static_assert(sizeof(AuditHostList) == 12 && offsetof(AuditHostList, list) == 4);
static_assert(is_described<AuditHostList>());

// What becomes of hosts that the list does not name.
struct AuditDefault {
  uint32_t is_set;
  uint32_t act;

  static constexpr void each_field(auto& r, auto&& field) { field("set", r.is_set), field("act", r.act); }
};
static_assert(sizeof(AuditDefault) == 8 && offsetof(AuditDefault, act) == 4);
static_assert(is_described<AuditDefault>());

// ---- The stream of records ----

// Begins every answer that holds records; these follow at once.
struct AuditListHead {
  uint32_t datalen;  // of the records and this
  uint32_t tol_num;

  static constexpr void each_field(auto& r, auto&& field) {
    field("datalen", r.datalen), field("tol_num", r.tol_num);
  }
};
static_assert(sizeof(AuditListHead) == 8 && offsetof(AuditListHead, tol_num) == 4);
static_assert(is_described<AuditListHead>());

enum AuditSectionType : uint16_t {
  kSectionUrl = 1,
  kSectionQq = 2,
  kSectionBbs = 3,
  kSectionMail = 4,
  kSectionCt = 5,
  kSectionOther = 6,
  kSectionQuillCt = 7,  // 256 bytes each
  kSectionQuillQq = 8,  // nothing but its header
  kSectionDns = 9,
};

// The stream consists of sections, each with its records behind it.
struct AuditSection {
  uint16_t type;
  uint16_t num;
  Unused<4> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("type", r.type), field("num", r.num), field("", r.unused);
  }
};
static_assert(sizeof(AuditSection) == 8 && offsetof(AuditSection, num) == 2);
static_assert(is_described<AuditSection>());

// Who was seen doing what, and when.
struct AuditHead {
  Mac mac;
  Unused<2> unused;
  uint64_t tm;
  NetworkId shibie_id;
  IpAddress ip;

  static constexpr void each_field(auto& r, auto&& field) {
    field("mac", r.mac), field("", r.unused), field("tm", r.tm), field("shibie_id", r.shibie_id),
        field("ip", r.ip);
  }
};
static_assert(sizeof(AuditHead) == 40 && offsetof(AuditHead, tm) == 8 &&
              offsetof(AuditHead, shibie_id) == 16 && offsetof(AuditHead, ip) == 20);
static_assert(is_described<AuditHead>());

// The texts of a record follow it back to back; the length of each stands in a field of the text's name with
// "_length" behind it.
struct AuditUrl {
  AuditHead head;
  Unused<40> unused;
  Port inport;
  Port fport;
  Unused<2> unused2;
  uint16_t strings_length;
  uint16_t url_length;
  uint16_t user_agent_length;
  uint16_t keyword_length;
  uint16_t title_length;
  uint16_t content_type_length;
  uint16_t post_data_length;
  uint16_t refer_length;
  Unused<2> unused3;

  static constexpr void each_field(auto& r, auto&& field) {
    field("head", r.head), field("", r.unused), field("inport", r.inport), field("fport", r.fport),
        field("", r.unused2), field("strings_length", r.strings_length), field("url_length", r.url_length),
        field("user_agent_length", r.user_agent_length), field("keyword_length", r.keyword_length),
        field("title_length", r.title_length), field("content_type_length", r.content_type_length),
        field("post_data_length", r.post_data_length), field("refer_length", r.refer_length),
        field("", r.unused3);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("url", ListOf<char>{r.url_length}), list("user_agent", ListOf<char>{r.user_agent_length}),
        list("keyword", ListOf<char>{r.keyword_length}), list("title", ListOf<char>{r.title_length}),
        list("content_type", ListOf<char>{r.content_type_length}),
        list("post_data", ListOf<char>{r.post_data_length}), list("refer", ListOf<char>{r.refer_length});
  }
};
static_assert(sizeof(AuditUrl) == 104 && offsetof(AuditUrl, inport) == 80 &&
              offsetof(AuditUrl, strings_length) == 86 && offsetof(AuditUrl, refer_length) == 100);
static_assert(is_described<AuditUrl>());

// The head of the others, with the length in a byte that is nobody's there.
struct AuditQq {
  Mac mac;
  Unused<1> unused;
  uint8_t qq_length;
  uint64_t tm;
  NetworkId shibie_id;
  IpAddress ip;

  static constexpr void each_field(auto& r, auto&& field) {
    field("mac", r.mac), field("", r.unused), field("qq_length", r.qq_length), field("tm", r.tm),
        field("shibie_id", r.shibie_id), field("ip", r.ip);
  }
  static constexpr void each_list(auto& r, auto&& list) { list("qq", ListOf<char>{r.qq_length}); }
};
static_assert(sizeof(AuditQq) == 40 && offsetof(AuditQq, qq_length) == 7 && offsetof(AuditQq, tm) == 8 &&
              offsetof(AuditQq, ip) == 20);
static_assert(is_described<AuditQq>());

struct AuditBbs {
  AuditHead head;
  Unused<46> unused;
  uint16_t strings_length;
  uint16_t url_length;
  uint16_t account_length;
  uint16_t content_length;
  Unused<2> unused2;

  static constexpr void each_field(auto& r, auto&& field) {
    field("head", r.head), field("", r.unused), field("strings_length", r.strings_length),
        field("url_length", r.url_length), field("account_length", r.account_length),
        field("content_length", r.content_length), field("", r.unused2);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("url", ListOf<char>{r.url_length}), list("account", ListOf<char>{r.account_length}),
        list("content", ListOf<char>{r.content_length});
  }
};
static_assert(sizeof(AuditBbs) == 96 && offsetof(AuditBbs, strings_length) == 86 &&
              offsetof(AuditBbs, content_length) == 92);
static_assert(is_described<AuditBbs>());

struct AuditMail {
  AuditHead head;
  Unused<46> unused;
  uint16_t strings_length;
  uint16_t from_length;
  uint16_t to_length;
  uint16_t title_length;
  Unused<2> unused2;

  static constexpr void each_field(auto& r, auto&& field) {
    field("head", r.head), field("", r.unused), field("strings_length", r.strings_length),
        field("from_length", r.from_length), field("to_length", r.to_length),
        field("title_length", r.title_length), field("", r.unused2);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("from", ListOf<char>{r.from_length}), list("to", ListOf<char>{r.to_length}),
        list("title", ListOf<char>{r.title_length});
  }
};
static_assert(sizeof(AuditMail) == 96 && offsetof(AuditMail, strings_length) == 86 &&
              offsetof(AuditMail, title_length) == 92);
static_assert(is_described<AuditMail>());

struct AuditCt {
  AuditHead head;
  IpAddress f_ip;
  Unused<20> unused;
  Port in_port;
  Port f_port;
  Unused<2> unused2;
  uint16_t extra_length;

  static constexpr void each_field(auto& r, auto&& field) {
    field("head", r.head), field("f_ip", r.f_ip), field("", r.unused), field("in_port", r.in_port),
        field("f_port", r.f_port), field("", r.unused2), field("extra_length", r.extra_length);
  }
  static constexpr void each_list(auto& r, auto&& list) { list("extra", ListOf<char>{r.extra_length}); }
};
static_assert(sizeof(AuditCt) == 88 && offsetof(AuditCt, f_ip) == 40 && offsetof(AuditCt, in_port) == 80 &&
              offsetof(AuditCt, extra_length) == 86);
static_assert(is_described<AuditCt>());

struct AuditOther {
  AuditHead head;
  Unused<46> unused;
  uint16_t strings_length;
  uint16_t account_length;
  uint16_t password_length;
  Unused<4> unused2;

  static constexpr void each_field(auto& r, auto&& field) {
    field("head", r.head), field("", r.unused), field("strings_length", r.strings_length),
        field("account_length", r.account_length), field("password_length", r.password_length),
        field("", r.unused2);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("account", ListOf<char>{r.account_length}), list("password", ListOf<char>{r.password_length});
  }
};
static_assert(sizeof(AuditOther) == 96 && offsetof(AuditOther, strings_length) == 86 &&
              offsetof(AuditOther, password_length) == 90);
static_assert(is_described<AuditOther>());

// A look-up, without a time.
struct AuditDns {
  Unused<20> unused;
  IpAddress nat_ip;
  Unused<20> unused2;
  IpAddress dns_ip;
  Unused<48> unused3;
  Mac mac;
  Unused<10> unused4;
  char dns_name[64];

  static constexpr void each_field(auto& r, auto&& field) {
    field("", r.unused), field("nat_ip", r.nat_ip), field("", r.unused2), field("dns_ip", r.dns_ip),
        field("", r.unused3), field("mac", r.mac), field("", r.unused4), field("dns_name", r.dns_name);
  }
};
static_assert(sizeof(AuditDns) == 208 && offsetof(AuditDns, nat_ip) == 20 &&
              offsetof(AuditDns, dns_ip) == 60 && offsetof(AuditDns, mac) == 128 &&
              offsetof(AuditDns, dns_name) == 144);
static_assert(is_described<AuditDns>());

// ---- The lists of the collectors ----

// What a collector has kept of a POST request. The ports and the lengths but for the last have no layout from
// elsewhere, and neither have the records of GET requests, accounts and connections: this one is the contract
// between the tool and whoever answers.
struct AuditCollected {
  uint32_t tm;
  NetworkId shibie_id;
  IpAddress ip;
  uint32_t all_len;   // at 28: of the whole request and its response
  uint32_t head_len;  // at 32: of the request's head
  uint32_t res_len;   // at 36: of the response
  Unused<34> unused;
  Mac mac;
  Port in_port;  // at 80
  Port f_port;   // at 82
  uint32_t data_length;

  static constexpr void each_field(auto& r, auto&& field) {
    field("tm", r.tm), field("shibie_id", r.shibie_id), field("ip", r.ip), field("all_len", r.all_len),
        field("head_len", r.head_len), field("res_len", r.res_len), field("", r.unused), field("mac", r.mac),
        field("in_port", r.in_port), field("f_port", r.f_port), field("data_length", r.data_length);
  }
  static constexpr void each_list(auto& r, auto&& list) { list("data", ListOf<char>{r.data_length}); }
};
static_assert(sizeof(AuditCollected) == 88 && offsetof(AuditCollected, ip) == 8 &&
              offsetof(AuditCollected, all_len) == 28 && offsetof(AuditCollected, mac) == 74 &&
              offsetof(AuditCollected, in_port) == 80 && offsetof(AuditCollected, data_length) == 84);
static_assert(is_described<AuditCollected>());

// The head of a mail, in a contract of the same kind. Its time is wider than that of the others.
struct AuditCollectedMail {
  uint64_t tm;
  NetworkId shibie_id;
  IpAddress ip;
  Mac mac;
  Port in_port;
  Port f_port;
  uint16_t from_length;
  uint16_t to_length;
  uint16_t title_length;

  static constexpr void each_field(auto& r, auto&& field) {
    field("tm", r.tm), field("shibie_id", r.shibie_id), field("ip", r.ip), field("mac", r.mac),
        field("in_port", r.in_port), field("f_port", r.f_port), field("from_length", r.from_length),
        field("to_length", r.to_length), field("title_length", r.title_length);
  }
  static constexpr void each_list(auto& r, auto&& list) {
    list("from", ListOf<char>{r.from_length}), list("to", ListOf<char>{r.to_length}),
        list("title", ListOf<char>{r.title_length});
  }
};
static_assert(sizeof(AuditCollectedMail) == 48 && offsetof(AuditCollectedMail, ip) == 12 &&
              offsetof(AuditCollectedMail, mac) == 32 && offsetof(AuditCollectedMail, in_port) == 38 &&
              offsetof(AuditCollectedMail, title_length) == 46);
static_assert(is_described<AuditCollectedMail>());

// How many bytes follow a record: as many as it says its texts have together, or else as many as they have.
template <typename Record>
constexpr uint32_t bytes_behind(const Record& record) {
  uint32_t bytes = 0;
  if constexpr (requires { record.strings_length; }) {
    bytes = record.strings_length;
  } else if constexpr (HasLists<Record>) {
    Record::each_list(record, [&](const char*, ListOf<char> text) { bytes += text.count; });
  }
  return bytes;
}

// ---- Notices ----

struct AuditDebug {
  uint32_t num;
  Mac mac;  // of the first notice, as the address is
  Unused<2> unused;
  Ip4 ip;

  static constexpr void each_field(auto& r, auto&& field) {
    field("num", r.num), field("mac", r.mac), field("", r.unused), field("ip", r.ip);
  }
};
static_assert(sizeof(AuditDebug) == 16 && offsetof(AuditDebug, mac) == 4 && offsetof(AuditDebug, ip) == 12);
static_assert(is_described<AuditDebug>());

// A datagram that tells the audit listener of this machine who a host's user is.
struct AuditNotice {
  Mac mac;
  Unused<6> unused;
  Ip4 ip;
  Unused<12> unused2;
  char account[16];  // here a mobile number
  Unused<48> unused3;
  uint8_t state;  // kNoticeLogin
  uint8_t type;   // kNoticeMobile
  Unused<34> unused4;

  static constexpr void each_field(auto& r, auto&& field) {
    field("mac", r.mac), field("", r.unused), field("ip", r.ip), field("", r.unused2),
        field("account", r.account), field("", r.unused3), field("state", r.state), field("type", r.type),
        field("", r.unused4);
  }
};
static_assert(sizeof(AuditNotice) == 128 && offsetof(AuditNotice, ip) == 12 &&
              offsetof(AuditNotice, account) == 28 && offsetof(AuditNotice, state) == 92 &&
              offsetof(AuditNotice, type) == 93);
static_assert(is_described<AuditNotice>());
constexpr uint16_t kNoticePort = 5927;
constexpr uint8_t kNoticeLogin = 1;
constexpr uint8_t kNoticeMobile = 4;
