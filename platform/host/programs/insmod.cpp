// insmod: puts the module in a file on the list of kernel modules. Parameters of modules are not known here.
#include <cstdio>
#include <exception>

#include "state/kernel_modules.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    fputs("insmod FILE\n", stderr);
    return 1;
  }
  try {
    load_kernel_module(argv[1]);
    return 0;
  } catch (const std::exception& error) {
    fprintf(stderr, "insmod: %s\n", error.what());
    return 1;
  }
}
