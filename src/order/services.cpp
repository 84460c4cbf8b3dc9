// The small commands on the kernel's general services: errinfo, malloc and fls.
#include <cstdio>
#include <cstdlib>

#include "args/print.h"
#include "main/handlers.h"
#include "order/direct.h"

namespace {

// Writes what printf would for one conversion of the text with a zero or null argument, and returns what
// follows it. A conversion that printf does not know is written as it stands.
const char* print_conversion(const char* percent, const char* end) {
  constexpr int kMaxWidth = 4096;  // no more than the longest text: a width is no way to flood the reader
  constexpr std::string_view kFlags = "-+ #0'";
  constexpr std::string_view kLengths = "hlLqjzt";
  const char* at = percent + 1;
  const auto is_digit = [&] { return at < end && *at >= '0' && *at <= '9'; };
  const auto read_number = [&] {  // '*' takes its number from a zero argument
    int number = 0;
    if (at < end && *at == '*') ++at;
    for (; is_digit(); ++at) number = std::min(number * 10 + (*at - '0'), kMaxWidth);
    return number;
  };

  const char* after_position = at;
  while (after_position < end && *after_position >= '0' && *after_position <= '9') ++after_position;
  if (after_position > at && after_position < end && *after_position == '$') at = after_position + 1;

  char conversion[16] = "%";
  size_t length = 1;
  for (; at < end && kFlags.find(*at) != kFlags.npos; ++at) {
    if (memchr(conversion, *at, length) == nullptr) conversion[length++] = *at;
  }
  conversion[length++] = '*';
  const int width = read_number();
  int precision = -1;
  if (at < end && *at == '.') {
    ++at;
    precision = read_number();
  }
  conversion[length++] = '.';
  conversion[length++] = '*';
  while (at < end && kLengths.find(*at) != kLengths.npos) ++at;
  const char type = at < end ? *at++ : '\0';
  conversion[length++] = type;
  conversion[length] = '\0';

  switch (type) {
    case '%':
      putchar('%');
      break;
    case 'n':
      break;
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
    case 'c':
      printf(conversion, width, precision, 0);
      break;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
      printf(conversion, width, precision, 0.0);
      break;
    case 's':
      printf(conversion, width, precision, "(null)");
      break;
    case 'm':
      printf("%*.*s", width, precision, strerror(0));
      break;
    case 'p':
      printf(conversion, width, precision, nullptr);
      break;
    default:
      fwrite(percent, 1, static_cast<size_t>(at - percent), stdout);
  }
  return at;
}

// The kernel's text is a printf format whose conversions have no arguments.
void print_format(const char* text, size_t length) {
  const char* const end = text + length;
  while (text < end) {
    const auto* percent = static_cast<const char*>(memchr(text, '%', static_cast<size_t>(end - text)));
    const char* literal_end = percent == nullptr ? end : percent;
    fwrite(text, 1, static_cast<size_t>(literal_end - text), stdout);
    text = percent == nullptr ? end : print_conversion(percent, end);
  }
}

BuildResult build_error_info(ErrorInfo& info, const Args& args) {
  if (args.count() > 2) {
    if (args.is(2, "erase")) {
      info.mode = kErrorInfoErase;
    } else {
      info.number = static_cast<uint32_t>(atoi(args[2]));
    }
  }
  if (args.count() > 3) {
    info.mode = kErrorInfoStore;
    copy_text(info.text, args[3]);
  }
  return kBuilt;
}

void print_error_info(const ErrorInfo& info) {
  if (info.mode != kErrorInfoPresent) {
    print("not info\n");
    return;
  }
  print_format(info.text, strnlen(info.text, sizeof info.text));
  print("\nsid:");
  for (int i = 0; i < 32; ++i) print("%02x ", static_cast<uint8_t>(info.text[i]));
}

BuildResult build_flush(FlushRequest& request, const Args& args) {
  request.number = args.number(2);
  return kBuilt;
}

// clang-format off
constexpr DirectCommand kErrorInfoCommand =
    {"", kErrorInfo, 6000, "", build_as<build_error_info>, print_as<print_error_info>, 0, kReportSetFailure};
constexpr DirectCommand kMemoryReportCommand =
    {"", kMemoryReport, 1024, "", nullptr, nullptr, 0, kReportSetFailure};
// Callers flush and go on, and look at the status at most.
constexpr DirectCommand kFlushCommand =
    {"", kFlush, 256, "", build_as<build_flush>, nullptr, 3, kSilent};
// clang-format on

}  // namespace

int cmd_errinfo(int argc, char** argv, const CommandEntry*) {
  return run_direct(kModuleGeneral, kErrorInfoCommand, argc, argv);
}

int cmd_malloc(int argc, char** argv, const CommandEntry*) {
  return run_direct(kModuleGeneral, kMemoryReportCommand, argc, argv);
}

int cmd_fls(int argc, char** argv, const CommandEntry*) {
  return run_direct(kModuleFlush, kFlushCommand, argc, argv);
}
