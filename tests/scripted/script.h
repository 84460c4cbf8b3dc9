// What the scripted platform functions work with: where their answers come from and where their calls go.
#pragma once

#include <cstddef>

// Writes a line to the log of calls.
[[gnu::format(printf, 1, 2)]] void log_call(const char* format, ...);

// The next answer of the function: fills `destination` with the answer's bytes, `room` at the most, and
// returns its number. Without an answer nothing is filled and the number is 0.
long next_answer(const char* function, void* destination = nullptr, size_t room = 0);
