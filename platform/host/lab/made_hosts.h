// Made-up hosts, for measurements and load tests.
#pragma once

#include <cstdint>

#include "records/host.h"

// The host of this number (0 to 65533): no two are alike, and each is the same whenever it is made. Its times
// are seconds before the present: for how long it has been known, and since when it has been silent.
HostAiEntry make_host(uint32_t number);
