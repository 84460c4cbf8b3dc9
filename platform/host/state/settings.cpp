// Single numbers and records of settings that modules keep.
#include "state/settings.h"

namespace {

constexpr const char* kSteps[] = {R"(
CREATE TABLE setting (
  module INTEGER NOT NULL,
  name TEXT NOT NULL,
  value INTEGER NOT NULL,
  PRIMARY KEY (module, name)
) WITHOUT ROWID)",
                                  R"(
CREATE TABLE setting_record (
  module INTEGER NOT NULL,
  command INTEGER NOT NULL,
  record BLOB NOT NULL,
  PRIMARY KEY (module, command)
) WITHOUT ROWID)"};

}  // namespace

const Schema kSettingsSchema = {0, kSteps};

uint32_t get_setting(Store& store, uint32_t module, const char* name, uint32_t if_never_set) {
  return static_cast<uint32_t>(
      store.number("SELECT coalesce((SELECT value FROM setting WHERE module = ? AND name = ?), ?)", module,
                   std::string_view(name), if_never_set));
}

void set_setting(Store& store, uint32_t module, const char* name, uint32_t value) {
  store.execute("INSERT OR REPLACE INTO setting VALUES (?, ?, ?)", module, std::string_view(name), value);
}
