// The hit counters of routing rules, which nothing on a plain host raises by itself.
#pragma once

#include <cstdint>
#include <string_view>

#include "state/store.h"

// False when there is no such rule.
bool set_route_hits(Store& store, std::string_view name, uint64_t hits);
