// Portal authentication of a plain Linux host: each function is one transaction on the state store.
#include "platform/auth.h"

#include <arpa/inet.h>

#include <algorithm>

#include "api/transact.h"
#include "modules/checks.h"
#include "modules/host.h"
#include "modules/macuser.h"
#include "modules/user.h"
#include "platform/address.h"
#include "records/user.h"
#include "state/settings.h"

namespace {

constexpr int kMaxSessions = 4096;
constexpr int kMaxListed = 1024;  // values of one list
constexpr size_t kMaxUrl = 1023;
constexpr uint32_t kMaxPort = 65535;

// Settings of module 16. 0 is no limit.
constexpr const char* kMustLogIn = "must log in";
constexpr const char* kLoginSeconds = "login seconds";
constexpr const char* kMaxLogins = "max logins";

// As much of the text as fits, with its NUL. Returns the length of it all.
int write_text(char* buffer, uint32_t room, std::string_view text) {
  if (buffer != nullptr && room > 0) {
    const size_t length = std::min<size_t>(text.size(), room - 1);
    memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
  }
  return static_cast<int>(text.size());
}

// ---- Hosts ----

HostAddress by_ip(const char* text) {
  const Ip4 ip = {StrToIp(text)};
  refuse_unless(is_host_ip(ip), kBadAddress);
  return {ip, {}};
}

HostAddress by_mac(const char* text) {
  Mac mac;
  refuse_unless(StrToMac(text, &mac) == 0 && is_host_mac(mac), kBadMac);
  return {{}, mac};
}

HostAddress by_both(const char* ip, const char* mac) { return {by_ip(ip).ip, by_mac(mac).mac}; }

std::string ip_text(const Ip4& ip) {
  char text[64];
  return IpToStr(text, ip.value);
}

std::string mac_text(const Mac& mac) {
  char text[18];
  return MacToStr(text, &mac);
}

// ---- Lists ----

constexpr std::string_view kWhiteMac = "white mac";
constexpr std::string_view kWhiteDomain = "white domain";
constexpr std::string_view kWhiteIp = "white ip";
constexpr std::string_view kWhiteFip = "white fip";
constexpr std::string_view kWhitePort = "white port";
constexpr std::string_view kBlackMac = "black mac";

// Each value has one form only, so that it is in its list once. A malformed one is the empty text.
std::string mac_value(const char* text) {
  Mac mac;
  return StrToMac(text, &mac) == 0 && is_host_mac(mac) ? mac_text(mac) : "";
}

std::string ip_value(const char* text) {
  const Ip4 ip = {StrToIp(text)};
  return ip.value == 0 ? "" : ip_text(ip);
}

std::string port_value(uint32_t port) { return port == 0 || port > kMaxPort ? "" : std::to_string(port); }

// A name of letters, digits, '-' and '_' between dots, or "*." and such a name for all below it.
std::string domain_value(const char* text) {
  constexpr size_t kMaxName = 253;
  constexpr size_t kMaxLabel = 63;
  std::string name = text == nullptr ? "" : text;
  size_t label = 0;
  for (size_t at = name.starts_with("*.") ? 2 : 0; at < name.size(); ++at) {
    const char c = name[at];
    if (c >= 'A' && c <= 'Z') name[at] = static_cast<char>(c - 'A' + 'a');
    const bool is_label_char =
        (name[at] >= 'a' && name[at] <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
    if (!is_label_char && (c != '.' || label == 0)) return "";
    label = c == '.' ? 0 : label + 1;
    if (label > kMaxLabel) return "";
  }
  return label == 0 || name.size() > kMaxName ? "" : name;
}

void add_value(Store& store, std::string_view list, const std::string& value) {
  refuse_unless(!value.empty(), kBadText);
  store.execute("INSERT OR IGNORE INTO portal_list (list, value) VALUES (?, ?)", list, value);
  refuse_unless(store.number("SELECT count(*) FROM portal_list WHERE list = ?", list) <= kMaxListed,
                kTableFull);
}

// `value_of` is one of the functions above.
template <typename Argument>
int add(std::string_view list, std::string (*value_of)(Argument), Argument argument) {
  return transact(kWrites, [&](Store& store) {
    add_value(store, list, value_of(argument));
    return 0;
  });
}

template <typename Argument>
int del(std::string_view list, std::string (*value_of)(Argument), Argument argument) {
  return transact(kWrites, [&](Store& store) {
    refuse_if_none(
        store.execute("DELETE FROM portal_list WHERE list = ? AND value = ?", list, value_of(argument)));
    return 0;
  });
}

int get(std::string_view list, char* buffer, uint32_t room) {
  return transact(kReads, [&](Store& store) {
    Statement row = store.query("SELECT value FROM portal_list WHERE list = ? ORDER BY id", list);
    std::string all;
    for (std::string value; row.next();) {
      row.read(value);
      if (!all.empty()) all += ',';
      all += value;
    }
    return write_text(buffer, room, all);
  });
}

int delete_all(std::string_view list) {
  return transact(kWrites, [&](Store& store) {
    store.execute("DELETE FROM portal_list WHERE list = ?", list);
    return 0;
  });
}

// ---- Sessions ----

void refuse_black(Store& store, const Mac& mac) {
  refuse_unless(store.number("SELECT count(*) FROM portal_list WHERE list = ? AND value = ?", kBlackMac,
                             mac_text(mac)) == 0,
                kNotRunning);
}

bool tells_both(const HostAddress& host) { return host.ip != Ip4{} && host.mac != Mac{}; }

// The number of a host's session, 0 when it is not on line. A host that tells one of its addresses may be
// logged in by the other alone.
int64_t find_session(Store& store, const HostAddress& host) {
  end_sessions(store);
  int64_t session = store.number(
      "SELECT session FROM session WHERE (:ip = 0 OR ip = :ip) AND (:mac = zeroblob(6) OR mac = :mac)", host);
  if (session != 0 || tells_both(host)) return session;
  for (const HostAddress& known : known_addresses(store, host)) {
    session = store.number(
        "SELECT session FROM session"
        "  WHERE (ip = :ip AND mac = zeroblob(6)) OR (ip = 0 AND mac = :mac)",
        known);
    if (session != 0) break;
  }
  return session;
}

void end_session(Store& store, int64_t session) {
  store.execute("DELETE FROM session WHERE session = ?", session);
}

// The account by which this host may log in now. When it tells one of its addresses, an account that is bound
// to the other goes by what is known of the host.
uint32_t account_for_login(Store& store, const char* user, const HostAddress& host,
                           const std::vector<HostAddress>& known) {
  const std::vector<HostAddress> told = {host};
  for (const HostAddress& address : tells_both(host) || known.empty() ? told : known) {
    const uint32_t userid = account_for(store, user, kUserWeb, address);
    if (userid != 0) return userid;
  }
  throw Refusal{kUnknownUser};
}

void check_login_count(Store& store, uint32_t userid) {
  const int64_t logins = store.number("SELECT count(*) FROM session WHERE userid = ?", userid);
  const int64_t most = store.number("SELECT max FROM account WHERE userid = ?", userid);
  for (const int64_t limit : {most, int64_t{get_setting(store, kModuleUser, kMaxLogins)}}) {
    refuse_unless(limit == 0 || logins <= limit, kTableFull);
  }
}

// Logs a host in, in place of what it was logged in as. A null user logs in without an account; without
// seconds the login lasts as long as logins are set to.
int log_in(Store& store, const char* user, const HostAddress& host, uint32_t seconds) {
  end_sessions(store);
  const std::vector<HostAddress> known = known_addresses(store, host);
  refuse_black(store, host.mac);
  for (const HostAddress& address : known) {
    if (address.ip == host.ip) refuse_black(store, address.mac);
  }
  while (const int64_t session = find_session(store, host)) end_session(store, session);
  Session session = {};
  if (user != nullptr) session.userid = account_for_login(store, user, host, known);
  session.service = kUserWeb;
  session.ip = host.ip;
  session.mac = host.mac;
  session.seconds = seconds != 0 ? seconds : get_setting(store, kModuleUser, kLoginSeconds);
  begin_session(store, session);
  refuse_if_full(store, "session", kMaxSessions);
  if (session.userid == 0) return 0;
  check_login_count(store, session.userid);
  if (host.mac != Mac{}) remember_mac(store, host.mac, session.userid);
  return 0;
}

int log_out(Store& store, const HostAddress& host) {
  const int64_t session = find_session(store, host);
  refuse_unless(session != 0, kUnknownHost);
  end_session(store, session);
  return 0;
}

// The host of a session; of 0, all that are on line.
Statement online_hosts(Store& store, int64_t session) {
  return store.query(
      "SELECT ip, mac, up, down, send, recv FROM session WHERE ?1 = 0 OR session = ?1 ORDER BY session",
      session);
}

// What is not known of a host is the empty text.
OnlineInfo read_host(const Statement& row) {
  Session session = {};
  row.read_fields(session);
  OnlineInfo info = {};
  if (session.ip != Ip4{}) copy_text(info.ip, ip_text(session.ip));
  if (session.mac != Mac{}) copy_text(info.mac, mac_text(session.mac));
  info.up = session.up;
  info.down = session.down;
  info.send = session.send;
  info.recv = session.recv;
  return info;
}

// With a null info only asks.
int find_host(Store& store, const HostAddress& host, OnlineInfo* info) {
  const int64_t session = find_session(store, host);
  refuse_unless(session != 0, kUnknownHost);
  if (info == nullptr) return 0;
  Statement row = online_hosts(store, session);
  if (row.next()) *info = read_host(row);
  return 0;
}

}  // namespace

#pragma GCC visibility push(default)

// ---- Log in and out ----

int ApiLoginByIpName(const char* user, const char* ip, uint32_t timeout) {
  return transact(kWrites, [&](Store& store) { return log_in(store, user, by_ip(ip), timeout); });
}

int ApiLoginByMacName(const char* user, const char* mac, uint32_t timeout) {
  return transact(kWrites, [&](Store& store) { return log_in(store, user, by_mac(mac), timeout); });
}

int ApiLoginByIpAndMacName(const char* user, const char* ip, const char* mac, uint32_t timeout) {
  return transact(kWrites, [&](Store& store) { return log_in(store, user, by_both(ip, mac), timeout); });
}

int ApiLogoutByIp(const char* ip) {
  return transact(kWrites, [&](Store& store) { return log_out(store, by_ip(ip)); });
}

int ApiLogoutByMac(const char* mac) {
  return transact(kWrites, [&](Store& store) { return log_out(store, by_mac(mac)); });
}

int ApiLogoutByIpAndMac(const char* ip, const char* mac) {
  return transact(kWrites, [&](Store& store) { return log_out(store, by_both(ip, mac)); });
}

// ---- Who is on line ----

int ApiIsIpOnline(const char* ip) {
  return transact(kWrites, [&](Store& store) { return find_host(store, by_ip(ip), nullptr); });
}

int ApiIsMacOnline(const char* mac) {
  return transact(kWrites, [&](Store& store) { return find_host(store, by_mac(mac), nullptr); });
}

int ApiIsIpMacOnline(const char* ip, const char* mac) {
  return transact(kWrites, [&](Store& store) { return find_host(store, by_both(ip, mac), nullptr); });
}

int ApiGetOnlineInfoByIp(OnlineInfo* info, const char* ip) {
  return transact(kWrites, [&](Store& store) { return find_host(store, by_ip(ip), info); });
}

int ApiGetOnlineInfoByMac(OnlineInfo* info, const char* mac) {
  return transact(kWrites, [&](Store& store) { return find_host(store, by_mac(mac), info); });
}

int ApiGetOnlineInfoByIpAndMac(OnlineInfo* info, const char* ip, const char* mac) {
  return transact(kWrites, [&](Store& store) { return find_host(store, by_both(ip, mac), info); });
}

int ApiGetAllOnlineInfo(OnlineInfo* infos, uint32_t room) {
  return transact(kWrites, [&](Store& store) {
    end_sessions(store);
    int count = 0;
    for (Statement row = online_hosts(store, 0); row.next(); ++count) {
      if (infos == nullptr) continue;
      if (static_cast<uint32_t>(count) >= room) break;
      infos[count] = read_host(row);
    }
    return count;
  });
}

// ---- White lists and black list ----

int ApiAddWhiteMac(const char* mac) { return add(kWhiteMac, mac_value, mac); }
int ApiDelWhiteMac(const char* mac) { return del(kWhiteMac, mac_value, mac); }
int ApiGetWhiteMac(char* buffer, uint32_t room) { return get(kWhiteMac, buffer, room); }
int ApiDelallWhiteMac() { return delete_all(kWhiteMac); }

int ApiAddWhiteDomain(const char* domain) { return add(kWhiteDomain, domain_value, domain); }
int ApiDelWhiteDomain(const char* domain) { return del(kWhiteDomain, domain_value, domain); }
int ApiGetWhiteDomain(char* buffer, uint32_t room) { return get(kWhiteDomain, buffer, room); }
int ApiDelallWhiteDomain() { return delete_all(kWhiteDomain); }

int ApiAddWhiteIp(const char* ip) { return add(kWhiteIp, ip_value, ip); }
int ApiDelWhiteIp(const char* ip) { return del(kWhiteIp, ip_value, ip); }
int ApiGetWhiteIp(char* buffer, uint32_t room) { return get(kWhiteIp, buffer, room); }
int ApiDelallWhiteIp() { return delete_all(kWhiteIp); }

int ApiAddWhiteFip(const char* ip) { return add(kWhiteFip, ip_value, ip); }
int ApiDelWhiteFip(const char* ip) { return del(kWhiteFip, ip_value, ip); }
int ApiGetWhiteFip(char* buffer, uint32_t room) { return get(kWhiteFip, buffer, room); }
int ApiDelallWhiteFip() { return delete_all(kWhiteFip); }

int ApiAddWhitePort(uint32_t port) { return add(kWhitePort, port_value, port); }
int ApiDelWhitePort(uint32_t port) { return del(kWhitePort, port_value, port); }
int ApiGetWhitePort(char* buffer, uint32_t room) { return get(kWhitePort, buffer, room); }
int ApiDelallWhitePort() { return delete_all(kWhitePort); }

// Who is put on the black list is logged out, by whichever address it had logged in.
int ApiAddBlackMac(const char* text) {
  return transact(kWrites, [&](Store& store) {
    add_value(store, kBlackMac, mac_value(text));
    const HostAddress host = by_mac(text);
    store.execute("DELETE FROM session WHERE mac = ?", host.mac);
    for (const HostAddress& known : known_addresses(store, host)) {
      store.execute("DELETE FROM session WHERE ip = ?", known.ip);
    }
    return 0;
  });
}
int ApiDelBlackMac(const char* mac) { return del(kBlackMac, mac_value, mac); }
int ApiGetBlackMac(char* buffer, uint32_t room) { return get(kBlackMac, buffer, room); }
int ApiDelallBlackMac() { return delete_all(kBlackMac); }

// ---- Settings ----

// Remembering logins is the MAC memory's switch, which macuser shows too.
int ApiGetAuthenticateState(uint32_t* state, uint32_t* savemac, uint32_t* time, uint32_t* loginmax) {
  if (state == nullptr || savemac == nullptr || time == nullptr || loginmax == nullptr) return -kBadRecord;
  return transact(kReads, [&](Store& store) {
    *state = get_setting(store, kModuleUser, kMustLogIn);
    *savemac = get_setting(store, kModuleMacUser, kRemember);
    *time = get_setting(store, kModuleUser, kLoginSeconds);
    *loginmax = get_setting(store, kModuleUser, kMaxLogins);
    return 0;
  });
}

int ApiSetAuthenticateState(uint32_t state, uint32_t savemac, uint32_t time, uint32_t loginmax) {
  if (state > 1 || savemac > 1) return -kBadSwitch;
  return transact(kWrites, [&](Store& store) {
    set_setting(store, kModuleUser, kMustLogIn, state);
    set_setting(store, kModuleMacUser, kRemember, savemac);
    set_setting(store, kModuleUser, kLoginSeconds, time);
    set_setting(store, kModuleUser, kMaxLogins, loginmax);
    return 0;
  });
}

int ApiGetPortal(char* buffer, uint32_t room) {
  return transact(kReads, [&](Store& store) {
    std::string url;
    Statement row = store.query("SELECT url FROM portal");
    if (row.next()) row.read(url);
    return write_text(buffer, room, url);
  });
}

// Of printing characters without blank, quote and backslash, as URLs are.
int ApiSetPortal(const char* url) {
  const std::string_view text = url == nullptr ? "" : url;
  const auto is_url_char = [](char c) { return c > ' ' && c < 0x7f && c != '"' && c != '\\'; };
  if (text.empty() || text.size() > kMaxUrl || !std::ranges::all_of(text, is_url_char)) return -kBadText;
  return transact(kWrites, [&](Store& store) {
    store.execute("DELETE FROM portal");
    store.execute("INSERT INTO portal VALUES (?)", text);
    return 0;
  });
}

#pragma GCC visibility pop
