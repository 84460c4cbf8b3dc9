// Speed rules, for the hosts that they slow down.
#pragma once

#include <vector>

#include "records/host.h"
#include "records/list.h"
#include "state/store.h"

// The limits in force, as they are when it is made.
class SpeedLimits {
 public:
  explicit SpeedLimits(Store& store);

  // Puts the limit of the first rule that covers the host into its entry; without one the entry stays.
  void apply(HostEntry& host) const;

 private:
  struct Limit {
    std::vector<V4Range> ranges;
    int32_t up;
    int32_t down;
  };
  std::vector<Limit> limits_;
};
