// The MAC memory, for the logins that it remembers.
#pragma once

#include <cstdint>

#include "state/store.h"

// Setting of module 62: 1 when logins are remembered.
constexpr const char* kRemember = "remember";

// Remembers a MAC address for an account, if logins are to be remembered.
void remember_mac(Store& store, const Mac& mac, uint32_t userid);
