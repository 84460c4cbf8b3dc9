// The protection profiles, for who counts their hits.
#pragma once

#include <cstdint>
#include <string_view>

#include "state/store.h"

// Nothing on a plain host raises the counters by itself. False when there is no such profile.
bool set_profile_hits(Store& store, std::string_view name, uint64_t hits);
