// Lines of commands: their words, quoted as a shell has it or as JSON.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// What is wrong with a line.
struct LineError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The words of a line; none of a line that is blank or a comment. '#' starts a comment where a word could
// start; single quotes take all as it is, double quotes all but '\' before '"' and '\', and '\' takes the
// character behind it. A line that starts with '{' is JSON: {"words": ["arp", "list"]}.
std::vector<std::string> words_of_line(std::string_view line);

// The words before the one that a line ends in, and that one as far as it is there; its quotes may be open.
struct UnfinishedLine {
  std::vector<std::string> words;
  std::string last;
};
UnfinishedLine words_of_unfinished_line(std::string_view line);

// In single quotes where it must.
std::string quoted(std::string_view word);
