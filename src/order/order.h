// Requests to the kernel modules: the runner that nearly every sub-command goes through, the direct requests
// that report in words of their own, and the tables that state all of it.
#pragma once

#include <cstdint>
#include <initializer_list>
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

// What the parse function of a direct request may answer beside true and false.
enum Verdict : int {
  kRejected = 0,  // reported with the four fields tool, command, sub-command and usage
  kAccepted = 1,
  kTooLong = 2,  // a list does not fit into the record
  kLeave = 256,  // plus a status: leaves with it, all is said
};

constexpr Verdict leave_with(int status) { return static_cast<Verdict>(kLeave + status); }

// How a direct request reports what went wrong.
struct DirectStyle {
  enum Failure : uint8_t {
    kFourFields,  // a failed exchange is reported with the four fields and the reason
    kUsageAlone,  // with the usage in place of the four fields
    kAsSetting,   // in one line, as a setting's, with the status of a kernel error
    kAsReading,   // as a reading's
    kSilent,      // not at all; neither are too few words nor an error of the kernel
  };
  Failure failure = kFourFields;
  const char* failure_reason = "order_opt_fun false!";
  const char* rejection = nullptr;  // stands below the four fields of a rejection
  const char* done = "ok\n";        // what a setting answers
};
constexpr DirectStyle kDirect = {};
constexpr DirectStyle kDirectList = {.failure_reason = " order_opt_fun false!"};
constexpr DirectStyle kDirectSetting = {.failure = DirectStyle::kAsSetting};
constexpr DirectStyle kDirectSilent = {.failure = DirectStyle::kSilent};

// A row of a family's table: what a word leads to. That is a request through the runner, or the other kinds
// that the functions below make rows for.
struct SubCommand {
  enum Kind : uint8_t { kRequest, kDirectRequest, kGroup, kHandled };

  const char* word;
  uint16_t module = 0;
  uint16_t command = 0;
  int32_t buf_size = 0;
  int32_t payload_size = 0;
  int32_t min_words = 0;  // of all words, the tool's name included: parse is not called with fewer
  const char* usage = nullptr;
  ParseFn parse = nullptr;  // null: the request carries no arguments
  PrintFn print = nullptr;  // null: the answer is only the result code
  union ByKind {
    const DirectStyle* style;
    const SubCommand* rows;  // the table of the next word
    int (*handle)(const Args& args, const CommandEntry* entry);
  } by_kind = {.style = nullptr};
  Kind kind = kRequest;
  uint8_t row_count = 0;
};

// A direct request, in a record of that length, the header included.
constexpr SubCommand direct(const char* word, uint16_t module, uint16_t command, int32_t length,
                            int32_t min_words, const char* usage, ParseFn parse, PrintFn print,
                            const DirectStyle& style = kDirect) {
  const int32_t size = length - int32_t{sizeof(OrderRecord)};
  return {.word = word,
          .module = module,
          .command = command,
          .buf_size = size,
          .payload_size = size,
          .min_words = min_words,
          .usage = usage,
          .parse = parse,
          .print = print,
          .by_kind = {.style = &style},
          .kind = SubCommand::kDirectRequest};
}

// A word that another word's table stands behind. A missing or unknown next word gets the line of usage, or
// where there is none the command's.
template <uint8_t kCount>
constexpr SubCommand group(const char* word, const SubCommand (&rows)[kCount], const char* usage = nullptr) {
  return {.word = word,
          .usage = usage,
          .by_kind = {.rows = rows},
          .kind = SubCommand::kGroup,
          .row_count = kCount};
}

// A word with a way of its own.
constexpr SubCommand handled(const char* word, int (*handle)(const Args&, const CommandEntry*)) {
  return {.word = word, .by_kind = {.handle = handle}, .kind = SubCommand::kHandled};
}

using SubCommands = std::initializer_list<std::span<const SubCommand>>;

// The row for the word at a place of the command line; null where there is none.
const SubCommand* find_sub_command(std::span<const SubCommand> table, const Args& args, int place);

// Runs the first row of the tables for the word at a place; a missing or unknown word gets the usage line.
int run_sub_command(SubCommands tables, const Args& args, const CommandEntry* entry, int place = 2);
inline int run_sub_command(std::span<const SubCommand> table, int argc, char** argv,
                           const CommandEntry* entry) {
  return run_sub_command({table}, Args(argc, argv), entry);
}

// Runs the request of a row. Returns the exit status.
int run_request(const SubCommand& row, const Args& args);

// The report's four fields: tool, command, sub-command and usage.
void print_order_usage(const Args& args, const char* usage);

// Reports a kernel error on standard error. Returns its status.
int report_kernel_error(uint32_t result);

namespace order_detail {

template <typename F>
struct FirstParameter;
template <typename R, typename First, typename... Rest>
struct FirstParameter<R (*)(First, Rest...)> {
  using type = First;
};
template <auto function>
using FirstParameterOf = typename FirstParameter<decltype(function)>::type;

template <typename Record, typename Field>
Record record_of(Field Record::*);
template <auto member>
using RecordOf = decltype(record_of(member));

template <int place, auto first, auto... others>
int take_words(RecordOf<first>& record, const Args& args) {
  args.take(place, record.*first, record.*others...);
  return kAccepted;
}

}  // namespace order_detail

// Makes a ParseFn of a function of (Payload&, const Args&) that returns a bool or a Verdict.
template <auto parse>
int parse_as(void* payload, int argc, char** argv) {
  using Payload = std::remove_reference_t<order_detail::FirstParameterOf<parse>>;
  return parse(*static_cast<Payload*>(payload), Args(argc, argv));
}

// The ParseFn of a request whose words go into fields of its payload in their order, from the first word
// behind the sub-command on.
template <auto first, auto... others>
int parse_words(void* payload, int argc, char** argv) {
  return parse_as<order_detail::take_words<3, first, others...>>(payload, argc, argv);
}

// Some commands both set and get: the first word of their payload is 1 to set and 0 to get, and a get carries
// nothing else. Their rows have a print function, and one of these ParseFns.

// For a sub-command that sets: as parse_words. The one that gets has none.
template <auto first, auto... others>
int parse_set(void* payload, int argc, char** argv) {
  *static_cast<uint32_t*>(payload) = 1;
  return parse_words<first, others...>(payload, argc, argv);
}

// For a sub-command behind which "set" or any other word stands, which gets: a function of (Payload&, const
// Args&) that is called to set, with that many words.
template <auto parse, int min_words>
int parse_pair(void* payload, int argc, char** argv) {
  if (!Args(argc, argv).is(3, "set")) return kAccepted;
  if (argc < min_words) return kRejected;
  *static_cast<uint32_t*>(payload) = 1;
  return parse_as<parse>(payload, argc, argv);
}

// The same for words that go into fields in their order; all must be there.
template <auto first, auto... others>
int parse_pair_of(void* payload, int argc, char** argv) {
  constexpr int kMinWords = 5 + sizeof...(others);
  return parse_pair<order_detail::take_words<4, first, others...>, kMinWords>(payload, argc, argv);
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
