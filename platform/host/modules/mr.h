// The lines of the router, for the modules that keep something for each.
#pragma once

#include <cstdint>
#include <string>

#include "state/store.h"

// The lines of WAN interfaces are those below the VPN links.
constexpr uint32_t kFirstVpnLine = 121;
constexpr uint32_t kLastLine = 255;

// The interface of a line, the empty text when there is no such line.
std::string line_device(Store& store, uint32_t line);

// Refuses an order for a line that does not exist.
void require_line(Store& store, uint32_t line);
