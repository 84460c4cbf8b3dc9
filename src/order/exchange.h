// One record and its way through the order gateway.
#pragma once

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "platform/order.h"
#include "records/order.h"

// Owns the record's storage, all zero but for its header until somebody fills the payload. A short record
// lies within the caller's frame: mapping a page for it would cost more than all else that a setting does. A
// long one comes straight from the kernel's zero pages, and those that nobody fills are never touched.
class Exchange {
 public:
  // `size` is that of the whole record, the header included.
  Exchange(uint32_t module, uint32_t command, uint32_t size) : size_(size) {
    void* storage = short_;
    if (size_ <= sizeof short_) {
      memset(short_, 0, sizeof short_);
    } else {
      storage = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
      if (storage == MAP_FAILED) return;
    }
    record_ = static_cast<OrderRecord*>(storage);
    *record_ = {.module = module, .length = size_, .result = 0, .command = command};
  }
  ~Exchange() {
    if (size_ > sizeof short_ && record_ != nullptr) munmap(record_, size_);
  }
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;

  bool has_record() const { return record_ != nullptr; }  // false: there is no memory for it
  uint32_t size() const { return size_; }
  void* payload() const { return record_ + 1; }
  uint32_t result() const { return record_->result; }

  // Hands over as much of the record as its header's length says, and never more than there is. False when
  // the exchange did not take place. Afterwards the length is that of the storage, whatever the kernel wrote
  // there: readers of the answer go by it.
  bool send() {
    const bool is_exchanged = tesvel_order_opt_fun(record_, std::min(record_->length, size_)) == 0;
    record_->length = size_;
    return is_exchanged;
  }

 private:
  uint32_t size_;
  OrderRecord* record_ = nullptr;
  alignas(16) uint8_t short_[1024 + sizeof(OrderRecord)];
};
