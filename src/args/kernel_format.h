// Texts of the kernel that are printf formats.
#pragma once

#include <cstddef>

// Writes to standard output what printf would make of a format of that length whose arguments are all zero or
// null. A conversion that printf does not know is written as it stands.
void print_kernel_format(const char* format, size_t length);
