// IGMP (module 10, beside multi-line selection): the groups that Linux is in on a line's interface, and the
// mode with the addresses that it is for.
#include "records/igmp.h"

#include "linux/multicast.h"
#include "modules/checks.h"
#include "modules/general.h"
#include "modules/modules.h"
#include "modules/mr.h"
#include "platform/address.h"
#include "state/settings.h"

namespace {

constexpr const char* kDebug = "igmp_debug";

std::vector<uint8_t> kept_ranges(Store& store) {
  std::vector<uint8_t> ranges;
  Statement row = store.query("SELECT ranges FROM igmp_mode");
  if (row.next()) row.read(ranges);
  return ranges;
}

// As many groups as there is room for.
void show(Store& store, const IgmpShow& request, Order& order) {
  require_line(store, request.wanid);
  const std::string dev = line_device(store, request.wanid);
  const std::vector<MulticastGroup> groups = linux_multicast_groups(dev);
  std::string text = "dev:" + dev + " num:" + std::to_string(groups.size());
  for (const MulticastGroup& group : groups) {
    char ip[64];
    const std::string line =
        std::string("\n") + IpToStr(ip, group.ip.value) + " users:" + std::to_string(group.users);
    if (text.size() + line.size() < order.room(sizeof request)) text += line;
  }
  refuse_unless(order.answer_bytes(sizeof request, text.c_str(), static_cast<uint32_t>(text.size() + 1)),
                kBadRecord);
}

void mode(Store& store, const IgmpMode& request, Order& order) {
  if (request.is_set != 0) {
    check_number(request.mode);
    refuse_unless(request.range_bytes <= kIgmpRangeBytes, kTableFull);
    refuse_unless(request.range_bytes == request.range_count * sizeof(V4Range), kBadRecord);
    std::vector<uint8_t> bytes = order.request_bytes(uint32_t{sizeof request} + request.range_bytes);
    bytes.erase(bytes.begin(), bytes.begin() + sizeof request);
    std::span<const uint8_t> rest = bytes;
    check_lists(request, rest);
    store.execute("INSERT OR REPLACE INTO igmp_mode VALUES (0, ?, ?)", request.mode, bytes);
  }
  const std::vector<uint8_t> ranges = kept_ranges(store);
  const auto size = static_cast<uint32_t>(ranges.size());
  IgmpMode answer = {request.is_set, static_cast<uint32_t>(store.number("SELECT mode FROM igmp_mode")),
                     size / uint32_t{sizeof(V4Range)}, size};
  order.answer(answer);
  refuse_unless(order.answer_bytes(sizeof answer, ranges.data(), size), kBadRecord);
}

// Leaves a report where errinfo finds it: nothing else reads the switch back.
void debug(Store& store, const IgmpDebug& request) {
  check_switch(request.en);
  set_setting(store, kModuleMr, kDebug, request.en);
  store_report(store, kModuleMr,
               "igmp: debug " + std::to_string(request.en) + ", mode " +
                   std::to_string(store.number("SELECT mode FROM igmp_mode")) + ", " +
                   std::to_string(kept_ranges(store).size() / sizeof(V4Range)) + " ranges");
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE igmp_mode (
  id INTEGER PRIMARY KEY CHECK (id = 0),
  mode INTEGER NOT NULL,
  ranges BLOB NOT NULL
))"};

constexpr Command kCommands[] = {
    {kIgmpShow, kReads, run_as<show>},
    {kIgmpMode, kWrites, run_as<mode>},
    {kIgmpDebug, kWrites, run_as<debug>},
};

}  // namespace

const Module kIgmpModule = {.number = kModuleMr, .commands = kCommands, .schema = kSchema, .part = 1};
