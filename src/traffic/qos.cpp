// qos: the traffic-shaping engine: settings and counters of devices, its global limits and its buffers.
#include "records/qos.h"

#include <arpa/inet.h>

#include <cstdlib>

#include "args/print.h"
#include "order/order.h"
#include "platform/line.h"
#include "platform/nvram.h"
#include "traffic/commands.h"
#include "traffic/speed_rules.h"

namespace {

bool is_set(const Args& args) { return args.is(3, "set"); }

// Settings and counters of a device.

// The words name the buffers of all before those of one connection; the record has them the other way round.
bool parse_settings(QosDevSettings& settings, const Args& args) {
  copy_text(settings.dev, args[3]);
  if (args.is(4, "off")) return true;
  if (!args.is(4, "on") || args.count() < 15) return false;
  settings.en = 1;
  if (!args.is(5, "hi") && !args.is(5, "type")) return false;
  settings.type = args.is(5, "type") ? 1 : 0;
  args.take(6, settings.up, settings.down, settings.up_fast, settings.down_fast, settings.up_skb,
            settings.down_skb, settings.up_ctskb, settings.down_ctskb, settings.ge_tm);
  args.take(15, settings.tcpwin, settings.hi_up, settings.hi_down);  // these may be absent
  return true;
}

void print_settings(const QosDevSettings& settings) {
  print(
      " en: %d\n type: %s\n sp[up]: %lu\n sp[down]: %lu\n fast[up]: %d\n fast[down]: %d\n"
      " root_skb_max[up]: %d\n root_skb_max[down]: %d\n ct_skb_max[up]: %d\n ct_skb_max[down]: %d\n"
      " ge_tm: %u  tcpwin=%u\n hi_min_up: %u  hi_min_down=%u\n",
      settings.en, settings.type == 1 ? "type" : "hi", settings.up, settings.down, settings.up_fast,
      settings.down_fast, settings.up_skb, settings.down_skb, settings.up_ctskb, settings.down_ctskb,
      settings.ge_tm, settings.tcpwin, settings.hi_up, settings.hi_down);
}

// Shapes a device to two rates, all else as it does for most.
bool parse_speed(QosDevSettings& settings, const Args& args) {
  args.take(3, settings.dev, settings.up, settings.down);
  settings.en = 1;
  settings.ge_tm = 4;
  settings.tcpwin = 1500;
  settings.up_fast = 75;
  settings.down_fast = 85;
  settings.up_ctskb = 5;
  settings.down_ctskb = 10;
  settings.up_skb = 1000;
  settings.down_skb = 2000;
  settings.hi_up = 8;
  settings.hi_down = 16;
  return true;
}

// Prints before the request is sent, so that what was asked for stands above any report.
bool parse_state(QosDevStats& stats, const Args& args) {
  copy_text(stats.dev, args[3]);
  stats.iptype = static_cast<uint8_t>(atoi(args[4]));
  print("dev:%s, iptype:%d\n", stats.dev, stats.iptype);
  return true;
}

void print_stats(const QosDevStats& stats) {
  print(
      "  sp_max[up]: %lu\n  sp_max[down]: %lu\n  sp[up]: %luk/s\n  sp[down]: %luk/s\n  sp_qos[up]: %luk/s\n"
      "  sp_qos[down]: %luk/s\n  sp_drop[up]: %luk/s\n  sp_drop[down]: %luk/s\n  count[up]: %luk\n"
      "  count_skb[up]: %lu\n  count[down]: %luk\n  count_skb[down]: %lu\n",
      stats.sp_max_up, stats.sp_max_down, stats.sp_up >> 10, stats.sp_down >> 10, stats.sp_qos_up >> 10,
      stats.sp_qos_down >> 10, stats.sp_drop_up >> 10, stats.sp_drop_down >> 10, stats.up.bytes >> 10,
      stats.up.skb, stats.down.bytes >> 10, stats.down.skb);
  print(
      "  count_qos[up]: %luk\n  count_qos_skb[up]: %lu\n  count_qos[down]: %luk\n  count_qos_skb[down]: %lu\n"
      "  count_drop[up]: %luk\n  count_drop_skb[up]: %lu\n  count_drop[down]: %luk\n"
      "  count_drop_skb[down]: %lu\n  skb_num[up]: %d\n  skb_num[down]: %d\n\n",
      stats.qos_up.bytes >> 10, stats.qos_up.skb, stats.qos_down.bytes >> 10, stats.qos_down.skb,
      stats.drop_up.bytes >> 10, stats.drop_up.skb, stats.drop_down.bytes >> 10, stats.drop_down.skb,
      stats.skb_num_up, stats.skb_num_down);
}

bool parse_no_queue(QosNoQueue& no_queue, const Args& args) {
  copy_text(no_queue.dev, args[4]);
  if (!is_set(args)) return true;
  if (args.count() < 7) return false;
  no_queue.is_set = 1;
  args.take(5, no_queue.up, no_queue.down);
  return true;
}

void print_no_queue(const QosNoQueue& no_queue) {
  print("devname %s sp_val up %d down %d\n", no_queue.dev, no_queue.up, no_queue.down);
}

// Global limits.

bool parse_ext(QosExtSettings& settings, const Args& args) {
  args.take(3, settings.hi_up, settings.hi_down, settings.ct_num1, settings.ct_num2, settings.tcpwin,
            settings.ct_udp_num1, settings.ct_udp_num2, settings.hi_wait_tm, settings.ct_wait_tm,
            settings.sqos_limit_num, settings.sqos_ct_limit_num);
  return true;
}

void print_ext(const QosExtSettings& settings) {
  print(
      "hi_up:%d  hi_down:%d\nct_num1:%d  ct_num2:%d\ntcpwin:%d\nct_udp_num1:%d  ct_udp_num2:%d\n"
      "hi_wait_tm2:%d  ct_wait_tm2:%d\nsqos_limit_num:%d  sqos_ct_limit_num:%d\n",
      settings.hi_up, settings.hi_down, settings.ct_num1, settings.ct_num2, settings.tcpwin,
      settings.ct_udp_num1, settings.ct_udp_num2, settings.hi_wait_tm, settings.ct_wait_tm,
      settings.sqos_limit_num, settings.sqos_ct_limit_num);
}

void print_vpn_limit(const QosVpnLimit& vpn) {
  print("limit:%d,up:%d,down:%d\n", vpn.limit, vpn.up, vpn.down);
}

bool parse_single_ct(QosSingleCt& single, const Args& args) {
  single.iface = args.number(4);
  if (!is_set(args)) return true;
  if (args.count() < 7) return false;
  single.is_set = 1;
  args.take(5, single.up, single.down);
  return true;
}

void print_single_ct(const QosSingleCt& single) { print("up:%d,down:%d\n", single.up, single.down); }

bool set_speed_limit(QosSpeedLimit& limit, const Args& args) {
  limit.off = args.is(4, "off") ? 1 : 0;
  return limit.off == 1 || args.is(4, "on");
}

void print_speed_limit(const QosSpeedLimit& limit) {
  print("speed limit %s\n", limit.off == 0 ? "on" : "off");
}

// The levels in the order in which a person writes them, and where the matrix has them.
constexpr struct {
  const char* letter;
  int index;
} kLevels[] = {{"H", 1}, {"N", 0}, {"L", 2}};

bool set_queue_wait(QueueWaitMatrix& matrix, const Args& args) {
  int word = 4;
  for (const auto& from : kLevels) {
    for (const auto& to : kLevels) matrix.wait[from.index][to.index] = args.number(word++);
  }
  return true;
}

void print_queue_wait(const QueueWaitMatrix& matrix) {
  for (const auto& from : kLevels) {
    for (const auto& to : kLevels) {
      print("%s/%s  %d\n", from.letter, to.letter, matrix.wait[from.index][to.index]);
    }
  }
}

// Speed values by line. The index is not held to the table, but never leads out of the record.

bool set_speed_values(QosSpeedValues& speed, const Args& args) {
  memset(speed.values, args.number<uint8_t>(4), sizeof speed.values);
  return true;
}

int parse_line_speed_value(void* payload, int argc, char** argv) {
  const Args args(argc, argv);
  auto& speed = *static_cast<QosSpeedValues*>(payload);
  speed.line = args.number(4);
  if (!is_set(args)) return 1;
  if (args.count() < 6) return 0;
  speed.is_set = 1;
  uint8_t* const values = static_cast<uint8_t*>(payload) + offsetof(QosSpeedValues, values);
  if (speed.line < Answer(payload).room(offsetof(QosSpeedValues, values))) {
    values[speed.line] = args.number<uint8_t>(5);
  }
  return 1;
}

void print_speed_value(const Answer& answer) {
  const auto line = answer.get<uint32_t>(offsetof(QosSpeedValues, line));
  const bool is_inside = line < answer.room(offsetof(QosSpeedValues, values));
  print("sp_val %d\n", is_inside ? answer.get<uint8_t>(offsetof(QosSpeedValues, values) + line) : 0);
}

// Buffers.

// The device of a line; above the lines of WAN interfaces stand the VPN links.
const char* line_device(uint32_t line) {
  constexpr uint32_t kFirstVpnLine = 121;
  if (line < kFirstVpnLine) return tvl_get_wan_name(line);
  const char* const key = tvl_vpnget("vpn_link", line - kFirstVpnLine);
  return key == nullptr ? nullptr : nvram_get(key);
}

bool parse_line(SkbReport& report, const Args& args) {
  const char* const dev = line_device(args.number(3));
  if (dev == nullptr || *dev == '\0') {
    print("not iface name\n");
    return false;
  }
  copy_text(report.dev, dev);
  return true;
}

// A device's buffers are those of its connections and those that skip the queue: tells where that is not so.
void print_skb_check(const SkbReport& report, const Answer::Entries<SkbHost>& hosts) {
  uint32_t sums[] = {static_cast<uint32_t>(report.no_queue[0]), static_cast<uint32_t>(report.no_queue[1])};
  for (const SkbHost& host : hosts) {
    sums[0] += static_cast<uint32_t>(host.ct_skb[0]);
    sums[1] += static_cast<uint32_t>(host.ct_skb[1]);
  }
  if (sums[0] != static_cast<uint32_t>(report.dev_skb[0])) {
    print("ct_up_zong:%d  so->skb_num[0]=%d\n", sums[0], report.dev_skb[0]);
  }
  if (sums[1] != static_cast<uint32_t>(report.dev_skb[1])) {
    print("ct_down_zong:%d so->skb_num[1]=%d\n", sums[1], report.dev_skb[1]);
  }
}

void print_skb(const Answer& answer) {
  const auto report = answer.get<SkbReport>(0);
  print("skb_head:%d skb_data:%d\n", report.skb_head, report.skb_data);
  print("dev_skb[ %d, %d ]\n", report.dev_skb[0], report.dev_skb[1]);
  print("no_queue[ %d, %d ]\n", report.no_queue[0], report.no_queue[1]);
  print("ipaddr ct_skb[ ]  hi_skb[ ] hi_udp_skb[ ][dev_prio,hi_prio] is_udp ct_err[ ] hi_err[ ] \n");
  const auto hosts = answer.entries<SkbHost>(sizeof report, report.count);
  print_skb_check(report, hosts);
  for (const SkbHost& host : hosts) {
    print("%08x [ %d , %d ][ %d , %d ] [ %d , %d ] [%d,%d]  %d [%x,%x][%x,%x]\n", ntohl(host.ip.value),
          host.ct_skb[0], host.ct_skb[1], host.hi_skb[0], host.hi_skb[1], host.hi_udp_skb[0],
          host.hi_udp_skb[1], host.dev_prio, host.hi_prio, host.is_udp, host.ct_err[0], host.ct_err[1],
          host.hi_err[0], host.hi_err[1]);
  }
}

void print_devices(const Answer& answer) {
  const auto report = answer.get<DevSkbReport>(0);
  print("skb_head:%d skb_data:%d\n", report.skb_head, report.skb_data);
  print("dev_skb[ %d, %d ]\n", report.dev_skb[0], report.dev_skb[1]);
  print("iface [up,down] devname \n");
  for (const DevSkb& device : answer.entries<DevSkb>(sizeof report, report.count)) {
    print("%d [ %d , %d ] %s \n", device.iface, device.up, device.down, device.dev);
  }
  print("end \n");
}

void print_ip_rules(const Answer& answer) {
  print("num: %d\n", answer.get<int32_t>(kListCountOffset));
  for (const QosIpRule& rule : answer.list<QosIpRule>()) {
    print("ip:%s up:%uKB down:%uKB max_up:%u max_down:%u\n", rule.ip, rule.up, rule.down, rule.max_up,
          rule.max_down);
  }
}

constexpr const char* kSetUsage =
    "dev en(on|off) type[hi|type] up down up_fast down_fast up_skb down_skb up_ctskb down_ctskb ge_tm tcpwin "
    " hi_up hi_down";
constexpr const char* kExtUsage =
    "hup hdown ctnum1 ctnum2 tcpwin ctunum1 ctunum2 hi_wait_tm ct_wait_tm sqos_limit_num sqos_ct_limit_num";

// clang-format off
constexpr SubCommand kQos[] = {
    {"set", kModuleQos, kQosSet, 1024, sizeof(QosDevSettings), 5, kSetUsage, parse_as<parse_settings>, nullptr},
    {"speed_set", kModuleQos, kQosSet, 1024, sizeof(QosDevSettings), 6, "dev up down", parse_as<parse_speed>, nullptr},
    {"get", kModuleQos, kQosGet, 1024, sizeof(QosDevSettings), 4, "dev", parse_words<&QosDevSettings::dev>, print_as<print_settings>},
    {"state", kModuleQos, kQosState, 2048, sizeof(QosDevStats), 4, "dev", parse_as<parse_state>, print_as<print_stats>},
    {"debug", kModuleQos, kQosDebug, 1024, 1024, 0, "", nullptr, nullptr},
    {"ext_set", kModuleQos, kQosExtSet, 1024, sizeof(QosExtSettings), 14, kExtUsage, parse_as<parse_ext>, nullptr},
    {"ext_get", kModuleQos, kQosExtGet, 1024, sizeof(QosExtSettings), 0, " ", nullptr, print_as<print_ext>},
    {"level", kModuleQos, kQosLevel, 1024, sizeof(QosLevel), 4, "level", parse_words<&QosLevel::level>, nullptr},
    {"skb", kModuleQos, kQosSkb, 204800, 204600, 4, "waniface", parse_as<parse_line>, print_as<print_skb>},
    {"devinfo", kModuleQos, kQosDevInfo, 204800, 204600, 0, "waniface", nullptr, print_as<print_devices>},
    {"ggvpn", kModuleQos, kQosVpnLimit, 1024, sizeof(QosVpnLimit), 4, "set/get limit", parse_pair_of<&QosVpnLimit::limit>, print_as<print_vpn_limit>},
    {"single_ct", kModuleQos, kQosSingleCt, 1024, sizeof(QosSingleCt), 5, "set/get iface up down", parse_as<parse_single_ct>, print_as<print_single_ct>},
    {"sb_tj_init", kModuleQos, kQosStatisticsInit, 1024, 0, 0, "", nullptr, nullptr},
    {"ip_rule_list", kModuleQos, kQosIpRuleList, 102400, 102400, 0, "", nullptr, print_as<print_ip_rules>},
    {"speed_limit", kModuleQos, kQosSpeedLimit, 1024, sizeof(QosSpeedLimit), 4, "set/get on/off", parse_pair<set_speed_limit, 5>, print_as<print_speed_limit>},
    {"queue_wait", kModuleQos, kQosQueueWait, 1024, sizeof(QueueWaitMatrix), 4, "set/get H/H H/N H/L N/H N/N N/L L/H L/N L/L", parse_pair<set_queue_wait, 13>, print_as<print_queue_wait>},
    {"ws_sp_val", kModuleQos, kQosSpeedValue, 102400, sizeof(QosSpeedValues), 4, "set/get [0-99]", parse_pair<set_speed_values, 5>, print_as<print_speed_value>},
    {"noqueue_sp_val", kModuleQos, kQosNoQueue, 1024, sizeof(QosNoQueue), 4, "set/get devname [up 0-99] [down 0-99]", parse_as<parse_no_queue>, print_as<print_no_queue>},
    {"ws_sp_wan_val", kModuleQos, kQosLineSpeedValue, 102400, sizeof(QosSpeedValues), 5, "set/get wanid [0-99]", parse_line_speed_value, print_as<print_speed_value>},
};
// clang-format on

}  // namespace

int cmd_qos(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command({kQos, kSpeedRuleCommands}, Args(argc, argv), entry);
}
