// The flush target (module 7): drops what modules have learnt by themselves. Settings and entries made by
// hand are no concern of it, and nothing waits to be written: every order answered is on disk.
#include "records/flush.h"

#include "modules/checks.h"
#include "modules/modules.h"

namespace {

// The number is that of the module to flush; 0 flushes all.
void flush(Store& store, const FlushRequest& request) {
  refuse_unless(request.number == 0 || has_module(request.number), kUnknownModule);
  for (const Module* module : all_modules()) {
    if (module->flush == nullptr || (request.number != 0 && request.number != module->number)) continue;
    module->flush(store);
  }
}

constexpr Command kCommands[] = {
    {kFlush, kWrites, run_as<flush>},
};

}  // namespace

const Module kFlushModule = {kModuleFlush, kCommands};
