// Single values of fields as text: numbers to their last digit, addresses as the tool shows them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "shell/records.h"

// The number of a field that is one, widened; a negative one in two's complement.
uint64_t number_of(const FieldType& type, const uint8_t* at);

// The characters of a kText or kString.
std::string_view characters_of(const Field& field);

// These write where there is room, and return where they end.

// A number, an address or a MAC address; nothing for an IpAddress that is none.
char* write_value(char* to, const FieldType& type, const uint8_t* at);
constexpr size_t kValueRoom = 64;

// The numbers of the bits that are set, with commas between.
char* write_bits(char* to, const FieldType& type, const uint8_t* at);
constexpr size_t room_of_bits(const FieldType& type) { return size_t{type.size} * 8 * sizeof "65535"; }

char* write_hex(char* to, std::span<const uint8_t> bytes);

// Quoted as JSON has it, and valid UTF-8: a byte that is no part of any becomes U+FFFD.
char* write_quoted(char* to, std::string_view text);
constexpr size_t room_of_quoted(std::string_view text) { return sizeof "\\u001f" * text.size() + 2; }

// The same at the end of a string.
void append_value(std::string& out, const FieldType& type, const uint8_t* at);
void append_bits(std::string& out, const FieldType& type, const uint8_t* at);
void append_hex(std::string& out, std::span<const uint8_t> bytes);
void append_quoted(std::string& out, std::string_view text);
