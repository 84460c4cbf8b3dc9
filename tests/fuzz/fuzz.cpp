// Fuzz target: any words on the command line, any answer from the kernel modules.
//
// An input is a number of words (and 128: records of full length), the words (a length and that many bytes
// each), and the answers: for each call of the gateway a byte for what it returns, the result code, and
// pieces (offset, length, bytes) that are written over the record; for each call of another function a byte
// for what it returns (127: two more bytes say), a length, and as many bytes to fill in.
#include <sys/types.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "main/command_table.h"
#include "platform/order.h"
#include "records/order.h"
#include "script.h"

namespace {

class Input {
 public:
  Input(const uint8_t* data, size_t size) : at_(data), left_(size) {}

  bool empty() const { return left_ == 0; }
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

// The gateway wears out: some commands ask until it fails.
constexpr int kMaxCalls = 16;
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

uint32_t record_limit = 0;

const char* const tvlret_err_str[52] = {nullptr, "an error"};

int tesvel_order_opt_fun(void* record, uint32_t length) {
  auto pieces = answers.number<uint8_t>();
  if (pieces == 255 || ++calls > kMaxCalls) return -1;
  auto* bytes = static_cast<uint8_t*>(record);
  for (; pieces > 0 && !answers.empty(); --pieces) {
    const uint32_t offset = answers.number<uint32_t>() % length;
    const uint32_t size = answers.number<uint8_t>();
    answers.take(bytes + offset, size < length - offset ? size : length - offset);
  }
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
  run_command(static_cast<int>(count), argv.get());
  return 0;
}
