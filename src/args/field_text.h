// How the fields of records are shown: each function writes the text into the room and returns it. print
// calls them for "%s" of a field.
#pragma once

#include <arpa/inet.h>

#include "platform/address.h"
#include "records/field.h"

constexpr int kFieldRoom = 200;  // for any of them: 64 numbers of bits are 182 characters and a NUL

inline const char* text_of(const Ip4& ip, char* room) { return IpToStr(room, ip.value); }
inline const char* text_of(const HostIp4& ip, char* room) { return IpToStr(room, htonl(ip.value)); }
inline const char* text_of(const Ip6& ip, char* room) { return Ip6ToStr(room, &ip); }
inline const char* text_of(const IpAddress& ip, char* room) { return IpaddrToStr(room, &ip); }
inline const char* text_of(const Mac& mac, char* room) { return MacToStr(room, &mac); }

// The numbers of the bits that are set, each with a '|' behind it.
template <typename Word, int kCount>
const char* text_of(const Bits<Word, kCount>& bits, char* room) {
  char* out = room;
  for (int bit = 0; bit < kCount; ++bit) {
    if ((bits.value >> bit & 1) == 0) continue;
    if (bit >= 10) *out++ = static_cast<char>('0' + bit / 10);
    *out++ = static_cast<char>('0' + bit % 10);
    *out++ = '|';
  }
  *out = '\0';
  return room;
}

template <typename T>
concept ShownField = requires(const T& field, char* room) {
  text_of(field, room);  // one of the above
};
