// One request to the kernel modules: the runner that nearly every sub-command goes through, the tables that
// drive it, and the report of a kernel error.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>

#include "args/answer.h"
#include "args/args.h"
#include "order/command.h"
#include "records/order.h"

// Fills the zeroed payload from the words; 0 rejects them. May lower the header's length to send less.
using ParseFn = int (*)(void* payload, int argc, char** argv);
// Prints the answer; may set the header's result to report an error of its own.
using PrintFn = void (*)(void* payload);

constexpr int kStatusOk = 0;
constexpr int kStatusRejected = 1;     // words rejected, no memory, or no gateway
constexpr int kStatusKernelError = 3;  // a kernel module refused the order

// Builds a record of buf_size bytes and a header (4 MiB at the most), lets parse fill it, sends it and lets
// print show the answer. A null parse sends an empty payload; a null print answers "ok". payload_size
// documents the payload and does not enter into the record's size. Returns one of the statuses above.
int order_run(int argc, char** argv, uint32_t module, uint32_t command, int32_t buf_size,
              int32_t payload_size, const char* usage, ParseFn parse, PrintFn print);

// Prints the answer, or reports the kernel error that it is. Returns the status.
int show_answer(OrderRecord* record, PrintFn print);

// Reports a kernel error on standard error. Returns its status.
int report_kernel_error(uint32_t result);

// The report's four fields: tool, command, sub-command and the sub-command's usage.
void print_order_usage(const Args& args, const char* usage);

// Reports that there is no memory for a record of that size. Returns the status.
int report_no_memory(const Args& args, const char* usage, uint32_t size);

// A row of a family's table of sub-commands.
struct SubCommand {
  std::string_view word;
  uint32_t command;
  int32_t buf_size;
  int32_t payload_size;
  const char* usage;
  ParseFn parse;
  PrintFn print;
};

// Runs the row of the sub-command word; a missing or unknown word gets the command's usage line.
int run_sub_command(uint32_t module, std::span<const SubCommand> table, int argc, char** argv,
                    const CommandEntry* entry);

namespace order_detail {

template <typename F>
struct FirstParameter;
template <typename R, typename First, typename... Rest>
struct FirstParameter<R (*)(First, Rest...)> {
  using type = First;
};
template <auto function>
using FirstParameterOf = typename FirstParameter<decltype(function)>::type;

}  // namespace order_detail

// Makes a ParseFn of a bool(Payload&, const Args&).
template <auto parse>
int parse_as(void* payload, int argc, char** argv) {
  using Payload = std::remove_reference_t<order_detail::FirstParameterOf<parse>>;
  return parse(*static_cast<Payload*>(payload), Args(argc, argv)) ? 1 : 0;
}

// Makes a PrintFn of a void(const Payload&), or of a void(const Answer&) for lists.
template <auto print>
void print_as(void* payload) {
  using Payload = std::remove_reference_t<order_detail::FirstParameterOf<print>>;
  if constexpr (std::is_same_v<Payload, const Answer>) {
    print(Answer(payload));
  } else {
    print(*static_cast<Payload*>(payload));
  }
}
