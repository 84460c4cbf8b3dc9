// Where the record of one request lies.
#pragma once

#include <sys/mman.h>

#include <cstdint>
#include <cstring>

#include "records/order.h"

// Zeroed storage of one record. A short one lies within the caller's frame: mapping a page for it would cost
// more than all else that a setting does. A long one comes straight from the kernel's zero pages, and those
// that nobody fills are never touched.
class RecordStorage {
 public:
  explicit RecordStorage(uint32_t size) : size_(size) {
    if (size_ <= sizeof short_) {
      record_ = short_;
      memset(short_, 0, sizeof short_);
      return;
    }
    record_ = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (record_ == MAP_FAILED) record_ = nullptr;
  }
  ~RecordStorage() {
    if (record_ != nullptr && record_ != short_) munmap(record_, size_);
  }
  RecordStorage(const RecordStorage&) = delete;
  RecordStorage& operator=(const RecordStorage&) = delete;

  OrderRecord* record() const { return static_cast<OrderRecord*>(record_); }  // null: no memory

 private:
  uint32_t size_;
  void* record_;
  alignas(16) uint8_t short_[1024 + sizeof(OrderRecord)];
};
