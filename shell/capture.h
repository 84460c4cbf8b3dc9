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
  std::string take_output();
  std::string take_report() { return take(report_); }
  // Until take_output() is called, nothing more of the output is kept, nor what there is of it.
  void drop_output();

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
  int nowhere_;
  bool is_output_dropped_ = false;
};
