// The run-time half of print: formats numbers and texts and hands them to stdio in large pieces.
#include "args/print.h"

#include <array>
#include <cstdio>

namespace print_detail {
namespace {

constexpr size_t kMaxDigits = 20;  // of UINT64_MAX

// The numbers below 100, two digits each.
constexpr auto kPairs = [] {
  std::array<char, 200> digits{};
  for (size_t i = 0; i < digits.size(); ++i)
    digits[i] = static_cast<char>('0' + (i % 2 == 0 ? i / 20 : i / 2 % 10));
  return digits;
}();

// Writes the digits in front of `end` and returns where they begin.
char* decimal_before(char* end, uint64_t number) {
  for (; number >= 100; number /= 100) memcpy(end -= 2, &kPairs[number % 100 * 2], 2);
  if (number >= 10) return static_cast<char*>(memcpy(end - 2, &kPairs[number * 2], 2));
  *--end = static_cast<char>('0' + number);
  return end;
}

char* hexadecimal_before(char* end, uint64_t number, bool upper_case) {
  const char* const digits = upper_case ? "0123456789ABCDEF" : "0123456789abcdef";
  do {
    *--end = digits[number % 16];
    number /= 16;
  } while (number != 0);
  return end;
}

// Copies kSize bytes to the beginning and to the end of what may be shorter than both together.
template <size_t kSize>
void copy_ends(char* to, const char* from, size_t length) {
  memcpy(to, from, kSize);
  memcpy(to + length - kSize, from + length - kSize, kSize);
}

// Most pieces are so short that calling memcpy would cost more than the copy; here the sizes are constants.
void copy(char* to, const char* from, size_t length) {
  if (length > 32) {
    memcpy(to, from, length);
  } else if (length >= 16) {
    copy_ends<16>(to, from, length);
  } else if (length >= 8) {
    copy_ends<8>(to, from, length);
  } else if (length >= 4) {
    copy_ends<4>(to, from, length);
  } else if (length >= 2) {
    copy_ends<2>(to, from, length);
  } else if (length == 1) {
    *to = *from;
  }
}

// Gathers the output of one call on the stack; stdio is asked once, or once a full buffer. Where it has got
// to is kept by its users, who return it from function to function, so that it never leaves a register.
class Writer {
 public:
  explicit Writer(FILE* file) : file_(file) {}
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  char* begin() { return buffer_; }
  size_t room(const char* at) const { return static_cast<size_t>(buffer_ + sizeof buffer_ - at); }

  char* put(char* at, const char* text, size_t length) {
    if (length > room(at)) {
      at = flush(at);
      if (length > sizeof buffer_) {
        fwrite_unlocked(text, 1, length, file_);
        return at;
      }
    }
    copy(at, text, length);
    return at + length;
  }

  char* put(char* at, char character) {
    if (room(at) == 0) at = flush(at);
    *at = character;
    return at + 1;
  }

  char* pad(char* at, char fill, size_t count) {
    for (; count > 0; --count) at = put(at, fill);
    return at;
  }

  // Hands on what was gathered; the buffer is empty again.
  char* flush(char* at) {
    if (at > buffer_) fwrite_unlocked(buffer_, 1, static_cast<size_t>(at - buffer_), file_);
    return buffer_;
  }

