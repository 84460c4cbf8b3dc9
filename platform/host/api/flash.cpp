// The flash of a plain Linux host.
#include "platform/flash.h"

#include <climits>
#include <cstring>
#include <stdexcept>

#include "api/guard.h"
#include "linux/file.h"
#include "state/flash.h"

namespace {

const char* required(const char* text) {
  if (text == nullptr || *text == '\0') throw std::runtime_error("a name is missing");
  return text;
}

// A result is an int.
uint32_t required_length(uint32_t length) {
  if (length > INT_MAX) throw std::runtime_error("more bytes than a flash has");
  return length;
}

}  // namespace

#pragma GCC visibility push(default)

int flash_erase_mtd(const char* name, uint32_t offset, uint32_t length) {
  const auto erase = [=] {
    erase_partition(required(name), offset, length);
    return 0;
  };
  return guarded(erase, -1);
}

int general_flash_read(const char* area, void* buffer, uint32_t offset, uint32_t length) {
  const auto read = [=] {
    const std::string all = read_partition(required(area));
    if (uint64_t{offset} + required_length(length) > all.size()) {
      throw std::runtime_error(std::string("the flash partition ") + area + " holds " +
                               std::to_string(all.size()) + " bytes");
    }
    memcpy(buffer, all.data() + offset, length);
    return static_cast<int>(length);
  };
  return guarded(read, -1);
}

int general_flash_write(const char* area, const void* data, uint32_t offset, uint32_t length) {
  const auto write = [=] {
    write_partition(required(area), offset, {static_cast<const char*>(data), required_length(length)});
    return static_cast<int>(length);
  };
  return guarded(write, -1);
}

int flash_zentrik_plugin_write(const char* path) {
  const auto write = [=] {
    write_partition(kPluginPartition, 0, read_file(required(path), partition_size(kPluginPartition)));
    return 0;
  };
  return guarded(write, -1);
}

int flash_zentrik_plugin_read(const char* path) {
  const auto read = [=] {
    const std::string file = read_partition(kPluginPartition);
    if (file.empty()) throw std::runtime_error("no plug-in file in the flash");
    replace_file(required(path), file);
    return 0;
  };
  return guarded(read, -1);
}

int flash_zentrik_plugin_clean(const char* /*path*/) { return flash_erase_mtd(kPluginPartition, 0, 0); }

#pragma GCC visibility pop
