// The board's own commands: LED, watchdog, parameter area, parameter backup, plug-in file, system log, PHYs.
#include "platform/board.h"

#include "args/args.h"
#include "args/print.h"
#include "board/commands.h"
#include "order/order.h"
#include "platform/flash.h"
#include "platform/nvram.h"
#include "platform/switch_chip.h"
#include "records/general.h"

namespace {

bool parse_watchdog(WatchdogOrder& order, const Args& args) {
  order.action = static_cast<uint32_t>(args.choice(2, {"start", "stop", "ping"})) + kWatchdogStart;
  return true;
}

constexpr SubCommand kWatchdogRequest = {
    "", kModuleGeneral, kWatchdog, 1024, sizeof(WatchdogOrder), 0, " ", parse_as<parse_watchdog>, nullptr};

}  // namespace

int cmd_watchdog(int argc, char** argv, const CommandEntry* entry) {
  const Args args(argc, argv);
  if (args.choice(2, {"start", "stop", "ping"}) < 0) return print_usage(entry);
  return run_request(kWatchdogRequest, args);
}

// What is stored says whether the LED is on, while its line is active low.
int cmd_led(int argc, char** argv, const CommandEntry* entry) {
  const Args args(argc, argv);
  const int state = args.choice(2, {"on", "off"});
  if (state < 0) {
    print_usage(entry);
    return argc < 3 ? 1 : -1;
  }
  nvram_set("LedStatus", state == 0 ? "1" : "0");
  ap_led_ctrl(state);
  return 0;
}

// Callers read the text: the status is the same either way.
int cmd_param(int argc, char** argv, const CommandEntry* entry) {
  if (Args(argc, argv).choice(2, {"erase"}) < 0) return print_usage(entry);
  print("erase param %s!\n", flash_erase_mtd("Config", 0, 0) == 0 ? "ok" : "error");
  return 0;
}

int cmd_usblog(int argc, char**, const CommandEntry* entry) {
  if (argc < 3) return print_usage(entry);
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

int cmd_zentrik_plugin(int argc, char** argv, const CommandEntry* entry) {
  const Args args(argc, argv);
  if (argc < 3) return print_usage(entry);
  enum { kClean, kSet, kGet };
  const int action = args.choice(2, {"clean", "set", "get"});
  if (argc == 3 && action != kClean) {
    print_error(" %s %s path\n", entry->name, args[2]);
    return 1;
  }
  char* const path = args.get(3);
  switch (action) {
    case kClean:
      flash_zentrik_plugin_clean(path);
      return 0;
    case kSet:
      flash_zentrik_plugin_write(path);
      return 0;
    case kGet:
      flash_zentrik_plugin_read(path);
      return 0;
    default:
      return print_usage(entry);
  }
}

int cmd_syslog(int argc, char** argv, const CommandEntry* entry) {
  if (argc < 4) return print_usage(entry);
  sys_log_write(J_atoi(argv[2]), "%s", argv[3]);
  return 0;
}

int cmd_turn_phy(int argc, char** argv, const CommandEntry* entry) {
  constexpr int kNotSaid = 3;
  const Args args(argc, argv);
  if (argc < 3) return print_usage(entry);
  const int state = args.choice(2, {"on", "off"});
  // The processor's own switch, then those that are attached.
  const int chip = args.choice(3, {"mtk", "rtl", "gsw", "yt9215", "an8855"});
  if (state >= 0) turn_on_phy(state == 0 ? 1 : 0, chip < 0 ? kNotSaid : chip == 0 ? 1 : 2);
  return 0;
}
