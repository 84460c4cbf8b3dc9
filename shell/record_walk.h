// Walks the bytes of a payload for a visitor, and never beyond their end.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "shell/record_types.h"
#include "shell/records.h"

class RecordWalk {
 public:
  RecordWalk(std::span<const uint8_t> payload, RecordVisitor& visitor)
      : payload_(payload), visitor_(visitor), end_(static_cast<uint32_t>(payload.size())) {}

  uint32_t offset() const { return at_; }
  uint32_t room() const { return end_ - at_; }
  const uint8_t* here() const { return payload_.data() + at_; }
  RecordVisitor& visitor() { return visitor_; }

  // To that offset, or the end.
  void go_to(uint32_t offset) { at_ = std::min(offset, end_); }

  // The value at an offset; all zero where the payload ends before it does.
  template <typename T>
  T get(uint32_t offset) const {
    T value{};
    if (offset <= payload_.size() && payload_.size() - offset >= sizeof(T)) {
      memcpy(&value, payload_.data() + offset, sizeof(T));
    }
    return value;
  }

  // The members of the next record, without what stands around them, then its lists. Where the record does
  // not fit, the members that do, and false: nothing comes behind it.
  bool members(const RecordType& type);
  // The next element of a list or member of a record, whole.
  bool value(std::string_view name, const FieldType& type);
  // As many elements as are claimed and fit.
  bool list(std::string_view name, const FieldType& element, int64_t claimed);
  // A string of that length, or of what is left.
  void string(std::string_view name, uint32_t length);
  // Bytes that no name is known for.
  void unnamed(uint32_t size);
  void rest();

 private:
  void lists(const RecordType& type, const uint8_t* record);
  void plain(std::string_view name, const FieldType& type, uint32_t offset, uint32_t size) {
    visitor_.field({name, &type, offset, payload_.subspan(offset, size)});
  }
  // A part of what is known to be there.
  void part(std::string_view name, const FieldType& type, uint32_t offset);
  void part_members(const RecordType& type, uint32_t offset);

  std::span<const uint8_t> payload_;
  RecordVisitor& visitor_;
  uint32_t end_;
  uint32_t at_ = 0;
};
