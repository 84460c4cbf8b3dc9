// A scenario as its sections read it: JSON values that know their place in the file, and records that are
// filled by the names of their fields.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "state/columns.h"

// What is wrong with a scenario, and where.
struct ScenarioError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A value of the file.
class Node {
 public:
  Node(const nlohmann::json& value, std::string place) : value_(value), place_(std::move(place)) {}

  [[noreturn]] void fail(const std::string& why) const;

  // The elements of a list, the members of an object. The value must be one.
  template <typename Visit>  // Visit(const Node& element)
  void each_element(Visit visit) const {
    if (!value_.is_array()) fail("a list is wanted");
    for (size_t i = 0; i < value_.size(); ++i) visit(Node(value_[i], place_ + "/" + std::to_string(i)));
  }
  template <typename Visit>  // Visit(const std::string& name, const Node& value)
  void each_member(Visit visit) const {
    if (!value_.is_object()) fail("an object is wanted");
    for (const auto& [name, value] : value_.items()) visit(name, Node(value, place_ + "/" + name));
  }

  // Whether the reader is asked which members there are (vek-lab members), and one of them.
  static bool tells_members() { return members_ != nullptr; }
  void tell_member(std::string_view name, const std::string& kind, bool is_required) const;
  // What its own value is: a number, a text, a list.
  std::string kind() const;
  static void set_members(std::vector<std::string>* members) { members_ = members; }

  // A whole number between the two.
  int64_t number(int64_t least, int64_t most) const;
  // At most this many characters, none of them a control character.
  std::string text(size_t most) const;

 private:
  static inline std::vector<std::string>* members_ = nullptr;

  const nlohmann::json& value_;
  std::string place_;
};

// Reads a value into a field of a record, as the field's type has it.
template <typename Number>
requires std::is_integral_v<Number>
void read_value(const Node& value, Number& field) {
  constexpr auto kMost = std::numeric_limits<int64_t>::max();
  constexpr int64_t most =
      sizeof(Number) < sizeof kMost ? static_cast<int64_t>(std::numeric_limits<Number>::max()) : kMost;
  constexpr int64_t least = std::is_signed_v<Number> ? -most - 1 : 0;
  field = static_cast<Number>(value.number(least, most));
}
template <size_t kSize>
void read_value(const Node& value, char (&field)[kSize]) {
  const std::string text = value.text(kSize - 1);
  memcpy(field, text.data(), text.size());
}
template <typename Word, int kCount>
void read_value(const Node& value, Bits<Word, kCount>& field) {
  read_value(value, field.value);
}
template <typename Number>
void read_value(const Node& value, Unaligned<Number>& field) {
  Number number;
  read_value(value, number);
  field = number;
}
void read_value(const Node& value, Port& field);
void read_value(const Node& value, NetworkId& field);
void read_value(const Node& value, Mac& field);
void read_value(const Node& value, Ip4& field);
void read_value(const Node& value, IpAddress& field);

// What a value for a field must be, in words.
template <typename Field>
std::string kind_of(const Field&) {
  if constexpr (std::is_integral_v<Field>) {
    // What a scenario's reader takes is never above INT64_MAX.
    constexpr auto kMost = std::min<uint64_t>(std::numeric_limits<Field>::max(), INT64_MAX);
    return "number, " + std::to_string(std::numeric_limits<Field>::min()) + " to " + std::to_string(kMost);
  } else if constexpr (std::is_array_v<Field>) {
    return "text, at most " + std::to_string(sizeof(Field) - 1) + " bytes";
  } else if constexpr (requires(Field field) { field.bytes, field.family; }) {
    return "IP address";
  } else if constexpr (std::is_same_v<Field, Mac>) {
    return "MAC address";
  } else if constexpr (std::is_same_v<Field, Ip4>) {
    return "IPv4 address";
  } else if constexpr (requires(Field field) { field.value(); }) {
    return kind_of(Field{}.value());
  } else {
    return kind_of(Field{}.value);
  }
}

// Tells the record's members: its columns, but for those that `other` takes or refuses itself.
template <typename Record, typename Other>
void tell_members(const Node& object, Record& record, std::initializer_list<std::string_view> required,
                  Other& other) {
  const nlohmann::json nothing;
  each_column(record, [&](const std::string& name, auto& field) {
    try {
      other(name, Node(nothing, ""));
    } catch (const ScenarioError&) {
      return;
    }
    object.tell_member(name, kind_of(field), std::ranges::find(required, name) != required.end());
  });
}

// Fills the record from an object whose members are named as the record's columns (state/columns.h), all that
// are required among them. Whatever member `other` takes (bool(const std::string& name, const Node& value))
// does not go into the record; one that nobody takes is wrong.
template <typename Record, typename Other>
void read_record(const Node& object, Record& record, std::initializer_list<std::string_view> required,
                 Other other) {
  std::vector<std::string> given;
  if (Node::tells_members()) tell_members(object, record, required, other);
  object.each_member([&](const std::string& name, const Node& value) {
    given.push_back(name);
    bool is_taken = other(name, value);
    if (is_taken && Node::tells_members()) {
      object.tell_member(name, value.kind(), std::ranges::find(required, name) != required.end());
    }
    if (is_taken) return;
    each_column(record, [&](const std::string& column, auto& field) {
      if (column != name) return;
      read_value(value, field);
      is_taken = true;
    });
    if (!is_taken) value.fail("unknown member");
  });
  for (const std::string_view name : required) {
    if (std::ranges::find(given, name) == given.end()) object.fail("no \"" + std::string(name) + "\"");
  }
}
template <typename Record>
void read_record(const Node& object, Record& record, std::initializer_list<std::string_view> required) {
  read_record(object, record, required, [](const std::string&, const Node&) { return false; });
}
