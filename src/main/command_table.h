// The command table, to be asked.
#pragma once

#include "order/command.h"

extern const CommandEntry kCommandTable[];  // up to a row without a name

// The handler of commands that only other builds of the system have.
int cmd_usage_only(int argc, char** argv, const CommandEntry* entry);

// Looks argv[1] up in the command table and runs its handler. Returns the exit status.
int run_command(int argc, char** argv);
