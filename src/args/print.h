// print and print_error: the one way to write to standard output and standard error. The formats are
// printf's; that a format and its arguments agree in number and kind is checked while compiling. Output goes
// through stdio, because platform functions print too and the order must hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace print_detail {

enum class Kind : uint8_t { kText, kWord, kLong };  // kWord: up to 32 bits; kLong: 64 bits

template <typename T>
consteval Kind kind_of() {
  using D = std::decay_t<T>;
  if constexpr (std::is_same_v<D, const char*> || std::is_same_v<D, char*>) {
    return Kind::kText;
  } else {
    static_assert(std::is_integral_v<D>, "print takes numbers, texts and char[N] fields");
    return sizeof(D) <= 4 ? Kind::kWord : Kind::kLong;
  }
}

struct Value {
  union {
    uint64_t number;  // sign-extended
    const char* text;
  };
  size_t length = 0;  // of text

  template <typename T>
  explicit Value(const T& value) {
    if constexpr (std::is_array_v<T>) {
      // A field of a record: its text ends at its NUL or where the field does.
      text = value;
      length = strnlen(value, sizeof value);
    } else if constexpr (std::is_pointer_v<T>) {
      text = value == nullptr ? "(null)" : value;
      length = strlen(text);
    } else {
      number = static_cast<uint64_t>(value);
    }
  }
};

struct Conversion {
  bool left = false;
  bool zero = false;
  unsigned width = 0;
  bool is_long = false;
  char type = 0;  // d u x X s c %
};

// Reads the conversion after a '%' and returns where the format goes on; type is 0 when it is none of ours.
constexpr const char* read_conversion(const char* at, Conversion& conversion) {
  for (; *at == '-' || *at == '0'; ++at) (*at == '-' ? conversion.left : conversion.zero) = true;
  for (; *at >= '0' && *at <= '9'; ++at) conversion.width = conversion.width * 10 + unsigned(*at - '0');
  for (; *at == 'l' || *at == 'z'; ++at) conversion.is_long = true;
  for (const char* type = "duxXsc%"; *type != 0; ++type) {
    if (*at == *type) conversion.type = *type;
  }
  return conversion.type == 0 ? at : at + 1;
}

// Never defined: reaching it stops the compiler at the format that is wrong.
[[noreturn]] void format_and_arguments_disagree();

template <typename... Args>
struct Format {
  const char* text;

  consteval Format(const char* format) : text(format) {
    constexpr Kind kinds[] = {kind_of<Args>()..., Kind::kText};
    size_t used = 0;
    for (const char* at = format; *at != 0;) {
      if (*at++ != '%') continue;
      Conversion conversion;
      at = read_conversion(at, conversion);
      if (conversion.type == '%') continue;
      const Kind wanted = conversion.type == 's' ? Kind::kText
                          : conversion.is_long   ? Kind::kLong
                                                 : Kind::kWord;
      if (conversion.type == 0 || used == sizeof...(Args) || kinds[used] != wanted)
        format_and_arguments_disagree();
      ++used;
    }
    if (used != sizeof...(Args)) format_and_arguments_disagree();
  }
};

void print_values(const char* format, const Value* values);
void print_error_values(const char* format, const Value* values);

}  // namespace print_detail

template <typename... Args>
void print(print_detail::Format<std::type_identity_t<Args>...> format, const Args&... args) {
  const print_detail::Value values[] = {print_detail::Value(args)..., print_detail::Value(0)};
  print_detail::print_values(format.text, values);
}

// Writes out what standard output still holds first, so that what a person sees is in order.
template <typename... Args>
void print_error(print_detail::Format<std::type_identity_t<Args>...> format, const Args&... args) {
  const print_detail::Value values[] = {print_detail::Value(args)..., print_detail::Value(0)};
  print_detail::print_error_values(format.text, values);
}
