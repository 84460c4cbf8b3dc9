// Whole files: the new one is written beside the old, and takes its name when all of it is on the disk.
#include "linux/file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace {

[[noreturn]] void fail(const std::string& path, const char* why) {
  throw std::runtime_error(path + ": " + why);
}

// Whether the name still stands for the file that is open.
bool is_named(const File& file, const std::string& path) {
  struct stat open_one;
  struct stat named;
  const bool is_there = lstat(path.c_str(), &named) == 0;
  if ((!is_there && errno != ENOENT) || fstat(file.descriptor(), &open_one) != 0) throw_errno(path);
  return is_there && open_one.st_dev == named.st_dev && open_one.st_ino == named.st_ino;
}

// The name outlives a power failure when its folder has been written. Some file systems cannot do that alone.
void sync_folder_of(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  const std::string folder = slash == path.npos ? "." : path.substr(0, slash + 1);
  const File file(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (file.is_open() && fsync(file.descriptor()) != 0 && errno == EIO) throw_errno(folder);
}

}  // namespace

void throw_errno(const std::string& what) { fail(what, strerror(errno)); }

File::~File() {
  if (is_open()) close(descriptor_);
}

size_t read_all(const File& file, const std::string& path, char* buffer, size_t room) {
  size_t length = 0;
  while (length < room) {
    const ssize_t got = read(file.descriptor(), buffer + length, room - length);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw_errno(path);
    if (got == 0) break;
    length += static_cast<size_t>(got);
  }
  return length;
}

std::string read_file(const std::string& path, size_t most) {
  const File file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));  // a pipe is not waited for
  struct stat found;
  if (!file.is_open() || fstat(file.descriptor(), &found) != 0) throw_errno(path);
  if (!S_ISREG(found.st_mode)) fail(path, "no regular file");
  const std::string too_long = "more than " + std::to_string(most) + " bytes";
  if (static_cast<uint64_t>(found.st_size) > most) fail(path, too_long.c_str());
  std::string bytes(static_cast<size_t>(found.st_size), '\0');
  bytes.resize(read_all(file, path, bytes.data(), bytes.size()));
  return bytes;
}

void write_all(const File& file, const std::string& path, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file.descriptor(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) throw_errno(path);
    bytes.remove_prefix(static_cast<size_t>(written));
  }
}

void replace_file(const std::string& path, std::string_view bytes) {
  struct stat found;
  if (stat(path.c_str(), &found) == 0 && !S_ISREG(found.st_mode)) fail(path, "no regular file");
  const std::string new_path = path + ".new";
  for (;;) {
    const File file(open(new_path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
    if (!file.is_open() || flock(file.descriptor(), LOCK_EX) != 0) throw_errno(new_path);
    if (!is_named(file, new_path)) continue;  // another process has been waited for
    fchmod(file.descriptor(), 0600);          // whatever the umask; not every file system knows of that
    try {
      if (ftruncate(file.descriptor(), 0) != 0) throw_errno(new_path);
      write_all(file, new_path, bytes);
      if (fsync(file.descriptor()) != 0 || rename(new_path.c_str(), path.c_str()) != 0) throw_errno(new_path);
    } catch (const std::runtime_error&) {
      unlink(new_path.c_str());
      throw;
    }
    sync_folder_of(path);
    return;
  }
}
