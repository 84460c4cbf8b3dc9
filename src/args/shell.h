// Lines for the shell.
#pragma once

// Runs a line when what is waiting to be printed has been written, so that what the line prints stands behind
// it. How the line ends is not told: main ignores the end of children, and no caller asks.
void run_shell(const char* line);
