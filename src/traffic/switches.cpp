// The kernel modules' small switches, a command each: tmp_qos_xz, spzn, hictlist_show, ip_options_srr,
// skb_delay, alg, vek_netlink.
#include "records/switches.h"

#include <cstdlib>

#include "args/print.h"
#include "order/exchange.h"
#include "order/order.h"
#include "records/alg.h"
#include "records/host.h"
#include "records/netlink.h"
#include "records/qos.h"
#include "traffic/commands.h"

namespace {

bool parse_tmp_limit(HostTmpLimit& limit, const Args& args) {
  args.take(4, limit.sx, limit.xx);
  return args.read(3, limit.ip);
}

// Who switches it off needs to say no more.
bool parse_delay_control(QosDelayControl& control, const Args& args) {
  args.take(3, control.dev, control.en);
  if (control.en == 0) return true;
  args.take(5, control.server, control.level, control.dely_min, control.dely_max);
  if (control.server.value == 0) copy_text(control.server_name, args[5]);
  return args.count() >= 9;
}

void print_delay_control(const QosDelayControl& control) {
  if (control.en != 1) {
    print("en: off\n");
    return;
  }
  print("en: on, srv:");
  if (control.server.value != 0) {
    print("%s", control.server);
  } else {
    print("%s", control.server_name);
  }
  print(" level:%d dely_tm:%u - %u \n", control.level, control.dely_min, control.dely_max);
  print("tmp_ip:%s, up_max:%d down_max:%d up_set:%d down_set:%d\n", control.tmp_ip, control.up_max,
        control.down_max, control.up_set, control.down_set);
}

void print_connection_show(const HostConnectionShow& show) { print("en: %d \n", show.en); }
void print_source_route(const SwitchValue& source_route) { print("\nen:%d\n", source_route.value); }
void print_packet_delay(const SwitchValue& delay) { print("\ntime:%d\n", delay.value); }

bool parse_gateways(AlgSettings& alg, const Args& args) {
  alg.is_set = 1;
  int word = 3;
  for (uint8_t& gateway : alg.gateways) gateway = args.number(word++) != 0 ? 1 : 0;
  return true;
}

void print_gateways(const AlgSettings& alg) {
  constexpr const char* kNames[] = {"\nftp", "tftp", "rtsp", "pptp", "l2tp",
                                    "ipsec", "sip",  "h323", "snmp", "irc"};
  for (size_t i = 0; i < std::size(kNames); ++i) print("%s:%d\n", kNames[i], alg.gateways[i]);
}

bool parse_listener(NetlinkListener& listener, const Args& args) {
  listener.pid = static_cast<uint32_t>(atoi(args[3]));
  listener.is_registered = args.is(2, "register") ? 1 : 0;
  return true;
}

// That there is no way to the kernel is told like a list without listeners: callers go on.
int list_listeners(const Args&, const CommandEntry*) {
  Exchange exchange(kModuleNetlink, kNetlinkList, 1024);
  if (!exchange.send()) {
    print("tesvel_order_opt_fun error\nvek vek_netlink list\n");
    return kStatusOk;
  }
  if (exchange.result() != 0) return report_kernel_error(exchange.result());
  int slot = 0;
  for (const uint32_t listener : Answer(exchange.payload()).get<NetlinkSlots>(0).listeners) {
    print("pid:%d enable:%d\n", ++slot, listener);
  }
  return kStatusOk;
}

// clang-format off
constexpr SubCommand kTmpLimit[] = {
    {"set", kModuleHost, kHostTmpLimit, 1024, 1020, 6, "ip sx xx", parse_as<parse_tmp_limit>, nullptr},
};
constexpr SubCommand kDelayControl[] = {
    {"set", kModuleQos, kQosDelaySet, 1024, sizeof(QosDelayControl), 5, "devname en srv level dely_min dely_max", parse_as<parse_delay_control>, nullptr},
    {"get", kModuleQos, kQosDelayGet, 1024, sizeof(QosDelayControl), 4, "devname", parse_words<&QosDelayControl::dev>, print_as<print_delay_control>},
};
constexpr SubCommand kConnectionShow[] = {
    {"set", kModuleHost, kHostConnectionShowSet, 2048, 2040, 4, "en", parse_words<&HostConnectionShow::en>, nullptr},
    {"get", kModuleHost, kHostConnectionShowGet, 1024, sizeof(HostConnectionShow), 0, "", nullptr, print_as<print_connection_show>},
};
constexpr SubCommand kSourceRouteRows[] = {
    {"set", kModuleGeneral, kSourceRoute, 1024, sizeof(SwitchValue), 4, "en", parse_set<&SwitchValue::value>, print_as<print_source_route>},
    {"get", kModuleGeneral, kSourceRoute, 1024, sizeof(SwitchValue), 0, " ", nullptr, print_as<print_source_route>},
};
constexpr SubCommand kPacketDelayRows[] = {
    {"set", kModuleGeneral, kPacketDelay, 1024, sizeof(SwitchValue), 4, "time", parse_set<&SwitchValue::value>, print_as<print_packet_delay>},
    {"get", kModuleGeneral, kPacketDelay, 1024, sizeof(SwitchValue), 0, " ", nullptr, print_as<print_packet_delay>},
};
constexpr SubCommand kGateways[] = {
    {"set", kModuleRule, kRuleAlg, 1024, sizeof(AlgSettings), 13, "ftp tftp rtsp pptp l2tp ipsec sip h323 snmp irc", parse_as<parse_gateways>, print_as<print_gateways>},
    {"get", kModuleRule, kRuleAlg, 1024, sizeof(AlgSettings), 0, " ", nullptr, print_as<print_gateways>},
};
constexpr SubCommand kListeners[] = {
    {"register", kModuleNetlink, kNetlinkRegister, 1024, sizeof(NetlinkListener), 4, " ", parse_as<parse_listener>, nullptr},
    {"unregister", kModuleNetlink, kNetlinkRegister, 1024, sizeof(NetlinkListener), 4, " ", parse_as<parse_listener>, nullptr},
    handled("list", list_listeners),
};
// clang-format on

}  // namespace

int cmd_tmp_qos_xz(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kTmpLimit, argc, argv, entry);
}

int cmd_spzn(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kDelayControl, argc, argv, entry);
}

int cmd_hictlist_show(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kConnectionShow, argc, argv, entry);
}

int cmd_ip_options_srr(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kSourceRouteRows, argc, argv, entry);
}

int cmd_skb_delay(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kPacketDelayRows, argc, argv, entry);
}

int cmd_alg(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kGateways, argc, argv, entry);
}

int cmd_vek_netlink(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kListeners, argc, argv, entry);
}
