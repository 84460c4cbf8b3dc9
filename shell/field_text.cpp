// Values as text.
#include "shell/field_text.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
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

constexpr auto kIsPlain = [] {
  std::array<bool, 256> is_plain = {};
  for (int c = 0x20; c < 0x7f; ++c) is_plain[static_cast<size_t>(c)] = c != '"' && c != '\\';
  return is_plain;
}();

char* write_escaped(char* to, char c) {
  constexpr std::string_view kShort = "\"\\\n\t\r";
  constexpr std::string_view kLetters = "\"\\ntr";
  *to++ = '\\';
  const size_t place = kShort.find(c);
  if (place != kShort.npos) {
    *to++ = kLetters[place];
    return to;
  }
  to = std::ranges::copy(std::string_view("u00"), to).out;
  const auto byte = static_cast<uint8_t>(c);
  return write_hex(to, {&byte, 1});
}

// Makes room for what `write` writes there at the most.
template <typename Write>
void append(std::string& out, size_t most, Write write) {
  const size_t before = out.size();
  out.resize(before + most);
  const char* const end = write(out.data() + before);
  out.resize(static_cast<size_t>(end - out.data()));
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

char* write_number(char* to, uint64_t number) {
  if (number < 10) {
    *to = static_cast<char>('0' + number);
    return to + 1;
  }
  return std::to_chars(to, to + kValueRoom, number).ptr;
}

char* write_hex(char* to, std::span<const uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (const uint8_t byte : bytes) {
    *to++ = kDigits[byte >> 4];
    *to++ = kDigits[byte & 15];
  }
  return to;
}

char* write_value(char* to, const FieldType& type, const uint8_t* at) {
  const char* text = "";
  switch (type.kind) {
    case FieldType::kIp4:
      text = IpToStr(to, read<uint32_t>(at));
      break;
    case FieldType::kHostIp4:
      text = IpToStr(to, htonl(read<uint32_t>(at)));
      break;
    case FieldType::kIp6:
      text = Ip6ToStr(to, at);
      break;
    case FieldType::kIpAddress: {
      const auto family = read<uint32_t>(at);
      if (family != 4 && family != 6) return to;
      text = IpaddrToStr(to, at);
      break;
    }
    case FieldType::kMac:
      text = MacToStr(to, at);
      break;
    case FieldType::kSigned:
      return std::to_chars(to, to + kValueRoom, static_cast<int64_t>(number_of(type, at))).ptr;
    default:
      return write_number(to, number_of(type, at));
  }
  return to + strlen(text);
}

char* write_bits(char* to, const FieldType& type, const uint8_t* at) {
  const char* const start = to;
  const auto write_word = [&](uint64_t word, uint32_t first) {
    for (; word != 0; word &= word - 1) {
      if (to != start) *to++ = ',';
      to = write_number(to, first + static_cast<uint32_t>(std::countr_zero(word)));
    }
  };
  if (type.kind == FieldType::kBits) {
    write_word(number_of(type, at), 0);
  } else {
    for (uint32_t i = 0; i < type.size; i += 8) write_word(read<uint64_t>(at + i), i * 8);
  }
  return to;
}

std::string_view characters_of(const Field& field) {
  const auto* const text = reinterpret_cast<const char*>(field.bytes.data());
  const size_t size = field.bytes.size();
  return {text, field.type->kind == FieldType::kText ? strnlen(text, size) : size};
}

char* write_quoted(char* to, std::string_view text) {
  *to++ = '"';
  for (size_t at = 0; at < text.size();) {
    const auto byte = static_cast<uint8_t>(text[at]);
    if (kIsPlain[byte]) {
      *to++ = text[at++];
    } else if (byte < 0x80) {
      to = write_escaped(to, text[at++]);
    } else {
      const size_t length = character_length(text.substr(at));
      to = std::ranges::copy(length == 0 ? "\xef\xbf\xbd" : text.substr(at, length), to).out;
      at += std::max<size_t>(length, 1);
    }
  }
  *to++ = '"';
  return to;
}

void append_value(std::string& out, const FieldType& type, const uint8_t* at) {
  append(out, kValueRoom, [&](char* to) { return write_value(to, type, at); });
}

void append_bits(std::string& out, const FieldType& type, const uint8_t* at) {
  append(out, room_of_bits(type), [&](char* to) { return write_bits(to, type, at); });
}

void append_hex(std::string& out, std::span<const uint8_t> bytes) {
  append(out, bytes.size() * 2, [&](char* to) { return write_hex(to, bytes); });
}

void append_quoted(std::string& out, std::string_view text) {
  append(out, room_of_quoted(text), [&](char* to) { return write_quoted(to, text); });
}
