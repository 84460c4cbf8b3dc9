// FRR's running configuration, read and changed through vtysh. What FRR refuses is thrown as its own text.
#pragma once

#include <functional>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

// Runs the commands up to the first that fails. Returns what they print.
std::string vtysh(const Words& commands);

// Gives lines of configuration, in order, each in the block that those before it have opened.
void configure(Words lines);

// A line of the running configuration, and those that are indented below it.
struct Block {
  std::string head;
  Words lines;
};

struct Running {
  Words daemons;
  std::vector<Block> blocks;
};

// It is asked for once, and again after a change.
const Running& running();

bool has_block(const std::string& head);

// Which of a block's lines are meant.
using Owns = std::function<bool(const std::string& line)>;

// Those lines of the blocks of this head.
Words owned(const std::string& head, const Owns& owns);

// Puts the wanted lines in the place of those below the head that are owned; what stays is not touched. Where
// FRR refuses one, everything is as it was.
void settle(const std::string& head, const Owns& owns, const Words& wanted);

// Takes the owned lines away. It is refused where there are none.
void take_away(const std::string& head, const Owns& owns);

// What blanks separate.
Words words_of(const std::string& line);

// The line, or what it takes back.
std::string without_no(const std::string& line);

bool is_vlink(const std::string& line);
