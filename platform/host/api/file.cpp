// Files and descriptors.
#include "platform/file.h"

#include <fcntl.h>

[[gnu::visibility("default")]] int setnonblocking(int descriptor) {
  const int flags = fcntl(descriptor, F_GETFL);
  return flags < 0 ? -1 : fcntl(descriptor, F_SETFL, flags | O_NONBLOCK);
}
