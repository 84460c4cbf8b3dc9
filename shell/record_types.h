// Makes the types of shell/records.h from the records' descriptions, each on its first use.
#pragma once

#include <cstring>
#include <type_traits>

#include "records/audit.h"
#include "records/field.h"
#include "records/qos.h"
#include "shell/records.h"

template <Described Record>
const RecordType& record_type();

namespace record_types_detail {

using Kind = FieldType::Kind;

// The fields that are types of their own; all else is told by the traits of the language.
template <typename T>
inline constexpr FieldType kOwnType = {Kind::kRecord, 0};
template <>
inline constexpr FieldType kOwnType<Ip4> = {Kind::kIp4, sizeof(Ip4)};
template <>
inline constexpr FieldType kOwnType<HostIp4> = {Kind::kHostIp4, sizeof(HostIp4)};
template <>
inline constexpr FieldType kOwnType<Ip6> = {Kind::kIp6, sizeof(Ip6)};
template <>
inline constexpr FieldType kOwnType<IpAddress> = {Kind::kIpAddress, sizeof(IpAddress)};
template <>
inline constexpr FieldType kOwnType<Mac> = {Kind::kMac, sizeof(Mac)};
template <>
inline constexpr FieldType kOwnType<Net16> = {Kind::kNetwork, sizeof(Net16)};
template <>
inline constexpr FieldType kOwnType<NetworkId> = {Kind::kNetwork, sizeof(NetworkId)};
template <>
inline constexpr FieldType kOwnType<IdSet> = {Kind::kIdSet, sizeof(IdSet)};
template <size_t kSize>
inline constexpr FieldType kOwnType<Unused<kSize>> = {Kind::kUnused, kSize};
template <typename Word, int kCount>
inline constexpr FieldType kOwnType<Bits<Word, kCount>> = {Kind::kBits, sizeof(Word)};
template <typename Number>
inline constexpr FieldType kOwnType<Unaligned<Number>> = {
    std::is_signed_v<Number> ? Kind::kSigned : Kind::kUnsigned, sizeof(Number)};

// A copy, because what lies in a payload need not be aligned.
template <typename Record>
Record copy_of(const uint8_t* at) {
  Record record;
  memcpy(&record, at, sizeof record);
  return record;
}

}  // namespace record_types_detail

template <typename T>
const FieldType& field_type() {
  using namespace record_types_detail;
  if constexpr (kOwnType<T>.size != 0) {
    return kOwnType<T>;
  } else if constexpr (std::is_array_v<T> && std::is_same_v<std::remove_extent_t<T>, char>) {
    static constexpr FieldType kType = {Kind::kText, sizeof(T)};
    return kType;
  } else if constexpr (std::is_array_v<T>) {
    static const FieldType type = {Kind::kArray, sizeof(T), std::extent_v<T>,
                                   &field_type<std::remove_extent_t<T>>()};
    return type;
  } else if constexpr (std::is_same_v<T, char>) {
    static constexpr FieldType kType = {Kind::kString, 1};
    return kType;
  } else if constexpr (std::is_integral_v<T>) {
    static constexpr FieldType kType = {std::is_signed_v<T> ? Kind::kSigned : Kind::kUnsigned, sizeof(T)};
    return kType;
  } else {
    static const FieldType type = {Kind::kRecord, sizeof(T), 0, nullptr, &record_type<T>()};
    return type;
  }
}

template <Described Record>
const RecordType& record_type() {
  using namespace record_types_detail;
  static const RecordType type = [] {
    RecordType made = {.size = sizeof(Record), .members = {}};
    const Record record{};
    const auto* const start = reinterpret_cast<const uint8_t*>(&record);
    Record::each_field(record, [&](const char* name, const auto& field) {
      const auto offset = reinterpret_cast<const uint8_t*>(&field) - start;
      made.members.push_back(
          {name, static_cast<uint32_t>(offset), &field_type<std::remove_cvref_t<decltype(field)>>()});
    });
    if constexpr (HasLists<Record>) {
      made.each_list = [](const uint8_t* at, void* context, RecordType::TakeList take) {
        const auto copy = copy_of<Record>(at);
        Record::each_list(copy, [&](const char* name, auto list) {
          take(context, name, field_type<typename decltype(list)::Element>(), list.count);
        });
      };
    }
    if constexpr (requires { record.strings_length; }) {
      made.list_bytes = [](const uint8_t* at) {
        const uint32_t bytes = bytes_behind(copy_of<Record>(at));
        return RecordType::Bounds{bytes, bytes};
      };
    } else if constexpr (std::is_same_v<Record, SpeedRule>) {
      made.list_bytes = [](const uint8_t* at) {
        return RecordType::Bounds{.least = copy_of<Record>(at).range_bytes};
      };
    }
    return made;
  }();
  return type;
}
