// The words of commands whose tables are of their own kind, for programs that list all words of the tool. The
// tool itself calls none of these functions, and the linker leaves them out of it.
#pragma once

#include <initializer_list>

// Takes the words of a row from the command on, what stands behind them or null, and the number of words that
// it needs of all, the tool's name included, or 0.
using TakeWords = void (*)(std::initializer_list<const char*> words, const char* usage, int min_words);

void each_routing_words(TakeWords take);
void each_rtl_words(TakeWords take);
void each_rzglapi_words(TakeWords take);