 private:
  FILE* file_;
  char buffer_[2048];
};

char* put_text(Writer& out, char* at, const Piece& piece, const char* text, size_t length) {
  if (piece.width <= length) return out.put(at, text, length);
  const size_t padding = piece.width - length;
  if (!piece.left) at = out.pad(at, ' ', padding);
  at = out.put(at, text, length);
  return piece.left ? out.pad(at, ' ', padding) : at;
}

// Numbers are widened to 64 bits with their sign, whatever the conversion makes of them.
uint64_t as_signed(const Piece& piece, uint64_t number) {
  return piece.is_long ? number : static_cast<uint64_t>(int64_t{static_cast<int32_t>(number)});
}
uint64_t as_unsigned(const Piece& piece, uint64_t number) {
  return piece.is_long ? number : static_cast<uint32_t>(number);
}
bool is_negative(uint64_t number) { return static_cast<int64_t>(number) < 0; }

// In base 16, or with a width.
char* put_number(Writer& out, char* at, const Piece& piece, uint64_t number) {
  const bool has_sign = piece.type == 'd' && is_negative(as_signed(piece, number));
  number = has_sign ? 0 - as_signed(piece, number) : as_unsigned(piece, number);
  char digits[1 + kMaxDigits];
  char* const end = digits + sizeof digits;
  char* first = piece.type == 'x' || piece.type == 'X' ? hexadecimal_before(end, number, piece.type == 'X')
                                                       : decimal_before(end, number);
  if (piece.zero && !piece.left) {
    const size_t length = static_cast<size_t>(end - first) + (has_sign ? 1 : 0);
    if (has_sign) at = out.put(at, '-');
    if (piece.width > length) at = out.pad(at, '0', piece.width - length);
    return out.put(at, first, static_cast<size_t>(end - first));
  }
  if (has_sign) *--first = '-';
  return put_text(out, at, piece, first, static_cast<size_t>(end - first));
}

// Writes a number where there is room for kMaxDigits and returns its end.
char* write_decimal(char* at, uint64_t number) {
  if (number < 10) {
    *at = static_cast<char>('0' + number);
    return at + 1;
  }
  char digits[2 * kMaxDigits];  // so that as many as there is room for can be copied, wherever they begin
  const char* const end = digits + kMaxDigits;
  const char* const first = decimal_before(digits + kMaxDigits, number);
  memcpy(at, first, kMaxDigits);
  return at + (end - first);
}

char* put_field(Writer& out, char* at, const Piece& piece, const Value& value) {
  char room[kFieldRoom];
  const char* const text = value.text_of_field(value.field, room);
  return put_text(out, at, piece, text, strlen(text));
}

char* put_other(Writer& out, char* at, const Piece& piece, const Value& value) {
  if (piece.is_field) return put_field(out, at, piece, value);
  if (piece.type == 's') return put_text(out, at, piece, value.text, strnlen(value.text, value.room));
  if (piece.type != 'c') return put_number(out, at, piece, value.number);
  const char character = static_cast<char>(value.number);
  return put_text(out, at, piece, &character, 1);
}

void write_values(FILE* file, const char* text, const Piece* piece, const Value* value) {
  Writer out(file);
  char* at = out.begin();
  for (;; ++piece, ++value) {
    at = out.put(at, text, piece->literal);
    text += piece->literal + piece->skip;
    if (out.room(at) < 1 + kMaxDigits) at = out.flush(at);
    if (piece->shape == Shape::kEnd) break;  // there is no value to it
    uint64_t number = value->number;
    switch (piece->shape) {
      case Shape::kEnd:
        break;
      case Shape::kText:
        at = out.put(at, value->text, strnlen(value->text, value->room));
        break;
      case Shape::kField:
        at = put_field(out, at, *piece, *value);
        break;
      case Shape::kSigned:
        number = as_signed(*piece, number);
        if (is_negative(number)) {
          *at++ = '-';
          number = 0 - number;
        }
        at = write_decimal(at, number);
        break;
      case Shape::kUnsigned:
        at = write_decimal(at, as_unsigned(*piece, number));
        break;
      case Shape::kOther:
        at = put_other(out, at, *piece, *value);
        break;
    }
  }
  out.flush(at);
}

}  // namespace

void print_values(const char* text, const Piece* pieces, const Value* values) {
  write_values(stdout, text, pieces, values);
}

void print_error_values(const char* text, const Piece* pieces, const Value* values) {
  fflush(stdout);
  write_values(stderr, text, pieces, values);
}

}  // namespace print_detail
