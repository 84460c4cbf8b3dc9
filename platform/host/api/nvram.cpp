// The parameter store of a plain Linux host. It has a file of its own, so that an order can set a parameter
// without waiting for its own transaction to end.
#include "platform/nvram.h"

#include "api/guard.h"
#include "state/store.h"
#include "state/time.h"

namespace {

// A live value is what everyone sees; the committed one is what is left of it when the machine starts again.
constexpr const char* kSteps[] = {R"(
CREATE TABLE parameter (key TEXT PRIMARY KEY, live TEXT, committed TEXT) WITHOUT ROWID;
CREATE TABLE boot (id TEXT NOT NULL);
INSERT INTO boot VALUES (''))"};
constexpr Schema kSchemas[] = {{0, kSteps}};
constexpr const char* kFile = "nvram.db";

// What was not committed before the machine last started is gone. Nothing may be written before this.
void drop_values_of_earlier_boots(Store& store) {
  if (store.execute("UPDATE boot SET id = ?1 WHERE id <> ?1", boot_id()) == 0) return;
  store.execute("UPDATE parameter SET live = committed");
}

bool is_key(const char* key) { return key != nullptr && *key != '\0' && strchr(key, '=') == nullptr; }

}  // namespace

[[gnu::visibility("default")]] const char* nvram_get(const char* key) {
  static std::string value;
  if (!is_key(key)) return nullptr;
  const auto read = [key]() -> const char* {
    Store store(kFile, kSchemas, kReads);
    Statement row = store.query(
        "SELECT value FROM (SELECT iif((SELECT id FROM boot) = ?, live, committed) AS value FROM parameter"
        "  WHERE key = ?) WHERE value IS NOT NULL",
        boot_id(), std::string_view(key));
    if (!row.next()) return nullptr;
    row.read(value);
    return value.c_str();
  };
  return guarded(read, nullptr);
}

[[gnu::visibility("default")]] int nvram_set(const char* key, const char* value) {
  if (!is_key(key)) return -1;
  const auto set = [key, value] {
    Store store(kFile, kSchemas, kWrites);
    drop_values_of_earlier_boots(store);
    const std::string_view name = key;
    if (value == nullptr) {
      store.execute("UPDATE parameter SET live = NULL WHERE key = ?", name);
    } else {
      store.execute(
          "INSERT INTO parameter VALUES (?, ?, NULL) ON CONFLICT (key) DO UPDATE SET live = excluded.live",
          name, std::string_view(value));
    }
    store.commit();
    return 0;
  };
  return guarded(set, -1);
}

[[gnu::visibility("default")]] int nvram_commit() {
  const auto commit = [] {
    Store store(kFile, kSchemas, kWrites);
    drop_values_of_earlier_boots(store);
    store.execute("DELETE FROM parameter WHERE live IS NULL");
    store.execute("UPDATE parameter SET committed = live");
    store.commit();
    return 0;
  };
  return guarded(commit, -1);
}
