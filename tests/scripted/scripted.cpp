// The gateway of the scripted platform library, and its script and log. The library stands in for the
// router's, answers from the script named by VEK_SCRIPT and writes down every call in the file named by
// VEK_LOG. Stands alone, so that it can go into static programs.
//
// A script is lines of text:
//   order                 what follows answers the next call of the gateway; the last answer is for good
//   return N              what the gateway returns (0 unless said)
//   result N              the result code in the answer
//   put OFFSET HEX        bytes of the answer, at an offset of the record
//   read PATH             bytes of the answer from a file, as many as the payload holds
//   answer NAME N [HEX]   the next call of another function returns N and fills in the bytes; answers of one
//                         name are used up in their order, the last one for good
// The log has a line a call: "order LENGTH HEX" with the record up to its last byte that is not zero, or the
// function's name and its arguments.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/order.h"
#include "script.h"

namespace {

[[noreturn]] void give_up(const char* what) {
  fprintf(stderr, "scripted platform library: %s\n", what);
  abort();
}

FILE* open_log() {
  const char* path = getenv("VEK_LOG");
  if (path == nullptr) return nullptr;
  FILE* file = fopen(path, "a");
  if (file == nullptr) give_up("the log cannot be opened");
  return file;
}

// Null when nobody asked for a log.
FILE* log_file() {
  static FILE* const file = open_log();
  return file;
}

// Calls visit with each line of the script, without its newline.
template <typename Visit>
void each_line(Visit visit) {
  const char* path = getenv("VEK_SCRIPT");
  FILE* file = path == nullptr ? nullptr : fopen(path, "r");
  if (file == nullptr) return;
  char* line = nullptr;
  size_t room = 0;
  for (ssize_t length; (length = getline(&line, &room, file)) > 0;) {
    if (line[length - 1] == '\n') line[length - 1] = '\0';
    visit(line);
  }
  free(line);
  fclose(file);
}

void end_log_line() {
  fputc('\n', log_file());
  fflush(log_file());
}

bool starts_with(const char* line, const char* word) { return strncmp(line, word, strlen(word)) == 0; }

uint8_t hex_digit(char digit) { return static_cast<uint8_t>(digit <= '9' ? digit - '0' : digit - 'a' + 10); }

// Returns the number of bytes written.
size_t read_hex(const char* hex, uint8_t* destination, size_t room) {
  size_t count = 0;
  for (; hex[0] != '\0' && hex[1] != '\0' && count < room; hex += 2, ++count) {
    destination[count] = static_cast<uint8_t>(hex_digit(hex[0]) << 4 | hex_digit(hex[1]));
  }
  return count;
}

void put_bytes(uint8_t* record, uint32_t length, const char* arguments) {
  char* hex = nullptr;
  const unsigned long offset = strtoul(arguments, &hex, 10);
  ++hex;
  if (offset + strlen(hex) / 2 > length) give_up("put lies outside the record");
  read_hex(hex, record + offset, length - offset);
}

void read_payload(uint8_t* record, uint32_t length, const char* path) {
  constexpr uint32_t kHeaderSize = 16;
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0 || read(file, record + kHeaderSize, length - kHeaderSize) < 0)
    give_up("a file cannot be read");
  close(file);
}

void log_record(const uint8_t* record, uint32_t length) {
  if (log_file() == nullptr) return;
  uint32_t used = length;
  while (used > 0 && record[used - 1] == 0) --used;
  fprintf(log_file(), "order %u ", length);
  for (uint32_t i = 0; i < used; ++i) fprintf(log_file(), "%02x", record[i]);
  end_log_line();
}

// How often the function was called before, this time included.
int count_call(const char* function) {
  static struct {
    char name[64];
    int calls;
  } counts[64];
  for (auto& count : counts) {
    if (count.calls == 0) snprintf(count.name, sizeof count.name, "%s", function);
    if (strcmp(count.name, function) == 0) return ++count.calls;
  }
  give_up("too many functions");
}

}  // namespace

void log_call(std::initializer_list<LoggedWord> words) {
  if (log_file() == nullptr) return;
  const char* separator = "";
  for (const LoggedWord& word : words) {
    if (word.is_text) {
      fprintf(log_file(), "%s%s", separator, word.text == nullptr ? "(null)" : word.text);
    } else {
      fprintf(log_file(), "%s%u", separator, word.number);
    }
    separator = " ";
  }
  end_log_line();
}

long next_answer(const char* function, void* destination, size_t room) {
  const int call = count_call(function);
  const size_t name_length = strlen(function);
  int answers = 0;
  long number = 0;
  each_line([&](const char* line) {
    if (!starts_with(line, "answer ") || !starts_with(line + 7, function) || line[7 + name_length] != ' ')
      return;
    if (++answers > call) return;
    char* hex = nullptr;
    number = strtol(line + 7 + name_length, &hex, 10);
    if (*hex == ' ') read_hex(hex + 1, static_cast<uint8_t*>(destination), room);
  });
  return number;
}

#pragma GCC visibility push(default)

// clang-format off
// Codes 1, 3, 50 and 51 have texts.
const char* const tvlret_err_str[52] = {
    nullptr, "first error", nullptr, "no such entry", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    "error fifty", "error fifty-one"};
// clang-format on

int tesvel_order_opt_fun(void* record, uint32_t length) {
  auto* bytes = static_cast<uint8_t*>(record);
  log_record(bytes, length);
  if (getenv("VEK_SCRIPT") == nullptr) return 0;
  int answers = 0;
  each_line([&](const char* line) { answers += strcmp(line, "order") == 0 ? 1 : 0; });
  const int wanted = std::min(count_call("order"), answers);
  int answer = 0;
  int returned = 0;
  each_line([&](const char* line) {
    if (strcmp(line, "order") == 0) ++answer;
    if (answer != wanted) return;
    if (starts_with(line, "return ")) returned = atoi(line + 7);
    if (starts_with(line, "result ")) {
      const auto result = static_cast<uint32_t>(strtoul(line + 7, nullptr, 10));
      memcpy(bytes + 8, &result, sizeof result);
    }
    if (starts_with(line, "put ")) put_bytes(bytes, length, line + 4);
    if (starts_with(line, "read ")) read_payload(bytes, length, line + 5);
  });
  return returned;
}

#pragma GCC visibility pop
