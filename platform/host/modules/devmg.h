// The registered interfaces, for the modules that keep something for each.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "state/store.h"

// Bits of an interface's flags.
constexpr uint32_t kInterfaceLan = 1;
constexpr uint32_t kInterfaceWan = 2;
constexpr uint32_t kInterfaceLineUp = 4;  // set up and in use; only of a WAN interface

// Refuses an order for an interface that is not registered.
void require_interface(Store& store, std::string_view dev);

// The registered interfaces that a word names: "lan", "wan", "all", or one interface, which must be
// registered.
std::vector<std::string> select_interfaces(Store& store, std::string_view word);
