// Checking and reading the values of a scenario.
#include "lab/scenario.h"

#include <arpa/inet.h>

#include "platform/address.h"

void Node::fail(const std::string& why) const {
  throw ScenarioError((place_.empty() ? "/" : place_) + ": " + why);
}

// Once for all elements of a list: a line "hosts[] ip: IP address, required".
void Node::tell_member(std::string_view name, const std::string& kind, bool is_required) const {
  std::string line;
  for (size_t start = 1; start < place_.size();) {
    const size_t end = std::min(place_.find('/', start), place_.size());
    const bool is_index = place_[start] >= '0' && place_[start] <= '9';
    line += (is_index ? "[]" : line.empty() ? "" : ".") + (is_index ? "" : place_.substr(start, end - start));
    start = end + 1;
  }
  line += " " + std::string(name) + ": " + kind + (is_required ? ", required" : "");
  if (std::ranges::find(*members_, line) == members_->end()) members_->push_back(line);
}

std::string Node::kind() const {
  return value_.is_number() ? "number" : value_.is_string() ? "text" : value_.is_array() ? "list" : "object";
}

int64_t Node::number(int64_t least, int64_t most) const {
  // Numbers above INT64_MAX are unsigned ones to the reader.
  const bool is_huge = value_.is_number_unsigned() &&
                       value_.get<uint64_t>() > static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
  if (!value_.is_number_integer() || is_huge || value_.get<int64_t>() < least ||
      value_.get<int64_t>() > most) {
    fail("a whole number from " + std::to_string(least) + " to " + std::to_string(most) + " is wanted");
  }
  return value_.get<int64_t>();
}

std::string Node::text(size_t most) const {
  if (!value_.is_string()) fail("a text is wanted");
  const auto& text = value_.get_ref<const std::string&>();
  if (text.size() > most) fail("more than " + std::to_string(most) + " characters");
  if (std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7f; })) {
    fail("a control character in the text");
  }
  return text;
}

void read_value(const Node& value, Port& field) {
  field.value = htons(static_cast<uint16_t>(value.number(0, UINT16_MAX)));
}

void read_value(const Node& value, NetworkId& field) {
  field.value = htonl(static_cast<uint32_t>(value.number(0, UINT32_MAX)));
}

void read_value(const Node& value, Mac& field) {
  if (StrToMac(value.text(32).c_str(), &field) != 0) value.fail("no MAC address");
}

void read_value(const Node& value, Ip4& field) {
  field.value = StrToIp(value.text(32).c_str());
  if (field.value == 0) value.fail("no IPv4 address");
}

void read_value(const Node& value, IpAddress& field) {
  if (StrToIpaddr(value.text(64).c_str(), &field) == 0) value.fail("no IP address");
}
