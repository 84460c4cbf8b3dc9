// The board's own commands: LED, watchdog, parameter area, parameter backup, plug-in file, system log, PHYs.
#include "platform/board.h"

#include <cstring>

#include "args/args.h"
#include "args/print.h"
#include "board/commands.h"
#include "order/order.h"
#include "platform/flash.h"
#include "platform/nvram.h"
#include "platform/switch_chip.h"
#include "records/general.h"

namespace {

template <uint32_t action>
bool parse_watchdog(WatchdogOrder& order, const Args&) {
  order.action = action;
  return true;
}

// What is stored says whether the LED is on, while its line is active low.
int turn_led_on(const Args&, const CommandEntry*) {
  nvram_set("LedStatus", "1");
  ap_led_ctrl(0);
  return 0;
}

int turn_led_off(const Args&, const CommandEntry*) {
  nvram_set("LedStatus", "0");
  ap_led_ctrl(1);
  return 0;
}

// Callers read the text: the status is the same either way.
int erase_parameters(const Args&, const CommandEntry*) {
  print("erase param %s!\n", flash_erase_mtd("Config", 0, 0) == 0 ? "ok" : "error");
  return 0;
}

int save_parameters(const Args&, const CommandEntry* entry) {
  if (usblog_mount_state() == 0) {
    print_error("usb err\n");
    return print_usage(entry);
  }
  char program[] = "nvram";
  char action[] = "backup";
  char file[] = "/tmp/mnt/usblog/usb_log/parm.cfg";
  char* const words[] = {program, action, file, nullptr};
  _eval(words, nullptr, 0, nullptr);
  return 0;
}

template <auto work>
int work_on_plugin(const Args& args, const CommandEntry*) {
  work(args.get(3));
  return 0;
}

template <int is_on>
int turn_phy(const Args& args, const CommandEntry*) {
  constexpr int kNotSaid = 3;
  // The processor's own switch, then those that are attached.
  const int chip = args.choice(3, {"mtk", "rtl", "gsw", "yt9215", "an8855"});
  turn_on_phy(is_on, chip < 0 ? kNotSaid : chip == 0 ? 1 : 2);
  return 0;
}

// clang-format off
constexpr SubCommand kWatchdogActions[] = {
    {"start", kModuleGeneral, kWatchdog, 1024, sizeof(WatchdogOrder), 0, " ", parse_as<parse_watchdog<kWatchdogStart>>, nullptr},
    {"stop", kModuleGeneral, kWatchdog, 1024, sizeof(WatchdogOrder), 0, " ", parse_as<parse_watchdog<kWatchdogStop>>, nullptr},
    {"ping", kModuleGeneral, kWatchdog, 1024, sizeof(WatchdogOrder), 0, " ", parse_as<parse_watchdog<kWatchdogPing>>, nullptr},
};

constexpr SubCommand kLed[] = {
    handled("on", turn_led_on),
    handled("off", turn_led_off),
};

constexpr SubCommand kParameterArea[] = {
    handled("erase", erase_parameters),
};

constexpr SubCommand kUsbLog[] = {
    handled("save", save_parameters),
};

constexpr SubCommand kPlugin[] = {
    handled("set", work_on_plugin<flash_zentrik_plugin_write>),
    handled("get", work_on_plugin<flash_zentrik_plugin_read>),
    handled("clean", work_on_plugin<flash_zentrik_plugin_clean>),
};

constexpr SubCommand kPhys[] = {
    handled("on", turn_phy<1>),
    handled("off", turn_phy<0>),
};
// clang-format on

}  // namespace

int cmd_watchdog(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kWatchdogActions, argc, argv, entry);
}

int cmd_led(int argc, char** argv, const CommandEntry* entry) {
  const int status = run_sub_command(kLed, argc, argv, entry);
  return status == kStatusRejected && argc >= 3 ? -1 : status;
}

int cmd_param(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kParameterArea, argc, argv, entry);
}

// Any word saves; the table has the one that is shown.
int cmd_usblog(int argc, char** argv, const CommandEntry* entry) {
  const bool is_any_word = argc >= 3;
  return is_any_word ? save_parameters(Args(argc, argv), entry) : run_sub_command(kUsbLog, argc, argv, entry);
}

int cmd_zentrik_plugin(int argc, char** argv, const CommandEntry* entry) {
  if (argc == 3 && strcmp(argv[2], "clean") != 0) {
    print_error(" %s %s path\n", entry->name, argv[2]);
    return 1;
  }
  return run_sub_command(kPlugin, argc, argv, entry);
}

int cmd_syslog(int argc, char** argv, const CommandEntry* entry) {
  if (argc < 4) return print_usage(entry);
  sys_log_write(J_atoi(argv[2]), "%s", argv[3]);
  return 0;
}

int cmd_turn_phy(int argc, char** argv, const CommandEntry* entry) {
  const Args args(argc, argv);
  const bool is_unknown = argc >= 3 && find_sub_command(kPhys, args, 2) == nullptr;
  return is_unknown ? kStatusOk : run_sub_command({kPhys}, args, entry);
}
