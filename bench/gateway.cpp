// A gateway to be preloaded before the host's: answers every order with the bytes of the file that VEK_ANSWER
// names, so that the tool is measured alone.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "platform/order.h"

[[gnu::visibility("default")]] int tesvel_order_opt_fun(void* record, uint32_t length) {
  constexpr uint32_t kHeaderSize = 16;
  const char* path = getenv("VEK_ANSWER");
  const int file = path == nullptr ? -1 : open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return -1;
  auto* at = static_cast<uint8_t*>(record) + kHeaderSize;
  const auto* end = static_cast<uint8_t*>(record) + length;
  ssize_t got = 1;
  while (at < end && (got = read(file, at, static_cast<size_t>(end - at))) > 0) at += got;
  close(file);
  return got < 0 ? -1 : 0;
}
