// The table of kernel modules.
#include "modules/modules.h"

#include <algorithm>
#include <vector>

#include "state/settings.h"

namespace {

// Tables are made in this order: one that another refers to comes first.
// clang-format off
constexpr const Module* kModules[] = {
    &kGeneralModule,
    &kSwitchModule,
    &kBoardModule,
    &kDevmgModule,
    &kArpModule,
    &kDnsModule,
    &kDhcpModule,
    &kFlushModule,
    &kPppoeModule,
    &kMrModule,
    &kIgmpModule,
    &kRuleModule,
    &kAlgModule,
    &kHostModule,
    &kQosModule,
    &kSpeedRuleModule,
    &kLimitModule,
    &kDdosFyModule,
    &kDdosModule,
    &kUserModule,
    &kSwitchChipModule,
    &kBbsFilterModule,
    &kPostfixFilterModule,
    &kPostForbidModule,
    &kPppoeBridgeModule,
    &kPppFastModule,
    &kMacUserModule,
    &kAuditModule,
    &kNetlinkModule,
    &kUrlFilterModule,
};
// clang-format on

}  // namespace

std::span<const Module* const> all_modules() { return kModules; }

Store open_state(Access access) {
  std::vector<Schema> schemas = {kSettingsSchema};
  for (const Module* module : kModules) {
    schemas.push_back({module->number + (module->part << 16), module->schema});
  }
  return Store("state.db", schemas, access);
}

bool has_module(uint32_t number) {
  return std::ranges::any_of(kModules, [number](const Module* module) { return module->number == number; });
}

const Command* find_command(uint32_t number, uint32_t command) {
  for (const Module* module : kModules) {
    if (module->number != number) continue;
    const auto found = std::ranges::find(module->commands, command, &Command::number);
    if (found != module->commands.end()) return &*found;
  }
  return nullptr;
}
