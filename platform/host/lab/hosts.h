// Hosts, for those who put some in place without a scenario.
#pragma once

#include "records/host.h"
#include "state/store.h"

// The times of the entry are seconds before the present: for how long the host has been known, and since when
// it has been silent.
void add_host(Store& store, const HostAiEntry& entry);
