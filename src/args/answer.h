// The kernel's answer, read by offset: a count or a list that claims more than the record holds is cut where
// the record ends.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "records/order.h"

class Answer {
 public:
  // The payload of a record whose header holds the length that was allocated.
  explicit Answer(const void* payload) : payload_(static_cast<const uint8_t*>(payload)) {
    uint32_t length;
    memcpy(&length, payload_ - sizeof(OrderRecord) + offsetof(OrderRecord, length), sizeof length);
    size_ = length - uint32_t{sizeof(OrderRecord)};
  }

  const uint8_t* payload() const { return payload_; }
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

  // As many entries as the answer counts (none for a count below 1) and the record holds. Takes counts of
  // either sign.
  template <typename T>
  Entries<T> entries(uint32_t offset, int64_t count) const {
    const int64_t fitting = room(offset) / sizeof(T);
    return {payload_ + (fitting > 0 ? offset : 0),
            static_cast<uint32_t>(std::clamp(count, int64_t{0}, fitting))};
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

// Walks what follows one another in an answer, records and the lists behind each of them. Where a record or a
// list claims more than there is, the walk ends: what is left of the record is not taken for anything else.
class AnswerCursor {
 public:
  AnswerCursor(const Answer& answer, uint32_t offset)
      : AnswerCursor(answer.payload() + (answer.room(offset) > 0 ? offset : 0), answer.room(offset)) {}
  AnswerCursor(const void* start, uint32_t room) : at_(static_cast<const uint8_t*>(start)), room_(room) {}

  const uint8_t* here() const { return at_; }
  uint32_t room() const { return room_; }

  // The next value. False, and all zero, where the record ends before it does.
  template <typename T>
  bool read(T& value) {
    const uint8_t* const from = at_;
    const bool whole = skip(sizeof(T));
    if (whole) {
      memcpy(&value, from, sizeof(T));
    } else {
      value = {};
    }
    return whole;
  }

  // The next entries, as many as are counted and the record holds.
  template <typename T>
  Answer::Entries<T> entries(uint32_t count) {
    const uint32_t fitting = std::min(count, room_ / uint32_t{sizeof(T)});
    const Answer::Entries<T> found(at_, fitting);
    skip(size_t{count} * sizeof(T));
    return found;
  }

  // False where the record ends before that.
  bool skip(size_t bytes) {
    const bool whole = bytes <= room_;
    const uint32_t step = whole ? static_cast<uint32_t>(bytes) : room_;
    at_ += step;
    room_ -= step;
    return whole;
  }

 private:
  const uint8_t* at_;
  uint32_t room_;
};
