// The kernel's answer, read by offset: a count or a list that claims more than the record holds is cut where
// the record ends.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "order/order_records.h"

class Answer {
 public:
  // The payload of a record whose header holds the length that was allocated.
  explicit Answer(const void* payload) : payload_(static_cast<const uint8_t*>(payload)) {
    uint32_t length;
    memcpy(&length, payload_ - sizeof(OrderRecord) + offsetof(OrderRecord, length), sizeof length);
    size_ = length - uint32_t{sizeof(OrderRecord)};
  }

  uint32_t room(uint32_t offset) const { return offset < size_ ? size_ - offset : 0; }

  // The value at an offset; all zero where the record ends before it does.
  template <typename T>
  T get(uint32_t offset) const {
    T value{};
    if (room(offset) >= sizeof(T)) memcpy(&value, payload_ + offset, sizeof(T));
    return value;
  }

  // Entries of a fixed size, back to back, for a range-based for loop.
  template <typename T>
  class Entries {
   public:
    class Iterator {
     public:
      explicit Iterator(const uint8_t* at) : at_(at) {}
      T operator*() const {
        T entry;
        memcpy(&entry, at_, sizeof entry);
        return entry;
      }
      Iterator& operator++() {
        at_ += sizeof(T);
        return *this;
      }
      bool operator!=(const Iterator& other) const { return at_ != other.at_; }

     private:
      const uint8_t* at_;
    };

    Entries(const uint8_t* first, uint32_t count) : first_(first), count_(count) {}
    Iterator begin() const { return Iterator(first_); }
    Iterator end() const { return Iterator(first_ + size_t{count_} * sizeof(T)); }

   private:
    const uint8_t* first_;
    uint32_t count_;
  };

  // As many entries as the answer counts (none for a count below 1) and the record holds.
  template <typename T>
  Entries<T> entries(uint32_t offset, int32_t count) const {
    const uint32_t fitting = room(offset) / uint32_t{sizeof(T)};
    return {payload_ + (fitting > 0 ? offset : 0),
            count > 0 ? std::min(static_cast<uint32_t>(count), fitting) : 0};
  }

  // The list that most answers consist of.
  template <typename T>
  Entries<T> list() const {
    return entries<T>(kListEntriesOffset, get<int32_t>(kListCountOffset));
  }

 private:
  const uint8_t* payload_;
  uint32_t size_;
};
