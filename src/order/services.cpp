// The small commands on the kernel's general services: errinfo, malloc and fls.
#include <cstdlib>

#include "args/kernel_format.h"
#include "args/print.h"
#include "order/commands.h"
#include "order/order.h"
#include "records/flush.h"
#include "records/general.h"

namespace {

bool parse_error_info(ErrorInfo& info, const Args& args) {
  if (args.is(2, "erase")) {
    info.mode = kErrorInfoErase;
  } else {
    info.number = static_cast<uint32_t>(atoi(args[2]));
  }
  if (args.count() > 3) {
    info.mode = kErrorInfoStore;
    copy_text(info.text, args[3]);
  }
  return true;
}

void print_error_info(const ErrorInfo& info) {
  if (info.mode != kErrorInfoPresent) {
    print("not info\n");
    return;
  }
  print_kernel_format(info.text, strnlen(info.text, sizeof info.text));
  print("\nsid:");
  for (int i = 0; i < 32; ++i) print("%02x ", static_cast<uint8_t>(info.text[i]));
}

bool parse_flush(FlushRequest& request, const Args& args) {
  request.number = args.number(2);
  return true;
}

// clang-format off
constexpr SubCommand kErrorInfoRequest =
    direct("", kModuleGeneral, kErrorInfo, 6000, 0, "", parse_as<parse_error_info>, print_as<print_error_info>, kDirectSetting);
constexpr SubCommand kMemoryReportRequest =
    direct("", kModuleGeneral, kMemoryReport, 1024, 0, "", nullptr, nullptr, kDirectSetting);
// Callers flush and go on, and look at the status at most.
constexpr SubCommand kFlushRequest =
    direct("", kModuleFlush, kFlush, 256, 3, "", parse_as<parse_flush>, nullptr, kDirectSilent);
// clang-format on

}  // namespace

int cmd_errinfo(int argc, char** argv, const CommandEntry*) {
  return run_request(kErrorInfoRequest, Args(argc, argv));
}

int cmd_malloc(int argc, char** argv, const CommandEntry*) {
  return run_request(kMemoryReportRequest, Args(argc, argv));
}

int cmd_fls(int argc, char** argv, const CommandEntry*) {
  return run_request(kFlushRequest, Args(argc, argv));
}
