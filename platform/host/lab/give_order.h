// Orders that a lab gives to the modules, so that what it makes is made and checked as they do it.
#pragma once

#include <algorithm>

#include "lab/scenario.h"
#include "modules/module.h"
#include "platform/order.h"

// What the module refuses is wrong at this place of the scenario.
template <typename Payload>
void give_order(Store& store, const Node& where, const Module& module, uint32_t command,
                const Payload& payload) {
  struct {
    OrderRecord header;
    Payload payload;
  } record = {{module.number, sizeof record, 0, command}, payload};
  Order order(&record, sizeof record);
  try {
    std::ranges::find(module.commands, command, &Command::number)->run(store, order);
  } catch (const Refusal& refusal) {
    where.fail(tvlret_err_str[refusal.code]);
  }
}
