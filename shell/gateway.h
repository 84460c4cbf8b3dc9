// The gateway in front of the platform library's: every order of the program passes here, and is seen,
// recorded or answered from a recording.
#pragma once

#include <functional>

#include "shell/recording.h"

struct Gateway {
  Recorder* recorder = nullptr;
  Replay* replay = nullptr;  // in place of the kernel modules
  // Shown each exchange when it is over; nothing of it stays. The request is there when it is wanted.
  std::vector<std::function<void(const Exchanged&)>> watchers;
  bool is_request_wanted = false;
  bool has_failed = false;         // to record or to show what passed
  const char* name = "vek-shell";  // in front of reports
};

Gateway& gateway();

// What it is when it is used first; each program has its own.
Gateway first_gateway();
