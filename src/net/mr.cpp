// mr: how traffic spreads over the lines, and what each line is set up with.
#include "records/mr.h"

#include "args/address_text.h"
#include "args/print.h"
#include "main/handlers.h"
#include "order/order.h"
#include "platform/line.h"
#include "platform/list.h"

namespace {

bool parse_mode(LineMode& mode, const Args& args) {
  if (args.count() < 6) return false;
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

bool parse_only_wan(LineMode& mode, const Args& args) {
  if (args.count() < 5) return false;
  mode.onlywan = args.number(3);
  mode.onlywan_tcp = args.number(4);
  return true;
}

// Every operation on a line fills its own fields only: the others stay 0, and the module leaves alone what
// they stand for.
void begin(LineRecord& line, LineOperation operation, const Args& args) {
  line.operation = operation;
  line.wanid = args.number<uint16_t>(3);
}

bool parse_balance(LineRecord& line, const Args& args) {
  if (args.count() < 8) return false;
  begin(line, kLineBalance, args);
  line.jh = args.number<uint8_t>(4);
  line.host_num = args.number(5);
  line.wan_proto = static_cast<uint8_t>(vek_get_wan_proto(args[6]));
  line.ppp_demand = args.number<uint8_t>(7);
  line.ct_num = args.number(8);
  return true;
}

bool parse_flow(LineRecord& line, const Args& args) {
  if (args.count() < 5) return false;
  begin(line, kLineFlow, args);
  line.flow_limit = args.number<uint8_t>(4);
  return true;
}

bool parse_weight(LineRecord& line, const Args& args) {
  if (args.count() < 6) return false;
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
  if (args.count() < 7) return false;
  begin(line, kLineDns, args);
  line.prio = args.number(4);
  char room[128];
  char* servers[3];
  const int count4 = split_servers(args[5], room, servers);
  for (int i = 0; i < count4; ++i) line.dns4[i] = get_ip_from_str(servers[i]);
  const int count6 = split_servers(args[6], room, servers);
  for (int i = 0; i < count6; ++i) StrToIp6(servers[i], line.dns6[i]);
  return true;
}

// A target is an address or else a name; "0" and the empty text are neither and end the list.
void parse_targets(LineDetection& zc, char* list) {
  char* targets[3];
  const int count = split_string(list, '$', targets, 3);
  for (int i = 0; i < count; ++i) {
    zc.target_ips[i] = StrToIp(targets[i]);
    if (zc.target_ips[i] == 0) {
      if (targets[i] == std::string_view("0") || targets[i][0] == '\0') return;
      copy_text(zc.target_names[i], targets[i]);
    }
    zc.has_targets = 1;
  }
}

bool parse_detect(LineRecord& line, const Args& args) {
  if (args.count() < 16) return false;
  begin(line, kLineDetect, args);
  LineDetection& zc = line.zc;
  zc.en = args.number<uint8_t>(4);
  zc.act = args.number<uint8_t>(5);
  zc.tm = args.number<uint16_t>(6);
  zc.times = args.number<uint16_t>(7);
  zc.sd = args.number(8);
  zc.gw = StrToIp(args[9]);
  zc.has_gw = zc.gw != 0 ? 1 : 0;
  parse_targets(zc, args.get(10));
  zc.mobile = args.number<uint8_t>(11);
  zc.option = args.number<uint8_t>(12);
  copy_text(zc.option_text, args[13]);
  zc.option_ip = StrToIp(args[14]);
  zc.second_ip = StrToIp(args[15]);
  return true;
}

bool parse_detect_stop(LineRecord& line, const Args& args) {
  if (args.count() < 4) return false;
  begin(line, kLineDetectStop, args);
  return true;
}

bool parse_route(LineRoute& route, const Args& args) {
  if (args.count() < 4) return false;
  route.wanid = args.number<uint16_t>(3);
  if (args.is(2, "lr_del")) return true;
  if (args.count() < 9) return false;
  route.prio = args.number<uint16_t>(4);
  route.src = StrToIp(args[5]);
  route.srcmask = StrToIp(args[6]);
  route.dst = StrToIp(args[7]);
  route.dstmask = StrToIp(args[8]);
  // One side that says something is enough: the other then stands for any address.
  return (route.src != 0 && route.srcmask != 0) || (route.dst != 0 && route.dstmask != 0);
}

bool parse_ipv6(LineIpv6& ipv6, const Args& args) {
  if (args.count() < 5) return false;
  ipv6.wanid = args.number<uint16_t>(3);
  ipv6.state = args.number<uint8_t>(4);
  return true;
}

bool parse_ula(LineUla& ula, const Args& args) {
  constexpr uint16_t kUsualLength = 60;
  if (args.count() < 5) return false;
  ula.wanid = args.number<uint16_t>(3);
  char* const prefix = args.get(4);
  if (char* slash = strchr(prefix, '/'); slash != nullptr) {
    *slash = '\0';
    ula.prefix_length = static_cast<uint16_t>(J_atoi(slash + 1));
  }
  StrToIPv6(prefix, ula.prefix);
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
    print("wanid:%d  prio:%d  src:%s  srcmask:%s ", route.wanid, route.prio, ip_text(route.src).chars,
          ip_text(route.srcmask).chars);
    print(" dst:%s  dstmask:%s\n", ip_text(route.dst).chars, ip_text(route.dstmask).chars);
  }
}

void print_detection(const LineDetection& zc) {
  print("\n\t zc: ");
  print("en=%d  act=%d  tm=%d  times=%d  sd=%lu  gw=%s  state=%d trys=%d ret_state=%d 3g=%d ", zc.en, zc.act,
        zc.tm, zc.times, zc.sd, ip_text(zc.gw).chars, zc.state, zc.trys, zc.ret_state, zc.mobile);
  print("srv=");
  for (int i = 0; i < 3; ++i) {
    if (zc.target_ips[i] != 0) {
      print("%s,", ip_text(zc.target_ips[i]).chars);
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
  for (const uint32_t server : line.dns4) print("%s,", ip_text(server).chars);
  print(" dnsip6: ");
  for (const auto& server : line.dns6) print("%s,", ip6_text(server).chars);
  print("\n\t ula: %s/%d,", ip6_text(line.ula).chars, line.ula_length);
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
    {"mode", kMrMode, 1024, sizeof(LineMode), "type[hi,ct]", parse_as<parse_mode>, nullptr},
    {"onlywan", kMrOnlyWan, 1024, sizeof(LineMode), "en[0,1] tcp[0,1]", parse_as<parse_only_wan>, nullptr},
    {"get", kMrGet, 1024, sizeof(LineMode), " ", nullptr, print_as<print_mode>},
    {"jh", kMrLine, 1024, sizeof(LineRecord), "wanid en[1:on] host_num wan_proto ppp_demand ct_num", parse_as<parse_balance>, nullptr},
    {"flow", kMrLine, 1024, sizeof(LineRecord), "wanid flow_limit[1:on]", parse_as<parse_flow>, nullptr},
    {"val", kMrLine, 1024, sizeof(LineRecord), "wanid val is_qosval(1:en)", parse_as<parse_weight>, nullptr},
    {"dns", kMrLine, 1024, sizeof(LineRecord), "wanid prio dns4 dns6", parse_as<parse_dns>, nullptr},
    {"zc", kMrLine, 1024, sizeof(LineRecord), "wanid en(0 1) act(1 2) tm times sd gw srv 3g_enable", parse_as<parse_detect>, nullptr},
    {"zc_stop", kMrLine, 1024, sizeof(LineRecord), "wanid", parse_as<parse_detect_stop>, nullptr},
    {"list", kMrList, 0x400000, 0x3ffc00, " ", nullptr, print_as<print_lines>},
    {"ws_list", kMrList, 0x400000, 0x3ffc00, " ", nullptr, print_as<print_lines>},
    {"lr_add", kMrRouteAdd, 1024, sizeof(LineRoute), "wanid prio src srcmask dst dstmask", parse_as<parse_route>, nullptr},
    {"lr_del", kMrRouteDel, 1024, sizeof(LineRoute), "wanid", parse_as<parse_route>, nullptr},
    {"lr_list", kMrRouteList, 0x400000, 0x3ffc00, " ", nullptr, print_as<print_routes>},
    {"dns_cache", kMrDnsCache, 1024, 1000, " ", nullptr, nullptr},
    {"ipv6", kMrIpv6, 1024, 1000, "id state", parse_as<parse_ipv6>, nullptr},
    {"ipv6_ula", kMrUla, 1024, 1000, "id ula", parse_as<parse_ula>, nullptr},
};
// clang-format on

}  // namespace

int cmd_mr(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kModuleMr, kMr, argc, argv, entry);
}
