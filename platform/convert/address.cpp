// IPv4, IPv6 and MAC addresses between text and bytes. The texts are made by hand: a host list prints tens of
// thousands of them.
#include "platform/address.h"

#include <algorithm>
#include <array>
#include <bit>

#include "text.h"

namespace {

using convert::after;
using convert::digit_value;
using convert::view;

constexpr uint32_t to_network(uint32_t host) {
  return std::endian::native == std::endian::big ? host : __builtin_bswap32(host);
}

constexpr char kHexDigits[] = "0123456789abcdef";

// Each byte in decimal with the dot behind it, so that an address is four copies of one word each.
constexpr auto kDottedBytes = [] {
  std::array<std::array<char, 4>, 256> table{};
  for (unsigned value = 0; value < 256; ++value) {
    char* out = table[value].data();
    if (value >= 100) *out++ = static_cast<char>('0' + value / 100);
    if (value >= 10) *out++ = static_cast<char>('0' + value / 10 % 10);
    *out++ = static_cast<char>('0' + value % 10);
    *out = '.';
  }
  return table;
}();

// "255.255.255.255" and the NUL are the 16 bytes that the copies reach at most.
char* write_ip4(char* out, const unsigned char* bytes) {
  for (int i = 0; i < 4; ++i) {
    std::memcpy(out, kDottedBytes[bytes[i]].data(), 4);
    out += 2 + (bytes[i] >= 10) + (bytes[i] >= 100);
  }
  *--out = '\0';
  return out;
}

char* write_hex_group(char* out, unsigned group) {
  if (group >= 0x1000) *out++ = kHexDigits[group >> 12];
  if (group >= 0x100) *out++ = kHexDigits[group >> 8 & 15];
  if (group >= 0x10) *out++ = kHexDigits[group >> 4 & 15];
  *out++ = kHexDigits[group & 15];
  return out;
}

// A run of groups of an IPv6 address that are zero.
struct ZeroRun {
  int start = 8;
  int length = 1;  // a single zero group is not shortened
  int end() const { return start + length; }
};

ZeroRun longest_zero_run(const std::array<unsigned, 8>& groups) {
  ZeroRun longest;
  for (int i = 0; i < 8; ++i) {
    int end = i;
    while (end < 8 && groups[static_cast<size_t>(end)] == 0) ++end;
    if (end - i > longest.length) longest = {i, end - i};
    i = end;
  }
  return longest;
}

void write_ip6(char* out, const Ip6& address) {
  static constexpr uint8_t kMapped[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
  if (std::memcmp(address.bytes, kMapped, sizeof kMapped) == 0) {
    std::memcpy(out, "::ffff:", 7);
    write_ip4(out + 7, address.bytes + 12);
    return;
  }
  std::array<unsigned, 8> groups;
  for (size_t i = 0; i < 8; ++i)
    groups[i] = static_cast<unsigned>(address.bytes[2 * i] << 8 | address.bytes[2 * i + 1]);
  const ZeroRun zeros = longest_zero_run(groups);
  for (int i = 0; i < 8;) {
    if (i == zeros.start) {
      *out++ = ':';
      *out++ = ':';
      i = zeros.end();
      continue;
    }
    if (i != 0 && i != zeros.end()) *out++ = ':';
    out = write_hex_group(out, groups[static_cast<size_t>(i++)]);
  }
  *out = '\0';
}

// An address in the middle of a text must not be a part of a name or of a longer dotted number.
constexpr bool is_letter(char c) { return ((c | 0x20) >= 'a' && (c | 0x20) <= 'z') || c == '_'; }
constexpr bool is_word(char c) { return is_letter(c) || digit_value(c) < 10; }

bool stands_alone(std::string_view rest) {
  if (rest.empty()) return true;
  const char next = rest.size() > 1 ? rest[1] : '\0';
  if (rest[0] == '.') return !is_word(next) && next != '.';
  if (rest[0] == '-') return !is_letter(next);
  return !is_word(rest[0]);
}

bool parse_mac(std::string_view text, uint8_t* mac) {
  const size_t stride = text.size() == 12 ? 2 : 3;
  if (text.size() != 6 * stride - (stride - 2)) return false;
  if (stride == 3 && text[2] != ':' && text[2] != '-') return false;
  for (size_t i = 0; i < 6; ++i) {
    const unsigned high = digit_value(text[i * stride]);
    const unsigned low = digit_value(text[i * stride + 1]);
    if (high > 15 || low > 15) return false;
    if (stride == 3 && i < 5 && text[i * 3 + 2] != text[2]) return false;
    mac[i] = static_cast<uint8_t>(high << 4 | low);
  }
  return true;
}

}  // namespace

namespace convert {

bool parse_ip4(std::string_view text, uint32_t& address) {
  address = 0;
  for (int part = 0; part < 4; ++part) {
    if (part > 0 && !take_prefix(text, ".")) return false;
    unsigned value = 0;
    size_t digits = 0;
    for (; digits < text.size() && digits < 3 && digit_value(text[digits]) < 10; ++digits) {
      value = value * 10 + digit_value(text[digits]);
    }
    if (digits == 0 || value > 255) return false;
    address = address << 8 | value;
    text.remove_prefix(digits);
  }
  return text.empty();
}

bool parse_ip6(std::string_view text, Ip6& address) {
  constexpr size_t kNoGap = 17;
  address = {};
  uint8_t* const bytes = address.bytes;
  size_t used = 0;      // bytes read so far
  size_t gap = kNoGap;  // where "::" stands
  if (take_prefix(text, "::")) gap = 0;
  while (!text.empty()) {
    unsigned group = 0;
    size_t digits = 0;
    for (; digits < text.size() && digits < 4 && digit_value(text[digits]) < 16; ++digits) {
      group = group << 4 | digit_value(text[digits]);
    }
    if (digits < text.size() && text[digits] == '.') {  // the last 32 bits as an IPv4 address
      uint32_t tail;
      if (used > 12 || !parse_ip4(text, tail)) return false;
      for (int shift = 24; shift >= 0; shift -= 8) bytes[used++] = static_cast<uint8_t>(tail >> shift);
      break;
    }
    if (digits == 0 || used == 16) return false;
    bytes[used++] = static_cast<uint8_t>(group >> 8);
    bytes[used++] = static_cast<uint8_t>(group);
    text.remove_prefix(digits);
    if (text.empty()) break;
    if (text == ":" || text[0] != ':') return false;
    text.remove_prefix(1);
    if (take_prefix(text, ":")) {
      if (gap != kNoGap) return false;
      gap = used;
    }
  }
  if (gap == kNoGap) return used == 16;
  if (used > 14) return false;
  std::move_backward(bytes + gap, bytes + used, bytes + 16);
  std::fill(bytes + gap, bytes + 16 - (used - gap), uint8_t{0});
  return true;
}

}  // namespace convert

uint32_t StrToIp(const char* text) {
  uint32_t address;
  return convert::parse_ip4(view(text), address) ? to_network(address) : 0;
}

char* IpToStr(char* buffer, uint32_t address) {
  unsigned char bytes[4];
  std::memcpy(bytes, &address, 4);
  if (buffer != nullptr) write_ip4(buffer, bytes);
  return buffer;
}

uint32_t get_ip_from_str(const char* text) {
  std::string_view rest = view(text);
  if (const size_t scheme = rest.find("://"); scheme != std::string_view::npos)
    rest = after(rest, scheme + 3);
  rest = convert::first_of(rest, std::min(rest.find_first_of("/?#"), rest.size()));
  for (bool inside = false; !rest.empty(); rest.remove_prefix(1)) {
    if (!inside && digit_value(rest[0]) < 10) {
      const size_t length = std::min(rest.find_first_not_of("0123456789."), rest.size());
      std::string_view quad = convert::first_of(rest, length);
      if (quad.back() == '.') quad.remove_suffix(1);
      uint32_t address;
      if (convert::parse_ip4(quad, address) && stands_alone(after(rest, quad.size())))
        return to_network(address);
    }
    inside = is_word(rest[0]) || rest[0] == '.';
  }
  return 0;
}

uint32_t get_ip_from_mask_wei(uint32_t, uint32_t bits) {
  return bits == 0 ? 0 : to_network(UINT32_MAX << (32 - std::min(bits, 32U)));
}

int StrToIp6(const char* text, void* address) {
  Ip6 parsed;
  const bool good = convert::parse_ip6(view(text), parsed);
  if (!good) parsed = {};
  std::memcpy(address, &parsed, sizeof parsed);
  return good;
}

int StrToIPv6(const char* text, void* address) { return StrToIp6(text, address); }

char* Ip6ToStr(char* buffer, const void* address) {
  Ip6 value{};
  if (address != nullptr) std::memcpy(&value, address, sizeof value);
  if (buffer != nullptr) write_ip6(buffer, value);
  return buffer;
}

int StrToIpaddr(const char* text, void* value) {
  IpAddress parsed{};
  uint32_t ip4;
  Ip6 ip6;
  if (convert::parse_ip4(view(text), ip4)) {
    parsed.family = 4;
    ip4 = to_network(ip4);
    std::memcpy(parsed.bytes, &ip4, sizeof ip4);
  } else if (convert::parse_ip6(view(text), ip6)) {
    parsed.family = 6;
    std::memcpy(parsed.bytes, &ip6, sizeof ip6);
  }
  std::memcpy(value, &parsed, sizeof parsed);
  return parsed.family.value() != 0;
}

char* IpaddrToStr(char* buffer, const void* value) {
  IpAddress address{};
  if (value != nullptr) std::memcpy(&address, value, sizeof address);
  if (address.family.value() == 6) return Ip6ToStr(buffer, address.bytes);
  uint32_t ip4 = 0;
  if (address.family.value() == 4) std::memcpy(&ip4, address.bytes, sizeof ip4);
  return IpToStr(buffer, ip4);
}

int StrToMac(const char* text, void* mac) {
  uint8_t bytes[6] = {};
  const bool good = parse_mac(view(text), bytes);
  if (!good) std::memset(bytes, 0, 6);
  std::memcpy(mac, bytes, 6);
  return good ? 0 : 1;
}

void str2mac_nocheck(const char* text, void* mac) {
  uint8_t bytes[6] = {};
  std::string_view rest = view(text);
  for (size_t i = 0; i < 6 && !rest.empty(); rest.remove_prefix(1)) {
    const unsigned high = digit_value(rest[0]);
    if (high > 15) continue;
    bytes[i] = static_cast<uint8_t>(high);
    if (const unsigned low = rest.size() > 1 ? digit_value(rest[1]) : 16; low < 16) {
      bytes[i] = static_cast<uint8_t>(high << 4 | low);
      rest.remove_prefix(1);
    }
    ++i;
  }
  std::memcpy(mac, bytes, 6);
}

char* MacToStr(char* buffer, const void* mac) {
  uint8_t bytes[6] = {};
  if (mac != nullptr) std::memcpy(bytes, mac, 6);
  if (buffer == nullptr) return nullptr;
  char* out = buffer;
  for (const uint8_t byte : bytes) {
    *out++ = kHexDigits[byte >> 4];
    *out++ = kHexDigits[byte & 15];
    *out++ = ':';
  }
  out[-1] = '\0';
  return buffer;
}

void mac_add(void* mac, uint32_t step, int bytes) {
  auto* out = static_cast<uint8_t*>(mac);
  uint64_t carry = step;
  for (int i = 5; i >= std::max(6 - bytes, 0); --i) {
    carry += out[i];
    out[i] = static_cast<uint8_t>(carry);
    carry >>= 8;
  }
}
