// rzglapi: portal authentication for other programs. Each action is a call of the platform library, and each
// answer is JSON on standard output, without a newline.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "args/args.h"
#include "args/print.h"
#include "auth/commands.h"
#include "order/words.h"
#include "platform/auth.h"

namespace {

enum class Outcome : uint8_t {
  kDone,
  kFailed,
  kAnswered,  // with JSON of its own
};

Outcome outcome_of(int returned) { return returned < 0 ? Outcome::kFailed : Outcome::kDone; }

Outcome complain(const CommandEntry* entry, const char* usage) {
  print_error("  vek %s %s\n", entry->name, usage);
  return Outcome::kFailed;
}

bool is_ip(const char* text) { return StrToIp(text) != 0; }

bool is_mac(const char* text) {
  uint8_t mac[6] = {};
  return StrToMac(text, mac) == 0 && std::ranges::any_of(mac, [](uint8_t byte) { return byte != 0; });
}

// ---- JSON ----

// Everything but what would break the JSON goes out byte for byte.
void print_escaped(std::string_view text) {
  const auto breaks_json = [](char c) { return c == '"' || c == '\\' || static_cast<uint8_t>(c) < 0x20; };
  for (;;) {
    const auto plain = static_cast<size_t>(std::ranges::find_if(text, breaks_json) - text.begin());
    fwrite(text.data(), 1, plain, stdout);
    if (plain == text.size()) return;
    const auto special = static_cast<uint8_t>(text[plain]);
    if (special < 0x20) {
      print("\\u%04x", special);
    } else {
      print("\\%c", special);
    }
    text.remove_prefix(plain + 1);
  }
}

// The value's text ends at its NUL or with its room.
void print_member(const char* key, const char* value, size_t room) {
  print("\"%s\":\"", key);
  print_escaped({value, strnlen(value, room)});
  print("\"");
}

void print_object(const char* key, const char* value, size_t room) {
  print("{");
  print_member(key, value, room);
  print("}");
}

void print_host(const OnlineInfo& info) {
  print("{");
  print_member("ip", info.ip, sizeof info.ip);
  print(",");
  print_member("mac", info.mac, sizeof info.mac);
  print(",\"up\":\"%lu\",\"down\":\"%lu\",\"send\":\"%lu\",\"recv\":\"%lu\"}", info.up, info.down, info.send,
        info.recv);
}

// ---- Hosts by IP, by MAC, or by both ----

struct HostAction {
  std::string_view key;
  int words;  // that it needs
  const char* usage;
  Outcome (*run)(const Args& args);
};

bool has_host(const Args& args) {
  if (args.is(3, "ip")) return is_ip(args[4]);
  if (args.is(3, "mac")) return is_mac(args[4]);
  return is_ip(args[4]) && is_mac(args[5]);
}

Outcome run_host_action(std::span<const HostAction> table, const char* usage, const Args& args,
                        const CommandEntry* entry) {
  for (const HostAction& row : table) {
    if (!args.is(3, row.key)) continue;
    return args.count() >= row.words && has_host(args) ? row.run(args) : complain(entry, row.usage);
  }
  return complain(entry, usage);
}

// A user name that was left out is none at all, not an empty one.
constexpr HostAction kLogin[] = {
    {"ip", 6, "login ip ipstr timeout user",
     [](const Args& args) { return outcome_of(ApiLoginByIpName(args.get(6), args[4], args.number(5))); }},
    {"mac", 6, "login mac macstr timeout user ",
     [](const Args& args) { return outcome_of(ApiLoginByMacName(args.get(6), args[4], args.number(5))); }},
    {"ipmac", 7, "login ipmac ipstr macstr timeout user ",
     [](const Args& args) {
       return outcome_of(ApiLoginByIpAndMacName(args.get(7), args[4], args[5], args.number(6)));
     }},
};

// Logging out by both goes by the IP: the host has one session for both.
constexpr HostAction kLogout[] = {
    {"ip", 5, "logout ip ipstr", [](const Args& args) { return outcome_of(ApiLogoutByIp(args[4])); }},
    {"mac", 5, "logout mac macstr", [](const Args& args) { return outcome_of(ApiLogoutByMac(args[4])); }},
    {"ipmac", 6, "logout ipmac ipstr macstr",
     [](const Args& args) { return outcome_of(ApiLogoutByIp(args[4])); }},
};

constexpr HostAction kCheckOnline[] = {
    {"ip", 5, "checkonline ip ipstr", [](const Args& args) { return outcome_of(ApiIsIpOnline(args[4])); }},
    {"mac", 5, "checkonline mac macstr",
     [](const Args& args) { return outcome_of(ApiIsMacOnline(args[4])); }},
    {"ipmac", 6, "checkonline ipmac ipstr macstr",
     [](const Args& args) { return outcome_of(ApiIsIpMacOnline(args[4], args[5])); }},
};

template <typename... Texts>
Outcome show_host(int (*query)(OnlineInfo*, Texts...), Texts... texts) {
  OnlineInfo info = {};
  if (query(&info, texts...) < 0) return Outcome::kFailed;
  print_host(info);
  return Outcome::kAnswered;
}

constexpr HostAction kGetOnline[] = {
    {"ip", 5, "getonline ip ipstr",
     [](const Args& args) { return show_host(ApiGetOnlineInfoByIp, args[4]); }},
    {"mac", 5, "getonline mac macstr",
     [](const Args& args) { return show_host(ApiGetOnlineInfoByMac, args[4]); }},
    {"ipmac", 6, "getonline ipmac ipstr macstr",
     [](const Args& args) { return show_host(ApiGetOnlineInfoByIpAndMac, args[4], args[5]); }},
};

Outcome show_all_hosts() {
  constexpr uint32_t kSpare = 10;  // for hosts that log in meanwhile
  const int expected = ApiGetAllOnlineInfo(nullptr, 0);
  if (expected < 0) return Outcome::kFailed;
  const uint32_t room = static_cast<uint32_t>(expected) + kSpare;
  auto* const hosts = static_cast<OnlineInfo*>(calloc(room, sizeof(OnlineInfo)));
  if (hosts == nullptr) return Outcome::kFailed;
  const int count = ApiGetAllOnlineInfo(hosts, room);
  if (count >= 0) {
    print("[");
    for (uint32_t i = 0; i < std::min(static_cast<uint32_t>(count), room); ++i) {
      if (i > 0) print(",");
      print_host(hosts[i]);
    }
    print("]");
  }
  free(hosts);
  return count < 0 ? Outcome::kFailed : Outcome::kAnswered;
}

Outcome login(const Args& args, const CommandEntry* entry) {
  return run_host_action(kLogin, "login ip/mac/ipmac  ", args, entry);
}

Outcome logout(const Args& args, const CommandEntry* entry) {
  return run_host_action(kLogout, "logout ip/mac/ipmac  ", args, entry);
}

Outcome check_online(const Args& args, const CommandEntry* entry) {
  return run_host_action(kCheckOnline, "checkonline ip/mac/ipmac  ", args, entry);
}

Outcome get_online(const Args& args, const CommandEntry* entry) {
  if (args.is(3, "all")) return show_all_hosts();
  return run_host_action(kGetOnline, "getonline ip/mac/ipmac/all  ", args, entry);
}

// ---- White lists and black list ----

struct PortalList {
  const char* word;  // also the key of the JSON answer
  const char* missing_value_usage;
  const char* unknown_word_usage;
  bool (*accepts)(const char* value);  // null: every value
  bool checks_deletion;
  const char* refused_value_hint;
  int (*add)(const char* value);
  int (*del)(const char* value);
  int (*get)(char* buffer, uint32_t room);
  int (*delete_all)();
};

// The ip list's usage names the domain list, and the port list calls a refused port "ipstr": callers know the
// lines as they are.
constexpr PortalList kWhiteLists[] = {
    {"mac", "white mac add/del/get/delall macstr", "white mac add/del/get/delall", is_mac, false, "macstr",
     ApiAddWhiteMac, ApiDelWhiteMac, ApiGetWhiteMac, ApiDelallWhiteMac},
    {"domain", "white domain add/del/get/delall domain", "white domain add/del/get/delall", nullptr, false,
     "", ApiAddWhiteDomain, ApiDelWhiteDomain, ApiGetWhiteDomain, ApiDelallWhiteDomain},
    {"ip", "white ip add/del/get/delall ipstr", "white domain add/del/get/delall", is_ip, true, "ipstr",
     ApiAddWhiteIp, ApiDelWhiteIp, ApiGetWhiteIp, ApiDelallWhiteIp},
    {"fip", "white fip add/del/get/delall ipstr", "white fip add/del/get/delall", is_ip, true, "ipstr",
     ApiAddWhiteFip, ApiDelWhiteFip, ApiGetWhiteFip, ApiDelallWhiteFip},
    {"port", "white port add/del/get/delall port", "white port add/del/get/delall",
     [](const char* value) { return J_atoi(value) != 0; }, true, "ipstr",
     [](const char* value) { return ApiAddWhitePort(J_atoi(value)); },
     [](const char* value) { return ApiDelWhitePort(J_atoi(value)); }, ApiGetWhitePort, ApiDelallWhitePort},
};

constexpr const char* kBlackUsage = "black mac add/del/get/delall";
constexpr PortalList kBlackLists[] = {
    {"mac", kBlackUsage, kBlackUsage, is_mac, true, "macstr", ApiAddBlackMac, ApiDelBlackMac, ApiGetBlackMac,
     ApiDelallBlackMac},
};

// Without the blanks in front that the other actions' usage lines have.
Outcome complain_about_list(const CommandEntry* entry, const char* usage) {
  print_error("vek %s %s\n", entry->name, usage);
  return Outcome::kFailed;
}

Outcome show_list(const PortalList& list) {
  constexpr uint32_t kSpare = 16;
  char text[4096] = {};
  const int length = list.get(text, sizeof text);
  if (length < 0) return Outcome::kFailed;
  if (static_cast<uint32_t>(length) < sizeof text) {
    print_object(list.word, text, sizeof text);
    return Outcome::kAnswered;
  }
  const uint32_t room = static_cast<uint32_t>(length) + kSpare;
  char* const long_text = static_cast<char*>(calloc(room, 1));
  if (long_text == nullptr) return Outcome::kFailed;
  const bool is_read = list.get(long_text, room) >= 0;
  if (is_read) print_object(list.word, long_text, room);
  free(long_text);
  return is_read ? Outcome::kAnswered : Outcome::kFailed;
}

Outcome change_list(const PortalList& list, bool is_addition, const Args& args, const CommandEntry* entry) {
  if (args.count() < 6) return complain_about_list(entry, list.missing_value_usage);
  const bool is_checked = list.accepts != nullptr && (is_addition || list.checks_deletion);
  if (is_checked && !list.accepts(args[5])) {
    print_error("vek %s %s %s %s %s\n", entry->name, args[2], args[3], args[4], list.refused_value_hint);
    return Outcome::kFailed;
  }
  return outcome_of(is_addition ? list.add(args[5]) : list.del(args[5]));
}

Outcome run_list_action(std::span<const PortalList> lists, const char* usage, const Args& args,
                        const CommandEntry* entry) {
  for (const PortalList& list : lists) {
    if (args.count() < 5 || !args.is(3, list.word)) continue;
    if (args.is(4, "add") || args.is(4, "del")) return change_list(list, args.is(4, "add"), args, entry);
    if (args.is(4, "get")) return show_list(list);
    if (args.is(4, "delall")) return outcome_of(list.delete_all());
    return complain_about_list(entry, list.unknown_word_usage);
  }
  return complain_about_list(entry, usage);
}

Outcome white(const Args& args, const CommandEntry* entry) {
  return run_list_action(kWhiteLists, "white mac/domain/ip/fip/port add/del/get/delall", args, entry);
}

Outcome black(const Args& args, const CommandEntry* entry) {
  return run_list_action(kBlackLists, kBlackUsage, args, entry);
}

// ---- Settings ----

Outcome auth(const Args& args, const CommandEntry* entry) {
  if (args.is(3, "get")) {
    uint32_t state = 0;
    uint32_t savemac = 0;
    uint32_t time = 0;
    uint32_t loginmax = 0;
    ApiGetAuthenticateState(&state, &savemac, &time, &loginmax);  // a failure shows as zeros
    print("{\"state\":\"%d\",\"savemac\":\"%d\",\"time\":\"%d\",\"loginmax\":\"%d\"}", state, savemac, time,
          loginmax);
    return Outcome::kAnswered;
  }
  if (!args.is(3, "set")) return complain(entry, "auth get/set");
  if (args.count() < 7) return complain(entry, "set state savemac time loginmax");
  return outcome_of(ApiSetAuthenticateState(args.number(4), args.number(5), args.number(6), args.number(7)));
}

Outcome portal(const Args& args, const CommandEntry* entry) {
  if (args.is(3, "get")) {
    char url[1024] = {};
    if (ApiGetPortal(url, sizeof url) < 0) return Outcome::kFailed;
    print_object("url", url, sizeof url);
    return Outcome::kAnswered;
  }
  if (!args.is(3, "set")) return complain(entry, "portal get/set");
  if (args.count() < 5) return complain(entry, "portal url");
  return outcome_of(ApiSetPortal(args[4]));
}

struct Action {
  std::string_view word;
  Outcome (*run)(const Args& args, const CommandEntry* entry);
};

constexpr Action kActions[] = {
    {"login", login},
    {"logout", logout},
    {"white", white},
    {"black", black},
    {"checkonline", check_online},
    {"getonline", get_online},
    {"auth", auth},
    {"portal", portal},
};

Outcome run_action(const Args& args, const CommandEntry* entry) {
  for (const Action& action : kActions) {
    if (args.is(2, action.word)) return action.run(args, entry);
  }
  return complain(entry, entry->usage);
}

}  // namespace

