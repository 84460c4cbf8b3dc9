// A row of the command table, and what every command handler has in common.
#pragma once

struct CommandEntry;

// Takes the whole argument vector (argv[1] is the command word) and its own row; the result is the exit
// status.
using CommandHandler = int (*)(int argc, char** argv, const CommandEntry* entry);

struct CommandEntry {
  const char* name;
  CommandHandler handler;  // null: the command is known and does nothing here
  const char* usage;
};

// What a missing or unknown sub-command gets: the row's name and usage on standard error. Returns status 1.
int print_usage(const CommandEntry* entry);
