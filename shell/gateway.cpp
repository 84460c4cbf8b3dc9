// The gateway in front of the platform library's.
#include "shell/gateway.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>

#include "platform/order.h"
#include "records/order.h"
#include "shell/records.h"

namespace {

uint64_t now(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return static_cast<uint64_t>(time.tv_sec) * 1000000000 + static_cast<uint64_t>(time.tv_nsec);
}

int deliver(void* record, uint32_t length) {
  using Deliver = int(void*, uint32_t);
  static auto* const next = reinterpret_cast<Deliver*>(dlsym(RTLD_NEXT, "tesvel_order_opt_fun"));
  if (next != nullptr) return next(record, length);
  fputs("vek: no gateway\n", stderr);
  return -1;
}

int answer(Replay& replay, void* record, uint32_t length) {
  int returned;
  if (replay.answer(record, length, returned)) return returned;
  OrderRecord header;
  memcpy(&header, record, sizeof header);
  const std::string words(words_of(header.module, header.command));
  fprintf(stderr, "vek-shell: missing in the recording: %s%smodule %u command %u\n", words.c_str(),
          words.empty() ? "" : ", ", header.module, header.command);
  return -1;
}

// What is seen of an order must not keep it from being done.
template <typename Work>
bool try_to(Work work) {
  try {
    work();
    return true;
  } catch (const std::exception& error) {
    fprintf(stderr, "%s: %s\n", gateway().name, error.what());
    gateway().has_failed = true;
    return false;
  }
}

}  // namespace

Gateway& gateway() {
  static Gateway the_gateway = first_gateway();
  return the_gateway;
}

// The families' way to the kernel modules leads here, as this is before the library in the program.
extern "C" [[gnu::visibility("default")]] int tesvel_order_opt_fun(void* record, uint32_t length) {
  Gateway& ours = gateway();
  const bool is_record = record != nullptr && length >= sizeof(OrderRecord) && length <= kMaxRecordSize;
  if (!is_record) return deliver(record, length);

  std::string request;
  const bool is_request_kept = ours.recorder != nullptr || ours.is_request_wanted;
  if (is_request_kept) try_to([&] { request = used_part(record, length); });
  Exchanged exchanged;
  exchanged.length = length;
  if (is_request_kept) exchanged.sent = now(CLOCK_REALTIME);
  const uint64_t start = is_request_kept ? now(CLOCK_MONOTONIC) : 0;
  exchanged.returned =
      ours.replay == nullptr ? deliver(record, length) : answer(*ours.replay, record, length);
  if (is_request_kept) exchanged.took = now(CLOCK_MONOTONIC) - start;
  if (ours.recorder == nullptr && ours.watchers.empty()) return exchanged.returned;

  exchanged.request = request;
  exchanged.answer = used_part(record, length);
  if (ours.recorder != nullptr && !request.empty() && !try_to([&] { ours.recorder->add(exchanged); })) {
    fprintf(stderr, "%s: nothing more is recorded\n", ours.name);
    ours.recorder = nullptr;
  }
  for (const auto& watcher : ours.watchers) {
    try_to([&] { watcher(exchanged); });
  }
  return exchanged.returned;
}
