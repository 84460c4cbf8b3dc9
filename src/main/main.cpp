// Entry point of vek.
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "main/command_table.h"

int main(int argc, char** argv) {
  // Programs that handlers start must never linger as zombies.
  signal(SIGCHLD, SIG_IGN);

  // A person at a terminal sees each line as it comes; everyone else gets few large writes.
  static char output_buffer[64 * 1024];
  if (isatty(STDOUT_FILENO) == 0) setvbuf(stdout, output_buffer, _IOFBF, sizeof output_buffer);

  return run_command(argc, argv);
}
