// Payloads as JSON.
#include "shell/json.h"

#include "shell/field_text.h"

namespace {

class JsonWriter : public RecordVisitor {
 public:
  explicit JsonWriter(std::string& out) : out_(out) {}

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
  // Put together before it is appended: this is done for every field of every entry. Names of fields need no
  // escapes.
  void put_name(std::string_view name) {
    char key[64];
    char* end = key;
    if (!is_first_) *end++ = ',';
    is_first_ = false;
    if (!name.empty()) {
      *end++ = '"';
      end += name.copy(end, sizeof key - 4);
      *end++ = '"';
      *end++ = ':';
    }
    out_.append(key, end);
  }
  void open(std::string_view name, char bracket) {
    put_name(name);
    out_ += bracket;
    is_first_ = true;
  }
  void close(char bracket) {
    out_ += bracket;
    is_first_ = false;
  }

  void put_value(const Field& field) {
    const FieldType& type = *field.type;
    const uint8_t* const at = field.bytes.data();
    switch (type.kind) {
      case FieldType::kUnsigned:
      case FieldType::kSigned:
      case FieldType::kNetwork:
        append_value(out_, type, at);
        break;
      case FieldType::kText:
      case FieldType::kString:
        append_quoted(out_, characters_of(field));
        break;
      case FieldType::kBits:
      case FieldType::kIdSet:
        out_ += '[';
        append_bits(out_, type, at);
        out_ += ']';
        break;
      case FieldType::kArray:
        out_ += '[';
        for (uint32_t i = 0; i < type.count; ++i) {
          if (i > 0) out_ += ',';
          const uint32_t size = type.element->size;
          put_value({{}, type.element, 0, field.bytes.subspan(size_t{i} * size, size)});
        }
        out_ += ']';
        break;
      default:
        put_address(type, at);
    }
  }

  void put_address(const FieldType& type, const uint8_t* at) {
    const size_t before = out_.size();
    out_ += '"';
    append_value(out_, type, at);
    if (out_.size() == before + 1) {
      out_.replace(before, 1, "null");
    } else {
      out_ += '"';
    }
  }

  std::string& out_;
  bool is_first_ = true;
};

}  // namespace

bool append_json(std::string& out, const Message& message) {
  JsonWriter writer(out);
  return decode(message, writer);
}
