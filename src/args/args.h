// The argument vector as parse functions see it: a word that is not there reads as the empty text, so that no
// parse function can look past the vector.
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "platform/address.h"
#include "records/field.h"

// Copies a word into a fixed-width text field of a record: always NUL-terminated, silently cut.
template <size_t N>
void copy_text(char (&field)[N], const char* word) {
  const size_t length = strnlen(word, N - 1);
  memcpy(field, word, length);
  field[length] = '\0';
}

class Args {
 public:
  Args(int argc, char** argv) : argc_(argc), argv_(argv) {}

  int count() const { return argc_; }
  char** words() const { return argv_; }
  // Null when absent, for the few calls that pass a missing word on.
  char* get(int index) const { return index >= 0 && index < argc_ ? argv_[index] : nullptr; }
  const char* operator[](int index) const {
    const char* word = get(index);
    return word == nullptr ? "" : word;
  }
  bool is(int index, std::string_view word) const { return word == (*this)[index]; }
  // The place of a word among those; -1 where it is none of them.
  int choice(int index, std::initializer_list<const char*> words) const {
    int place = 0;
    for (const char* word : words) {
      if (strcmp((*this)[index], word) == 0) return place;
      ++place;
    }
    return -1;
  }
  // Cut to the width of the field that it goes into.
  template <typename Number = uint32_t>
  Number number(int index) const {
    return static_cast<Number>(J_atoi((*this)[index]));
  }
  // Zero where the word is no address.
  Ip4 ip(int index) const { return {StrToIp((*this)[index])}; }
  // False, with the field zeroed, where the word is none.
  bool read(int index, Mac& mac) const { return StrToMac((*this)[index], &mac) == 0; }
  bool read(int index, IpAddress& ip) const { return StrToIpaddr((*this)[index], &ip) != 0; }

  // Consecutive words into fields, each as its field's type wants it: numbers, texts (cut), addresses (zero
  // where the word is none).
  template <typename... Fields>
  void take(int first, Fields&... fields) const {
    (take_word(first++, fields), ...);
  }

 private:
  template <typename Number>
  void take_word(int index, Number& field) const {
    field = number<Number>(index);
  }
  template <size_t kSize>
  void take_word(int index, char (&field)[kSize]) const {
    copy_text(field, (*this)[index]);
  }
  void take_word(int index, Ip4& field) const { field = ip(index); }
  void take_word(int index, Mac& field) const { read(index, field); }

  int argc_;
  char** argv_;
};
