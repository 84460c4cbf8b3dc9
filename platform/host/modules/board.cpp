// The board (module 1): the watchdog, which counts as running until it is stopped or the machine starts
// again, and the LED.
#include "modules/board.h"

#include "modules/checks.h"
#include "modules/modules.h"
#include "records/general.h"
#include "state/settings.h"
#include "state/time.h"

namespace {

constexpr const char* kLedIsOff = "led is off";

void run_watchdog(Store& store, const WatchdogOrder& order) {
  store.execute("DELETE FROM watchdog WHERE boot <> ?", boot_id());
  switch (order.action) {
    case kWatchdogStart:
      store.execute("INSERT OR IGNORE INTO watchdog VALUES (1, ?, present(), present())", boot_id());
      store.execute("UPDATE watchdog SET fed = present()");
      break;
    case kWatchdogStop:
      store.execute("DELETE FROM watchdog");
      break;
    case kWatchdogPing:
      refuse_if_none(store.execute("UPDATE watchdog SET fed = present()"), kNotRunning);
      break;
    default:
      throw Refusal{kBadMode};
  }
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE watchdog (
  id INTEGER PRIMARY KEY CHECK (id = 1),
  boot TEXT NOT NULL,
  started INTEGER NOT NULL,
  fed INTEGER NOT NULL
))"};

constexpr Command kCommands[] = {{kWatchdog, kWrites, run_as<run_watchdog>}};

}  // namespace

const Module kBoardModule = {.number = kModuleGeneral, .commands = kCommands, .schema = kSchema, .part = 2};

void set_led(Store& store, bool is_on) { set_setting(store, kModuleGeneral, kLedIsOff, is_on ? 0 : 1); }

std::string describe_board(Store& store) {
  std::string text = get_setting(store, kModuleGeneral, kLedIsOff) != 0 ? "led: off\n" : "led: on\n";
  Statement row = store.query("SELECT age(started), age(fed) FROM watchdog WHERE boot = ?", boot_id());
  if (!row.next()) return text + "watchdog: not running\n";
  int64_t started = 0;
  int64_t fed = 0;
  row.read(started, fed);
  return text + "watchdog: running for " + std::to_string(started) + " s, last fed " + std::to_string(fed) +
         " s ago\n";
}

void restart_board(Store& store) { store.execute("DELETE FROM watchdog"); }
