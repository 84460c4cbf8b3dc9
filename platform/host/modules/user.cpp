// Local user accounts (module 16), and the sessions of the hosts that are logged in. Tables keep addresses as
// numbers, so that they sort and compare.
#include "modules/user.h"

#include <algorithm>

#include "modules/checks.h"
#include "modules/modules.h"
#include "records/user.h"
#include "state/settings.h"

namespace {

constexpr int kMaxAccounts = 4096;
constexpr uint32_t kMaxCardType = 255;
constexpr uint32_t kRequestFlags =
    kUserFixedIp | kUserFixedMac | kUserOff | kUserAnyIp | kUserAnyMac | kUserPppoe | kUserWeb;

// Whether an account does not allow a host, which has the columns of a session. An address that is not known
// breaks no binding.
constexpr std::string_view kIsClosed =
    "(locked OR flags & 0x4 OR NOT flags & host.service OR ddate BETWEEN 1 AND unixepoch()"
    "  OR (flags & 0x1 AND host.ip <> 0 AND host.ip NOT BETWEEN ip_start AND ip_end)"
    "  OR (flags & 0x2 AND host.mac <> zeroblob(6) AND host.mac <> account.mac))";
static_assert(kUserFixedIp == 0x1 && kUserFixedMac == 0x2 && kUserOff == 0x4);

// Which hosts and services an account is for must have been understood: a word that is none binds to nothing,
// and allows nothing.
void check_account(const UserRequest& user) {
  check_name(text(user.name));
  check_text(text(user.pwd));
  check_text(text(user.mem));
  if ((user.flags & kUserFixedIp) != 0) {
    check_element(V4Range{user.ip_start, user.ip_end});
  } else {
    refuse_unless((user.flags & kUserAnyIp) != 0 && user.ip_end.value == 0, kBadAddress);
  }
  refuse_unless((user.flags & kUserAnyMac) != 0 || is_host_mac(user.mac), kBadMac);
  refuse_unless((user.flags & (kUserPppoe | kUserWeb | kUserOff)) != 0, kBadType);
}

// Adding an account again gives it everything anew but its id, its expiry date and its traffic. It is then
// the one who adds it whose account it is, whoever made it.
void add(Store& store, const UserRequest& request) {
  check_account(request);
  UserRequest user = request;
  user.flags &= kRequestFlags;
  user.userid =
      1 + static_cast<uint32_t>(store.number("SELECT seq FROM sqlite_sequence WHERE name = 'account'"));
  user.ddate = 0;
  Statement kept = store.query("SELECT userid, ddate FROM account WHERE name = ?", user.name);
  if (kept.next()) kept.read(user.userid, user.ddate);
  store.put("account", user);
  store.execute("UPDATE account SET lab = min(lab, 1) WHERE name = ?", user.name);
  refuse_if_full(store, "account", kMaxAccounts);
  end_sessions(store);
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

// What the table keeps of an account beside its record.
struct AccountFacts {
  uint8_t locked;
  uint8_t lab;
  uint64_t up_bytes;
  uint64_t down_bytes;

  static constexpr void each_field(auto& r, auto&& field) {
    field("locked", r.locked), field("lab", r.lab), field("up_bytes", r.up_bytes),
        field("down_bytes", r.down_bytes);
  }
};

// The totals are in KiB: in bytes they would be of no use beyond 4 GiB.
uint32_t kib(uint64_t bytes) { return static_cast<uint32_t>(std::min<uint64_t>(bytes >> 10, UINT32_MAX)); }

void answer_accounts(Store& store, Order& order, bool only_online) {
  end_sessions(store);
  Statement row = store.query(
      "SELECT *, (SELECT count(*) FROM session WHERE session.userid = account.userid) AS login_num "
      "FROM account WHERE NOT ? OR login_num > 0 ORDER BY userid",
      only_online);
  ListAnswer<UserEntry> answer(order);
  while (row.next()) {
    UserEntry entry = {};
    AccountFacts facts = {};
    row.read_fields(entry, facts);
    entry.zup = kib(facts.up_bytes);
    entry.zdown = kib(facts.down_bytes);
    answer.add(entry);
  }
}

void list(Store& store, Order& order) { answer_accounts(store, order, false); }
void online_list(Store& store, Order& order) { answer_accounts(store, order, true); }

void stat(Store& store, UserStat& stat) {
  Statement row = store.query("SELECT up_bytes, down_bytes FROM account WHERE name = ?", stat.name);
  refuse_unless(row.next(), kUnknownUser);
  row.read(stat.up, stat.down);
}

// The hosts that an account has logged in, as many as the record holds.
void name_info(Store& store, const UserNameInfo& request, Order& order) {
  UserNameInfo info = {};
  copy_text(info.name, text(request.name));
  const auto userid = store.number("SELECT userid FROM account WHERE name = ?", info.name);
  refuse_unless(userid != 0, kUnknownUser);
  end_sessions(store);
  Statement row =
      store.query("SELECT ip, mac, service FROM session WHERE userid = ? ORDER BY session", userid);
  uint32_t offset = sizeof info;
  while (row.next()) {
    UserNameEntry entry = {};
    Ip4 ip;
    row.read(ip, entry.mac, entry.flags);
    entry.ip = ip_address(ip);
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
  end_sessions(store);
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
// accounts.
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
CREATE TABLE portal (url TEXT NOT NULL))",
                                   // Sessions last by the clock that no one sets.
                                   R"(
DROP VIEW online;
DROP VIEW IF EXISTS mac_remembered;
DELETE FROM session WHERE until <= unixepoch();
CREATE TABLE session_of_step_2 (
  session INTEGER PRIMARY KEY,
  userid INTEGER REFERENCES account (userid) ON DELETE CASCADE,  -- null: without an account
  service INTEGER NOT NULL,               -- the account flag for it
  ip INTEGER NOT NULL,                    -- 0: not known
  mac BLOB NOT NULL,                      -- zero: not known
  since INTEGER NOT NULL DEFAULT (present()),
  seconds INTEGER NOT NULL,               -- 0: until it is ended
  up INTEGER NOT NULL,                    -- present rates
  down INTEGER NOT NULL,
  send INTEGER NOT NULL,                  -- bytes since the login
  recv INTEGER NOT NULL,
  lab INTEGER NOT NULL                    -- 1: put in place by a lab
);
INSERT INTO session_of_step_2 (session, userid, service, ip, mac, seconds, up, down, send, recv, lab)
  SELECT session, userid, service, ip, mac, iif(until = 0x7fffffffffffffff, 0, until - unixepoch()),
    up, down, send, recv, coalesce((SELECT lab <> 0 FROM account WHERE account.userid = session.userid), 0)
  FROM session;
DROP TABLE session;
ALTER TABLE session_of_step_2 RENAME TO session;
CREATE INDEX session_account ON session (userid))"};

constexpr Command kCommands[] = {
    {kUserAdd, kWrites, run_as<add>},
    {kUserStat, kReads, run_as<stat>},
    {kUserDel, kWrites, run_as<del>},
    {kUserDelAll, kWrites, run_as<del_all>},
    {kUserList, kWrites, run_as<list>},
    {kUserOnlineList, kWrites, run_as<online_list>},
    {kUserAutoscanSet, kWrites, run_as<autoscan_set>},
    {kUserAutoscanGet, kReads, run_as<autoscan_get>},
    {kUserNameInfo, kWrites, run_as<name_info>},
    {kUserRdDownAll, kWrites, run_as<log_out_all>},
    {kUserDownAll, kWrites, run_as<log_out_all>},
    {kUserJsMod, kWrites, run_as<js_mod>},
    {kUserCard, kWrites, run_as<card>},
    {kUserSsid, kWrites, run_as<ssid>},
    {kUserLock, kWrites, run_as<lock>},
};

}  // namespace

const Module kUserModule = {kModuleUser, kCommands, kSchema};

void begin_session(Store& store, const Session& session) {
  store.execute("DELETE FROM session WHERE (:ip <> 0 AND ip = :ip) OR (:mac <> zeroblob(6) AND mac = :mac)",
                session);
  store.execute(
      "INSERT INTO session (userid, service, ip, mac, seconds, up, down, send, recv, lab) VALUES"
      "  (nullif(:userid, 0), :service, :ip, :mac, :seconds, :up, :down, :send, :recv, :lab)",
      session);
}

void end_sessions(Store& store) {
  const std::string sql =
      "DELETE FROM session WHERE (seconds <> 0 AND age(since) >= seconds)"
      "  OR session IN (SELECT session FROM session AS host JOIN account USING (userid) WHERE " +
      std::string(kIsClosed) + ")";
  store.execute(sql.c_str());
}

uint32_t account_for(Store& store, std::string_view name, uint32_t service, const HostAddress& host) {
  const std::string sql =
      "SELECT userid FROM account, (SELECT :service AS service, :ip AS ip, :mac AS mac) AS host"
      "  WHERE name = :name AND NOT " +
      std::string(kIsClosed);
  return static_cast<uint32_t>(
      store.number(sql.c_str(), host, Column{"service", service}, Column{"name", name}));
}
