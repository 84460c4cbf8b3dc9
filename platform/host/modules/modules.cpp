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
    &kDevmgModule,
    &kArpModule,
    &kDnsModule,
    &kDhcpModule,
    &kFlushModule,
    &kMrModule,
    &kRuleModule,
    &kHostModule,
    &kQosModule,
    &kUserModule,
    &kBbsFilterModule,
    &kPostfixFilterModule,
    &kPostForbidModule,
    &kMacUserModule,
    &kUrlFilterModule,
};
// clang-format on

}  // namespace

std::span<const Module* const> all_modules() { return kModules; }

Store open_state(Access access) {
  std::vector<Schema> schemas = {kSettingsSchema};
  for (const Module* module : kModules) schemas.push_back({module->number, module->schema});
  return Store("state.db", schemas, access);
}

const Module* find_module(uint32_t number) {
  const auto found = std::ranges::find(kModules, number, [](const Module* module) { return module->number; });
  return found == std::end(kModules) ? nullptr : *found;
}
