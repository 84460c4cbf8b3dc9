// Steering of wireless clients between access points: ac_server, ap_balanced, ap_rssi and its like for the
// other radios, 5g_prio, rssi.
#include "records/wireless.h"

#include <cstdlib>

#include "args/print.h"
#include "order/order.h"
#include "records/host.h"
#include "traffic/commands.h"

namespace {

// Every word but "get" sets.
bool parse_server_mode(ApServerMode& mode, const Args& args) {
  if (args.is(3, "get")) return true;
  mode.is_set = 1;
  args.take(4, mode.en, mode.mode, mode.debug);
  return args.count() >= 7;
}

void print_server_mode(const ApServerMode& mode) {
  print("en:%d,mode:%d,debug:%d\n", mode.en, mode.mode, mode.debug);
}

constexpr int kBalances = 5;
constexpr int kNetworks = 8;

// A word that is missing leaves its value 0.
template <int kMost>
bool set_values(ApValues& list, const Args& args) {
  for (int i = 0; i < kMost; ++i) list.values[i] = args.number(4 + i);
  return true;
}

void print_balances(const ApValues& list) {
  print("show:\n");
  for (int i = 0; i < kBalances; ++i) print("%d:%d\n", i, list.values[i]);
}

void print_networks(const ApValues& list) {
  print("show:\n");
  for (int i = 0; i < kNetworks; ++i) print("SSID%d:%d\n", i + 1, list.values[i]);
}

bool parse_threshold(ApThreshold& threshold, const Args& args) {
  threshold.is_set = 1;
  threshold.rssi = static_cast<int8_t>(atoi(args[3]));
  threshold.rate = static_cast<uint32_t>(atoi(args[4]));
  return true;
}

// The radio of all access points says more than the others.
bool parse_first_threshold(ApThreshold& threshold, const Args& args) {
  threshold.led = static_cast<uint32_t>(atoi(args[5]));
  threshold.interval = 10;
  threshold.drop = 1;
  return parse_threshold(threshold, args);
}

void print_threshold(const ApThreshold& threshold) {
  print("rssi:%d,rate:%d\n", int{threshold.rssi}, threshold.rate);
}

void print_first_threshold(const ApThreshold& threshold) {
  print("rssi:%d,interval:%d,balance:%d,drop:%d,led:%d,macfilter:%d,rate:%d\n", int{threshold.rssi},
        threshold.interval, threshold.balance, threshold.drop, threshold.led, threshold.macfilter,
        threshold.rate);
}

bool set_debug_mac(ApDebugMac& debug, const Args& args) { return args.read(4, debug.mac); }
void print_debug_mac(const ApDebugMac& debug) { print("mac:%s\n", debug.mac); }

bool parse_client(ClientSignal& signal, const Args& args) { return args.read(3, signal.mac); }
void print_signal(const ClientSignal& signal) { print("rssi: %d \n", int{signal.rssi}); }

constexpr const char* kNetworksUsage = "set/get ssid1 ssid2 ssid3 ssid4 ssid5";

// clang-format off
constexpr SubCommand kServer[] = {
    {"mode", kModuleGeneral, kApServer, 1024, 1000, 4, "set/get en[1/0] mode[1/0] debug", parse_as<parse_server_mode>, print_as<print_server_mode>},
};
constexpr SubCommand kBalanced[] = {
    {"num", kModuleGeneral, kApBalancedNum, 1024, sizeof(ApValues), 4, "set/get num", parse_pair<set_values<kBalances>, 5>, print_as<print_balances>},
    {"trys", kModuleGeneral, kApBalancedTrys, 1024, sizeof(ApValues), 4, "set/get num", parse_pair<set_values<kBalances>, 5>, print_as<print_balances>},
};
constexpr SubCommand kRssi[] = {
    {"set", kModuleGeneral, kApRssi, 1024, sizeof(ApThreshold), 6, "rssi rate led", parse_as<parse_first_threshold>, print_as<print_first_threshold>},
    {"get", kModuleGeneral, kApRssi, 1024, sizeof(ApThreshold), 0, " ", nullptr, print_as<print_first_threshold>},
};
constexpr SubCommand kRssi5g[] = {
    {"set", kModuleGeneral, kApRssi5g, 1024, sizeof(ApThreshold), 5, "rssi rate", parse_as<parse_threshold>, print_as<print_threshold>},
    {"get", kModuleGeneral, kApRssi5g, 1024, sizeof(ApThreshold), 0, " ", nullptr, print_as<print_threshold>},
};
constexpr SubCommand kRssi3w[] = {
    {"set", kModuleGeneral, kApRssi3w, 1024, sizeof(ApThreshold), 5, "rssi rate", parse_as<parse_threshold>, print_as<print_threshold>},
    {"get", kModuleGeneral, kApRssi3w, 1024, sizeof(ApThreshold), 0, " ", nullptr, print_as<print_threshold>},
};
constexpr SubCommand kPrio5g[] = {
    {"conf", kModuleGeneral, kPrio5gConf, 1024, sizeof(ApValues), 4, kNetworksUsage, parse_pair<set_values<kNetworks>, 5>, print_as<print_networks>},
    {"debug", kModuleGeneral, kPrio5gDebug, 1024, sizeof(ApDebugMac), 4, "set/get mac", parse_pair<set_debug_mac, 5>, print_as<print_debug_mac>},
};
constexpr SubCommand kSignal[] = {
    {"get", kModuleHost, kHostSignal, 1024, sizeof(ClientSignal), 4, "mac[11:22:33:44:55:66]", parse_as<parse_client>, print_as<print_signal>},
};
// clang-format on

}  // namespace

int cmd_ac_server(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kServer, argc, argv, entry);
}

int cmd_ap_balanced(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kBalanced, argc, argv, entry);
}

int cmd_ap_rssi(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kRssi, argc, argv, entry);
}

int cmd_ap_rssi_5g(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kRssi5g, argc, argv, entry);
}

int cmd_ap_rssi_3w(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kRssi3w, argc, argv, entry);
}

int cmd_prio_5g(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kPrio5g, argc, argv, entry);
}

int cmd_rssi(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kSignal, argc, argv, entry);
}
