// Values as text.
#include "shell/field_text.h"

#include <arpa/inet.h>

#include <bit>
#include <charconv>
#include <cstring>

#include "platform/address.h"

namespace {

template <typename Number>
Number read(const uint8_t* at) {
  Number number;
  memcpy(&number, at, sizeof number);
  return number;
}

// How many bytes the character that begins there has; 0 where none does.
size_t character_length(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
  const uint8_t first = byte(0);
  if (first < 0x80) return 1;
  const size_t length = first >= 0xc2 && first < 0xe0   ? 2
                        : first >= 0xe0 && first < 0xf0 ? 3
                        : first >= 0xf0 && first < 0xf5 ? 4
                                                        : 0;
  if (length == 0 || length > text.size()) return 0;
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0) != 0x80) return 0;
  }
  // Longer than need be, a surrogate, or beyond the last character.
  if (first == 0xe0 && byte(1) < 0xa0) return 0;
  if (first == 0xed && byte(1) >= 0xa0) return 0;
  if (first == 0xf0 && byte(1) < 0x90) return 0;
  if (first == 0xf4 && byte(1) >= 0x90) return 0;
  return length;
}

void append_escaped(std::string& out, char c) {
  switch (c) {
    case '"':
      out += "\\\"";
      break;
    case '\\':
      out += "\\\\";
      break;
    case '\n':
      out += "\\n";
      break;
    case '\t':
      out += "\\t";
      break;
    case '\r':
      out += "\\r";
      break;
    default:
      out += "\\u00";
      const auto byte = static_cast<uint8_t>(c);
      append_hex(out, {&byte, 1});
  }
}

}  // namespace

uint64_t number_of(const FieldType& type, const uint8_t* at) {
  const bool is_signed = type.kind == FieldType::kSigned;
  switch (type.size) {
    case 1:
      return is_signed ? static_cast<uint64_t>(read<int8_t>(at)) : *at;
    case 2: {
      const auto number = read<uint16_t>(at);
      if (type.kind == FieldType::kNetwork) return ntohs(number);
      return is_signed ? static_cast<uint64_t>(static_cast<int16_t>(number)) : number;
    }
    case 4: {
      const auto number = read<uint32_t>(at);
      if (type.kind == FieldType::kNetwork) return ntohl(number);
      return is_signed ? static_cast<uint64_t>(static_cast<int32_t>(number)) : number;
    }
    default:
      return read<uint64_t>(at);
  }
}

void append_number(std::string& out, uint64_t number) {
  char room[20];
  const auto end = std::to_chars(room, std::end(room), number);
  out.append(room, end.ptr);
}

void append_hex(std::string& out, std::span<const uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (const uint8_t byte : bytes) {
    out += kDigits[byte >> 4];
    out += kDigits[byte & 15];
  }
}

void append_value(std::string& out, const FieldType& type, const uint8_t* at) {
  char room[64];
  switch (type.kind) {
    case FieldType::kIp4:
      out += IpToStr(room, read<uint32_t>(at));
      break;
    case FieldType::kHostIp4:
      out += IpToStr(room, htonl(read<uint32_t>(at)));
      break;
    case FieldType::kIp6:
      out += Ip6ToStr(room, at);
      break;
    case FieldType::kIpAddress: {
      const auto family = read<uint32_t>(at);
      if (family == 4 || family == 6) out += IpaddrToStr(room, at);
      break;
    }
    case FieldType::kMac:
      out += MacToStr(room, at);
      break;
    case FieldType::kSigned: {
      const auto end = std::to_chars(room, std::end(room), static_cast<int64_t>(number_of(type, at)));
      out.append(room, end.ptr);
      break;
    }
    default:
      append_number(out, number_of(type, at));
  }
}

void append_bits(std::string& out, const FieldType& type, const uint8_t* at) {
  const char* separator = "";
  const auto append_word = [&](uint64_t word, uint32_t first) {
    for (; word != 0; word &= word - 1) {
      out += separator;
      append_number(out, first + static_cast<uint32_t>(std::countr_zero(word)));
      separator = ",";
    }
  };
  if (type.kind == FieldType::kBits) {
    append_word(number_of(type, at), 0);
  } else {
    for (uint32_t i = 0; i < type.size; i += 8) append_word(read<uint64_t>(at + i), i * 8);
  }
}

std::string_view characters_of(const Field& field) {
  const auto* const text = reinterpret_cast<const char*>(field.bytes.data());
  const size_t size = field.bytes.size();
  return {text, field.type->kind == FieldType::kText ? strnlen(text, size) : size};
}

void append_quoted(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    size_t plain = 0;
    while (plain < text.size()) {
      const auto byte = static_cast<uint8_t>(text[plain]);
      if (byte < 0x20 || byte >= 0x7f || byte == '"' || byte == '\\') break;
      ++plain;
    }
    out.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (text.empty()) break;
    const size_t length = character_length(text);
    if (length > 1) {
      out.append(text.substr(0, length));
    } else if (length == 1) {
      append_escaped(out, text[0]);
    } else {
      out += "\xef\xbf\xbd";
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  out += '"';
}
