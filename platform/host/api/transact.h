// A platform function as one transaction on the state that the modules share.
#pragma once

#include "api/guard.h"
#include "modules/modules.h"

// What is refused changes nothing and returns the result code, negated.
template <typename Work>  // int(Store& store)
int transact(Access access, Work work) {
  const auto transaction = [access, &work] {
    try {
      Store store = open_state(access);
      const int result = work(store);
      store.commit();
      return result;
    } catch (const Refusal& refusal) {
      return -static_cast<int>(refusal.code);
    }
  };
  return guarded(transaction, -1);
}
