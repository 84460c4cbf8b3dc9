// Writing whole texts to files and pipes.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>

// What cannot be written is lost: there is nobody to tell.
inline void write_all(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(static_cast<size_t>(written));
  }
}
