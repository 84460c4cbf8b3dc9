// The order gateway of a plain Linux host: one order is one transaction on the state store.
#include <algorithm>
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
  const Module* module = find_module(order.module());
  if (module == nullptr) throw Refusal{kUnknownModule};
  const auto command = std::ranges::find(module->commands, order.command(), &Command::number);
  if (command == module->commands.end()) throw Refusal{kUnknownCommand};

  Store store = open_state(command->access);
  command->run(store, order);
  store.commit();
  if (command->access == kWrites && module->follow != nullptr) follow(*module, store);
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
