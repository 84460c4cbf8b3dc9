// user and macuser: the router's local accounts, and the MAC addresses remembered for logged-in users.
#include "records/user.h"

#include "args/addr_range.h"
#include "args/address_text.h"
#include "args/print.h"
#include "main/handlers.h"
#include "order/direct.h"
#include "platform/list.h"

namespace {

bool parse_account(UserRecord& user, const Args& args) {
  if (args.count() < 4) return false;
  copy_text(user.name, args[3]);
  if (args.is(2, "del")) return true;
  if (args.count() < 15) return false;
  copy_text(user.pwd, args[4]);
  user.gid = args.number<uint8_t>(5);
  unsigned flags = 0;
  if (args.is(6, "next")) {
    flags = kUserAnyIp;
  } else {  // what is no address, or no MAC below, binds nothing
    V4Range range = {};
    get_iplist_str_max(&range, args[6], 1);
    user.ip_start = range.first;
    user.ip_end = range.last;
    if (range.first != 0) flags = kUserFixedIp;
  }
  if (args.is(7, "next")) {
    flags |= kUserAnyMac;
  } else if (StrToMac(args[7], user.mac) == 0) {
    flags |= kUserFixedMac;
  }
  const std::string_view type = args[8];
  if (type.find("pppoe") != type.npos) flags |= kUserPppoe;
  if (type.find("web") != type.npos) flags |= kUserWeb;
  if (type.find("off") != type.npos) flags |= kUserOff;
  user.flags = static_cast<uint16_t>(flags);
  user.max = args.number(9);
  copy_text(user.mem, args[10]);
  user.up_speed = args.number(11);
  user.down_speed = args.number(12);
  user.mode_speed = args.is(13, "gx") ? 1 : 0;
  user.mod_pwd = args.is(14, "1") ? 1 : 0;
  return true;
}

bool parse_del_all(UserDelAll& filter, const Args& args) {
  if (args.count() < 4) return true;
  filter.type = args.is(3, "web") ? 1 : args.is(3, "pppoe") ? 2 : 0;
  filter.expired_type = args.number(4);
  return true;
}

bool parse_kick(UserKick& kick, const Args& args) {
  constexpr const char* kTypes[] = {"all", "pppoe", "web"};
  for (const char* type : kTypes) {
    if (args.is(3, type)) return true;
    ++kick.type;
  }
  return false;
}

bool parse_autoscan(UserAutoscan& autoscan, const Args& args) {
  constexpr int32_t kLeastMinutes = 5;
  if (args.count() < 4) return false;
  autoscan.enable = args.number(3);
  if (autoscan.enable != 1) return true;
  autoscan.interval_time = args.number(4);
  if (static_cast<int32_t>(autoscan.interval_time) < kLeastMinutes) autoscan.interval_time = kLeastMinutes;
  return true;
}

bool parse_name(UserNameInfo& info, const Args& args) {
  if (args.count() < 4) return false;
  copy_text(info.name, args[3]);
  return true;
}

bool parse_js_mod(UserJsMod& js_mod, const Args& args) {
  if (args.count() < 4) return false;
  js_mod.seconds = args.number(3) * 60;
  return true;
}

bool parse_card(UserCard& card, const Args& args) {
  if (args.count() < 5) return false;
  card.type = args.number(4);
  if (!args.is(3, "set")) return true;
  if (args.count() < 6) return false;
  card.op = 1;
  card.en = args.number(5);
  return true;
}

bool parse_ssid(UserSsid& ssid, const Args& args) {
  if (args.count() < 4) return false;
  if (!args.is(3, "set")) return true;
  if (args.count() < 9) return false;
  ssid = {.op = 1,
          .assid = args.number(4),
          .lssid = args.number(5),
          .dssid = args.number(6),
          .ussid = args.number(7),
          .gssid = args.number(8)};
  return true;
}

// The word behind "lock" only holds its place.
bool parse_lock(UserLock& lock, const Args& args) {
  if (args.count() < 7) return false;
  lock.all = args.number(4);
  copy_text(lock.name, args[5]);
  lock.lock = args.number(6);
  return true;
}

struct FlagWord {
  uint16_t flag;
  const char* word;
};
constexpr FlagWord kFlagWords[] = {
    {kUserFixedIp, "cfgip "}, {kUserFixedMac, "cfgmac "}, {kUserAnyIp, "nip "},     {kUserAnyMac, "nmac "},
    {kUserPppoe, "pppoe "},   {kUserWeb, "web "},         {kUserMobile, "mobile "}, {kUserOff, "off "},
};

void print_accounts(const Answer& answer) {
  print("num: %d\n", answer.get<int32_t>(kListCountOffset));
  for (const UserRecord& user : answer.list<UserRecord>()) {
    print("name=%s pwd=%s gid=%d mod_pwd=%d state=0x%x ip=%s -%s \n  mac=%s speed up=%d down=%d mode=%s ",
          user.name, user.pwd, user.gid, user.mod_pwd, user.flags, ip_text(user.ip_start).chars,
          ip_text(user.ip_end).chars, mac_text(user.mac).chars, user.up_speed, user.down_speed,
          user.mode_speed == 1 ? "gx" : "dl");
    for (const FlagWord& row : kFlagWords) {
      if ((user.flags & row.flag) != 0) print("%s", row.word);
    }
    print(" ddate=%u zup=%u zdown=%u login_num=%u userid=%u mem=%s\n\n", user.ddate, user.zup, user.zdown,
          user.login_num, user.userid, user.mem);
  }
  print("\n");
}

void print_autoscan(const UserAutoscan& autoscan) {
  print("\nautscan:enable=%d interval_time=%d\n", autoscan.enable, autoscan.interval_time);
}

void print_name_info(const Answer& answer) {
  const auto info = answer.get<UserNameInfo>(0);
  print("\nname:%s,num:%d,login_num:%d,web_login_num:%d\n", info.name, info.num, info.login_num,
        info.web_login_num);
  // Every line shows the first entry: callers take its data from whichever line they read.
  const auto first = answer.get<UserNameEntry>(sizeof(UserNameInfo));
  const auto room = static_cast<int32_t>(answer.room(sizeof(UserNameInfo)) / sizeof(UserNameEntry));
  for (int32_t i = 0; i < std::min(info.num, room); ++i) {
    print("i:%d,ip:%s,mac:%s,flags:0x%08lX\n", i, ipaddr_text(first.ip).chars, mac_text(first.mac).chars,
          first.flags);
  }
  print("\n");
}

void print_card(const UserCard& card) { print("type:%d,en:%d\n", card.type, card.en); }

void print_ssid(const UserSsid& ssid) {
  print("assid:%d,lssid:%d,dssid:%d,ussid:%d,gssid:%d\n", ssid.assid, ssid.lssid, ssid.dssid, ssid.ussid,
        ssid.gssid);
}

// clang-format off
constexpr SubCommand kUser[] = {
    {"add", kUserAdd, 1024, kUserRequestSize,
     "name pwd gid ip(next|ip_s-ip_e) mac(next|mac) type(pppoe,web,off) max mem up_speed down_speed mode_speed mod_pwd",
     parse_as<parse_account>, nullptr},
    {"del", kUserDel, 1024, kUserRequestSize, "name", parse_as<parse_account>, nullptr},
    {"delall", kUserDelAll, 1024, kUserRequestSize, "type expired_type voucher_type", parse_as<parse_del_all>, nullptr},
    {"list", kUserList, 0x400000, 0x3ffc00, " ", nullptr, print_as<print_accounts>},
    {"online_list", kUserOnlineList, 204800, 200000, " ", nullptr, print_as<print_accounts>},
    {"autoscan", kUserAutoscanSet, 1024, sizeof(UserAutoscan), "autoscan enable minut", parse_as<parse_autoscan>, nullptr},
    {"get_auto", kUserAutoscanGet, 1024, sizeof(UserAutoscan), "get_auto", nullptr, print_as<print_autoscan>},
    {"name_info", kUserNameInfo, 10240, 10200, "name", parse_as<parse_name>, print_as<print_name_info>},
    {"rd_down_all", kUserRdDownAll, 1024, 1000, "type[all/pppoe/web]", parse_as<parse_kick>, nullptr},
    {"down_all", kUserDownAll, 1024, 1000, "type[all/pppoe/web]", parse_as<parse_kick>, nullptr},
    {"js_mod", kUserJsMod, 1024, 1000, "time", parse_as<parse_js_mod>, nullptr},
    {"card", kUserCard, 1024, 1000, "set/get type en[0/1]", parse_as<parse_card>, print_as<print_card>},
    {"ssid", kUserSsid, 1024, 1000, "set/get a l d u g", parse_as<parse_ssid>, print_as<print_ssid>},
    {"lock", kUserLock, 1024, 1000, "all name lock", parse_as<parse_lock>, nullptr},
};
// clang-format on

BuildResult build_stat(UserStat& stat, const Args& args) {
  if (args.count() != 4) return kTextAlone;
  copy_text(stat.name, args[3]);
  return kBuilt;
}

void print_stat(const UserStat& stat) { print("up:%luK down:%luK \n  ok\n", stat.up >> 10, stat.down >> 10); }

constexpr DirectCommand kStat = {
    "stat", kUserStat, 1024, "user stat name", build_as<build_stat>, print_as<print_stat>};

bool parse_setting(MacUserSetting& setting, const Args& args) {
  if (args.count() < 5) return false;
  setting.enable = args.number(3);
  setting.timeout = static_cast<uint64_t>(static_cast<int32_t>(args.number(4)));
  return true;
}

bool parse_mac(MacUserEntry& entry, const Args& args) {
  if (args.count() < 4) return false;
  StrToMac(args[3], entry.mac);  // no MAC at all goes out as it was read: the module finds nothing to delete
  return true;
}

bool parse_id(MacUserEntry& entry, const Args& args) {
  if (args.count() < 4) return false;
  entry.userid = args.number(3);
  return true;
}

void print_setting(const MacUserSetting& setting) {
  print("enable:%d\ntimeout:%lu\n", setting.enable, setting.timeout);
}

void print_macs(const Answer& answer) {
  print("mac list num:%d\n", answer.get<int32_t>(kListCountOffset));
  for (const MacUserEntry& entry : answer.list<MacUserEntry>()) {
    print("mac:%s,user:%u,last:%lu seconds,card_type:%d\n", mac_text(entry.mac).chars, entry.userid,
          entry.last, entry.card_type);
  }
}

// clang-format off
constexpr SubCommand kMacUser[] = {
    {"set", kMacUserSet, 1024, 1020, "enable time", parse_as<parse_setting>, nullptr},
    {"get", kMacUserGet, 1024, 1020, "", nullptr, print_as<print_setting>},
    {"init", kMacUserInit, 1024, 1020, "", nullptr, nullptr},
    {"list", kMacUserList, 0x400000, 0x3ffc00, "", nullptr, print_as<print_macs>},
    {"mac_del", kMacUserMacDel, 1024, 1020, "mac", parse_as<parse_mac>, nullptr},
    {"id_del", kMacUserIdDel, 1024, 1020, "userid", parse_as<parse_id>, nullptr},
};
// clang-format on

}  // namespace

int cmd_user(int argc, char** argv, const CommandEntry* entry) {
  if (Args(argc, argv).is(2, kStat.word)) return run_direct(kModuleUser, kStat, argc, argv);
  return run_sub_command(kModuleUser, kUser, argc, argv, entry);
}

int cmd_macuser(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kModuleMacUser, kMacUser, argc, argv, entry);
}
