// Fuzz target: any words on the command line, any answer from the kernel modules.
//
// An input is a number of words (and 128: records of full length), the words (a length and that many bytes
// each), and the answers: for each call of the gateway a byte for what it returns, the result code, and
// pieces (offset, length, bytes) that are written over the record; for each call of another function a byte
// for what it returns (127: two more bytes say), a length, and as many bytes to fill in.
//
// One mutation in four writes a field of the first answer, as the records' descriptions have it.
#include <sys/types.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <random>
#include <vector>

#include "main/command_table.h"
#include "platform/order.h"
#include "records/order.h"
#include "script.h"
#include "shell/records.h"
#include "shell/words.h"

namespace {

class Input {
 public:
  Input(const uint8_t* data, size_t size) : at_(data), left_(size) {}

  bool empty() const { return left_ == 0; }
  const uint8_t* here() const { return at_; }
  template <typename T>
  T number() {
    T value = 0;
    take(&value, sizeof value);
    return value;
  }
  // Copies up to `size` bytes; what is missing stays as it was.
  size_t take(void* destination, size_t size) {
    size = size < left_ ? size : left_;
    if (size == 0) return 0;
    memcpy(destination, at_, size);
    at_ += size;
    left_ -= size;
    return size;
  }

 private:
  const uint8_t* at_;
  size_t left_;
};

Input answers(nullptr, 0);

// What the first order was answered, and where the input says so.
struct FirstAnswer {
  const uint8_t* pieces;
  const uint8_t* end;
  std::vector<uint8_t> record;
};
std::optional<FirstAnswer> first_answer;

// The gateway wears out: some commands ask until it fails.
constexpr int kMaxCalls = 16;
constexpr uint32_t kEnough = 4096;  // of an answer, to be mutated by its fields
int calls = 0;

// A word in storage of its own size, so that the sanitizer sees a step beyond it.
std::unique_ptr<char[]> read_word(Input& input) {
  size_t length = input.number<uint8_t>();
  if (length == 255) length = 20 * size_t{input.number<uint8_t>()};
  std::vector<char> bytes(length, 'x');
  bytes.resize(input.take(bytes.data(), length));
  auto word = std::make_unique<char[]>(bytes.size() + 1);
  std::copy(bytes.begin(), bytes.end(), word.get());
  return word;
}

// About 32 KiB. The last bytes of the input say how much less, so that entries of every size end with a
// record, or a byte behind it.
uint32_t short_limit(const uint8_t* data, size_t size) {
  uint16_t less = 0;
  if (size >= sizeof less) memcpy(&less, data + size - sizeof less, sizeof less);
  return 32 * 1024 - less % 4096;
}

}  // namespace

// The words come from tables that are not in this program.
const std::span<const CommandWords> kCommandWords;

uint32_t record_limit = 0;

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t most);

const char* const tvlret_err_str[52] = {nullptr, "an error"};

int tesvel_order_opt_fun(void* record, uint32_t length) {
  const uint8_t* const start = answers.here();
  auto pieces = answers.number<uint8_t>();
  if (pieces == 255 || ++calls > kMaxCalls) return -1;
  auto* bytes = static_cast<uint8_t*>(record);
  for (; pieces > 0 && !answers.empty(); --pieces) {
    const uint32_t offset = answers.number<uint32_t>() % length;
    const uint32_t size = answers.number<uint8_t>();
    answers.take(bytes + offset, size < length - offset ? size : length - offset);
  }
  if (!first_answer) first_answer = {start, answers.here(), {bytes, bytes + std::min(length, kEnough)}};
  return 0;
}

void log_call(std::initializer_list<LoggedWord>) {}

long next_answer(const char*, void* destination, size_t room) {
  long number = answers.number<int8_t>();
  if (number == INT8_MAX) number = answers.number<int16_t>();
  const size_t size = answers.number<uint16_t>();
  if (room > 0) answers.take(destination, size < room ? size : room);
  return number;
}

extern "C" void* fuzz_mmap(void*, size_t size, int, int, int, off_t) { return calloc(1, size); }
extern "C" int fuzz_munmap(void* pages, size_t) {
  free(pages);
  return 0;
}

// There is none to be had.
extern "C" int fuzz_socket(int, int, int) { return -1; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const auto first = input.number<uint8_t>();
  record_limit = first < 128 ? short_limit(data, size) : kMaxRecordSize;
  const size_t count = first % 32;
  std::vector<std::unique_ptr<char[]>> words;
  for (size_t i = 0; i < count; ++i) words.push_back(read_word(input));
  const auto argv = std::make_unique<char*[]>(count + 1);
  for (size_t i = 0; i < count; ++i) argv[i] = words[i].get();
  answers = input;
  calls = 0;
  first_answer.reset();
  run_command(static_cast<int>(count), argv.get());
  return 0;
}

namespace {

// One of the fields that a record has, each with the same chance.
class FieldPicker : public RecordVisitor {
 public:
  explicit FieldPicker(std::minstd_rand& random) : random_(random) {}
  const std::optional<Field>& picked() const { return picked_; }

  void begin_record(std::string_view, uint32_t) override {}
  void end_record() override {}
  void begin_list(std::string_view, uint32_t, int64_t) override {}
  void end_list() override {}
  void rest(uint32_t, std::span<const uint8_t>) override {}
  void field(const Field& field) override {
    if (random_() % ++fields_ == 0) picked_ = field;
  }

 private:
  std::minstd_rand& random_;
  uint32_t fields_ = 0;
  std::optional<Field> picked_;
};

// A piece of an answer that writes other bytes over one of its fields; empty where no field is known.
std::vector<uint8_t> field_piece(const std::vector<uint8_t>& record, std::minstd_rand& random) {
  OrderRecord header;
  memcpy(&header, record.data(), sizeof header);
  FieldPicker picker(random);
  decode({header.module, header.command, true, header.result, std::span(record).subspan(sizeof header)},
         picker);
  if (!picker.picked()) return {};
  const auto offset = static_cast<uint32_t>(sizeof header + picker.picked()->offset);
  const auto size = static_cast<uint8_t>(std::min<size_t>(picker.picked()->bytes.size(), UINT8_MAX));
  std::vector<uint8_t> piece(sizeof offset + sizeof size + size);
  uint8_t* const bytes = piece.data() + sizeof offset + sizeof size;
  memcpy(piece.data(), &offset, sizeof offset);
  piece[sizeof offset] = size;
  memcpy(bytes, picker.picked()->bytes.data(), size);
  LLVMFuzzerMutate(bytes, size, size);
  return piece;
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  std::minstd_rand random(seed);
  if (random() % 4 != 0) return LLVMFuzzerMutate(data, size, most);
  LLVMFuzzerTestOneInput(data, size);
  const std::vector<uint8_t> piece =
      first_answer ? field_piece(first_answer->record, random) : std::vector<uint8_t>();
  const bool has_count = first_answer && first_answer->pieces < data + size;
  const bool has_room = piece.size() <= most - size;
  if (piece.empty() || !has_count || !has_room || *first_answer->pieces >= 254) {
    return LLVMFuzzerMutate(data, size, most);
  }
  const auto at = static_cast<size_t>(first_answer->end - data);
  ++data[first_answer->pieces - data];
  memmove(data + at + piece.size(), data + at, size - at);
  std::copy(piece.begin(), piece.end(), data + at);
  return size + piece.size();
}
