// Requests that do not go through the runner: their record has a length of their own, they say in words of
// their own what was wrong, and some leave with statuses of their own. A row of a table states all of it.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "order/order.h"

// What became of the words.
struct BuildResult {
  int status;        // kStatusOk: the record can be sent; with any other it is not
  bool is_reported;  // with the four fields: tool, command, sub-command and text
  const char* why;   // below them, when not null
};
constexpr BuildResult kBuilt = {kStatusOk, false, nullptr};
constexpr BuildResult refused(const char* why) { return {kStatusRejected, true, why}; }
constexpr BuildResult kNotEnoughWords = refused("para is not enough!");
constexpr BuildResult kTooLong = refused("para is too long!");
constexpr BuildResult kTextAlone = {kStatusRejected, true, nullptr};
constexpr BuildResult leave_silently(int status) { return {status, false, nullptr}; }

// Fills the zeroed payload from the words.
using BuildFn = BuildResult (*)(void* payload, int argc, char** argv);

// How a row differs from the others.
enum DirectFlags : unsigned {
  kBlankReason = 1,       // the reason for a failed exchange begins with a blank
  kTextInReport = 2,      // a failed exchange is reported with the text alone in place of the four fields
  kReportSetFailure = 4,  // a failed exchange is reported as a setting's, with the status of a kernel error
  kSilent = 8,            // nothing is reported, and the result is not looked at
};

struct DirectCommand {
  std::string_view word;
  uint32_t command;
  uint32_t length;  // of the record
  const char* text;
  BuildFn build;       // null: the request carries no arguments
  PrintFn print;       // null: the answer is only the result code
  int min_count = 0;   // of all words
  unsigned flags = 0;  // DirectFlags
};

// Null for a word that is none of the table's.
const DirectCommand* find_direct(std::span<const DirectCommand> table, std::string_view word);

// Builds the row's record, sends it, prints the answer and reports what went wrong. Returns the exit status.
int run_direct(uint32_t module, const DirectCommand& row, int argc, char** argv);

// Makes a BuildFn of a BuildResult(Payload&, const Args&).
template <auto build>
BuildResult build_as(void* payload, int argc, char** argv) {
  using Payload = std::remove_reference_t<order_detail::FirstParameterOf<build>>;
  return build(*static_cast<Payload*>(payload), Args(argc, argv));
}
