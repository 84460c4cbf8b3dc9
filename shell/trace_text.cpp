// Payloads as lines.
#include "shell/trace_text.h"

#include <algorithm>

#include "shell/field_text.h"

namespace {

constexpr size_t kOffsetWidth = 7;
constexpr size_t kNameWidth = 16;

void append_padded(std::string& out, std::string_view text, size_t width) {
  out += text;
  if (text.size() < width) out.append(width - text.size(), ' ');
}

class TraceWriter : public RecordVisitor {
 public:
  explicit TraceWriter(std::string& out) : out_(out) {}

  void begin_record(std::string_view name, uint32_t offset) override {
    const size_t start = out_.size();
    if (!levels_.empty()) {  // else it is all of the payload
      begin_line(offset, name.empty() ? next_number() : std::string(name));
      out_.resize(out_.find_last_not_of(' ') + 1);
      out_ += '\n';
    }
    levels_.push_back({.start = start});
  }
  void end_record() override {
    const Level record = levels_.back();
    levels_.pop_back();
    if (levels_.empty()) return;
    Level& around = levels_.back();
    if (around.is_list && record.is_zero && around.zeros++ > 0) {
      out_.resize(record.start);  // as the one before
    } else if (!record.is_zero) {
      end_zeros(record.start);
      around.is_zero = false;
    }
  }

  void begin_list(std::string_view name, uint32_t offset, int64_t claimed) override {
    begin_line(offset, name);
    if (claimed >= 0) out_ += std::to_string(claimed);
    out_ += claimed == 1 ? " entry\n" : claimed >= 0 ? " entries\n" : "entries\n";
    if (claimed != 0) levels_.back().is_zero = false;
    levels_.push_back({.is_list = true, .claimed = claimed});
  }
  void end_list() override {
    end_zeros(out_.size());
    const Level list = levels_.back();
    if (list.claimed > list.found) {
      append_note(out_.size(), "cut: there are " + std::to_string(list.found));
    }
    levels_.pop_back();
  }

  void field(const Field& field) override {
    if (field.type->kind == FieldType::kUnused) {
      append_bytes(field.offset, field.bytes);
      return;
    }
    begin_line(field.offset, field.name.empty() ? next_number() : std::string(field.name));
    append(field);
    out_ += '\n';
    if (std::ranges::any_of(field.bytes, [](uint8_t byte) { return byte != 0; }))
      levels_.back().is_zero = false;
  }

  void rest(uint32_t offset, std::span<const uint8_t> bytes) override { append_bytes(offset, bytes); }

  // The bytes that are not zero, in lines of 16.
  void append_bytes(uint32_t offset, std::span<const uint8_t> bytes) {
    constexpr size_t kLine = 16;
    constexpr int kMostLines = 64;
    int lines = 0;
    for (size_t at = 0; at < bytes.size(); at += kLine) {
      const auto line = bytes.subspan(at, std::min(kLine, bytes.size() - at));
      if (std::ranges::all_of(line, [](uint8_t byte) { return byte == 0; })) continue;
      if (!levels_.empty()) levels_.back().is_zero = false;
      begin_line(offset + static_cast<uint32_t>(at), "?");
      if (lines++ == kMostLines) {
        out_ += "and more\n";
        return;
      }
      append_hex(out_, line);
      out_ += '\n';
    }
  }

 private:
  // A record or a list that has begun.
  struct Level {
    bool is_list = false;
    bool is_zero = true;  // nothing in it is anything else
    int64_t claimed = -1;
    int64_t found = 0;  // elements
    int64_t zeros = 0;  // of these, the last ones that are zero; only the first of them is shown
    size_t start = 0;   // in what is written
  };

  void append_note(size_t place, const std::string& note) {
    out_.insert(place, std::string(kOffsetWidth + 2 * (levels_.size() - 1), ' ') + note + '\n');
  }
  void end_zeros(size_t place) {
    Level& list = levels_.back();
    if (list.zeros > 1) append_note(place, "and " + std::to_string(list.zeros - 1) + " more of zeros");
    list.zeros = 0;
  }

  void begin_line(uint32_t offset, std::string_view name) {
    const std::string number = std::to_string(offset);
    if (number.size() < kOffsetWidth - 1) out_.append(kOffsetWidth - 1 - number.size(), ' ');
    out_ += number;
    out_.append(1 + 2 * (std::max(levels_.size(), size_t{1}) - 1), ' ');
    append_padded(out_, name, kNameWidth);
    out_ += ' ';
  }
  // Elements of lists are named by their number.
  std::string next_number() { return "[" + std::to_string(levels_.back().found++) + "]"; }

  void append(const Field& field) {
    const FieldType& type = *field.type;
    switch (type.kind) {
      case FieldType::kText:
      case FieldType::kString:
        append_quoted(out_, characters_of(field));
        break;
      case FieldType::kBits:
      case FieldType::kIdSet:
        out_ += "bits ";
        append_bits(out_, type, field.bytes.data());
        break;
      case FieldType::kArray:
        append_array(field);
        break;
      case FieldType::kIpAddress: {
        const size_t before = out_.size();
        append_value(out_, type, field.bytes.data());
        if (out_.size() == before) append_no_address(field.bytes);
        break;
      }
      default:
        append_value(out_, type, field.bytes.data());
    }
  }

  void append_no_address(std::span<const uint8_t> bytes) {
    if (std::ranges::all_of(bytes, [](uint8_t byte) { return byte == 0; })) {
      out_ += "none";
    } else {
      out_ += "no address: ";
      append_hex(out_, bytes);
    }
  }

  // Elements that are all zero to the end are not shown one by one.
  void append_array(const Field& field) {
    const uint32_t size = field.type->element->size;
    uint32_t shown = field.type->count;
    const auto element = [&](uint32_t i) { return field.bytes.subspan(size_t{i} * size, size); };
    const auto is_zero = [&](uint32_t i) {
      return std::ranges::all_of(element(i), [](uint8_t byte) { return byte == 0; });
    };
    while (shown > 1 && is_zero(shown - 1) && is_zero(shown - 2)) --shown;
    for (uint32_t i = 0; i < shown; ++i) {
      if (i > 0) out_ += ' ';
      append({{}, field.type->element, 0, element(i)});
    }
    if (shown < field.type->count) out_ += " ...";
  }

  std::string& out_;
  std::vector<Level> levels_;
};

}  // namespace

void append_trace(std::string& out, const Message& message) {
  out += message.is_answer ? "answer " : "order ";
  const std::string_view words = words_of(message.module, message.command);
  if (!words.empty()) (out += words) += ", ";
  out += "module " + std::to_string(message.module) + " command " + std::to_string(message.command);
  if (message.is_answer) out += ", result " + std::to_string(message.result);
  out += ", " + std::to_string(message.payload.size()) + " bytes\n";
  TraceWriter writer(out);
  if (decode(message, writer)) return;
  writer.append_bytes(0, message.payload);
}
