// libvek_trace.so: preloaded into any program that gives orders, it appends them to the files that these
// variables of the environment name:
//   VEK_TRACE   every order field by field; "-" is standard error
//   VEK_RECORD  a recording (shell/recording.h)
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "shell/gateway.h"
#include "shell/tracer.h"

// Both live as long as the process.
Gateway first_gateway() {
  Gateway ours;
  ours.name = "libvek_trace";
  const char* const trace = getenv("VEK_TRACE");
  const char* const recording = getenv("VEK_RECORD");
  try {
    if (recording != nullptr) ours.recorder = new Recorder(recording);
    if (trace == nullptr) return ours;
    const std::string path = trace;
    auto* const tracer = path == "-" ? new Tracer(STDERR_FILENO) : new Tracer(path);
    ours.is_request_wanted = true;
    ours.watchers.emplace_back([tracer](const Exchanged& exchanged) { tracer->show(exchanged); });
  } catch (const std::exception& error) {
    fprintf(stderr, "%s: %s\n", ours.name, error.what());
  }
  return ours;
}
