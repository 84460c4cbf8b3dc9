// mr: how traffic spreads over the lines, and what each line is set up with.
#include "records/mr.h"

#include "args/print.h"
#include "net/commands.h"
#include "order/order.h"
#include "platform/line.h"
#include "platform/list.h"

namespace {

bool parse_mode(LineMode& mode, const Args& args) {
  if (args.is(3, "hi")) {
    mode.type = kByHost;
  } else if (args.is(3, "ct")) {
    mode.type = kByConnection;
  } else if (args.is(3, "flow")) {
    mode.type = kByFlow;
  } else if (args.is(3, "zn")) {
    mode.type = kByWeights;
    mode.zn_val = args.number(4);
  } else {
    return false;
  }
  mode.ct_rule_name = args.number(5);
  return true;
}

// Every operation on a line fills its own fields only: the others stay 0, and the module leaves alone what
// they stand for.
void begin(LineRecord& line, LineOperation operation, const Args& args) {
  line.operation = operation;
  line.wanid = args.number<uint16_t>(3);
}

bool parse_balance(LineRecord& line, const Args& args) {
  begin(line, kLineBalance, args);
  args.take(4, line.jh, line.host_num);
  line.wan_proto = static_cast<uint8_t>(vek_get_wan_proto(args[6]));
  args.take(7, line.ppp_demand, line.ct_num);
  return true;
}

bool parse_flow(LineRecord& line, const Args& args) {
  begin(line, kLineFlow, args);
  line.flow_limit = args.number<uint8_t>(4);
  return true;
}

bool parse_weight(LineRecord& line, const Args& args) {
  begin(line, kLineWeight, args);
  line.val = args.number(4);
  line.is_qosval = args.number<uint8_t>(5);
  return true;
}

// Splits a copy of a list, cut where its room ends, and returns the number of items.
int split_servers(const char* list, char (&room)[128], char* (&servers)[3]) {
  copy_text(room, list);
  return split_string(room, ',', servers, 3);
}

bool parse_dns(LineRecord& line, const Args& args) {
  begin(line, kLineDns, args);
  line.prio = args.number(4);
  char room[128];
  char* servers[3];
  const int count4 = split_servers(args[5], room, servers);
  for (int i = 0; i < count4; ++i) line.dns4[i] = {get_ip_from_str(servers[i])};
  const int count6 = split_servers(args[6], room, servers);
  for (int i = 0; i < count6; ++i) StrToIp6(servers[i], &line.dns6[i]);
  return true;
}

// A target is an address or else a name; "0" and the empty text are neither and end the list.
void parse_targets(LineDetection& zc, char* list) {
  char* targets[3];
  const int count = split_string(list, '$', targets, 3);
  for (int i = 0; i < count; ++i) {
    zc.target_ips[i] = {StrToIp(targets[i])};
    if (zc.target_ips[i].value == 0) {
      if (targets[i] == std::string_view("0") || targets[i][0] == '\0') return;
      copy_text(zc.target_names[i], targets[i]);
    }
    zc.has_targets = 1;
  }
}

bool parse_detect(LineRecord& line, const Args& args) {
  begin(line, kLineDetect, args);
  LineDetection& zc = line.zc;
  args.take(4, zc.en, zc.act, zc.tm, zc.times, zc.sd, zc.gw);
  zc.has_gw = zc.gw.value != 0 ? 1 : 0;
  parse_targets(zc, args.get(10));
  args.take(11, zc.mobile, zc.option, zc.option_text, zc.option_ip, zc.second_ip);
  return true;
}

bool parse_detect_stop(LineRecord& line, const Args& args) {
  begin(line, kLineDetectStop, args);
  return true;
}

bool parse_route(LineRoute& route, const Args& args) {
  args.take(3, route.wanid, route.prio, route.src, route.srcmask, route.dst, route.dstmask);
  // One side that says something is enough: the other then stands for any address.
  const auto says = [](Ip4 address, Ip4 mask) { return address.value != 0 && mask.value != 0; };
  return says(route.src, route.srcmask) || says(route.dst, route.dstmask);
}

bool parse_ula(LineUla& ula, const Args& args) {
  constexpr uint16_t kUsualLength = 60;
  ula.wanid = args.number<uint16_t>(3);
  char* const prefix = args.get(4);
  if (char* slash = strchr(prefix, '/'); slash != nullptr) {
    *slash = '\0';
    ula.prefix_length = static_cast<uint16_t>(J_atoi(slash + 1));
  }
  StrToIPv6(prefix, &ula.prefix);
  if (ula.prefix_length == 0) ula.prefix_length = kUsualLength;
  return true;
}

void print_mode(const LineMode& mode) {
  print("type:%d,onlywan:%d onlywan_tcp:%d zn_val:%d ct_rule_name:%d\n", mode.type, mode.onlywan,
        mode.onlywan_tcp, mode.zn_val, mode.ct_rule_name);
}

void print_routes(const Answer& answer) {
  print("num: %d\n", answer.get<int32_t>(kListCountOffset));
  print("wanid prio src \t srcmask \t dst \t dstmask\n\n");
  for (const LineRoute& route : answer.list<LineRoute>()) {
    print("wanid:%d  prio:%d  src:%s  srcmask:%s ", route.wanid, route.prio, route.src, route.srcmask);
    print(" dst:%s  dstmask:%s\n", route.dst, route.dstmask);
  }
}

void print_detection(const LineDetection& zc) {
  print("\n\t zc: ");
  print("en=%d  act=%d  tm=%d  times=%d  sd=%lu  gw=%s  state=%d trys=%d ret_state=%d 3g=%d ", zc.en, zc.act,
        zc.tm, zc.times, zc.sd, zc.gw, zc.state, zc.trys, zc.ret_state, zc.mobile);
  print("srv=");
  for (int i = 0; i < 3; ++i) {
    if (zc.target_ips[i].value != 0) {
      print("%s,", zc.target_ips[i]);
    } else if (zc.target_names[i][0] != '\0') {
      print("%s,", zc.target_names[i]);
    }
  }
}

void print_line(const LineEntry& line) {
  print(
      "\nwanid:%d wan_proto:%d ppp_demand:%d jh:%u  host_num:%d ct_limit_num:%d  hi:%d[%d/%d]  ct:%d  "
      "dns_pri:%u  change_id:%d\n",
      line.wanid, line.wan_proto, line.ppp_demand, line.jh, line.host_num, line.ct_limit_num, line.hi,
      line.hi_bracket[0], line.hi_bracket[1], line.ct, line.dns_pri, line.change_id);
  print(
      "\t state_v4:%d state_v6:%d val:%lu chk_qosval:%d false_tm:%u hi_val:%lu ct_val:%lu qos_val:%lu "
      "qos_speed:%lu/%lu\n",
      line.state_v4, line.state_v6, line.val, line.chk_qosval, line.false_tm, line.hi_val, line.ct_val,
      line.qos_val, line.qos_speed[0], line.qos_speed[1]);
  print("\t dnsip4: ");
  for (const Ip4& server : line.dns4) print("%s,", server);
  print(" dnsip6: ");
  for (const Ip6& server : line.dns6) print("%s,", server);
  print("\n\t ula: %s/%d,", line.ula, line.ula_length);
  print_detection(line.zc);
  print("\n\t flow_limit:%d, create_tm:%u \n", line.flow_limit, line.create_tm);
}

void print_lines(const Answer& answer) {
  print("num: %d\n", answer.get<int32_t>(kListCountOffset));
  print("wanid jh state  val is_qosval hi_num ct_num dns_prio false_tm\n");
  for (const LineEntry& line : answer.list<LineEntry>()) print_line(line);
  print("\n");
}

// clang-format off
constexpr SubCommand kMr[] = {
    {"mode", kModuleMr, kMrMode, 1024, sizeof(LineMode), 6, "type[hi,ct]", parse_as<parse_mode>, nullptr},
    {"onlywan", kModuleMr, kMrOnlyWan, 1024, sizeof(LineMode), 5, "en[0,1] tcp[0,1]", parse_words<&LineMode::onlywan, &LineMode::onlywan_tcp>, nullptr},
    {"get", kModuleMr, kMrGet, 1024, sizeof(LineMode), 0, " ", nullptr, print_as<print_mode>},
    {"jh", kModuleMr, kMrLine, 1024, sizeof(LineRecord), 8, "wanid en[1:on] host_num wan_proto ppp_demand ct_num", parse_as<parse_balance>, nullptr},
    {"flow", kModuleMr, kMrLine, 1024, sizeof(LineRecord), 5, "wanid flow_limit[1:on]", parse_as<parse_flow>, nullptr},
    {"val", kModuleMr, kMrLine, 1024, sizeof(LineRecord), 6, "wanid val is_qosval(1:en)", parse_as<parse_weight>, nullptr},
    {"dns", kModuleMr, kMrLine, 1024, sizeof(LineRecord), 7, "wanid prio dns4 dns6", parse_as<parse_dns>, nullptr},
    {"zc", kModuleMr, kMrLine, 1024, sizeof(LineRecord), 16, "wanid en(0 1) act(1 2) tm times sd gw srv 3g_enable", parse_as<parse_detect>, nullptr},
    {"zc_stop", kModuleMr, kMrLine, 1024, sizeof(LineRecord), 4, "wanid", parse_as<parse_detect_stop>, nullptr},
    {"list", kModuleMr, kMrList, 0x400000, 0x3ffc00, 0, " ", nullptr, print_as<print_lines>},
    {"ws_list", kModuleMr, kMrList, 0x400000, 0x3ffc00, 0, " ", nullptr, print_as<print_lines>},
    {"lr_add", kModuleMr, kMrRouteAdd, 1024, sizeof(LineRoute), 9, "wanid prio src srcmask dst dstmask", parse_as<parse_route>, nullptr},
    {"lr_del", kModuleMr, kMrRouteDel, 1024, sizeof(LineRoute), 4, "wanid", parse_words<&LineRoute::wanid>, nullptr},
    {"lr_list", kModuleMr, kMrRouteList, 0x400000, 0x3ffc00, 0, " ", nullptr, print_as<print_routes>},
    {"dns_cache", kModuleMr, kMrDnsCache, 1024, 1000, 0, " ", nullptr, nullptr},
    {"ipv6", kModuleMr, kMrIpv6, 1024, 1000, 5, "id state", parse_words<&LineIpv6::wanid, &LineIpv6::state>, nullptr},
    {"ipv6_ula", kModuleMr, kMrUla, 1024, 1000, 5, "id ula", parse_as<parse_ula>, nullptr},
};
// clang-format on

}  // namespace

int cmd_mr(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kMr, argc, argv, entry);
}
