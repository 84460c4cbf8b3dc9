// The gateway of the scripted platform library, and its script and log. The library stands in for the
// router's, answers from the script named by VEK_SCRIPT and writes down every call in the file named by
// VEK_LOG. Stands alone, so that it can go into static programs.
//
// A line of the script answers a call: the function's name ("order" for the gateway), the number that it
// returns, and any number of places in what it fills in (for the gateway the record), each with what is put
// there, bytes in hexadecimal or "@" and the file that has them:
//   order 0 8 03000000 16 @/tmp/payload
// What does not fit is cut. The lines of one function are used up in their order, the last one is for good;
// without any it returns 0 and fills in nothing.
// The log has a line a call: "order LENGTH HEX" with the record up to its last byte that is not zero, or the
// function's name and its arguments.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/order.h"
#include "script.h"

namespace {

// Null when nobody has asked for a log.
FILE* log_file() {
  static FILE* const file = getenv("VEK_LOG") == nullptr ? nullptr : fopen(getenv("VEK_LOG"), "a");
  return file;
}

void end_log_line() {
  fputc('\n', log_file());
  fflush(log_file());
}

char* read_script() {
  FILE* file = getenv("VEK_SCRIPT") == nullptr ? nullptr : fopen(getenv("VEK_SCRIPT"), "r");
  char* text = nullptr;
  size_t room = 0;
  if (file == nullptr || getdelim(&text, &room, '\0', file) <= 0) return nullptr;
  fclose(file);
  return text;
}

// What stands behind the function's name in the line that answers this call; null when there is none.
char* take_line(const char* function) {
  static char* const script = read_script();
  const size_t length = strlen(function);
  char* found = nullptr;
  for (char* line = script; line != nullptr; line = strchr(line, '\n')) {
    if (*line == '\n') ++line;
    if (strncmp(line, function, length) != 0 || line[length] != ' ') continue;
    if (found != nullptr) {
      *found = '#';  // used up: there is another
      break;
    }
    found = line;
  }
  return found == nullptr ? nullptr : found + length;
}

uint8_t digit(char c) { return static_cast<uint8_t>(c <= '9' ? c - '0' : c - 'a' + 10); }

// Puts the bytes that the text tells of where there is room for so many. Returns the text behind them.
char* put(char* text, uint8_t* at, size_t room) {
  if (*text == '@') {
    char* const end = strchrnul(text, '\n');
    *end = '\0';
    const int file = open(text + 1, O_RDONLY | O_CLOEXEC);
    if (file < 0 || read(file, at, room) < 0) abort();
    close(file);
    *end = '\n';
    return end;
  }
  for (; *text > ' '; text += 2) {
    if (room == 0) continue;
    *at++ = static_cast<uint8_t>(digit(text[0]) << 4 | digit(text[1]));
    --room;
  }
  return text;
}

}  // namespace

void log_call(std::initializer_list<LoggedWord> words) {
  if (log_file() == nullptr) return;
  // A log that is standard output has the calls between what the tool prints. What a child of the tool's
  // prints comes when it comes, and the tool must have flushed before.
  const bool is_child = strcmp(words.begin()->text, "system") == 0;
  if (!is_child && strcmp(getenv("VEK_LOG"), "/dev/stdout") == 0) fflush(stdout);
  const char* separator = "";
  for (const LoggedWord& word : words) {
    fputs(separator, log_file());
    if (word.is_text) {
      fputs(word.text == nullptr ? "(null)" : word.text, log_file());
    } else {
      fprintf(log_file(), "%u", word.number);
    }
    separator = " ";
  }
  end_log_line();
}

long next_answer(const char* function, void* destination, size_t room) {
  char* at = take_line(function);
  if (at == nullptr) return 0;
  const long number = strtol(at, &at, 10);
  while (*at == ' ') {
    const size_t place = std::min<size_t>(strtoul(at, &at, 10), room);
    at = put(at + 1, static_cast<uint8_t*>(destination) + place, room - place);
  }
  return number;
}

#pragma GCC visibility push(default)

// clang-format off
#define NO_TEXTS nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr
const char* const tvlret_err_str[52] = {nullptr, "first error", nullptr, "no such entry", NO_TEXTS, NO_TEXTS, NO_TEXTS,
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, "error fifty-one"};
// clang-format on

int tesvel_order_opt_fun(void* record, uint32_t length) {
  auto* bytes = static_cast<uint8_t*>(record);
  if (log_file() != nullptr) {
    uint32_t used = length;
    while (used > 0 && bytes[used - 1] == 0) --used;
    fprintf(log_file(), "order %u ", length);
    for (uint32_t i = 0; i < used; ++i) fprintf(log_file(), "%02x", bytes[i]);
    end_log_line();
  }
  return static_cast<int>(next_answer("order", record, length));
}

#pragma GCC visibility pop
