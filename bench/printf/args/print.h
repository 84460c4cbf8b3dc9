// print and print_error by way of the C library's printf: found before the tool's own header, it makes the
// yardstick of the tool's own sources. Texts must end with a NUL here.
#pragma once

#include <cstdio>

template <typename... Args>
void print(const char* format, const Args&... args) {
  printf(format, args...);
}

template <typename... Args>
void print_error(const char* format, const Args&... args) {
  fflush(stdout);
  fprintf(stderr, format, args...);
}
