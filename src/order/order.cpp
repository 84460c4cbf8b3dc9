// Running requests, and their reports.
#include "order/order.h"

#include <algorithm>

#include "args/print.h"
#include "order/exchange.h"

namespace {

// Reports below the four fields. Returns the status.
int report(const Args& args, const char* usage, const char* why) {
  print_order_usage(args, usage);
  if (why != nullptr) print_error("\t\terr:%s\n", why);
  return kStatusRejected;
}

int report_no_memory(const SubCommand& row, const Args& args, uint32_t size) {
  print_order_usage(args, row.usage);
  print_error("\t\terr:can't alloc %d bytes buffer!! -- error!\n", size);
  return kStatusRejected;
}

// The words are no good; what the parse function has answered, if it was called, is the verdict.
int reject(const SubCommand& row, const Args& args, int verdict) {
  if (row.kind == SubCommand::kRequest) {
    print("go to help\n");
    return report(args, row.usage, nullptr);
  }
  if (verdict >= kLeave) return verdict - kLeave;
  if (row.by_kind.style->failure == DirectStyle::kSilent) return kStatusRejected;
  if (args.count() < row.min_words) return report(args, row.usage, "para is not enough!");
  return report(args, row.usage, verdict == kTooLong ? "para is too long!" : row.by_kind.style->rejection);
}

int report_failed_exchange(const DirectStyle& style, const char* usage, const Args& args) {
  switch (style.failure) {
    case DirectStyle::kFourFields:
      return report(args, usage, style.failure_reason);
    case DirectStyle::kUsageAlone:
      print_error(" %s\n\t\terr:%s\n", usage, style.failure_reason);
      return kStatusRejected;
    case DirectStyle::kAsSetting:
      print_error(" %s : set_opt false \n", args[1]);
      return kStatusKernelError;
    case DirectStyle::kAsReading:
      print_error(" %s : get_opt false \n", args[1]);
      return kStatusKernelError;
    case DirectStyle::kSilent:
      break;
  }
  return kStatusRejected;
}

int show_answer(const SubCommand& row, const DirectStyle& style, const Exchange& exchange) {
  if (style.failure == DirectStyle::kSilent) return kStatusOk;
  if (exchange.result() == 0) {
    if (row.print == nullptr) {
      print("%s", style.done);
    } else {
      row.print(exchange.payload());  // may find an error of its own and leave it in the header
    }
  }
  return exchange.result() == 0 ? kStatusOk : report_kernel_error(exchange.result());
}

bool is_accepted(const SubCommand& row, int verdict) {
  return row.kind == SubCommand::kRequest ? verdict != kRejected : verdict == kAccepted;
}

int run_row(const SubCommand& row, const Args& args, const CommandEntry* entry, int place) {
  if (row.kind == SubCommand::kHandled) return row.by_kind.handle(args, entry);
  if (row.kind != SubCommand::kGroup) return run_request(row, args);
  const std::span rows(row.by_kind.rows, row.row_count);
  if (row.usage == nullptr) return run_sub_command({rows}, args, entry, place + 1);
  const SubCommand* const next = find_sub_command(rows, args, place + 1);
  if (next != nullptr) return run_row(*next, args, entry, place + 1);
  print_error("%s", row.usage);
  return kStatusRejected;
}

}  // namespace

int run_request(const SubCommand& row, const Args& args) {
  const uint32_t size =
      std::min(static_cast<uint32_t>(row.buf_size) + uint32_t{sizeof(OrderRecord)}, kMaxRecordSize);
  Exchange exchange(row.module, row.command, size);
  if (!exchange.has_record()) return report_no_memory(row, args, size);
  int verdict = args.count() < row.min_words ? kRejected : kAccepted;
  if (verdict == kAccepted && row.parse != nullptr) {
    verdict = row.parse(exchange.payload(), args.count(), args.words());
  }
  if (!is_accepted(row, verdict)) return reject(row, args, verdict);
  const DirectStyle& style = row.kind == SubCommand::kRequest ? kDirect : *row.by_kind.style;
  return exchange.send() ? show_answer(row, style, exchange) : report_failed_exchange(style, row.usage, args);
}

int order_run(int argc, char** argv, uint32_t module, uint32_t command, int32_t buf_size,
              int32_t payload_size, const char* usage, ParseFn parse, PrintFn print_answer) {
  const SubCommand row = {"",
                          static_cast<uint16_t>(module),
                          static_cast<uint16_t>(command),
                          buf_size,
                          payload_size,
                          0,
                          usage,
                          parse,
                          print_answer};
  return run_request(row, Args(argc, argv));
}

const SubCommand* find_sub_command(std::span<const SubCommand> table, const Args& args, int place) {
  const auto row =
      std::ranges::find_if(table, [&](const SubCommand& each) { return args.is(place, each.word); });
  return row == table.end() ? nullptr : &*row;
}

int run_sub_command(SubCommands tables, const Args& args, const CommandEntry* entry, int place) {
  for (const auto& table : tables) {
    const SubCommand* const row = find_sub_command(table, args, place);
    if (row != nullptr) return run_row(*row, args, entry, place);
  }
  return print_usage(entry);
}

int print_usage(const CommandEntry* entry) {
  print_error(" %s\t%s\n", entry->name, entry->usage);
  return kStatusRejected;
}

void print_order_usage(const Args& args, const char* usage) {
  print_error(" %s %s %s %s\n", args[0], args[1], args[2], usage);
}

int report_kernel_error(uint32_t result) {
  const char* text = result < std::size(tvlret_err_str) ? tvlret_err_str[result] : nullptr;
  print_error("err:%s \n", text == nullptr ? "not find err!" : text);
  return kStatusKernelError;
}
