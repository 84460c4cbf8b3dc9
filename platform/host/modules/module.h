// What a kernel module of the host library consists of.
#pragma once

#include <cstdint>
#include <span>

#include "modules/order.h"
#include "state/store.h"

// A row of a module's commands. Orders that write are handled one at a time; those that read go on beside
// them.
struct Command {
  uint32_t number;
  Access access;
  void (*run)(Store& store, Order& order);
};

// A module may stand in several files, with a Module in each of them; those that keep tables differ in part.
struct Module {
  uint32_t number;
  std::span<const Command> commands;
  std::span<const char* const> schema = {};  // as Schema::steps
  void (*flush)(Store& store) = nullptr;     // drops what the module has learnt by itself
  // Brings what serves the module's settings in step with them. Called behind the transaction of an order
  // that writes; has transactions of its own.
  void (*follow)(Store& store) = nullptr;
  uint32_t part = 0;
};

namespace module_detail {

inline void call(void (*handle)(Store&), Store& store, Order&) { handle(store); }
inline void call(void (*handle)(Store&, Order&), Store& store, Order& order) { handle(store, order); }

template <typename Request>
void call(void (*handle)(Store&, const Request&), Store& store, Order& order) {
  handle(store, order.request<Request>());
}

template <typename Request>
void call(void (*handle)(Store&, const Request&, Order&), Store& store, Order& order) {
  handle(store, order.request<Request>(), order);
}

template <typename Payload>
void call(void (*handle)(Store&, Payload&), Store& store, Order& order) {
  auto payload = order.request<Payload>();
  handle(store, payload);
  order.answer(payload);
}

}  // namespace module_detail

// Makes the function of a row from one of
//   void(Store&)                                nothing but the command counts
//   void(Store&, const Request&)                a request that is answered with the result alone
//   void(Store&, Payload&)                      the answer is what the function leaves in the payload
//   void(Store&, Order&), (Store&, const Request&, Order&)   lists, and whatever is of no fixed size
// Each refuses by throwing a Refusal.
template <auto handle>
void run_as(Store& store, Order& order) {
  module_detail::call(handle, store, order);
}
