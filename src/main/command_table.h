// The command table, to be asked.
#pragma once

// Looks argv[1] up in the command table and runs its handler. Returns the exit status.
int run_command(int argc, char** argv);
