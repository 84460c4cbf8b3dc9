// What stands around the work of a platform function: its callers are C, and no exception may reach them.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

// Whether an exception can be thrown. It takes memory, too: the C++ library has put some aside when it was
// loaded, unless not even that was there, and then it would end the program.
inline bool can_throw() {
  constexpr size_t kPutAside = 80 << 10;
  void* volatile memory = malloc(kPutAside);  // volatile: else the compiler takes it for granted
  free(memory);
  return memory != nullptr;
}

// Does the work. When it cannot be done, says why and returns the result for that.
template <typename Work, typename Result>
auto guarded(Work work, Result if_failed) -> decltype(work()) {
  try {
    if (can_throw()) return work();
    fputs("vek: out of memory\n", stderr);
  } catch (const std::bad_alloc&) {
    fputs("vek: out of memory\n", stderr);
  } catch (const std::exception& error) {
    fprintf(stderr, "vek: %s\n", error.what());
  }
  return if_failed;
}
