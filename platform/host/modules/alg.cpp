// The application-level gateways (module 11, beside the rules): which of them are on.
#include "records/alg.h"

#include "modules/modules.h"
#include "modules/pairs.h"

namespace {

void check(const AlgSettings& alg) {
  for (const uint8_t gateway : alg.gateways) check_switch(gateway);
}

constexpr Command kCommands[] = {
    {kRuleAlg, kWrites, run_pair<check>},
};

}  // namespace

const Module kAlgModule = {.number = kModuleRule, .commands = kCommands, .part = 2};
