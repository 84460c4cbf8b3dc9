// MAC memory (module 62): the MAC addresses of the hosts that accounts have logged in.
#include "modules/macuser.h"

#include "modules/checks.h"
#include "modules/modules.h"
#include "modules/user.h"
#include "records/macuser.h"
#include "state/settings.h"

namespace {

constexpr int kMaxRemembered = 4096;
constexpr const char* kTimeout = "timeout";  // seconds unseen; none and below: a MAC is never forgotten

int32_t timeout(Store& store) { return static_cast<int32_t>(get_setting(store, kModuleMacUser, kTimeout)); }

void forget_unseen(Store& store) {
  end_sessions(store);  // whose hosts are seen no more
  store.execute(
      "DELETE FROM mac_memory WHERE ?1 > 0 AND mac IN (SELECT mac FROM mac_remembered WHERE last > ?1)",
      timeout(store));
}

// What the time-out until now has let go does not come back with a longer one.
void set(Store& store, const MacUserSetting& setting) {
  forget_unseen(store);
  const auto seconds = static_cast<int32_t>(setting.timeout);
  check_switch(setting.enable);
  refuse_unless(setting.timeout == static_cast<uint64_t>(seconds), kBadTime);
  set_setting(store, kModuleMacUser, kRemember, setting.enable);
  set_setting(store, kModuleMacUser, kTimeout, static_cast<uint32_t>(seconds));
}

void get(Store& store, MacUserSetting& setting) {
  setting.enable = get_setting(store, kModuleMacUser, kRemember);
  setting.timeout = static_cast<uint64_t>(timeout(store));
}

void list(Store& store, Order& order) {
  forget_unseen(store);
  Statement row = store.query("SELECT * FROM mac_remembered ORDER BY mac");
  ListAnswer<MacUserEntry> answer(order);
  while (row.next()) {
    MacUserEntry entry = {};
    row.read_fields(entry);
    answer.add(entry);
  }
}

void mac_del(Store& store, const MacUserEntry& entry) {
  refuse_if_none(store.execute("DELETE FROM mac_memory WHERE mac = ?", entry.mac));
}

void id_del(Store& store, const MacUserEntry& entry) {
  refuse_if_none(store.execute("DELETE FROM mac_memory WHERE userid = ?", entry.userid));
}

void forget_all(Store& store) { store.execute("DELETE FROM mac_memory"); }

// A host is seen until its session ends.
constexpr const char* kSchema[] = {R"(
CREATE TABLE mac_memory (
  mac BLOB PRIMARY KEY,
  userid INTEGER NOT NULL REFERENCES account (userid) ON DELETE CASCADE,
  seen INTEGER NOT NULL,
  card_type INTEGER NOT NULL DEFAULT 0
) WITHOUT ROWID;
CREATE TRIGGER session_ended AFTER DELETE ON session BEGIN
  UPDATE mac_memory SET seen = min(old.until, unixepoch()) WHERE mac = old.mac;
END;
CREATE INDEX session_mac ON session (mac);
CREATE VIEW mac_remembered AS SELECT mac, userid, card_type,
  max(0, unixepoch() - max(seen, coalesce((SELECT max(until) FROM session WHERE session.mac = mac_memory.mac), 0)))
    AS unseen FROM mac_memory)",
                                   // Hosts are out of sight by the clock that no one sets.
                                   R"(
DROP VIEW IF EXISTS mac_remembered;
DROP TRIGGER IF EXISTS session_ended;
CREATE TABLE mac_memory_of_step_2 (
  mac BLOB PRIMARY KEY,
  userid INTEGER NOT NULL REFERENCES account (userid) ON DELETE CASCADE,
  card_type INTEGER NOT NULL DEFAULT 0,
  since INTEGER NOT NULL DEFAULT (present()),
  unseen INTEGER NOT NULL DEFAULT 0     -- seconds by then
) WITHOUT ROWID;
INSERT INTO mac_memory_of_step_2 (mac, userid, card_type, unseen)
  SELECT mac, userid, card_type, max(0, unixepoch() - seen) FROM mac_memory;
DROP TABLE mac_memory;
ALTER TABLE mac_memory_of_step_2 RENAME TO mac_memory;
CREATE TRIGGER session_ended AFTER DELETE ON session BEGIN
  UPDATE mac_memory SET since = present(), unseen = iif(old.seconds = 0, 0, max(0, age(old.since) - old.seconds))
    WHERE mac = old.mac;
END;
CREATE INDEX IF NOT EXISTS session_mac ON session (mac);
CREATE VIEW mac_remembered AS SELECT mac, userid, card_type,
  iif(EXISTS (SELECT * FROM session WHERE session.mac = mac_memory.mac), 0, age(since) + unseen) AS last
  FROM mac_memory)"};

constexpr Command kCommands[] = {
    {kMacUserSet, kWrites, run_as<set>},      {kMacUserGet, kReads, run_as<get>},
    {kMacUserList, kWrites, run_as<list>},    {kMacUserMacDel, kWrites, run_as<mac_del>},
    {kMacUserIdDel, kWrites, run_as<id_del>}, {kMacUserInit, kWrites, run_as<forget_all>},
};

}  // namespace

const Module kMacUserModule = {kModuleMacUser, kCommands, kSchema, forget_all};

void remember_mac(Store& store, const Mac& mac, uint32_t userid) {
  if (get_setting(store, kModuleMacUser, kRemember) == 0) return;
  store.put("mac_memory", Column{"mac", mac}, Column{"userid", userid});
  store.execute(
      "DELETE FROM mac_memory WHERE mac IN"
      "  (SELECT mac FROM mac_remembered ORDER BY last LIMIT -1 OFFSET ?)",
      kMaxRemembered);
}
