// rmmod: takes a module, or that of a file, off the list of kernel modules.
#include <cstdio>
#include <exception>

#include "state/kernel_modules.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    fputs("rmmod NAME\n", stderr);
    return 1;
  }
  try {
    unload_kernel_module(argv[1]);
    return 0;
  } catch (const std::exception& error) {
    fprintf(stderr, "rmmod: %s\n", error.what());
    return 1;
  }
}
