// A scenario as its sections read it: JSON values that know their place in the file, and records that are
// filled by a table of fields.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
#include <string>

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

  // A whole number between the two.
  int64_t number(int64_t least, int64_t most) const;
  // At most this many characters, none of them a control character.
  std::string text(size_t most) const;

 private:
  const nlohmann::json& value_;
  std::string place_;
};

// A member of an object that goes into a field of a record.
struct Field {
  enum Kind { kNumber, kSigned, kPort, kText, kMac, kIp4, kAddress };
  const char* name;
  size_t offset;
  size_t size;
  Kind kind;
  bool is_required = false;
};

// Where a member of a record lies, for the rows of a table of fields.
#define AT(record, member) offsetof(record, member), sizeof(record::member)

// Fills the record from an object that holds nothing but such members, and other ones that `other` takes:
// bool(const std::string& name, const Node& value).
using OtherMember = std::function<bool(const std::string&, const Node&)>;
void read_fields(const Node& object, std::span<const Field> fields, void* record,
                 const OtherMember& other = {});
