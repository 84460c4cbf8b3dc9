// Drives the shipped vek as a process, with the scripted platform library behind it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/process.h"

// Bytes at offsets, all else zero: a payload as it must be sent, or as a kernel module answers it.
class Bytes {
 public:
  Bytes& text(size_t offset, std::string_view value);
  Bytes& hex(size_t offset, std::string_view digits);  // blanks between fields do not matter
  Bytes& u8(size_t offset, uint64_t value) { return number(offset, value, 1); }
  Bytes& u16(size_t offset, uint64_t value) { return number(offset, value, 2); }
  Bytes& u32(size_t offset, uint64_t value) { return number(offset, value, 4); }
  Bytes& u64(size_t offset, uint64_t value) { return number(offset, value, 8); }
  Bytes& ip(size_t offset, std::string_view dotted);  // network byte order
  // Other bytes, moved by an offset: an entry of a list.
  Bytes& at(size_t offset, const Bytes& other);

  const std::string& str() const { return bytes_; }

 private:
  Bytes& number(size_t offset, uint64_t value, size_t width);
  void put(size_t offset, std::string_view bytes);

  std::string bytes_;
};

struct Order {
  uint32_t length = 0;  // as the gateway was told
  uint32_t module = 0;
  uint32_t header_length = 0;
  uint32_t result = 0;
  uint32_t command = 0;
  std::string payload;  // up to its last byte that is not zero
};

struct Reply {
  int returned = 0;
  uint32_t result = 0;
  Bytes payload;
  Bytes header;  // over the record's first 16 bytes
};

struct Outcome : RunResult {
  std::vector<Order> orders;
  std::vector<std::string> calls;  // of the other platform functions
};

struct Surroundings {
  std::string script;  // further lines of the script
  std::string shell;   // a shell command that runs "$@" in its own way
};

// Words that are separated by blanks.
std::vector<std::string> split(const std::string& words);

// A line of the script: what the next call of a platform function returns and fills in.
std::string answer(const std::string& function, long returned, const Bytes& bytes = {});

// Runs vek with the words behind its name; the replies answer the gateway's calls in turn.
Outcome vek(const std::vector<std::string>& words, const std::vector<Reply>& replies = {},
            const Surroundings& surroundings = {});

// The run sent one order, with this payload and nothing else, wrote this and left with this status.
void expect_order(const Outcome& outcome, uint32_t module, uint32_t command, uint32_t length,
                  const Bytes& payload);
void expect_end(const Outcome& outcome, int status, const std::string& out, const std::string& err = "");

// What the runner writes when the words are no good; nothing was sent.
void expect_rejected(const std::vector<std::string>& words, const std::string& usage,
                     const std::string& before = "");

// A sub-command's whole way with an answer that is only a result code.
void expect_setting(const std::vector<std::string>& words, uint32_t module, uint32_t command, uint32_t length,
                    const Bytes& payload);

// The path of vek as it shows in reports.
std::string vek_path();
