// The accounts of a scenario: their traffic, when they expire, and the hosts that they have logged in.
#include <optional>

#include "lab/give_order.h"
#include "lab/sections.h"
#include "modules/modules.h"
#include "modules/user.h"
#include "records/user.h"

namespace {

struct Account {
  UserRequest user;
  uint8_t web;
  uint8_t pppoe;
  uint64_t up_bytes;
  uint64_t down_bytes;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.user.name), field("pwd", r.user.pwd), field("mem", r.user.mem), field("gid", r.user.gid),
        field("max", r.user.max), field("up_speed", r.user.up_speed), field("down_speed", r.user.down_speed),
        field("ddate", r.user.ddate), field("web", r.web), field("pppoe", r.pppoe),
        field("up_bytes", r.up_bytes), field("down_bytes", r.down_bytes);
  }
};

struct LabSession {
  Session session;
  uint8_t pppoe;

  static constexpr void each_field(auto& r, auto&& field) {
    field("ip", r.session.ip), field("mac", r.session.mac), field("pppoe", r.pppoe),
        field("up", r.session.up), field("down", r.session.down), field("send", r.session.send),
        field("recv", r.session.recv);
  }
};

// It lasts until it is ended, and takes the place of one that the host has begun itself.
void load_session(Store& store, const Node& node, uint32_t userid) {
  LabSession made = {};
  Session& session = made.session;
  read_record(node, made, {});
  if (session.ip == Ip4{} && session.mac == Mac{}) node.fail("neither \"ip\" nor \"mac\"");
  if (store.number("SELECT count(*) FROM session WHERE lab AND"
                   "  ((:ip <> 0 AND ip = :ip) OR (:mac <> zeroblob(6) AND mac = :mac))",
                   session) != 0) {
    node.fail("the host is logged in already");
  }
  session.userid = userid;
  session.service = made.pppoe != 0 ? kUserPppoe : kUserWeb;
  session.lab = 1;
  begin_session(store, session);
}

// An account that is there keeps what it was added with.
void load_account(Store& store, const Node& node) {
  Account account = {};
  UserRequest& user = account.user;
  std::optional<Node> sessions;
  read_record(node, account, {"name"}, [&sessions](const std::string& name, const Node& value) {
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
  const auto userid =
      static_cast<uint32_t>(store.number("SELECT userid FROM account WHERE name = ?", user.name));
  sessions->each_element([&](const Node& element) { load_session(store, element, userid); });
}

void load_accounts(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) { load_account(store, element); });
}

void clear_accounts(Store& store) {
  store.execute("DELETE FROM session WHERE lab");
  store.execute("DELETE FROM account WHERE lab = 2");
  store.execute("UPDATE account SET lab = 0, ddate = 0, up_bytes = 0, down_bytes = 0 WHERE lab <> 0");
}

int64_t count_accounts(Store& store) { return store.number("SELECT count(*) FROM account WHERE lab <> 0"); }

}  // namespace

const Section kAccountsSection = {"accounts", load_accounts, clear_accounts, count_accounts};
