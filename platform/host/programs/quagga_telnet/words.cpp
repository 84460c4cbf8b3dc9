#include "programs/quagga_telnet/words.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <stdexcept>

void refuse(const std::string& why) { throw std::runtime_error(why); }

void refuse_word(const char* what, const std::string& word) {
  std::string shown = word.substr(0, 40);
  for (char& c : shown) c = c < ' ' || c > '~' ? '?' : c;
  refuse(std::string("bad ") + what + " '" + shown + "'");
}

std::optional<uint32_t> number_of(const std::string& word) {
  uint32_t value = 0;
  const char* const end = word.data() + word.size();
  const auto [at, error] = std::from_chars(word.data(), end, value);
  if (word.empty() || error != std::errc() || at != end) return {};
  return value;
}

std::string number(const char* what, const std::string& word, uint32_t least, uint32_t most) {
  const std::optional<uint32_t> value = number_of(word);
  if (!value || *value < least || *value > most) refuse_word(what, word);
  return std::to_string(*value);
}

std::string address(int family, const char* what, const std::string& word) {
  unsigned char bytes[16];
  char text[INET6_ADDRSTRLEN];
  if (strlen(word.c_str()) != word.size() || inet_pton(family, word.c_str(), bytes) != 1) {
    refuse_word(what, word);
  }
  return inet_ntop(family, bytes, text, sizeof text);
}

std::string network(int family, const std::string& word) {
  const uint32_t most = family == AF_INET ? 32 : 128;
  const size_t slash = std::min(word.find('/'), word.size());
  const std::string base = address(family, "network", word.substr(0, slash));
  const std::optional<uint32_t> length =
      slash < word.size() ? number_of(word.substr(slash + 1)) : std::nullopt;
  if (!length || *length > most) refuse_word("network", word);
  unsigned char bytes[16] = {};
  inet_pton(family, base.c_str(), bytes);
  for (uint32_t bit = *length; bit < most; ++bit) {
    if ((bytes[bit / 8] >> (7 - bit % 8) & 1) != 0)
      refuse("network '" + word + "' has bits behind its length");
  }
  return base + "/" + std::to_string(*length);
}

std::string device_name(const std::string& word) {
  const bool is_name = !word.empty() && word.size() < IF_NAMESIZE &&
                       std::ranges::all_of(word, [](char c) { return c > ' ' && c <= '~' && c != '/'; });
  if (!is_name || word.find('|') != word.npos) refuse_word("interface", word);
  return word;
}

std::string device(const std::string& word) {
  if (if_nametoindex(device_name(word).c_str()) == 0) refuse_word("interface", word);
  return word;
}

std::string address_of(const std::string& dev, const std::string& word) {
  if (word.empty() || word == "0.0.0.0") return {};
  std::string wanted = address(AF_INET, "address", word);
  ifaddrs* all = nullptr;
  if (getifaddrs(&all) != 0) refuse("the addresses of interfaces cannot be read");
  bool is_there = false;
  for (const ifaddrs* each = all; each != nullptr; each = each->ifa_next) {
    if (each->ifa_addr == nullptr || each->ifa_addr->sa_family != AF_INET || dev != each->ifa_name) continue;
    char text[INET_ADDRSTRLEN];
    const auto* const ip = reinterpret_cast<const sockaddr_in*>(each->ifa_addr);
    is_there = is_there || wanted == inet_ntop(AF_INET, &ip->sin_addr, text, sizeof text);
  }
  freeifaddrs(all);
  if (!is_there) refuse("interface " + dev + " has no address " + wanted);
  return wanted;
}

std::string area(const std::string& word) {
  return word.find('.') == word.npos ? number("area", word, 0, UINT32_MAX) : address(AF_INET, "area", word);
}
bool is_same_area(const std::string& one, const std::string& other) {
  const auto value = [](const std::string& text) {
    in_addr dotted = {};
    if (inet_pton(AF_INET, text.c_str(), &dotted) == 1) return std::optional(ntohl(dotted.s_addr));
    return number_of(text);
  };
  return value(one) == value(other);
}

std::string token(const char* what, const std::string& word, size_t most) {
  const bool is_good = !word.empty() && word.size() <= most &&
                       std::ranges::all_of(word, [](char c) { return c > ' ' && c <= '~' && c != '|'; });
  if (!is_good) refuse_word(what, word);
  return word;
}

size_t choice(const char* what, const std::string& word, std::initializer_list<const char*> choices) {
  if (word.empty()) return 0;
  const auto found = std::ranges::find(choices, word);
  if (found != choices.end()) return static_cast<size_t>(found - choices.begin());
  const std::optional<uint32_t> value = number_of(word);
  if (!value || *value >= choices.size()) refuse_word(what, word);
  return *value;
}

size_t auth_mode(const std::string& word) { return choice("authentication", word, {"none", "text", "md5"}); }
