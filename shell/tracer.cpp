// Shows exchanges field by field.
#include "shell/tracer.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>
#include <span>

#include "records/order.h"
#include "shell/json.h"
#include "shell/trace_text.h"
#include "shell/write_all.h"

namespace {

// A record with the zeros at its end.
class Whole {
 public:
  Whole(std::string_view used, uint32_t length)
      : bytes_(static_cast<uint8_t*>(calloc(length, 1)), free), length_(length) {
    if (bytes_ == nullptr) throw std::bad_alloc();
    memcpy(bytes_.get(), used.data(), std::min<size_t>(used.size(), length));
  }
  Message message(bool is_answer) const {
    OrderRecord header;
    memcpy(&header, bytes_.get(), sizeof header);
    return {header.module, header.command, is_answer, header.result,
            std::span(bytes_.get(), length_).subspan(sizeof header)};
  }

 private:
  std::unique_ptr<uint8_t, decltype(&free)> bytes_;
  size_t length_;
};

std::string time_of(const Exchanged& exchanged) {
  const auto seconds = static_cast<time_t>(exchanged.sent / 1000000000);
  const uint64_t microseconds = exchanged.sent / 1000 % 1000000;
  tm parts = {};
  char text[96];
  const size_t length = strftime(text, sizeof text, "%F %T", localtime_r(&seconds, &parts));
  snprintf(text + length, sizeof text - length, ".%06llu, took %llu us",
           static_cast<unsigned long long>(microseconds),
           static_cast<unsigned long long>(exchanged.took / 1000));
  return text;
}

}  // namespace

Tracer::Tracer(int stream) : name_("the trace"), file_(fcntl(stream, F_DUPFD_CLOEXEC, 3)) {}

Tracer::Tracer(const std::string& path)
    : name_(path), file_(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)) {
  if (file_ < 0) throw RecordingError(path + ": " + strerror(errno));
}

Tracer::~Tracer() { close(file_); }

void Tracer::show(const Exchanged& exchanged) {
  std::string text = time_of(exchanged) + "\n";
  const Whole request(exchanged.request, exchanged.length);
  append_trace(text, request.message(false));
  if (exchanged.returned == 0) {
    const Whole whole(exchanged.answer, exchanged.length);
    Message answer = whole.message(true);
    std::string json;
    const bool is_news =
        append_json(json, answer) || !std::ranges::equal(answer.payload, request.message(false).payload);
    if (!is_news) answer.payload = {};
    append_trace(text, answer);
    if (!is_news) text += "       the rest as it was\n";
  } else {
    text += "not carried out: the gateway returned " + std::to_string(exchanged.returned) + "\n";
  }
  if (!write_all(file_, text)) throw RecordingError(name_ + ": " + strerror(errno));
}
