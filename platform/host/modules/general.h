// What errinfo shows, for the other modules to leave their reports.
#pragma once

#include <cstdint>
#include <string_view>

#include "state/store.h"

// Keeps a module's report in place of its last one. errinfo shows it under the module's number, unless a text
// has been stored under that.
void store_report(Store& store, uint32_t module, std::string_view report);
