// Entry point of vek.
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "args/print.h"
#include "order/command.h"

int main(int argc, char** argv) {
  // Programs that handlers start must never linger as zombies.
  signal(SIGCHLD, SIG_IGN);

  // A person at a terminal sees each line as it comes; everyone else gets few large writes.
  static char output_buffer[64 * 1024];
  if (isatty(STDOUT_FILENO) == 0) setvbuf(stdout, output_buffer, _IOFBF, sizeof output_buffer);

  const int status = run_command(argc, argv);

  // An answer that could not be written whole is no success.
  if ((fflush(stdout) != 0 || ferror(stdout) != 0) && status == 0) {
    print_error("vek: write error\n");
    return 1;
  }
  return status;
}
