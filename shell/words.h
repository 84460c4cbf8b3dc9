// The words of the tool as data, made at build time from the tables of its own families.
#pragma once

#include <cstdint>
#include <span>

struct CommandWords {
  enum Kind : uint8_t {
    kCommand,   // a command; its usage names the words behind it
    kReserved,  // a command of which there is only the usage
    kGroup,     // a word that others stand behind
    kRequest,   // sends an order
    kOwnWay,    // does something else, or sends its order in a way of its own
  };

  const char* words;  // that name it, a blank between: "rule acc add"
  const char* usage;  // what else it takes, as the tool says it; may hold several lines
  Kind kind;
  bool has_answer;    // an order's: it is answered with more than ok
  uint16_t module;    // where the order goes; 0 where none is known to go out
  uint16_t command;   // of the module
  int32_t buf_size;   // of the order's payload
  int32_t min_words;  // of all words, the tool's name included
};

// In the order of the tool's tables: a command, then all that stands behind it.
extern const std::span<const CommandWords> kCommandWords;
