// user and macuser: the router's local accounts, and the MAC addresses remembered for logged-in users.
#include "records/user.h"

#include "args/print.h"
#include "auth/commands.h"
#include "order/order.h"
#include "platform/list.h"
#include "records/list.h"
#include "records/macuser.h"

namespace {

bool parse_account(UserRequest& user, const Args& args) {
  args.take(3, user.name, user.pwd, user.gid);
  unsigned flags = 0;
  if (args.is(6, "next")) {
    flags = kUserAnyIp;
  } else {  // what is no address, or no MAC below, binds nothing
    V4Range range = {};
    get_iplist_str_max(&range, args[6], 1);
    if (memcmp(&range, &kNotUnderstood<V4Range>, sizeof range) == 0) range = {};
    user.ip_start = range.first;
    user.ip_end = range.last;
    if (range.first.value != 0) flags = kUserFixedIp;
  }
  if (args.is(7, "next")) {
    flags |= kUserAnyMac;
  } else if (args.read(7, user.mac)) {
    flags |= kUserFixedMac;
  }
  const std::string_view type = args[8];
  if (type.find("pppoe") != type.npos) flags |= kUserPppoe;
  if (type.find("web") != type.npos) flags |= kUserWeb;
  if (type.find("off") != type.npos) flags |= kUserOff;
  user.flags = static_cast<uint16_t>(flags);
  args.take(9, user.max, user.mem, user.up_speed, user.down_speed);
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
  autoscan.enable = args.number(3);
  if (autoscan.enable != 1) return true;
  autoscan.interval_time = args.number(4);
  if (static_cast<int32_t>(autoscan.interval_time) < kLeastMinutes) autoscan.interval_time = kLeastMinutes;
  return true;
}

bool parse_js_mod(UserJsMod& js_mod, const Args& args) {
  js_mod.seconds = args.number(3) * 60;
  return true;
}

bool parse_card(UserCard& card, const Args& args) {
  card.type = args.number(4);
  if (!args.is(3, "set")) return true;
  if (args.count() < 6) return false;
  card.op = 1;
  card.en = args.number(5);
  return true;
}

// The word behind "lock" only holds its place.
bool parse_lock(UserLock& lock, const Args& args) {
  args.take(4, lock.all, lock.name, lock.lock);
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
  for (const UserEntry& entry : answer.list<UserEntry>()) {
    const auto& user = entry.account;
    print("name=%s pwd=%s gid=%d mod_pwd=%d state=0x%x ip=%s -%s \n  mac=%s speed up=%d down=%d mode=%s ",
          user.name, user.pwd, user.gid, user.mod_pwd, user.flags, user.ip_start, user.ip_end, user.mac,
          user.up_speed, user.down_speed, user.mode_speed == 1 ? "gx" : "dl");
    for (const FlagWord& row : kFlagWords) {
      if ((user.flags & row.flag) != 0) print("%s", row.word);
    }
    print(" ddate=%u zup=%u zdown=%u login_num=%u userid=%u mem=%s\n\n", user.ddate, entry.zup, entry.zdown,
          entry.login_num, user.userid, user.mem);
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
    print("i:%d,ip:%s,mac:%s,flags:0x%08lX\n", i, first.ip, first.mac, first.flags);
  }
  print("\n");
}

void print_card(const UserCard& card) { print("type:%d,en:%d\n", card.type, card.en); }

void print_ssid(const UserSsid& ssid) {
  print("assid:%d,lssid:%d,dssid:%d,ussid:%d,gssid:%d\n", ssid.assid, ssid.lssid, ssid.dssid, ssid.ussid,
        ssid.gssid);
}

bool parse_stat(UserStat& stat, const Args& args) {
  copy_text(stat.name, args[3]);
  return args.count() == 4;
}

void print_stat(const UserStat& stat) { print("up:%luK down:%luK \n  ok\n", stat.up >> 10, stat.down >> 10); }

// clang-format off
constexpr SubCommand kUser[] = {
    {"add", kModuleUser, kUserAdd, 1024, sizeof(UserRequest), 15, "name pwd gid ip(next|ip_s-ip_e) mac(next|mac) type(pppoe,web,off) max mem up_speed down_speed mode_speed mod_pwd", parse_as<parse_account>, nullptr},
    direct("stat", kModuleUser, kUserStat, 1024, 0, "user stat name", parse_as<parse_stat>, print_as<print_stat>),
    {"del", kModuleUser, kUserDel, 1024, sizeof(UserRequest), 4, "name", parse_words<&UserRequest::name>, nullptr},
    {"delall", kModuleUser, kUserDelAll, 1024, sizeof(UserRequest), 0, "type expired_type voucher_type", parse_as<parse_del_all>, nullptr},
    {"list", kModuleUser, kUserList, 0x400000, 0x3ffc00, 0, " ", nullptr, print_as<print_accounts>},
    {"online_list", kModuleUser, kUserOnlineList, 204800, 200000, 0, " ", nullptr, print_as<print_accounts>},
    {"autoscan", kModuleUser, kUserAutoscanSet, 1024, sizeof(UserAutoscan), 4, "autoscan enable minut", parse_as<parse_autoscan>, nullptr},
    {"get_auto", kModuleUser, kUserAutoscanGet, 1024, sizeof(UserAutoscan), 0, "get_auto", nullptr, print_as<print_autoscan>},
    {"name_info", kModuleUser, kUserNameInfo, 10240, 10200, 4, "name", parse_words<&UserNameInfo::name>, print_as<print_name_info>},
    {"rd_down_all", kModuleUser, kUserRdDownAll, 1024, 1000, 0, "type[all/pppoe/web]", parse_as<parse_kick>, nullptr},
    {"down_all", kModuleUser, kUserDownAll, 1024, 1000, 0, "type[all/pppoe/web]", parse_as<parse_kick>, nullptr},
    {"js_mod", kModuleUser, kUserJsMod, 1024, 1000, 4, "time", parse_as<parse_js_mod>, nullptr},
    {"card", kModuleUser, kUserCard, 1024, 1000, 5, "set/get type en[0/1]", parse_as<parse_card>, print_as<print_card>},
    {"ssid", kModuleUser, kUserSsid, 1024, 1000, 4, "set/get a l d u g", parse_pair_of<&UserSsid::assid, &UserSsid::lssid, &UserSsid::dssid, &UserSsid::ussid, &UserSsid::gssid>, print_as<print_ssid>},
    {"lock", kModuleUser, kUserLock, 1024, 1000, 7, "all name lock", parse_as<parse_lock>, nullptr},
};
// clang-format on

bool parse_setting(MacUserSetting& setting, const Args& args) {
  setting.enable = args.number(3);
  setting.timeout = static_cast<uint64_t>(static_cast<int32_t>(args.number(4)));
  return true;
}

void print_setting(const MacUserSetting& setting) {
  print("enable:%d\ntimeout:%lu\n", setting.enable, setting.timeout);
}

void print_macs(const Answer& answer) {
  print("mac list num:%d\n", answer.get<int32_t>(kListCountOffset));
  for (const MacUserEntry& entry : answer.list<MacUserEntry>()) {
    print("mac:%s,user:%u,last:%lu seconds,card_type:%d\n", entry.mac, entry.userid, entry.last,
          entry.card_type);
  }
}

// clang-format off
constexpr SubCommand kMacUser[] = {
    {"set", kModuleMacUser, kMacUserSet, 1024, 1020, 5, "enable time", parse_as<parse_setting>, nullptr},
    {"get", kModuleMacUser, kMacUserGet, 1024, 1020, 0, "", nullptr, print_as<print_setting>},
    {"init", kModuleMacUser, kMacUserInit, 1024, 1020, 0, "", nullptr, nullptr},
    {"list", kModuleMacUser, kMacUserList, 0x400000, 0x3ffc00, 0, "", nullptr, print_as<print_macs>},
    // No MAC at all goes out as zero: the module finds nothing to delete.
    {"mac_del", kModuleMacUser, kMacUserMacDel, 1024, 1020, 4, "mac", parse_words<&MacUserEntry::mac>, nullptr},
    {"id_del", kModuleMacUser, kMacUserIdDel, 1024, 1020, 4, "userid", parse_words<&MacUserEntry::userid>, nullptr},
};
// clang-format on

}  // namespace

int cmd_user(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kUser, argc, argv, entry);
}

int cmd_macuser(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kMacUser, argc, argv, entry);
}
