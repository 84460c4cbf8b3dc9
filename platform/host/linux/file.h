// Whole files, read and replaced.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// A descriptor that is closed at the end.
class File {
 public:
  explicit File(int descriptor) : descriptor_(descriptor) {}
  ~File();
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  int descriptor() const { return descriptor_; }
  bool is_open() const { return descriptor_ >= 0; }

 private:
  int descriptor_;
};

// Throws what errno says of it, as std::runtime_error("WHAT: why").
[[noreturn]] void throw_errno(const std::string& what);

// All throw when it cannot be done; the text says which file and why.

// Reads up to the end, or until there is no more room. Returns the number of bytes.
size_t read_all(const File& file, const std::string& path, char* buffer, size_t room);

// All that a regular file holds, `most` bytes at the most.
std::string read_file(const std::string& path, size_t most);

void write_all(const File& file, const std::string& path, std::string_view bytes);

// Puts a file with these bytes, for its owner only, in the place of the one at the path, or leaves everything
// as it was. When this returns, the bytes outlive a power failure. Several processes may do so at once.
void replace_file(const std::string& path, std::string_view bytes);
