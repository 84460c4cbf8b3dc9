// Orders and answers as JSON. It is written as it is decoded: long lists are too slow by way of a tree.
#pragma once

#include <string>

#include "shell/records.h"

// Appends the payload as one JSON object: fields by their names, records within as objects, lists as arrays.
// Numbers are exact up to 64 bits, addresses and MAC addresses are text (null for an IpAddress that is none),
// bit sets are arrays of bit numbers, texts are valid UTF-8. False, with nothing appended, where no record is
// known to travel, as decode() has it.
bool append_json(std::string& out, const Message& message);
