// pppoe and pppoe_group: the PPPoE server, the groups of its addresses, and the client that probes lines.
#include "records/pppoe.h"

#include "args/print.h"
#include "net/commands.h"
#include "order/order.h"
#include "platform/list.h"
#include "records/devmg.h"

namespace {

bool parse_base(PppoeServerConfig& config, const Args& args) {
  config.half = kPppoeBase;
  config.en = args.is(3, "on") ? 1 : 0;
  args.take(4, config.dev, config.srv_ip, config.netmask, config.sys_run_flag);
  if (config.srv_ip.value == 0) {
    print_error(" srv_ip err ! %s\n", args[5]);
  } else if (config.netmask.value == 0) {
    print_error(" netmask err ! %s\n", args[6]);
  }
  return config.srv_ip.value != 0 && config.netmask.value != 0;
}

bool parse_options(PppoeServerConfig& config, const Args& args) {
  config.half = kPppoeOptions;
  args.take(3, config.acname, config.dns[0], config.dns[1], config.any_acname, config.check_tm,
            config.check_max, config.pap, config.chap, config.mschap, config.mschap2);
  config.any_user = args.is(13, "on") ? 1 : 0;
  return true;
}

bool parse_devmg(DevPppoe& devmg, const Args& args) {
  devmg.mode = args.is(3, "set") ? DevPppoe::kSet : DevPppoe::kGet;
  copy_text(devmg.dev, args[4]);
  if (devmg.mode == DevPppoe::kGet) return true;
  devmg.en = args.number(5);
  devmg.only = args.is(6, "on") ? 1 : 0;
  return args.count() >= 7;
}

bool parse_debug(PppoeDebug& debug, const Args& args) {
  if (args.is(3, "get")) return true;
  debug.mode = 1;
  args.take(4, debug.en, debug.log_en);
  return args.count() >= 6;
}

bool parse_probe(PppoeProbe& probe, const Args& args) {
  copy_text(probe.dev, args[3]);
  probe.enable = 1;
  return true;
}

void print_config(const PppoeServerConfig& config) {
  print("en: %d dev: %s  srv_ip: %s start_ip: %s end_ip:%s", config.en, config.dev, config.srv_ip,
        config.start_ip, config.end_ip);
  print(" netmask:%s\n dns: ", config.netmask);
  for (const Ip4& server : config.dns) {
    if (server.value != 0) print("%s,", server);
  }
  print("\n acname: %s any_acname:%d  check_tm: %d check_max: %d\n", config.acname, config.any_acname,
        config.check_tm, config.check_max);
  print(" pap: %d chap:%d  mschap:%d mschap2:%d \n", config.pap, config.chap, config.mschap, config.mschap2);
  print(" rcv_padi:%u send_pado:%u  any_user:%d\n", config.rcv_padi, config.send_pado, config.any_user);
}

void print_devmg(const DevPppoe& devmg) {
  if (devmg.mode == DevPppoe::kSet) {
    print("ok\n");
  } else {
    print("en: %d only: %d \n", devmg.en, devmg.only);
  }
}

void print_ranges(AnswerCursor& lists, uint32_t count) {
  for (const PppoeRange& range : lists.entries<PppoeRange>(count)) print("%s-%s\n", range.start, range.end);
}

// What the server and a group report alike.
template <typename Report>
AnswerCursor print_pools(const Answer& answer, const Report& report) {
  AnswerCursor lists(answer, sizeof report);
  print("\n pool_num:%d\n", report.pool_num);
  print_ranges(lists, report.pool_num);
  print("\n bl_num:%d\n", report.bl_num);
  print_ranges(lists, report.bl_num);
  print("\n ipused_num:%d\n", report.ipused_num);
  print_ranges(lists, report.ipused_num);
  return lists;
}

void print_debug(const Answer& answer) {
  const auto debug = answer.get<PppoeDebug>(0);
  if (debug.mode == 1) {
    print("ok\n");
    return;
  }
  print(" en:%d, log_en:%d\n", debug.en, debug.log_en);
  AnswerCursor lists = print_pools(answer, debug);
  print("\n session_num:%d\n", debug.session_num);
  uint32_t shown = 0;
  for (const PppoeSession& session : lists.entries<PppoeSession>(debug.session_num)) {
    if (shown > 0 && shown % 10 == 0) print("\n");
    print("%s,", session.ip);
    ++shown;
  }
}

void print_probe(const PppoeProbe& probe) {
  print("enable:%d\r\n", probe.enable);
  print("probe_dev_name:%s\r\n", probe.dev);
  print("probe_ppppoe_status:%d\r\n", probe.status);  // four p: callers look for it
  print("probe_username:%s\r\n", probe.username);
  print("probe_userpwd:%s\r\n", probe.userpwd);
  print("%d:%d:%d:%d\r\n", probe.numbers[0], probe.numbers[1], probe.numbers[2], probe.numbers[3]);
}

// clang-format off
constexpr SubCommand kPppoe[] = {
    {"set_base", kModulePppoe, kPppoeSet, 1024, sizeof(PppoeServerConfig), 8, "en[on|off] devname srv_ip netmask sys_run_flag", parse_as<parse_base>, nullptr},
    {"set_opt", kModulePppoe, kPppoeSet, 1024, sizeof(PppoeServerConfig), 14, "acname dns0 dns1 any_acn check_tm check_max pap  chap mschap mschap2 any_user", parse_as<parse_options>, nullptr},
    {"show", kModulePppoe, kPppoeShow, 1024, sizeof(PppoeServerConfig), 0, "", nullptr, print_as<print_config>},
    {"devmg", kModuleDevmg, kDevPppoe, 1024, sizeof(DevPppoe), 5, "opt[set,get] devname en(0,1) only(0,1)", parse_as<parse_devmg>, print_as<print_devmg>},
    {"debug", kModulePppoe, kPppoeDebug, 102400, 102000, 4, "set/get en[0/1] logen[0/1]", parse_as<parse_debug>, print_as<print_debug>},
    {"start_probe", kModulePppoe, kPppoeProbeStart, 1024, sizeof(PppoeProbe), 4, "", parse_as<parse_probe>, nullptr},
    {"stop_probe", kModulePppoe, kPppoeProbeStop, 1024, sizeof(PppoeProbe), 0, "", nullptr, nullptr},
    {"probe_status", kModulePppoe, kPppoeProbeStatus, 1024, sizeof(PppoeProbe), 0, "", nullptr, print_as<print_probe>},
    {"time_change", kModulePppoe, kPppoeTimeChange, 1024, 100, 4, "tm", parse_words<&PppoeTimeChange::tm>, nullptr},
};
// clang-format on

// The first two words of the list that are addresses.
void parse_servers(Ip4 (&dns)[2], char* list) {
  char* words[8];
  const int count = split_string(list, ',', words, 8);
  int found = 0;
  for (int i = 0; i < count && found < 2; ++i) {
    dns[found] = {get_ip_from_str(words[i])};
    if (dns[found].value != 0) ++found;
  }
}

bool parse_group(PppoeGroup& group, const Args& args) {
  args.take(3, group.name, group.ip, group.mask);
  parse_servers(group.dns, args.get(6));
  group.sys_run_flag = args.number(7);
  return true;
}

void print_groups(const Answer& answer) {
  print("num:%d\n", answer.get<int32_t>(kListCountOffset));
  for (const PppoeGroup& group : answer.list<PppoeGroup>()) {
    print("%s ip[%s-%s] up[%d] down[%d] user[%d]", group.name, group.ip, group.mask, group.up, group.down,
          group.user);
    print(" dns[%s,%s]\n", group.dns[0], group.dns[1]);
  }
  print("\n");
}

void print_group_debug(const Answer& answer) { print_pools(answer, answer.get<PppoeGroupDebug>(0)); }

// clang-format off
constexpr SubCommand kPppoeGroup[] = {
    {"add", kModulePppoe, kPppoeGroupAdd, 1024, sizeof(PppoeGroup), 8, "name ip mask dns sys_run_flag", parse_as<parse_group>, nullptr},
    {"mod", kModulePppoe, kPppoeGroupMod, 1024, sizeof(PppoeGroup), 8, "name ip mask dns", parse_as<parse_group>, nullptr},
    {"del", kModulePppoe, kPppoeGroupDel, 1024, sizeof(PppoeGroup), 4, "name", parse_words<&PppoeGroup::name>, nullptr},
    {"delall", kModulePppoe, kPppoeGroupDelAll, 1024, sizeof(PppoeGroup), 0, "", nullptr, nullptr},
    {"list", kModulePppoe, kPppoeGroupList, 204800, 204000, 0, "", nullptr, print_as<print_groups>},
    {"speed", kModulePppoe, kPppoeGroupSpeed, 1024, sizeof(PppoeGroup), 6, "name up down", parse_words<&PppoeGroup::name, &PppoeGroup::up, &PppoeGroup::down>, nullptr},
    {"debug", kModulePppoe, kPppoeGroupDebug, 204800, 204000, 4, "name", parse_words<&PppoeGroupDebug::name>, print_as<print_group_debug>},
};
// clang-format on

}  // namespace

int cmd_pppoe(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kPppoe, argc, argv, entry);
}

int cmd_pppoe_group(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kPppoeGroup, argc, argv, entry);
}
