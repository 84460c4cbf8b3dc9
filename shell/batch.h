// Commands from a file or a pipe.
#pragma once

#include <string>

#include "shell/runner.h"

// Runs a command a line. Returns the shell's status: 0 when all were well. Takes the file over; `name` stands
// in front of the numbers of lines that were not.
int run_batch(Runner& runner, int file, const std::string& name, bool stops_at_first);
