// Settings of the lines that stand in the parameter store.
#include "platform/line.h"

#include <string_view>

#include "platform/nvram.h"

namespace {

struct FactoryDefault {
  std::string_view key;
  const char* value;
};

constexpr FactoryDefault kFactoryDefaults[] = {
    {"LedStatus", "1"},
    {"snmp_prro", "public"},
};

}  // namespace

[[gnu::visibility("default")]] const char* tvl_nv_get_def(const char* key) {
  if (key == nullptr) return nullptr;
  const char* value = nvram_get(key);
  if (value != nullptr) return value;
  for (const FactoryDefault& factory : kFactoryDefaults) {
    if (factory.key == key) return factory.value;
  }
  return nullptr;
}
