// Checking and reading the values of a scenario.
#include "lab/scenario.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "platform/address.h"

namespace {

// Numbers are stored as they lie in the machine, the low bytes of a wider one.
void store_number(uint8_t* field, size_t size, uint64_t number) {
  switch (size) {
    case 1: {
      *field = static_cast<uint8_t>(number);
      break;
    }
    case 2: {
      const auto value = static_cast<uint16_t>(number);
      memcpy(field, &value, sizeof value);
      break;
    }
    case 4: {
      const auto value = static_cast<uint32_t>(number);
      memcpy(field, &value, sizeof value);
      break;
    }
    default:
      memcpy(field, &number, sizeof number);
  }
}

void read_field(const Node& value, const Field& field, uint8_t* at) {
  constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
  const int bits = static_cast<int>(field.size * 8);
  switch (field.kind) {
    case Field::kNumber:
      store_number(at, field.size,
                   static_cast<uint64_t>(value.number(0, bits < 63 ? (int64_t{1} << bits) - 1 : kMost)));
      break;
    case Field::kSigned: {
      const int64_t most = bits < 64 ? (int64_t{1} << (bits - 1)) - 1 : kMost;
      store_number(at, field.size, static_cast<uint64_t>(value.number(-most - 1, most)));
      break;
    }
    case Field::kPort: {
      const int64_t port = value.number(0, UINT16_MAX);
      at[0] = static_cast<uint8_t>(port >> 8);
      at[1] = static_cast<uint8_t>(port);
      break;
    }
    case Field::kText: {
      const std::string text = value.text(field.size - 1);
      memcpy(at, text.data(), text.size());
      break;
    }
    case Field::kMac:
      if (StrToMac(value.text(32).c_str(), at) != 0) value.fail("no MAC address");
      break;
    case Field::kIp4: {
      const uint32_t ip = StrToIp(value.text(32).c_str());
      if (ip == 0) value.fail("no IPv4 address");
      memcpy(at, &ip, sizeof ip);
      break;
    }
    case Field::kAddress:
      if (StrToIpaddr(value.text(64).c_str(), at) == 0) value.fail("no IP address");
      break;
  }
}

}  // namespace

void Node::fail(const std::string& why) const {
  throw ScenarioError((place_.empty() ? "/" : place_) + ": " + why);
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
  if (std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) < ' '; })) {
    fail("a control character in the text");
  }
  return text;
}

void read_fields(const Node& object, std::span<const Field> fields, void* record, const OtherMember& other) {
  std::vector<bool> is_given(fields.size());
  object.each_member([&](const std::string& name, const Node& value) {
    const auto field = std::ranges::find(fields, name, &Field::name);
    if (field != fields.end()) {
      read_field(value, *field, static_cast<uint8_t*>(record) + field->offset);
      is_given[static_cast<size_t>(field - fields.begin())] = true;
    } else if (!other || !other(name, value)) {
      value.fail("unknown member");
    }
  });
  for (size_t i = 0; i < fields.size(); ++i) {
    if (fields[i].is_required && !is_given[i]) object.fail(std::string("no \"") + fields[i].name + "\"");
  }
}
