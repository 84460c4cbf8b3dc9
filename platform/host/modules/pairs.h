// Settings that one command both sets and gets, for the modules that have no more to do than to check and
// keep them.
#pragma once

#include <cstdint>

#include "modules/checks.h"
#include "modules/module.h"
#include "state/settings.h"

// Makes the function of such a row from void(const Record&), which refuses what is not to be set. The
// record's first word is 1 to set and 0 to get; either is answered with what is kept.
template <auto check>
struct Pair;
template <typename Record, void (*check)(const Record&)>
struct Pair<check> {
  static void run(Store& store, Order& order) {
    const auto request = order.request<Record>();
    if (request.is_set != 0) {
      check(request);
      set_record(store, order.module(), order.command(), request);
    }
    auto kept = get_record<Record>(store, order.module(), order.command());
    kept.is_set = request.is_set;
    order.answer(kept);
  }
};
template <auto check>
constexpr auto run_pair = Pair<check>::run;
