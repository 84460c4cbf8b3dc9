// The flash of a plain Linux host: a partition is a file of the state folder, which holds what was written
// from the partition's start on. It is replaced whole or not at all. Everything throws when it cannot be
// done.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

constexpr const char* kConfigPartition = "Config";          // the parameters that were committed
constexpr const char* kModulesPartition = "modules";        // the filter module's package
constexpr const char* kPluginPartition = "zentrik_plugin";  // the plug-in file
constexpr uint32_t kEraseBlock = 0x10000;

// How many bytes it has room for.
uint32_t partition_size(std::string_view name);

// What was written to it; empty when it is erased.
std::string read_partition(std::string_view name);

// What stands in front of the offset stays; the bytes are the last in there.
void write_partition(std::string_view name, uint32_t offset, std::string_view bytes);

// Offset and length in whole erase blocks; a length of 0 is all the rest.
void erase_partition(std::string_view name, uint32_t offset, uint32_t length);
