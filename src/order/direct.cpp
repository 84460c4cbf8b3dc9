// Running a direct request, and its reports.
#include "order/direct.h"

#include <algorithm>

#include "args/print.h"
#include "order/record_storage.h"
#include "platform/order.h"

namespace {

int leave(const DirectCommand& row, const Args& args, const BuildResult& result) {
  if (result.is_reported && (row.flags & kSilent) == 0) {
    print_order_usage(args, row.text);
    if (result.why != nullptr) print_error("\t\terr:%s\n", result.why);
  }
  return result.status;
}

int report_failed_exchange(const DirectCommand& row, const Args& args) {
  if ((row.flags & kSilent) != 0) return kStatusRejected;
  if ((row.flags & kReportSetFailure) != 0) {
    print_error(" %s : set_opt false \n", args[1]);
    return kStatusKernelError;
  }
  if ((row.flags & kTextInReport) != 0) {
    print_error(" %s\n", row.text);
  } else {
    print_order_usage(args, row.text);
  }
  print_error("\t\terr:%sorder_opt_fun false!\n", (row.flags & kBlankReason) != 0 ? " " : "");
  return kStatusRejected;
}

}  // namespace

const DirectCommand* find_direct(std::span<const DirectCommand> table, std::string_view word) {
  const auto found = std::ranges::find(table, word, &DirectCommand::word);
  return found == table.end() ? nullptr : &*found;
}

int run_direct(uint32_t module, const DirectCommand& row, int argc, char** argv) {
  const Args args(argc, argv);
  if (args.count() < row.min_count) return leave(row, args, kNotEnoughWords);
  const RecordStorage storage(row.length);
  OrderRecord* const record = storage.record();
  if (record == nullptr) return report_no_memory(args, row.text, row.length);
  *record = {.module = module, .length = row.length, .result = 0, .command = row.command};

  if (row.build != nullptr) {
    const BuildResult result = row.build(record + 1, argc, argv);
    if (result.status != kStatusOk) return leave(row, args, result);
  }
  if (tesvel_order_opt_fun(record, row.length) != 0) return report_failed_exchange(row, args);
  record->length = row.length;  // whatever the kernel wrote there: readers of the answer go by it
  return (row.flags & kSilent) != 0 ? kStatusOk : show_answer(record, row.print);
}
