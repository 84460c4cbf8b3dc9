// The words of commands whose tables are of their own kind, for programs that list all words of the tool. The
// tool itself calls none of these functions, and the linker leaves them out of it.
#pragma once

// Takes up to four words of a row from the command on, null for those that there are none of; what stands
// behind them, or null; and the number of words that it needs of all, the tool's name included, or 0. A list
// of words would be a constant that stays in the tool.
using TakeWords = void (*)(const char* command, const char* second, const char* third, const char* fourth,
                           const char* usage, int min_words);

void each_routing_words(TakeWords take);
void each_rtl_words(TakeWords take);
void each_rzglapi_words(TakeWords take);
