// Payloads of the PPP fast path (module 45): the real device that a PPP session's packets leave by.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

enum PppFastCommand : uint32_t { kPppFastSet = 1, kPppFastGet = 2 };

// The headers of a session's packets (RFC 2516).
struct PppSessionHeader {
  Mac dst;
  Mac src;
  Net16 ether_type;
  uint8_t ver_type;
  uint8_t code;
  Net16 session_id;
  Net16 length;
  Net16 protocol;  // of PPP

  static constexpr void each_field(auto& r, auto&& field) {
    field("dst", r.dst), field("src", r.src), field("ether_type", r.ether_type),
        field("ver_type", r.ver_type), field("code", r.code), field("header_session_id", r.session_id),
        field("length", r.length), field("protocol", r.protocol);
  }
};
static_assert(sizeof(PppSessionHeader) == 22 && offsetof(PppSessionHeader, ether_type) == 12);
static_assert(is_described<PppSessionHeader>());

struct PppFastBinding {
  char real_dev[16];
  char ppp_dev[16];
  uint32_t en;
  uint16_t session_id;
  Unused<2> unused;
  PppSessionHeader header;  // this and the next: only in an answer
  uint8_t int_flag;
  Unused<1> unused2;

  static constexpr void each_field(auto& r, auto&& field) {
    field("real_dev", r.real_dev), field("ppp_dev", r.ppp_dev), field("en", r.en),
        field("session_id", r.session_id), field("", r.unused), field("header", r.header),
        field("int", r.int_flag), field("", r.unused2);
  }
};
static_assert(sizeof(PppFastBinding) == 64 && offsetof(PppFastBinding, session_id) == 36 &&
              offsetof(PppFastBinding, header) == 40 && offsetof(PppFastBinding, int_flag) == 62);
static_assert(is_described<PppFastBinding>());
