// General services (module 1): error information and the memory report.
#include "modules/general.h"

#include <sys/sysinfo.h>

#include "modules/checks.h"
#include "modules/modules.h"
#include "records/general.h"
#include "state/settings.h"

namespace {

constexpr int kMaxErrorInfos = 256;

// A text that was stored counts before a module's report; it can be erased, while the module reports anew
// when it is asked to.
void read_error_info(Store& store, ErrorInfo& info) {
  Statement found = store.query(
      "SELECT text FROM error_info WHERE number = ?1 UNION ALL SELECT text FROM report WHERE module = ?1",
      info.number);
  if (!found.next()) return;
  found.read(info.text);
  info.mode = kErrorInfoPresent;
}

// Number 0 is a text like any other, except that erasing it, which is all that the command line can ask for,
// erases every text and report.
void error_info(Store& store, ErrorInfo& info) {
  switch (info.mode) {
    case kErrorInfoRead:
      read_error_info(store, info);
      break;
    case kErrorInfoStore:
      store.execute("INSERT OR REPLACE INTO error_info VALUES (?, ?)", info.number, info.text);
      refuse_if_full(store, "error_info", kMaxErrorInfos);
      break;
    case kErrorInfoErase:
      store.execute("DELETE FROM error_info WHERE ?1 = 0 OR number = ?1", info.number);
      store.execute("DELETE FROM report WHERE ?1 = 0 OR module = ?1", info.number);
      break;
    default:
      throw Refusal{kBadMode};
  }
}

// The command answers nothing but its result, so the report goes where errinfo finds it.
void memory_report(Store& store) {
  struct sysinfo machine = {};
  sysinfo(&machine);
  const auto kib = [&machine](unsigned long amount) {
    return std::to_string(uint64_t{amount} * machine.mem_unit / 1024);
  };
  const int64_t page_size = store.number("PRAGMA page_size");
  store_report(store, kModuleGeneral,
               "memory: total " + kib(machine.totalram) + " KiB, free " + kib(machine.freeram) +
                   " KiB; state store: " +
                   std::to_string(store.number("PRAGMA page_count") * page_size / 1024) + " KiB, unused " +
                   std::to_string(store.number("PRAGMA freelist_count") * page_size / 1024) + " KiB");
}

void ospf_router_id(Store& store, OspfRouterId& id) {
  if (id.is_set != 0) {
    refuse_unless(id.router_id.value != 0, kBadAddress);
    set_setting(store, kModuleGeneral, "ospf_router_id", id.router_id.value);
  }
  id.router_id = {get_setting(store, kModuleGeneral, "ospf_router_id")};
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE error_info (number INTEGER PRIMARY KEY, text TEXT NOT NULL))",
                                   R"(
CREATE TABLE report (module INTEGER PRIMARY KEY, text TEXT NOT NULL);
INSERT INTO report SELECT * FROM error_info
  WHERE (number, substr(text, 1, 4)) IN (VALUES (1, 'memo'), (3, 'arp:'), (10, 'dns '), (14, 'qos:'));
DELETE FROM error_info WHERE number IN (SELECT module FROM report))"};

constexpr Command kCommands[] = {
    {kErrorInfo, kWrites, run_as<error_info>},
    {kMemoryReport, kWrites, run_as<memory_report>},
    {kOspfRouterId, kWrites, run_as<ospf_router_id>},
};

}  // namespace

const Module kGeneralModule = {kModuleGeneral, kCommands, kSchema};

void store_report(Store& store, uint32_t module, std::string_view report) {
  store.execute("INSERT OR REPLACE INTO report VALUES (?, ?)", module, report);
}
