// Orders and answers as lines for people: every field with its offset in the payload, bytes without a name in
// hexadecimal digits.
#pragma once

#include <string>

#include "shell/records.h"

// Appends the lines of an order or an answer. The first says what it is ("order rule acc add ..."), those of
// the payload are indented.
void append_trace(std::string& out, const Message& message);
