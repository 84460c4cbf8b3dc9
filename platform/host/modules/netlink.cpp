// Registration of the processes that listen for notices (module 74). A process that is gone has left its
// slot.
#include "records/netlink.h"

#include <algorithm>

#include "linux/process.h"
#include "modules/checks.h"
#include "modules/modules.h"
#include "state/time.h"

namespace {

// Of those that are alive.
NetlinkSlots live_slots(Store& store) {
  NetlinkSlots slots = {};
  Statement row = store.query("SELECT slot, pid, start FROM netlink_listener WHERE boot = ?", boot_id());
  while (row.next()) {
    uint32_t slot;
    Process process;
    row.read(slot, process.pid, process.start);
    if (is_alive(process)) slots.listeners[slot] = static_cast<uint32_t>(process.pid);
  }
  return slots;
}

// The first slot that holds this; 0 is in those that are free.
uint32_t find_slot(const NetlinkSlots& slots, uint32_t pid, Result if_none) {
  const auto* const found = std::ranges::find(slots.listeners, pid);
  refuse_unless(found != std::end(slots.listeners), if_none);
  return static_cast<uint32_t>(found - slots.listeners);
}

void register_listener(Store& store, const NetlinkListener& listener) {
  check_switch(listener.is_registered);
  const NetlinkSlots slots = live_slots(store);
  if (listener.is_registered == 0) {
    refuse_unless(listener.pid != 0, kNoSuchEntry);
    const uint32_t slot = find_slot(slots, listener.pid, kNoSuchEntry);
    store.execute("DELETE FROM netlink_listener WHERE slot = ?", slot);
    return;
  }
  const std::optional<Process> process = find_process(listener.pid);
  refuse_unless(process.has_value(), kNotRunning);
  if (std::ranges::count(slots.listeners, listener.pid) != 0) return;
  store.execute("INSERT OR REPLACE INTO netlink_listener VALUES (?, ?, ?, ?)",
                find_slot(slots, 0, kTableFull), process->pid, process->start, boot_id());
}

void list(Store& store, NetlinkSlots& slots) { slots = live_slots(store); }

constexpr const char* kSchema[] = {R"(
CREATE TABLE netlink_listener (
  slot INTEGER PRIMARY KEY,
  pid INTEGER NOT NULL,
  start INTEGER NOT NULL,
  boot TEXT NOT NULL
))"};

constexpr Command kCommands[] = {
    {kNetlinkRegister, kWrites, run_as<register_listener>},
    {kNetlinkList, kReads, run_as<list>},
};

}  // namespace

const Module kNetlinkModule = {kModuleNetlink, kCommands, kSchema};
