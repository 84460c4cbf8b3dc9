// The order gateway of a plain Linux host: one order is one transaction on the state store.
#include <cstdio>

#include "api/guard.h"
#include "modules/module.h"
#include "modules/modules.h"
#include "platform/order.h"

namespace {

// What was ordered is done already, and stays so.
void follow(const Module& module, Store& store) {
  try {
    module.follow(store);
  } catch (const std::exception& error) {
    fprintf(stderr, "vek: %s\n", error.what());
  }
}

void handle(Order& order) {
  if (!has_module(order.module())) throw Refusal{kUnknownModule};
  const Command* const command = find_command(order.module(), order.command());
  if (command == nullptr) throw Refusal{kUnknownCommand};

  Store store = open_state(command->access);
  command->run(store, order);
  store.commit();
  if (command->access == kReads) return;
  for (const Module* module : all_modules()) {
    if (module->number == order.module() && module->follow != nullptr) follow(*module, store);
  }
}

}  // namespace

[[gnu::visibility("default")]] int tesvel_order_opt_fun(void* record, uint32_t length) {
  if (record == nullptr || length < sizeof(OrderRecord)) {
    fputs("vek: order without a record\n", stderr);
    return -1;
  }
  const auto deliver = [record, length] {
    Order order(record, length);
    try {
      handle(order);
      order.finish(kOk);
    } catch (const Refusal& refusal) {
      order.finish(refusal.code);
    }
    return 0;
  };
  return guarded(deliver, -1);
}
