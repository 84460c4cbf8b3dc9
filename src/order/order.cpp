// The request runner and its reports.
#include "order/order.h"

#include "args/print.h"
#include "order/record_storage.h"
#include "platform/order.h"

int order_run(int argc, char** argv, uint32_t module, uint32_t command, int32_t buf_size,
              int32_t /*payload_size*/, const char* usage, ParseFn parse, PrintFn print_answer) {
  const Args args(argc, argv);
  const uint32_t size =
      std::min(static_cast<uint32_t>(buf_size) + uint32_t{sizeof(OrderRecord)}, kMaxRecordSize);
  const RecordStorage storage(size);
  OrderRecord* const record = storage.record();
  if (record == nullptr) return report_no_memory(args, usage, size);
  *record = {.module = module, .length = size, .result = 0, .command = command};

  if (parse != nullptr && parse(record + 1, argc, argv) == 0) {
    print("go to help\n");
    print_order_usage(args, usage);
    return kStatusRejected;
  }
  // Never more than was allocated, whatever length the parse function asked for.
  if (tesvel_order_opt_fun(record, std::min(record->length, size)) != 0) {
    print_order_usage(args, usage);
    print_error("\t\terr:order_opt_fun false!\n");
    return kStatusRejected;
  }
  record->length = size;  // whatever the kernel wrote there: readers of the answer go by it
  return show_answer(record, print_answer);
}

int show_answer(OrderRecord* record, PrintFn print_answer) {
  if (record->result == 0) {
    if (print_answer == nullptr) {
      print("ok\n");
    } else {
      print_answer(record + 1);  // may find an error of its own and leave it in the header
    }
  }
  return record->result == 0 ? kStatusOk : report_kernel_error(record->result);
}

int report_no_memory(const Args& args, const char* usage, uint32_t size) {
  print_order_usage(args, usage);
  print_error("\t\terr:can't alloc %d bytes buffer!! -- error!\n", size);
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

int run_sub_command(uint32_t module, std::span<const SubCommand> table, int argc, char** argv,
                    const CommandEntry* entry) {
  const Args args(argc, argv);
  for (const SubCommand& row : table) {
    if (args.count() < 3 || !args.is(2, row.word)) continue;
    return order_run(argc, argv, module, row.command, row.buf_size, row.payload_size, row.usage, row.parse,
                     row.print);
  }
  return print_usage(entry);
}
