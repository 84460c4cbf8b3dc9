// What the scripted platform functions work with: where their answers come from and where their calls go.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

struct LoggedWord {
  LoggedWord(const char* word) : text(word), is_text(true) {}
  LoggedWord(uint32_t word) : number(word) {}
  const char* text = nullptr;
  uint32_t number = 0;
  bool is_text = false;
};

// Writes a line of words, a function's name and its arguments, to the log of calls.
void log_call(std::initializer_list<LoggedWord> words);

// The next answer of the function: fills `destination` with the answer's bytes, `room` at the most, and
// returns its number. Without an answer nothing is filled and the number is 0.
long next_answer(const char* function, void* destination = nullptr, size_t room = 0);
