// What the payloads of orders and answers consist of, taken from the records' own descriptions: the types
// that each_field names, the lists that each_list names, and one table that says which of them travel for a
// module's command. decode() walks a payload by it; whatever counts and lengths in the payload say, nothing
// beyond its bytes is read.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

struct RecordType;

// The type of a field.
struct FieldType {
  enum Kind : uint8_t {
    kUnsigned,  // a number of `size` bytes
    kSigned,    // the same
    kNetwork,   // an unsigned number in network byte order
    kBits,      // an unsigned number of which the bits count
    kIdSet,     // bits of all bytes, in words of 64
    kText,      // up to its NUL, or all `size` bytes
    kString,    // all bytes, NULs too: a text with a length of its own
    kIp4,       // in network byte order
    kHostIp4,   // in host byte order
    kIp6,
    kIpAddress,  // of either kind, or none
    kMac,
    kUnused,  // bytes that have no name
    kArray,   // `count` elements
    kRecord,  // fields of its own
  };
  Kind kind;
  uint32_t size;
  uint32_t count = 0;
  const FieldType* element = nullptr;
  const RecordType* record = nullptr;

  // Whether no record is inside: such a field is shown as one value.
  bool is_plain() const { return kind != kRecord && (kind != kArray || element->is_plain()); }
};

// A field as it lies in a payload.
struct Field {
  std::string_view name;  // empty in a list, and where the type is kUnused
  const FieldType* type;
  uint32_t offset;  // from the payload's start
  std::span<const uint8_t> bytes;
};

// Takes what a payload consists of, in its order.
class RecordVisitor {
 public:
  virtual void begin_record(std::string_view name, uint32_t offset) = 0;
  virtual void end_record() = 0;
  // A list claims to have that many elements; those that are there follow, without names.
  virtual void begin_list(std::string_view name, uint32_t offset, int64_t claimed) = 0;
  virtual void end_list() = 0;
  virtual void field(const Field& field) = 0;  // a plain one
  // What no description reaches, to the payload's end; and what there is where a record does not fit in.
  virtual void rest(uint32_t offset, std::span<const uint8_t> bytes) = 0;

 protected:
  ~RecordVisitor() = default;
};

// An order on its way to a module, or the answer.
struct Message {
  uint32_t module;
  uint32_t command;
  bool is_answer;
  uint32_t result;  // of the header
  std::span<const uint8_t> payload;
};

// Shows the visitor a record that holds all that the message has (its name is empty), then the rest. False,
// with nothing shown, where no record is known to travel: for commands that are in no table, orders without
// arguments, and answers that consist of the result alone.
bool decode(const Message& message, RecordVisitor& visitor);

// Whether the table has the command.
bool is_known_command(uint32_t module, uint32_t command);

// Whether the result of its answers is a number of entries, and not the code of a refusal.
bool is_result_a_count(uint32_t module, uint32_t command);

// The words of the first sub-command that sends it, "rule acc add"; empty where none is known.
std::string_view words_of(uint32_t module, uint32_t command);

// ---- The types, for those who read records on their own ----

struct RecordType {
  struct Member {
    std::string_view name;
    uint32_t offset;
    const FieldType* type;
  };
  using TakeList = void (*)(void* context, std::string_view name, const FieldType& element, uint32_t count);

  struct Bounds {
    uint32_t least = 0;
    uint32_t most = UINT32_MAX;
  };

  uint32_t size;
  std::vector<Member> members;
  // Names the lists behind the record that lies there; null where there are none.
  void (*each_list)(const uint8_t* at, void* context, TakeList take) = nullptr;
  // How many bytes all of them take, where the record itself says so: what comes next begins there.
  Bounds (*list_bytes)(const uint8_t* at) = nullptr;
};
