// Local user accounts (module 16), and the sessions of the hosts that are logged in. Tables keep addresses as
// numbers, so that they sort and compare, and times as seconds since 1970.
#include "records/user.h"

#include <arpa/inet.h>

#include <algorithm>

#include "modules/checks.h"
#include "modules/modules.h"
#include "platform/address.h"
#include "state/settings.h"

namespace {

constexpr int kMaxAccounts = 4096;
constexpr uint32_t kMaxCardType = 255;
constexpr uint32_t kRequestFlags =
    kUserFixedIp | kUserFixedMac | kUserOff | kUserAnyIp | kUserAnyMac | kUserPppoe | kUserWeb;

// Adding an account again gives it everything anew but its id, its expiry date and its traffic.
void add(Store& store, const UserRequest& user) {
  check_name(text(user.name));
  const uint32_t flags = user.flags & kRequestFlags;
  if ((flags & kUserFixedIp) != 0 && user.ip_start.value > user.ip_end.value) throw Refusal{kBadAddress};
  if ((flags & kUserFixedMac) != 0 && !is_host_mac(user.mac)) throw Refusal{kBadAddress};
  store.execute(
      "INSERT INTO account (userid, name, pwd, mem, ip_start, ip_end, max, up_speed, down_speed, mac, gid,"
      "  mode_speed, mod_pwd, flags) "
      "VALUES ((SELECT userid FROM account WHERE name = :name), :name, :pwd, :mem, :ip_start, :ip_end, :max,"
      "  :up_speed, :down_speed, :mac, :gid, :mode_speed, :mod_pwd, :kept_flags) "
      "ON CONFLICT DO UPDATE SET pwd = excluded.pwd, mem = excluded.mem,"
      "  ip_start = excluded.ip_start, ip_end = excluded.ip_end, max = excluded.max,"
      "  up_speed = excluded.up_speed, down_speed = excluded.down_speed, mac = excluded.mac,"
      "  gid = excluded.gid, mode_speed = excluded.mode_speed, mod_pwd = excluded.mod_pwd,"
      "  flags = excluded.flags",
      user, Column{"kept_flags", flags});
  if (store.number("SELECT count(*) FROM account") > kMaxAccounts) throw Refusal{kTableFull};
}

void del(Store& store, const UserRequest& user) {
  refuse_if_none(store.execute("DELETE FROM account WHERE name = ?", user.name), kUnknownUser);
}

// Deletes all accounts that may use a service, or of these only the expired ones.
void del_all(Store& store, const UserDelAll& filter) {
  constexpr uint32_t kServices[] = {kUserWeb | kUserPppoe, kUserWeb, kUserPppoe};
  refuse_unless(filter.type < std::size(kServices), kBadType);
  check_switch(filter.expired_type);
  store.execute(
      "DELETE FROM account WHERE (?1 = 0 OR flags & ?2) AND (?3 = 0 OR ddate BETWEEN 1 AND unixepoch())",
      filter.type, kServices[filter.type], filter.expired_type);
}

// The totals are in KiB: in bytes they would be of no use beyond 4 GiB.
void answer_accounts(Store& store, Order& order, bool only_online) {
  Statement row = store.query(
      "SELECT name, pwd, mem, userid, ip_start, ip_end, ddate, max, up_speed, down_speed, mac, gid,"
      "  mode_speed, mod_pwd, flags, min(up_bytes / 1024, 0xffffffff) AS zup,"
      "  min(down_bytes / 1024, 0xffffffff) AS zdown,"
      "  (SELECT count(*) FROM online WHERE online.userid = account.userid) AS login_num "
      "FROM account WHERE NOT ? OR login_num > 0 ORDER BY userid",
      only_online);
  ListAnswer<UserEntry> answer(order);
  while (row.next()) {
    UserEntry entry = {};
    row.read_fields(entry);
    answer.add(entry);
  }
}

void list(Store& store, Order& order) { answer_accounts(store, order, false); }
void online_list(Store& store, Order& order) { answer_accounts(store, order, true); }

void stat(Store& store, UserStat& stat) {
  Statement row = store.query("SELECT up_bytes, down_bytes FROM account WHERE name = ?", stat.name);
  if (!row.next()) throw Refusal{kUnknownUser};
  row.read(stat.up, stat.down);
}

// The hosts that an account has logged in, as many as the record holds.
void name_info(Store& store, const UserNameInfo& request, Order& order) {
  UserNameInfo info = {};
  copy_text(info.name, text(request.name));
  const auto userid = store.number("SELECT userid FROM account WHERE name = ?", info.name);
  if (userid == 0) throw Refusal{kUnknownUser};
  Statement row =
      store.query("SELECT ip, mac, service FROM online WHERE userid = ? ORDER BY session", userid);
  uint32_t offset = sizeof info;
  while (row.next()) {
    UserNameEntry entry = {};
    uint32_t ip;
    row.read(ip, entry.mac, entry.flags);
    char ip_text[64];
    StrToIpaddr(IpToStr(ip_text, htonl(ip)), &entry.ip);
    ++info.login_num;
    if (entry.flags == kUserWeb) ++info.web_login_num;
    if (!order.answer(entry, offset)) continue;
    offset += uint32_t{sizeof entry};
    ++info.num;
  }
  order.answer(info);
}

// For both orders: there is no session here that one of them would spare.
void log_out_all(Store& store, const UserKick& kick) {
  constexpr uint32_t kServices[] = {kUserPppoe | kUserWeb, kUserPppoe, kUserWeb};
  refuse_unless(kick.type < std::size(kServices), kBadType);
  store.execute("DELETE FROM session WHERE service & ?", kServices[kick.type]);
}

// A locked account cannot log in, and its hosts are logged out.
void lock(Store& store, const UserLock& lock) {
  check_switch(lock.all);
  check_switch(lock.lock);
  const int changed =
      store.execute("UPDATE account SET locked = ? WHERE ? OR name = ?", lock.lock, lock.all, lock.name);
  if (lock.all == 0) refuse_if_none(changed, kUnknownUser);
  store.execute("DELETE FROM session WHERE userid IN (SELECT userid FROM account WHERE locked)");
}

// ---- Settings ----

constexpr const char* kAutoscan = "autoscan";
constexpr const char* kAutoscanMinutes = "autoscan minutes";

void autoscan_set(Store& store, const UserAutoscan& autoscan) {
  check_switch(autoscan.enable);
  set_setting(store, kModuleUser, kAutoscan, autoscan.enable);
  set_setting(store, kModuleUser, kAutoscanMinutes, autoscan.interval_time);
}

void autoscan_get(Store& store, UserAutoscan& autoscan) {
  autoscan.enable = get_setting(store, kModuleUser, kAutoscan);
  autoscan.interval_time = get_setting(store, kModuleUser, kAutoscanMinutes);
}

void js_mod(Store& store, const UserJsMod& js_mod) {
  set_setting(store, kModuleUser, "js_mod", js_mod.seconds);
}

void card(Store& store, UserCard& card) {
  refuse_unless(card.type <= kMaxCardType, kBadType);
  check_switch(card.en);
  const std::string name = "card " + std::to_string(card.type);
  if (card.op == 1) set_setting(store, kModuleUser, name.c_str(), card.en);
  card.en = get_setting(store, kModuleUser, name.c_str());
}

void ssid(Store& store, UserSsid& ssid) {
  const struct {
    const char* name;
    uint32_t& value;
  } kValues[] = {{"assid", ssid.assid},
                 {"lssid", ssid.lssid},
                 {"dssid", ssid.dssid},
                 {"ussid", ssid.ussid},
                 {"gssid", ssid.gssid}};
  for (const auto& [name, value] : kValues) {
    if (ssid.op == 1) set_setting(store, kModuleUser, name, value);
    value = get_setting(store, kModuleUser, name);
  }
}

// Logging in and out, the lists and the page are the portal's; here are only the tables, which go with the
// accounts. An expired session counts no more, whether it is still in the table or not.
constexpr const char* kSchema[] = {R"(
CREATE TABLE account (
  userid INTEGER PRIMARY KEY AUTOINCREMENT,
  name TEXT NOT NULL UNIQUE,
  pwd TEXT NOT NULL,
  mem TEXT NOT NULL,
  ip_start INTEGER NOT NULL,
  ip_end INTEGER NOT NULL,
  ddate INTEGER NOT NULL DEFAULT 0,       -- 0: never
  max INTEGER NOT NULL,                   -- hosts logged in at once; 0: no limit
  up_speed INTEGER NOT NULL,
  down_speed INTEGER NOT NULL,
  mac BLOB NOT NULL,
  gid INTEGER NOT NULL,
  mode_speed INTEGER NOT NULL,
  mod_pwd INTEGER NOT NULL,
  flags INTEGER NOT NULL,
  locked INTEGER NOT NULL DEFAULT 0,
  up_bytes INTEGER NOT NULL DEFAULT 0,
  down_bytes INTEGER NOT NULL DEFAULT 0,
  lab INTEGER NOT NULL DEFAULT 0          -- 1: expiry and traffic are a lab's word, 2: so is the account
);
CREATE TABLE session (
  session INTEGER PRIMARY KEY,
  userid INTEGER REFERENCES account (userid) ON DELETE CASCADE,  -- null: without an account
  service INTEGER NOT NULL,               -- the account flag for it
  ip INTEGER NOT NULL,                    -- 0: not known
  mac BLOB NOT NULL,                      -- zero: not known
  until INTEGER NOT NULL,
  up INTEGER NOT NULL DEFAULT 0,          -- present rates
  down INTEGER NOT NULL DEFAULT 0,
  send INTEGER NOT NULL DEFAULT 0,        -- bytes since the login
  recv INTEGER NOT NULL DEFAULT 0
);
CREATE INDEX session_account ON session (userid);
CREATE VIEW online AS SELECT * FROM session WHERE until > unixepoch();
CREATE TABLE portal_list (
  id INTEGER PRIMARY KEY,
  list TEXT NOT NULL,
  value TEXT NOT NULL,
  UNIQUE (list, value)
);
CREATE TABLE portal (url TEXT NOT NULL))"};

constexpr Command kCommands[] = {
    {kUserAdd, kWrites, run_as<add>},
    {kUserStat, kReads, run_as<stat>},
    {kUserDel, kWrites, run_as<del>},
    {kUserDelAll, kWrites, run_as<del_all>},
    {kUserList, kReads, run_as<list>},
    {kUserOnlineList, kReads, run_as<online_list>},
    {kUserAutoscanSet, kWrites, run_as<autoscan_set>},
    {kUserAutoscanGet, kReads, run_as<autoscan_get>},
    {kUserNameInfo, kReads, run_as<name_info>},
    {kUserRdDownAll, kWrites, run_as<log_out_all>},
    {kUserDownAll, kWrites, run_as<log_out_all>},
    {kUserJsMod, kWrites, run_as<js_mod>},
    {kUserCard, kWrites, run_as<card>},
    {kUserSsid, kWrites, run_as<ssid>},
    {kUserLock, kWrites, run_as<lock>},
};

}  // namespace

const Module kUserModule = {kModuleUser, kCommands, kSchema};
