// Error information, for the other modules to leave theirs.
#pragma once

#include <cstdint>
#include <string_view>

#include "state/store.h"

// Keeps a text under a number. A module's report stands under the module's own number.
void store_error_info(Store& store, uint32_t number, std::string_view text);
