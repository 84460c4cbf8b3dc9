// print and print_error: the one way to write to standard output and standard error. The formats are
// printf's; that a format and its arguments agree in number and kind is checked while compiling. "%s" shows
// texts, char[N] fields (to their NUL or their end), string views, and addresses and the like as
// args/field_text.h has them. Output goes through stdio, because platform functions print too and the order
// must hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "args/field_text.h"

namespace print_detail {

enum class Kind : uint8_t { kText, kField, kWord, kLong };  // kWord: up to 32 bits; kLong: 64 bits

template <typename T>
consteval Kind kind_of() {
  using D = std::decay_t<T>;
  if constexpr (std::is_same_v<D, const char*> || std::is_same_v<D, char*> ||
                std::is_same_v<D, std::string_view>) {
    return Kind::kText;
  } else if constexpr (ShownField<D>) {
    return Kind::kField;
  } else {
    static_assert(std::is_integral_v<D>, "print takes numbers, texts and fields of records");
    return sizeof(D) <= 4 ? Kind::kWord : Kind::kLong;
  }
}

using TextOf = const char*(const void* field, char* room);

struct Value {
  union {
    uint64_t number;  // sign-extended
    const char* text;
    const void* field;
  };
  union {
    size_t room = 0;  // of text, which ends at its NUL or here
    TextOf* text_of_field;
  };

  template <typename T>
  explicit Value(const T& value) {
    if constexpr (std::is_same_v<T, std::string_view>) {
      text = value.data();
      room = value.size();
    } else if constexpr (ShownField<T>) {
      field = &value;
      text_of_field = [](const void* its, char* into) { return text_of(*static_cast<const T*>(its), into); };
    } else if constexpr (std::is_array_v<T>) {
      text = value;
      room = sizeof value;
    } else if constexpr (std::is_pointer_v<T>) {
      text = value == nullptr ? "(null)" : value;
      room = SIZE_MAX;
    } else {
      number = static_cast<uint64_t>(value);
    }
  }
};

// What a conversion comes to: the plain ones, which nearly all are, and what looks at the piece once more.
enum class Shape : uint8_t { kEnd, kText, kField, kSigned, kUnsigned, kOther };

// A piece of a format: characters to copy, then a conversion.
struct Piece {
  uint16_t literal = 0;
  uint8_t skip = 0;  // characters of the conversion
  Shape shape = Shape::kEnd;
  char type = 0;  // d u x X s c
  uint8_t width = 0;
  bool left : 1 = false;
  bool zero : 1 = false;
  bool is_long : 1 = false;
  bool is_field : 1 = false;
};

// Never defined: reaching them stops the compiler at the format that is wrong.
[[noreturn]] void format_and_arguments_disagree();
[[noreturn]] void width_is_too_large();

// Reads the conversion after a '%'; type is 0 when it is none of ours.
constexpr Piece read_conversion(const char* percent, Kind argument) {
  Piece piece;
  const char* at = percent + 1;
  for (; *at == '-' || *at == '0'; ++at) (*at == '-' ? piece.left : piece.zero) = true;
  unsigned width = 0;
  for (; *at >= '0' && *at <= '9'; ++at) width = width * 10 + static_cast<unsigned>(*at - '0');
  piece.width = static_cast<uint8_t>(width);
  if (piece.width != width) width_is_too_large();
  for (; *at == 'l' || *at == 'z'; ++at) piece.is_long = true;
  for (const char* type = "duxXsc"; *type != 0; ++type) {
    if (*at == *type) piece.type = *type;
  }
  piece.skip = static_cast<uint8_t>(at + 1 - percent);
  piece.is_field = argument == Kind::kField;
  piece.shape = piece.width > 0     ? Shape::kOther
                : piece.is_field    ? Shape::kField
                : piece.type == 's' ? Shape::kText
                : piece.type == 'd' ? Shape::kSigned
                : piece.type == 'u' ? Shape::kUnsigned
                                    : Shape::kOther;
  return piece;
}

// A format that was taken to pieces while compiling, so that nothing of it is left to be read at run time.
template <typename... Args>
struct Format {
  const char* text;
  Piece pieces[sizeof...(Args) + 1];

  consteval Format(const char* format) : text(format) {
    constexpr Kind kinds[] = {kind_of<Args>()..., Kind::kText};
    size_t used = 0;
    uint16_t literal = 0;
    for (const char* at = format; *at != 0;) {
      if (*at != '%') {
        ++literal;
        ++at;
        continue;
      }
      if (used == sizeof...(Args)) format_and_arguments_disagree();
      const Piece piece = read_conversion(at, kinds[used]);
      const bool agrees = piece.type == 's' ? kinds[used] == Kind::kText || kinds[used] == Kind::kField
                                            : kinds[used] == (piece.is_long ? Kind::kLong : Kind::kWord);
      if (piece.type == 0 || !agrees) format_and_arguments_disagree();
      pieces[used] = piece;
      pieces[used++].literal = literal;
      literal = 0;
      at += piece.skip;
    }
    if (used != sizeof...(Args)) format_and_arguments_disagree();
    pieces[used].literal = literal;
  }
};

void print_values(const char* text, const Piece* pieces, const Value* values);
void print_error_values(const char* text, const Piece* pieces, const Value* values);

}  // namespace print_detail

template <typename... Args>
void print(const print_detail::Format<std::type_identity_t<Args>...>& format, const Args&... args) {
  if constexpr (sizeof...(Args) == 0) {
    print_detail::print_values(format.text, format.pieces, nullptr);
  } else {
    const print_detail::Value values[] = {print_detail::Value(args)...};
    print_detail::print_values(format.text, format.pieces, values);
  }
}

// Writes out what standard output still holds first, so that what a person sees is in order.
template <typename... Args>
void print_error(const print_detail::Format<std::type_identity_t<Args>...>& format, const Args&... args) {
  if constexpr (sizeof...(Args) == 0) {
    print_detail::print_error_values(format.text, format.pieces, nullptr);
  } else {
    const print_detail::Value values[] = {print_detail::Value(args)...};
    print_detail::print_error_values(format.text, format.pieces, values);
  }
}
