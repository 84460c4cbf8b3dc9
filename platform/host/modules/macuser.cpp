// MAC memory (module 62): the MAC addresses of the hosts that accounts have logged in.
#include "modules/macuser.h"

#include "modules/checks.h"
#include "modules/modules.h"
#include "records/macuser.h"
#include "state/settings.h"

namespace {

constexpr int kMaxRemembered = 4096;
constexpr const char* kTimeout = "timeout";  // seconds unseen; none and below: a MAC is never forgotten

int32_t timeout(Store& store) { return static_cast<int32_t>(get_setting(store, kModuleMacUser, kTimeout)); }

void set(Store& store, const MacUserSetting& setting) {
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
  Statement row = store.query(
      "SELECT unseen, mac, userid, card_type FROM mac_remembered WHERE ?1 <= 0 OR unseen <= ?1 ORDER BY mac",
      timeout(store));
  ListAnswer<MacUserEntry> answer(order);
  while (row.next()) {
    MacUserEntry entry = {};
    row.read(entry.last, entry.mac, entry.userid, entry.card_type);
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

// A host is seen until its session ends; of that the session's own row tells until it is gone.
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
    AS unseen FROM mac_memory)"};

constexpr Command kCommands[] = {
    {kMacUserSet, kWrites, run_as<set>},      {kMacUserGet, kReads, run_as<get>},
    {kMacUserList, kReads, run_as<list>},     {kMacUserMacDel, kWrites, run_as<mac_del>},
    {kMacUserIdDel, kWrites, run_as<id_del>}, {kMacUserInit, kWrites, run_as<forget_all>},
};

}  // namespace

const Module kMacUserModule = {kModuleMacUser, kCommands, kSchema, forget_all};

void remember_mac(Store& store, const Mac& mac, uint32_t userid) {
  if (get_setting(store, kModuleMacUser, kRemember) == 0) return;
  store.execute(
      "INSERT INTO mac_memory (mac, userid, seen) VALUES (?, ?, unixepoch())"
      "  ON CONFLICT (mac) DO UPDATE SET userid = excluded.userid, seen = excluded.seen",
      mac, userid);
  store.execute(
      "DELETE FROM mac_memory WHERE mac IN"
      "  (SELECT mac FROM mac_remembered ORDER BY unseen LIMIT -1 OFFSET ?)",
      kMaxRemembered);
}
