// Single numbers that modules keep: switches, limits, levels.
#pragma once

#include <cstdint>

#include "state/store.h"

extern const Schema kSettingsSchema;

uint32_t get_setting(Store& store, uint32_t module, const char* name, uint32_t if_never_set = 0);
void set_setting(Store& store, uint32_t module, const char* name, uint32_t value);
