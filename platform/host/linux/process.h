// Programs that are run, and processes that live on when whoever started them has ended.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

enum Output { kOurs, kSilenced };

// Runs a program, found through PATH, and waits for its end; what it writes goes where our output does, or
// nowhere. Returns its exit status; throws when it cannot be run.
int run_program(const std::vector<std::string>& words, Output output);

struct ProgramEnd {
  int status;
  std::string output;
};
// The same, for a program whose standard output is wanted; what it writes to standard error goes nowhere.
ProgramEnd read_program(const std::vector<std::string>& words);

// Starts a program, found through PATH; what it writes goes into the file, or with null where our output
// does. Throws when it cannot be started.
int64_t start_program(char* const argv[], const char* output_file);

// Waits for the end of one that this process has started, and kills it after so many seconds, 0 for never.
// Returns its exit status, or 128 and the signal that ended it.
int wait_for_program(int64_t pid, int seconds);

// A process by its number and the moment at which it started: numbers are used again.
struct Process {
  int64_t pid;
  int64_t start;  // in ticks of the clock since the machine started
};

// None when no process of this number is alive.
std::optional<Process> find_process(int64_t pid);

bool is_alive(const Process& process);

// Do nothing to a process that is not alive, nor to one that has its number now.
void signal_process(const Process& process, int signal);
// Asks it to end and waits until it has, or puts an end to it where it takes too long.
void end_process(const Process& process);
