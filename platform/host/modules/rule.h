// The routing rules, for those whom they refer to or count.
#pragma once

#include <cstdint>
#include <string_view>

#include "state/store.h"

// Whether a rule sends traffic over the line of an interface.
bool is_routed_over(Store& store, std::string_view dev);
// Deletes all rules that do.
void delete_routes_over(Store& store, std::string_view dev);

// The hit counters, which nothing on a plain host raises by itself. False when there is no such rule.
bool set_route_hits(Store& store, std::string_view name, uint64_t hits);
