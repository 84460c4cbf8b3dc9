// Payloads as JSON.
#include "shell/json.h"

#include "shell/field_text.h"

namespace {

class JsonWriter : public RecordVisitor {
 public:
  explicit JsonWriter(std::string& out) : out_(out), to_(out.data() + out.size()), end_(to_) {}
  ~JsonWriter() { out_.resize(static_cast<size_t>(to_ - out_.data())); }
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;

  void begin_record(std::string_view name, uint32_t) override { open(name, '{'); }
  void end_record() override { close('}'); }
  void begin_list(std::string_view name, uint32_t, int64_t) override { open(name, '['); }
  void end_list() override { close(']'); }
  void rest(uint32_t, std::span<const uint8_t>) override {}

  void field(const Field& field) override {
    if (field.type->kind == FieldType::kUnused) return;
    put_name(field.name);
    put_value(field);
  }

 private:
  // All is written there without a look at the room that is left, as there are many fields.
  void make_room(size_t size) {
    if (static_cast<size_t>(end_ - to_) < size) grow(size);
  }
  void grow(size_t size) {
    const auto used = static_cast<size_t>(to_ - out_.data());
    out_.resize(2 * used + size);
    to_ = out_.data() + used;
    end_ = out_.data() + out_.size();
  }

  // Names of fields need no escapes. Behind one there is room for a number, an address or a bracket.
  void put_name(std::string_view name) {
    make_room(name.size() + sizeof ",\"\":\"\"" + kValueRoom);
    char* to = to_;
    if (!is_first_) *to++ = ',';
    is_first_ = false;
    if (!name.empty()) {
      *to++ = '"';
      to += name.copy(to, name.size());
      *to++ = '"';
      *to++ = ':';
    }
    to_ = to;
  }
  void open(std::string_view name, char bracket) {
    put_name(name);
    *to_++ = bracket;
    is_first_ = true;
  }
  void close(char bracket) {
    make_room(1);
    *to_++ = bracket;
    is_first_ = false;
  }

  void put_value(const Field& field) {
    const FieldType& type = *field.type;
    const uint8_t* const at = field.bytes.data();
    switch (type.kind) {
      case FieldType::kUnsigned:
      case FieldType::kSigned:
      case FieldType::kNetwork:
        to_ = write_value(to_, type, at);
        break;
      case FieldType::kText:
      case FieldType::kString:
        make_room(room_of_quoted(characters_of(field)));
        to_ = write_quoted(to_, characters_of(field));
        break;
      case FieldType::kBits:
      case FieldType::kIdSet:
        make_room(room_of_bits(type) + 2);
        *to_++ = '[';
        to_ = write_bits(to_, type, at);
        *to_++ = ']';
        break;
      case FieldType::kArray:
        put_array(field);
        break;
      default:
        put_address(type, at);
    }
  }

  void put_array(const Field& field) {
    const FieldType& element = *field.type->element;
    *to_++ = '[';
    is_first_ = true;
    for (uint32_t i = 0; i < field.type->count; ++i) {
      put_name({});
      put_value({{}, &element, 0, field.bytes.subspan(size_t{i} * element.size, element.size)});
    }
    close(']');
  }

  void put_address(const FieldType& type, const uint8_t* at) {
    char* const end = write_value(to_ + 1, type, at);
    if (end == to_ + 1) {
      to_ += std::string_view("null").copy(to_, 4);
      return;
    }
    *to_ = '"';
    *end = '"';
    to_ = end + 1;
  }

  std::string& out_;
  char* to_;   // where out_ is written on
  char* end_;  // of its room
  bool is_first_ = true;
};

}  // namespace

bool append_json(std::string& out, const Message& message) {
  JsonWriter writer(out);
  return decode(message, writer);
}
