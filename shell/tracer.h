// Shows exchanges field by field, in a file or on a stream of the program's.
#pragma once

#include <string>

#include "shell/recording.h"

class Tracer {
 public:
  // The stream as it is now; commands may write theirs elsewhere later.
  explicit Tracer(int stream);
  explicit Tracer(const std::string& path);
  ~Tracer();
  Tracer(const Tracer&) = delete;
  Tracer& operator=(const Tracer&) = delete;

  void show(const Exchanged& exchanged);

 private:
  std::string name_;
  int file_;
};
