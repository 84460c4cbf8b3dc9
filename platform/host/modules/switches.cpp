// Switches of the general services and the steering of wireless clients (module 1, beside its error
// information). There are no access points here that would go by them: they are kept and read back.
#include "records/switches.h"

#include "modules/modules.h"
#include "modules/pairs.h"
#include "records/wireless.h"

namespace {

void check_source_route(const SwitchValue& source_route) { check_switch(source_route.value); }
void check_delay(const SwitchValue& delay) { check_number(delay.value); }

void check_server(const ApServerMode& mode) {
  check_switch(mode.en);
  check_switch(mode.mode);
  check_number(mode.debug);
}

void check_values(const ApValues& list) {
  for (const uint32_t value : list.values) check_number(value);
}

// Nobody is heard with more than 0 dBm: that was no such number, or one that did not fit into its byte.
void check_threshold(const ApThreshold& threshold) {
  refuse_unless(threshold.rssi <= 0, kBadNumber);
  check_switch(threshold.led);
  check_number(threshold.rate);
}

// All zero: nobody is watched.
void check_debug(const ApDebugMac& debug) {
  refuse_unless(debug.mac == Mac{} || is_host_mac(debug.mac), kBadMac);
}

constexpr Command kCommands[] = {
    {kSourceRoute, kWrites, run_pair<check_source_route>}, {kPacketDelay, kWrites, run_pair<check_delay>},
    {kApServer, kWrites, run_pair<check_server>},          {kApBalancedNum, kWrites, run_pair<check_values>},
    {kApBalancedTrys, kWrites, run_pair<check_values>},    {kApRssi, kWrites, run_pair<check_threshold>},
    {kApRssi5g, kWrites, run_pair<check_threshold>},       {kApRssi3w, kWrites, run_pair<check_threshold>},
    {kPrio5gConf, kWrites, run_pair<check_values>},        {kPrio5gDebug, kWrites, run_pair<check_debug>},
};

}  // namespace

const Module kSwitchModule = {.number = kModuleGeneral, .commands = kCommands, .part = 1};
