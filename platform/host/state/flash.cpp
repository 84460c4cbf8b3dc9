// The flash: its partitions, and how their files are changed.
#include "state/flash.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "linux/file.h"
#include "state/store.h"

namespace {

constexpr char kErased = '\xff';

struct Partition {
  std::string_view name;
  uint32_t size;
};
constexpr Partition kPartitions[] = {
    {kConfigPartition, 2 * kEraseBlock},
    {kModulesPartition, 256 * kEraseBlock},
    {kPluginPartition, 256 * kEraseBlock},
};

const Partition& find_partition(std::string_view name) {
  const auto* found = std::ranges::find(kPartitions, name, &Partition::name);
  if (found == std::end(kPartitions)) throw StoreError("no flash partition of this name");
  return *found;
}

std::string flash_folder() { return require_state_folder() + "/flash"; }

std::string file_of(const Partition& partition) { return flash_folder() + "/" + std::string(partition.name); }

std::string contents(const Partition& partition) {
  const std::string file = file_of(partition);
  if (access(file.c_str(), F_OK) != 0 && errno == ENOENT) return {};
  return read_file(file, partition.size);
}

// Partitions are changed one after the other.
class FlashLock {
 public:
  FlashLock() : folder_(open_folder()) {
    if (!folder_.is_open() || flock(folder_.descriptor(), LOCK_EX) != 0) {
      throw StoreError(flash_folder() + ": " + strerror(errno));
    }
  }

 private:
  static int open_folder() {
    const std::string folder = flash_folder();
    if (mkdir(folder.c_str(), 0700) == 0) chmod(folder.c_str(), 0700);  // whatever the umask
    return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  }

  File folder_;
};

void check_room(const Partition& partition, uint64_t offset, uint64_t length) {
  if (offset + length <= partition.size) return;
  throw StoreError("the flash partition " + std::string(partition.name) + " has " +
                   std::to_string(partition.size) + " bytes");
}

}  // namespace

uint32_t partition_size(std::string_view name) { return find_partition(name).size; }

std::string read_partition(std::string_view name) { return contents(find_partition(name)); }

void write_partition(std::string_view name, uint32_t offset, std::string_view bytes) {
  const Partition& partition = find_partition(name);
  check_room(partition, offset, bytes.size());
  const FlashLock lock;
  std::string all = offset == 0 ? "" : contents(partition);
  all.resize(offset, kErased);
  all += bytes;
  replace_file(file_of(partition), all);
}

void erase_partition(std::string_view name, uint32_t offset, uint32_t length) {
  const Partition& partition = find_partition(name);
  check_room(partition, offset, length);
  if (offset % kEraseBlock != 0 || length % kEraseBlock != 0) {
    throw StoreError("flash is erased in blocks of " + std::to_string(kEraseBlock) + " bytes");
  }
  const FlashLock lock;
  std::string all = contents(partition);
  const size_t end = length == 0 ? partition.size : size_t{offset} + length;
  if (end >= all.size()) {
    all.resize(std::min<size_t>(all.size(), offset));
  } else {
    std::fill_n(all.begin() + offset, length, kErased);
  }
  replace_file(file_of(partition), all);
}
