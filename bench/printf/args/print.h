// print and print_error by way of the C library's printf: found before the tool's own header, it makes the
// yardstick of the tool's own sources. Texts of records must end with a NUL here.
#pragma once

#include <cstdio>
#include <cstring>
#include <string_view>

#include "args/field_text.h"

namespace print_detail {

template <typename T>
struct Argument {
  const T& value;
  explicit Argument(const T& its) : value(its) {}
  const T& get() const { return value; }
};

template <ShownField T>
struct Argument<T> {
  char room[kFieldRoom];
  explicit Argument(const T& field) { text_of(field, room); }
  const char* get() const { return room; }
};

template <>
struct Argument<std::string_view> {
  char room[2048];
  explicit Argument(std::string_view text) { room[text.copy(room, sizeof room - 1)] = '\0'; }
  const char* get() const { return room; }
};

}  // namespace print_detail

template <typename... Args>
void print(const char* format, const Args&... args) {
  printf(format, print_detail::Argument<Args>(args).get()...);
}

template <typename... Args>
void print_error(const char* format, const Args&... args) {
  fflush(stdout);
  fprintf(stderr, format, print_detail::Argument<Args>(args).get()...);
}
