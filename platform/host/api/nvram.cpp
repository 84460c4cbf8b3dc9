// The parameter store of a plain Linux host.
#include "platform/nvram.h"

#include "api/guard.h"
#include "state/parameters.h"

namespace {

bool is_key(const char* key) { return key != nullptr && is_parameter_key(key); }

}  // namespace

#pragma GCC visibility push(default)

const char* nvram_get(const char* key) {
  static std::optional<std::string> value;
  if (!is_key(key)) return nullptr;
  const auto get = [key] {
    value = get_parameter(key);
    return value ? value->c_str() : nullptr;
  };
  return guarded(get, nullptr);
}

int nvram_set(const char* key, const char* value) {
  if (!is_key(key)) return -1;
  const auto set = [key, value] {
    set_parameter(key, value);
    return 0;
  };
  return guarded(set, -1);
}

int nvram_commit() {
  const auto commit = [] {
    commit_parameters();
    return 0;
  };
  return guarded(commit, -1);
}

#pragma GCC visibility pop
