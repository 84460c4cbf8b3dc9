// The fields that records are made of, and what proves that a record's description forgets none of them.
//
// Whole numbers and char[N] texts are themselves; everything else has a type of its own that says what the
// bytes are. A text ends at its NUL or where its field does. All types are plain bytes: a record of them is
// copied, sent and compared as it lies.
#pragma once

#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

// An IPv4 address in network byte order.
struct Ip4 {
  uint32_t value;
  bool operator==(const Ip4&) const = default;
};

// An IPv4 address in host byte order, as the ends of a range are, so that they compare as numbers.
struct HostIp4 {
  uint32_t value;
  bool operator==(const HostIp4&) const = default;
};

// An IPv6 address in network byte order.
struct Ip6 {
  uint8_t bytes[16];
  bool operator==(const Ip6&) const = default;
};

// A MAC address in wire order.
struct Mac {
  uint8_t bytes[6];
  bool operator==(const Mac&) const = default;
};

// A number in network byte order: a port, or what a packet's header has.
struct Net16 {
  uint16_t value;
  bool operator==(const Net16&) const = default;
};
using Port = Net16;

// An identification number in network byte order.
struct NetworkId {
  uint32_t value;
  bool operator==(const NetworkId&) const = default;
};

// A word of bits of which those below kCount are told apart.
template <typename Word, int kCount>
struct Bits {
  Word value;
};

// A number where the layout leaves none of its width aligned.
template <typename Number>
struct Unaligned {
  uint8_t bytes[sizeof(Number)];
  Unaligned() = default;
  constexpr Unaligned(Number number) : Unaligned(std::bit_cast<Unaligned>(number)) {}
  auto operator<=>(const Unaligned&) const = default;
  Number value() const {
    Number number;
    memcpy(&number, bytes, sizeof number);
    return number;
  }
};

// A combined address value: the family is 4 or 6, or 0 for no address; an IPv4 address is the first four of
// the bytes. Both are in network byte order.
struct IpAddress {
  Unaligned<uint32_t> family;
  uint8_t bytes[16];
  auto operator<=>(const IpAddress&) const = default;
};

inline IpAddress ip_address(const Ip4& ip) {
  IpAddress address = {4, {}};
  memcpy(address.bytes, &ip, sizeof ip);
  return address;
}

// 0.0.0.0 when the address is of another family.
inline Ip4 ip4(const IpAddress& address) {
  Ip4 ip = {};
  if (address.family.value() == 4) memcpy(&ip, address.bytes, sizeof ip);
  return ip;
}

// Bytes that nobody writes and nobody reads.
template <size_t kSize>
struct Unused {
  uint8_t bytes[kSize];
};

template <typename T>
inline constexpr bool is_unused = false;
template <size_t kSize>
inline constexpr bool is_unused<Unused<kSize>> = true;

// A record describes itself by a member
//   static constexpr void each_field(auto& record, auto&& field)
// that calls field(name, member) for each of its members in their order. Names are unique in a record, those
// of unused bytes are empty; a member may be an array, or a record of its own.
template <typename T>
concept Described = requires(T& record) {
  T::each_field(record, [](const char*, auto&) {});  // name and member
};

// Whether the description names every member once, and the record has no byte beside them.
template <Described T>
consteval bool is_described() {
  const T record{};
  size_t size = 0;
  bool is_sound = true;
  T::each_field(record, [&](const char* name, const auto& field) {
    int times = 0;
    T::each_field(record, [&](const char*, const auto& other) {
      times += static_cast<const void*>(&other) == static_cast<const void*>(&field) ? 1 : 0;
    });
    const bool is_nameless = is_unused<std::remove_cvref_t<decltype(field)>>;
    is_sound = is_sound && times == 1 && (*name == '\0') == is_nameless;
    size += sizeof field;
  });
  return is_sound && size == sizeof(T);
}

// What follows a record's fixed part is described by a member
//   static constexpr void each_list(auto& record, auto&& list)
// that calls list(name, ListOf<Element>{number of elements}) for each list in their order.
template <typename T>
struct ListOf {
  using Element = T;
  uint32_t count;
};

template <typename T>
concept HasLists = requires(T& record) {
  T::each_list(record, [](const char*, auto) {});  // name and entries
};
