// The table of kernel modules.
#include "modules/modules.h"

#include <algorithm>

namespace {

// Tables are made in this order: one that another refers to comes first.
constexpr const Module* kModules[] = {
    &kGeneralModule,
    &kDevmgModule,
    &kArpModule,
    &kFlushModule,
};

}  // namespace

std::span<const Module* const> all_modules() { return kModules; }

const Module* find_module(uint32_t number) {
  const auto found = std::ranges::find(kModules, number, [](const Module* module) { return module->number; });
  return found == std::end(kModules) ? nullptr : *found;
}
