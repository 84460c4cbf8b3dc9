// What the process and its children write to standard output and standard error, kept in memory.
#pragma once

#include <string>

class Capture {
 public:
  Capture();
  ~Capture();  // they go where they went before
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;

  // What has been written since the last call.
  std::string take_output() { return take(output_); }
  std::string take_report() { return take(report_); }

 private:
  struct Stream {
    int number;
    int memory;
    int before;
  };
  static Stream redirect(int number);
  static std::string take(const Stream& stream);

  Stream output_;
  Stream report_;
};
