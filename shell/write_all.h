// Writing whole texts to files and pipes.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>

// False where not all could be written.
inline bool write_all(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}