void each_rzglapi_words(TakeWords take) {
  constexpr const char* kCommand = "rzglapi";
  const auto take_hosts = [&](const char* action, std::span<const HostAction> rows) {
    for (const HostAction& row : rows) take(kCommand, action, row.key.data(), nullptr, row.usage, row.words);
  };
  const auto take_lists = [&](const char* action, std::span<const PortalList> lists) {
    for (const PortalList& list : lists) {
      take(kCommand, action, list.word, "add", list.missing_value_usage, 6);
      take(kCommand, action, list.word, "del", list.missing_value_usage, 6);
      take(kCommand, action, list.word, "get", nullptr, 0);
      take(kCommand, action, list.word, "delall", nullptr, 0);
    }
  };
  take_hosts("login", kLogin);
  take_hosts("logout", kLogout);
  take_hosts("checkonline", kCheckOnline);
  take_hosts("getonline", kGetOnline);
  take(kCommand, "getonline", "all", nullptr, nullptr, 0);
  take_lists("white", kWhiteLists);
  take_lists("black", kBlackLists);
  take(kCommand, "auth", "get", nullptr, nullptr, 0);
  take(kCommand, "auth", "set", nullptr, "set state savemac time loginmax", 7);
  take(kCommand, "portal", "get", nullptr, nullptr, 0);
  take(kCommand, "portal", "set", nullptr, "portal url", 5);
}

// Callers judge by the JSON: the exit status is the same whatever has happened.
int cmd_rzglapi(int argc, char** argv, const CommandEntry* entry) {
  const Outcome outcome = run_action(Args(argc, argv), entry);
  if (outcome != Outcome::kAnswered) print("{\"ret\":\"%d\"}", outcome == Outcome::kDone ? 0 : -1);
  return 1;
}
