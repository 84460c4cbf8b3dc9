// Orders to the switch chip's tables (module 32). They have no payload: all else goes through
// include/platform/switch_chip.h.
#pragma once

#include <cstdint>

enum SwitchChipCommand : uint32_t { kSwitchDump = 14, kSwitchClear = 15 };
