// The argument vector as parse functions see it: a word that is not there reads as the empty text, so that no
// parse function can look past the vector.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/address.h"

class Args {
 public:
  Args(int argc, char** argv) : argc_(argc), argv_(argv) {}

  int count() const { return argc_; }
  // Null when absent, for the few calls that pass a missing word on.
  char* get(int index) const { return index >= 0 && index < argc_ ? argv_[index] : nullptr; }
  const char* operator[](int index) const {
    const char* word = get(index);
    return word == nullptr ? "" : word;
  }
  bool is(int index, std::string_view word) const { return word == (*this)[index]; }
  // Cut to the width of the field that it goes into.
  template <typename Number = uint32_t>
  Number number(int index) const {
    return static_cast<Number>(J_atoi((*this)[index]));
  }

 private:
  int argc_;
  char** argv_;
};

// Copies a word into a fixed-width text field of a record: always NUL-terminated, silently cut.
template <size_t N>
void copy_text(char (&field)[N], const char* word) {
  const size_t length = strnlen(word, N - 1);
  memcpy(field, word, length);
  field[length] = '\0';
}
