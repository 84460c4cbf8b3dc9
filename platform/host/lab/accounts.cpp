// The accounts of a scenario: their traffic, when they expire, and the hosts that they have logged in.
#include <arpa/inet.h>

#include <optional>

#include "lab/give_order.h"
#include "lab/sections.h"
#include "modules/modules.h"
#include "records/user.h"

namespace {

struct Account {
  UserRecord user;
  uint8_t web;
  uint8_t pppoe;
  uint64_t up_bytes;
  uint64_t down_bytes;
};

constexpr Field kAccountFields[] = {
    {"name", AT(UserRecord, name), Field::kText, true},
    {"pwd", AT(UserRecord, pwd), Field::kText},
    {"mem", AT(UserRecord, mem), Field::kText},
    {"gid", AT(UserRecord, gid), Field::kNumber},
    {"max", AT(UserRecord, max), Field::kNumber},
    {"up_speed", AT(UserRecord, up_speed), Field::kNumber},
    {"down_speed", AT(UserRecord, down_speed), Field::kNumber},
    {"web", AT(Account, web), Field::kNumber},
    {"pppoe", AT(Account, pppoe), Field::kNumber},
    {"ddate", AT(UserRecord, ddate), Field::kNumber},
    {"up_bytes", AT(Account, up_bytes), Field::kNumber},
    {"down_bytes", AT(Account, down_bytes), Field::kNumber},
};
static_assert(offsetof(Account, user) == 0);

struct Session {
  uint32_t ip;
  uint8_t mac[6];
  uint8_t pppoe;
  uint64_t up;
  uint64_t down;
  uint64_t send;
  uint64_t recv;
};

constexpr Field kSessionFields[] = {
    {"ip", AT(Session, ip), Field::kIp4, true},    {"mac", AT(Session, mac), Field::kMac},
    {"pppoe", AT(Session, pppoe), Field::kNumber}, {"up", AT(Session, up), Field::kNumber},
    {"down", AT(Session, down), Field::kNumber},   {"send", AT(Session, send), Field::kNumber},
    {"recv", AT(Session, recv), Field::kNumber},
};

// It lasts until it is ended.
void load_session(Store& store, const Node& node, std::string_view account) {
  Session session = {};
  read_fields(node, kSessionFields, &session);
  const uint32_t ip = ntohl(session.ip);
  if (store.number("SELECT count(*) FROM online WHERE ip = ?1 OR (?2 <> zeroblob(6) AND mac = ?2)", ip,
                   session.mac) != 0) {
    node.fail("the host is logged in already");
  }
  store.execute(
      "INSERT INTO session (userid, service, ip, mac, until, up, down, send, recv) VALUES"
      "  ((SELECT userid FROM account WHERE name = ?), ?, ?, ?, 0x7fffffffffffffff, ?, ?, ?, ?)",
      account, session.pppoe != 0 ? kUserPppoe : kUserWeb, ip, session.mac, session.up, session.down,
      session.send, session.recv);
}

// An account that is there keeps what it was added with.
void load_account(Store& store, const Node& node) {
  Account account = {};
  UserRecord& user = account.user;
  std::optional<Node> sessions;
  read_fields(node, kAccountFields, &account, [&sessions](const std::string& name, const Node& value) {
    if (name != "sessions") return false;
    sessions.emplace(value);
    return true;
  });
  if (store.number("SELECT lab FROM account WHERE name = ?", user.name) != 0) {
    node.fail("a second account of this name");
  }
  const bool is_new = store.number("SELECT count(*) FROM account WHERE name = ?", user.name) == 0;
  if (is_new) {
    user.flags = static_cast<uint16_t>(kUserAnyIp | kUserAnyMac | (account.web != 0 ? kUserWeb : 0) |
                                       (account.pppoe != 0 ? kUserPppoe : 0));
    give_order(store, node, kUserModule, kUserAdd, user);
  }
  store.execute("UPDATE account SET lab = ?, ddate = ?, up_bytes = ?, down_bytes = ? WHERE name = ?",
                is_new ? 2 : 1, user.ddate, account.up_bytes, account.down_bytes, user.name);
  if (!sessions) return;
  sessions->each_element([&](const Node& element) { load_session(store, element, text(user.name)); });
}

void load_accounts(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) { load_account(store, element); });
}

// Their sessions, whoever logged in, go with what is said of them.
void clear_accounts(Store& store) {
  store.execute("DELETE FROM session WHERE userid IN (SELECT userid FROM account WHERE lab <> 0)");
  store.execute("DELETE FROM account WHERE lab = 2");
  store.execute("UPDATE account SET lab = 0, ddate = 0, up_bytes = 0, down_bytes = 0 WHERE lab <> 0");
}

int64_t count_accounts(Store& store) { return store.number("SELECT count(*) FROM account WHERE lab <> 0"); }

}  // namespace

const Section kAccountsSection = {"accounts", load_accounts, clear_accounts, count_accounts};
