// Fuzz target: any bytes as a recording, and as a line of commands. A recording's checksums are put right, so
// that they do not keep anything out.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "shell/line.h"
#include "shell/recording.h"

namespace {

RecordingReader open(std::string& bytes) { return {fmemopen(bytes.data(), bytes.size(), "r"), "input"}; }

void put_checksums_right(std::string& bytes) {
  for (size_t at = 16; at + 4 <= bytes.size();) {
    uint32_t size;
    memcpy(&size, bytes.data() + at, sizeof size);
    if (size < 8 || size > bytes.size() - at) return;
    uint64_t sum = 0xcbf29ce484222325;
    for (size_t i = at; i < at + size - 8; ++i) {
      sum = (sum ^ static_cast<uint8_t>(bytes[i])) * 0x100000001b3;
    }
    memcpy(bytes.data() + at + size - 8, &sum, sizeof sum);
    at += size;
  }
}

// Every order that was recorded gets an answer, and within its storage.
void replay(std::string& bytes) {
  Replay recording(open(bytes));
  RecordingReader reader = open(bytes);
  for (Exchanged exchanged; reader.next(exchanged);) {
    auto* const record = static_cast<char*>(calloc(exchanged.length, 1));
    memcpy(record, exchanged.request.data(), exchanged.request.size());
    const bool is_whole = used_part(record, exchanged.length) == exchanged.request;
    int returned;
    if (!recording.answer(record, exchanged.length, returned) && is_whole) abort();
    free(record);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string bytes(reinterpret_cast<const char*>(data), size);
  try {
    for (const std::string& word : words_of_line(bytes)) {
      if (words_of_line(quoted(word)).at(0) != word) abort();
    }
  } catch (const LineError&) {
  }
  words_of_unfinished_line(bytes);
  put_checksums_right(bytes);
  try {
    if (!bytes.empty()) replay(bytes);
  } catch (const RecordingError&) {
  }
  return 0;
}
