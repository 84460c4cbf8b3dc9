// The words that this folder's commands choose between.
#pragma once

#include <initializer_list>

#include "args/args.h"

// The place of the word among the others; -1 where it is none of them.
int choice(const Args& args, int index, std::initializer_list<const char*> words);
