// The order gateway of a plain Linux host: one order is one transaction on the state store.
#include <algorithm>
#include <cstdio>

#include "modules/module.h"
#include "modules/modules.h"
#include "platform/order.h"

namespace {

void handle(Order& order) {
  const Module* module = find_module(order.module());
  if (module == nullptr) throw Refusal{kUnknownModule};
  const auto command = std::ranges::find(module->commands, order.command(), &Command::number);
  if (command == module->commands.end()) throw Refusal{kUnknownCommand};

  Store store = open_state(command->access);
  command->run(store, order);
  store.commit();
}

int report_failure(const char* why) {
  fprintf(stderr, "vek: %s\n", why);
  return -1;
}

}  // namespace

[[gnu::visibility("default")]] int tesvel_order_opt_fun(void* record, uint32_t length) {
  if (record == nullptr || length < sizeof(OrderRecord)) return report_failure("order without a record");
  try {
    Order order(record, length);
    try {
      handle(order);
      order.finish(kOk);
    } catch (const Refusal& refusal) {
      order.finish(refusal.code);
    }
    return 0;
  } catch (const std::exception& error) {
    return report_failure(error.what());
  }
}
