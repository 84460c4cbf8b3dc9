// The words of an action: each is checked before it becomes part of a line for FRR, and refused as a whole
// otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>

// Throws std::runtime_error.
[[noreturn]] void refuse(const std::string& why);
[[noreturn]] void refuse_word(const char* what, const std::string& word);

std::optional<uint32_t> number_of(const std::string& word);

// Returns the number, within its bounds, as FRR writes it.
std::string number(const char* what, const std::string& word, uint32_t least, uint32_t most);

// AF_INET or AF_INET6. Return them as FRR writes them.
std::string address(int family, const char* what, const std::string& word);
std::string network(int family, const std::string& word);  // an address and a length

// The name of an interface that may have gone.
std::string device_name(const std::string& word);
// Of one that is there: a misspelt one would wait for ever.
std::string device(const std::string& word);

// One of the interface's addresses. Empty for all of them.
std::string address_of(const std::string& dev, const std::string& word);

// An area of OSPF as FRR takes it: a number, or written as an address.
std::string area(const std::string& word);
bool is_same_area(const std::string& one, const std::string& other);

// A word of FRR's lines that only its users know, as a password. "|" would start a filter.
std::string token(const char* what, const std::string& word, size_t most);

// The place among the choices of a word or its number; that of the first where there is none.
size_t choice(const char* what, const std::string& word, std::initializer_list<const char*> choices);

enum Auth : size_t { kNoAuth, kTextAuth, kMd5Auth };
size_t auth_mode(const std::string& word);
