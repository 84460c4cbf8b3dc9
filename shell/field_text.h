// Single values of fields as text: numbers to their last digit, addresses as the tool shows them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "shell/records.h"

// The number of a field that is one, widened; a negative one in two's complement.
uint64_t number_of(const FieldType& type, const uint8_t* at);

// A number, an address or a MAC address; empty for an IpAddress that is none.
void append_value(std::string& out, const FieldType& type, const uint8_t* at);

// The numbers of the bits that are set, with commas between.
void append_bits(std::string& out, const FieldType& type, const uint8_t* at);

// The characters of a kText or kString.
std::string_view characters_of(const Field& field);

void append_number(std::string& out, uint64_t number);
void append_hex(std::string& out, std::span<const uint8_t> bytes);

// Quoted as JSON has it, and valid UTF-8: a byte that is no part of any becomes U+FFFD.
void append_quoted(std::string& out, std::string_view text);
