// hi: the table of hosts, their connections and counters, and the scan that asks for their real MAC
// addresses.
#include <arpa/inet.h>
#include <unistd.h>

#include "args/print.h"
#include "order/exchange.h"
#include "order/order.h"
#include "platform/line.h"
#include "platform/snmp.h"
#include "records/host.h"
#include "traffic/commands.h"

namespace {

bool parse_host(HostKey& key, const Args& args) { return args.read(3, key.ip); }

bool parse_redirect(HostRedirect& redirect, const Args& args) {
  if (!args.read(4, redirect.ip)) return false;
  if (args.is(3, "get")) return true;
  if (args.count() < 6) return false;
  redirect.set = 1;
  redirect.flag = args.number(5);
  return true;
}

// The counts of these lists are unsigned.
template <typename Entry>
Answer::Entries<Entry> list_of(const Answer& answer) {
  return answer.entries<Entry>(kListEntriesOffset, answer.get<uint32_t>(kListCountOffset));
}

void print_list_head(const Answer& answer) {
  print(
      "num:%d\n"
      "ip\t\t sp[up]\t sp[down]\t flag ct_count ct_max ct_create count[up] count_skb[up] count[down] "
      "count_skb[down] start_tm last_tm \n\n",
      answer.get<uint32_t>(kListCountOffset));
}

void print_counters(const HostEntry& host) {
  print("  up:%luK up_pkt:%lu down:%luK down_pkt:%lu\n", host.up_bytes >> 10, host.up_packets,
        host.down_bytes >> 10, host.down_packets);
}

void print_login(const HostEntry& host) {
  print(
      "  block:%d,apidx:%d,5g:%d,orsal:%d,user_card_type:%d,user_login_type:%d\n"
      "  typeid_ipstr:%d,typeid_user:%d\n",
      host.block, host.apidx, host.is_5g, host.portal, host.user_card_type, host.user_login_type,
      host.typeid_, host.typeid_user);
}

void print_host(const HostEntry& host) {
  print(
      "ip:%s ,arp_ip:%s,local_ip:%s\n"
      "  hostname:%s,device_name:%s\n"
      "  local_mac:%s real_mac:%s auto_jb:%d typeid:%d vlanid:%d\n"
      "  sp[up]:%luK/s sp[down]:%luK/s creat_tm:%lu  last_tm:%lu del_tm:%lu\n"
      "  pc_flag:%d, sys_type:%d, user_agent:%s\n",
      host.ip, host.arp_ip, host.local_ip, host.hostname, host.device_name, host.local_mac, host.real_mac,
      host.auto_jb, host.typeid_, host.vlanid, host.sp_up >> 10, host.sp_down >> 10, host.creat_tm,
      host.last_tm, host.del_tm, host.pc_flag, host.sys_type, host.user_agent);
  print_counters(host);
  print(
      "  flag:%lu[%s]  third[%d,%d,%d] %s:%s\n"
      "  speed_limit:%d|%d devname:%s\n"
      "  tmp_speed_limit:%d|%d",
      host.flag.value, host.flag, host.third0, host.third1, host.third2,
      host.portal != 0 ? "orsal_token" : "redirt_url", host.portal_text, host.speed_limit_up,
      host.speed_limit_down, host.devname, host.tmp_speed_limit_up, host.tmp_speed_limit_down);
  print_login(host);
  print("  mr_id:%d, pppdp_mr_id:%d\n\n", host.mr_id, host.pppdp_mr_id);
}

void print_list(const Answer& answer) {
  print_list_head(answer);
  for (const HostEntry& host : list_of<HostEntry>(answer)) print_host(host);
}

void print_ai_host(const HostAiEntry& entry) {
  const HostEntry& host = entry.host;
  print(
      "ip:%s ,arp_ip:%s,local_ip:%s\n"
      "  hostname:%s,device_name:%s\n"
      "  devname:%s,in_devname:%s\n"
      "  local_mac:%s real_mac:%s auto_jb:%d typeid:%d\n"
      "  sp[up]:%luK/s sp[down]:%luK/s creat_tm:%lu  last_tm:%lu del_tm:%lu\n"
      "  pc_flag:%d, sys_type:%d, user_agent:%s\n",
      host.ip, host.arp_ip, host.local_ip, host.hostname, host.device_name, host.devname, entry.in_devname,
      host.local_mac, host.real_mac, host.auto_jb, host.typeid_, host.sp_up >> 10, host.sp_down >> 10,
      host.creat_tm, host.last_tm, host.del_tm, host.pc_flag, host.sys_type, host.user_agent);
  print_counters(host);
  print_login(host);
  print("  mr_id:%d,ssid:%s,vek_out_id:%d,ssid_out_id:%d\n\n", host.mr_id, entry.ssid, entry.vek_out_id,
        entry.ssid_out_id);
}

void print_ai_list(const Answer& answer) {
  print_list_head(answer);
  for (const HostAiEntry& entry : list_of<HostAiEntry>(answer)) print_ai_host(entry);
}

void print_run_info(const HostRunInfo& info) {
  print(
      "ct_max=%d ct_num=%d ct_alloc_max=%d\n"
      "rt_max=%d rt_num=%d \n"
      "skb_zong=%d skb_data=%d \n"
      "host_num=%d host_list_num=%d \n"
      "ddos_drop_pkt=%d broadcast_pkt=%d\n",
      info.ct_max, info.ct_num, info.ct_alloc_max, info.rt_max, info.rt_num, info.skb_zong, info.skb_data,
      info.host_num, info.host_list_num, info.ddos_drop_pkt, info.broadcast_pkt);
}

void print_connections(const Answer& answer) {
  const auto count = answer.get<uint32_t>(kConnectionCountOffset);
  print(
      "num=%d\n"
      "prot\tin_port\tfip\t\tf_port\tid \t  qtype\ttm\tp[up]\tp[down]\ts[up]\ts[down] sz[up]\tsz[down] "
      "z[up]\tz[down]\n\n",
      count);
  for (const HostConnection& connection : answer.entries<HostConnection>(kConnectionEntriesOffset, count)) {
    print("%d\t%d\t%s\t%d\t%08x \t%lu\t%u\t%u\t%u\t%u\t%u\t%u\t%u\t%u\t%s\n", connection.protocol,
          ntohs(connection.in_port.value), connection.far_ip, ntohs(connection.far_port.value), connection.id,
          connection.tm.value(), connection.packets_up, connection.packets_down, connection.s_up >> 10,
          connection.s_down >> 10, connection.sz_up >> 10, connection.sz_down >> 10, connection.z_up >> 10,
          connection.z_down >> 10, connection.name);
  }
  print("\n");
}

void print_third_list(const Answer& answer) {
  print("num:%d\n", answer.get<uint32_t>(kListCountOffset));
  for (const ThirdEntry& entry : list_of<ThirdEntry>(answer)) {
    print("ip:%s, mac:%s, creat_tm:%lu, clt_installed:%d, device_type:%d\n\n", entry.ip, entry.mac,
          entry.creat_tm, entry.clt_installed, entry.device_type);
  }
}

void print_redirect(const HostRedirect& redirect) { print("ip:%s,flag:%d\n", redirect.ip, redirect.flag); }

// Reads a setting into a buffer of its own: the library keeps only the last one it gave out. A setting that
// is missing reads as the empty text.
template <size_t N>
void read_setting(char (&value)[N], const char* key) {
  const char* found = tvl_nv_get_def(key);
  copy_text(value, found == nullptr ? "" : found);
}

// Tells the kernel modules what a host's real MAC address is.
bool set_real_mac(const IpAddress& ip, const Mac& mac) {
  Exchange exchange(kModuleHost, kHostSetMac, 512);
  *static_cast<HostMac*>(exchange.payload()) = {ip, mac};
  return exchange.send() && exchange.result() == 0;
}

// Of the reports, only those that hold a MAC address end their line: readers take a line for an answer.
void scan_host(const IpAddress& ip, const char* community, const char* peer) {
  char ip_text[kFieldRoom];
  Mac mac = {};
  if (snmp_get_mac_by_ipstr(community, peer, text_of(ip, ip_text), &mac) != 0) {
    print("IP[%s] snmp find MAC error!", ip);
    return;
  }
  const bool is_set = set_real_mac(ip, mac);
  print("IP[%s] %s[%02X %02X %02X %02X %02X %02X] set %s!\n", ip, is_set ? "<===> realMAC" : "real MAC",
        mac.bytes[0], mac.bytes[1], mac.bytes[2], mac.bytes[3], mac.bytes[4], mac.bytes[5],
        is_set ? "success" : "error");
}

void scan(const Answer& answer) {
  char community[256];
  char peer[256];
  read_setting(community, "snmp_prro");
  read_setting(peer, "snmp_prnm");
  if (StrToIp(peer) == 0) {
    print("not peername");
    return;
  }
  print("snmp ip mac do...\n");
  if (community[0] == '\0') {
    print("snmpd comm or prnm is null!");
    return;
  }
  for (const HostEntry& host : list_of<HostEntry>(answer)) {
    if (host.no_snmp == 0) scan_host(host.ip, community, peer);
  }
}

// Asks for the list until that fails, for those who watch the kernel under load.
int test_list(const Args& args, const CommandEntry* entry) {
  constexpr PrintFn kNothing = [](void*) {};
  while (order_run(args.count(), args.words(), kModuleHost, kHostList, 0x400000, 0x3ffc00, " ", nullptr,
                   kNothing) == kStatusOk) {
    usleep(1000);
  }
  return print_usage(entry);
}

// clang-format off
constexpr SubCommand kHi[] = {
    {"list", kModuleHost, kHostList, 0x400000, 0x3ffc00, 0, " ", nullptr, print_as<print_list>},
    {"runinfo", kModuleHost, kHostRunInfo, 20480, sizeof(HostRunInfo), 0, " ", nullptr, print_as<print_run_info>},
    {"ct", kModuleHost, kHostConnections, 204800, 204000, 4, "ip", parse_as<parse_host>, print_as<print_connections>},
    // A missing word is no error: callers reset the ageing time with it.
    {"set_ageing", kModuleHost, kHostSetAgeing, 1024, sizeof(HostAgeing), 0, "set_ageing minutes", parse_words<&HostAgeing::minutes>, nullptr},
    {"set_ageing3", kModuleHost, kHostSetAgeing3, 1024, sizeof(HostAgeing), 0, "set_ageing3 minutes", parse_words<&HostAgeing::minutes>, nullptr},
    {"third_list", kModuleHost, kHostThirdList, 0x400000, 0x3ffc00, 0, " ", nullptr, print_as<print_third_list>},
    {"redirct_flag", kModuleHost, kHostRedirect, 0x400000, 0x3ffc00, 5, "set/get ip flag", parse_as<parse_redirect>, print_as<print_redirect>},
    {"ws_list", kModuleHost, kHostWsList, 0x400000, 0x3ffc00, 0, " ", nullptr, print_as<print_list>},
    {"snmpscan", kModuleHost, kHostSnmpScan, 0x400000, 0x3ffc00, 0, " ", nullptr, print_as<scan>},
    {"ai_list", kModuleHost, kHostAiList, 0x400000, 0x3ffc00, 0, " ", nullptr, print_as<print_ai_list>},
    handled("list_test", test_list),
};
// clang-format on

}  // namespace

int cmd_hi(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kHi, argc, argv, entry);
}
