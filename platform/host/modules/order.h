// A kernel module's view of the order that it handles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include "api/errors.h"
#include "records/order.h"

// Thrown by a module: the order changes nothing and is answered with the code.
struct Refusal {
  Result code;
};

// The record as it came in, and the answer on the side: the record is written once, when all has gone well.
// Reading and writing end where the record does.
class Order {
 public:
  Order(void* record, uint32_t length)
      : record_(static_cast<uint8_t*>(record)), room_(length - uint32_t{sizeof(OrderRecord)}) {
    memcpy(&header_, record_, sizeof header_);
  }

  uint32_t module() const { return header_.module; }
  uint32_t command() const { return header_.command; }

  // Payload bytes from an offset on.
  uint32_t room(uint32_t offset = 0) const { return offset < room_ ? room_ - offset : 0; }

  // The request's value at an offset of the payload. A record that ends before it does is refused.
  template <typename T>
  T request(uint32_t offset = 0) const {
    static_assert(std::is_trivially_copyable_v<T>);
    if (room(offset) < sizeof(T)) throw Refusal{kBadRecord};
    T value;
    memcpy(&value, payload() + offset, sizeof value);
    return value;
  }

  // Bytes of the payload from its start. A record that ends before them is refused.
  std::vector<uint8_t> request_bytes(uint32_t size) const {
    if (room() < size) throw Refusal{kBadRecord};
    return {payload(), payload() + size};
  }

  // Puts bytes into the answer; what is never answered stays as it was requested. False, and nothing put,
  // when the record ends before they do.
  bool answer_bytes(uint32_t offset, const void* bytes, uint32_t size) {
    if (room(offset) < size) return false;
    const uint32_t end = offset + size;
    if (answer_.size() < end) answer_.insert(answer_.end(), payload() + answer_.size(), payload() + end);
    if (size > 0) memcpy(answer_.data() + offset, bytes, size);
    return true;
  }
  template <typename T>
  bool answer(const T& value, uint32_t offset = 0) {
    static_assert(std::is_trivially_copyable_v<T>);
    return answer_bytes(offset, &value, sizeof value);
  }

  // For an order that is answered with a number in the place of the result, when all goes well.
  void answer_result(uint32_t number) { good_result_ = number; }

  void finish(Result result) {
    if (result == kOk && !answer_.empty()) memcpy(payload(), answer_.data(), answer_.size());
    header_.result = result == kOk ? good_result_ : uint32_t{result};
    memcpy(record_ + offsetof(OrderRecord, result), &header_.result, sizeof header_.result);
  }

 private:
  uint8_t* payload() const { return record_ + sizeof(OrderRecord); }

  uint8_t* record_;
  uint32_t room_;
  OrderRecord header_;
  uint32_t good_result_ = kOk;
  std::vector<uint8_t> answer_;
};

// Fills the list that most answers consist of, with entries of any size back to back. Entries that the record
// has no room for are left out.
class RecordList {
 public:
  explicit RecordList(Order& order, uint32_t count_offset = kListCountOffset,
                      uint32_t entries_offset = kListEntriesOffset)
      : order_(order), count_offset_(count_offset), offset_(entries_offset) {
    order_.answer(count_, count_offset_);
  }

  void add_bytes(const void* entry, uint32_t size) {
    if (!order_.answer_bytes(offset_, entry, size)) return;
    offset_ += size;
    order_.answer(++count_, count_offset_);
  }

 private:
  Order& order_;
  int32_t count_ = 0;
  uint32_t count_offset_;
  uint32_t offset_;
};

// The same for entries that are all alike.
template <typename Entry>
class ListAnswer : RecordList {
 public:
  using RecordList::RecordList;
  void add(const Entry& entry) { add_bytes(&entry, sizeof entry); }
};
