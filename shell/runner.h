// Runs commands of the tool in this process and gives their answers as they are or as JSON.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "shell/capture.h"
#include "shell/gateway.h"

// Runs a command of the tool, and nothing around it. Returns its status.
int run_words(std::vector<std::string>& words);

class Runner {
 public:
  // From now on the process's standard output and standard error are the commands', unless is_json is false.
  explicit Runner(bool is_json);
  ~Runner();
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  // Returns the command's status.
  int run(std::vector<std::string>& words);
  // Tells of something that is no command.
  void reject(const std::string& why);
  // Writes a line to the shell's own standard error.
  void say(const std::string& line);
  void flush();
  // What has been flushed is where it belongs.
  bool is_all_written() const { return is_all_written_; }
  // And so is what was to be recorded and traced.
  bool is_all_kept() const { return is_all_written_ && !gateway().has_failed; }

 private:
  void note(const Exchanged& exchanged);
  void begin_object(const std::vector<std::string>& words);
  void end_object(int status, const std::string& report);

  int output_;  // the shell's own
  int report_;
  bool is_all_written_ = true;
  std::unique_ptr<Capture> capture_;  // null: no JSON
  std::string objects_;               // that are waiting to be written

  // Of the command that runs.
  bool is_running_ = false;
  bool has_sent_ = false;
  size_t answers_ = 0;
  size_t first_answer_ = 0;  // where it is in objects_
  uint32_t error_ = 0;
};
