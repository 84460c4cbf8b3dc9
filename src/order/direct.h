// Requests that keep their whole record in a buffer of fixed size and report in their own words.
#pragma once

#include <cstdint>

#include "args/print.h"
#include "order/order.h"
#include "platform/order.h"

template <uint32_t kLength>
class DirectRequest {
 public:
  DirectRequest(uint32_t module, uint32_t command) {
    header() = {.module = module, .length = kLength, .result = 0, .command = command};
  }

  template <typename Payload>
  Payload& payload() {
    static_assert(sizeof(OrderRecord) + sizeof(Payload) <= kLength);
    return *reinterpret_cast<Payload*>(bytes_ + sizeof(OrderRecord));
  }

  // False when the exchange could not be carried out; result() is the kernel's otherwise.
  bool send() {
    const bool sent = tesvel_order_opt_fun(bytes_, kLength) == 0;
    header().length = kLength;  // whatever the kernel wrote there: readers of the answer go by it
    return sent;
  }
  uint32_t result() { return header().result; }

 private:
  OrderRecord& header() { return *reinterpret_cast<OrderRecord*>(bytes_); }

  alignas(16) uint8_t bytes_[kLength] = {};
};

// Reports a failed exchange of a command that sets something; its status differs from the runner's.
inline int report_set_failure(const CommandEntry* entry) {
  print_error(" %s : set_opt false \n", entry->name);
  return kStatusKernelError;
}
