// Fuzz target: any payload of any command, decoded as JSON and as a trace. An input is a byte each for the
// module, the command, whether it is the answer, and the result, then the payload. The JSON must be valid.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "shell/json.h"
#include "shell/trace_text.h"
#include "shell/words.h"

// The words come from tables that are not in this program.
const std::span<const CommandWords> kCommandWords;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr size_t kHead = 4;
  if (size < kHead) return 0;
  // In storage of its own size, so that the sanitizer sees a step beyond it.
  const size_t length = size - kHead;
  const auto payload = std::make_unique<uint8_t[]>(length);
  std::copy_n(data + kHead, length, payload.get());
  const Message message = {data[0], data[1], data[2] % 2 == 1, data[3], {payload.get(), length}};
  std::string text;
  if (append_json(text, message) && !nlohmann::json::accept(text)) abort();
  text.clear();
  append_trace(text, message);
  return 0;
}
