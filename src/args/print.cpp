// The run-time half of print: formats numbers and texts and hands them to stdio in large pieces.
#include "args/print.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace print_detail {
namespace {

// Gathers the output of one call on the stack; stdio is asked once, or once a full buffer.
class Writer {
 public:
  explicit Writer(FILE* file) : file_(file) {}
  ~Writer() { flush(); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void put(const char* text, size_t length) {
    if (length > sizeof buffer_ - used_) {
      flush();
      if (length > sizeof buffer_) {
        fwrite_unlocked(text, 1, length, file_);
        return;
      }
    }
    memcpy(buffer_ + used_, text, length);
    used_ += length;
  }

  void pad(char fill, size_t count) {
    for (; count > 0; --count) put(&fill, 1);
  }

 private:
  void flush() {
    if (used_ > 0) fwrite_unlocked(buffer_, 1, used_, file_);
    used_ = 0;
  }

  FILE* file_;
  size_t used_ = 0;
  char buffer_[1024];
};

void put_text(Writer& out, const Conversion& conversion, const char* text, size_t length) {
  const size_t padding = conversion.width > length ? conversion.width - length : 0;
  if (!conversion.left) out.pad(' ', padding);
  out.put(text, length);
  if (conversion.left) out.pad(' ', padding);
}

void put_number(Writer& out, const Conversion& conversion, uint64_t number) {
  char digits[24];
  const auto write = [&](auto value, int base) {
    return std::to_chars(digits, digits + sizeof digits, value, base).ptr;
  };
  char* end;
  if (conversion.type == 'd') {
    end = write(conversion.is_long ? static_cast<int64_t>(number) : static_cast<int32_t>(number), 10);
  } else {
    end =
        write(conversion.is_long ? number : static_cast<uint32_t>(number), conversion.type == 'u' ? 10 : 16);
    if (conversion.type == 'X') {
      std::transform(digits, end, digits,
                     [](char c) { return c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c; });
    }
  }
  size_t length = static_cast<size_t>(end - digits);
  const char* first = digits;
  if (conversion.zero && !conversion.left && conversion.width > length) {
    if (*first == '-') {
      out.put(first++, 1);
      --length;
      out.pad('0', conversion.width - length - 1);
    } else {
      out.pad('0', conversion.width - length);
    }
    out.put(first, length);
    return;
  }
  put_text(out, conversion, first, length);
}

void write_values(FILE* file, const char* format, const Value* values) {
  Writer out(file);
  while (*format != 0) {
    const char* literal = format;
    while (*format != 0 && *format != '%') ++format;
    out.put(literal, static_cast<size_t>(format - literal));
    if (*format == 0) break;
    Conversion conversion;
    format = read_conversion(format + 1, conversion);
    if (conversion.type == '%') {
      out.put("%", 1);
    } else if (conversion.type == 's') {
      put_text(out, conversion, values->text, values->length);
      ++values;
    } else if (conversion.type == 'c') {
      const char character = static_cast<char>(values->number);
      put_text(out, conversion, &character, 1);
      ++values;
    } else {
      put_number(out, conversion, values->number);
      ++values;
    }
  }
}

}  // namespace

void print_values(const char* format, const Value* values) { write_values(stdout, format, values); }

void print_error_values(const char* format, const Value* values) {
  fflush(stdout);
  write_values(stderr, format, values);
}

}  // namespace print_detail
