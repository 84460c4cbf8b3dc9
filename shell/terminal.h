// Commands from a person at a terminal.
#pragma once

// Runs what is typed until there is no more; the answers are JSON when is_json. Returns the shell's status.
int run_terminal(bool is_json);
