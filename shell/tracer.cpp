// Shows exchanges field by field.
#include "shell/tracer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "shell/write_all.h"

Tracer::Tracer(int stream) : file_(fcntl(stream, F_DUPFD_CLOEXEC, 3)) {}

Tracer::Tracer(const std::string& path)
    : file_(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)) {
  if (file_ < 0) throw RecordingError(path + ": " + strerror(errno));
}

Tracer::~Tracer() { close(file_); }

void Tracer::show(const Exchanged& exchanged) { write_all(file_, std::to_string(exchanged.took) + "\n"); }
