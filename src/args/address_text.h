// Addresses as texts to print: print("%s", ip_text(ip).chars).
#pragma once

#include <cstdint>

#include "platform/address.h"

struct AddressText {
  char chars[64] = {};
};

// An IPv4 address in network byte order.
inline AddressText ip_text(uint32_t ip) {
  AddressText text;
  IpToStr(text.chars, ip);
  return text;
}

inline AddressText ip6_text(const uint8_t (&ip)[16]) {
  AddressText text;
  Ip6ToStr(text.chars, ip);
  return text;
}

// A combined address value.
inline AddressText ipaddr_text(const uint8_t (&ip)[20]) {
  AddressText text;
  IpaddrToStr(text.chars, ip);
  return text;
}

inline AddressText mac_text(const uint8_t (&mac)[6]) {
  AddressText text;
  MacToStr(text.chars, mac);
  return text;
}
