// Runs commands of the tool in this process.
#include "shell/runner.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>

#include "main/command_table.h"
#include "platform/order.h"
#include "records/order.h"
#include "shell/field_text.h"
#include "shell/json.h"
#include "shell/vocabulary.h"
#include "shell/watch.h"
#include "shell/write_all.h"

namespace {

constexpr size_t kEnoughToWrite = 64 << 10;

int print_help(const std::vector<std::string>& words) {
  const std::string text = help_on(std::span(words).subspan(1));
  if (text.empty()) fputs("no such command\n", stderr);
  fputs(text.c_str(), stdout);
  return text.empty() ? 1 : 0;
}

int run_handler(std::vector<std::string>& words) {
  if (words[0] == "help" && words.size() > 1) return print_help(words);
  if (words[0] == "watch") return watch({words.begin() + 1, words.end()});
  return run_words(words);
}

}  // namespace

int run_words(std::vector<std::string>& words) {
  std::string tool = "vek";
  std::vector<char*> argv = {tool.data()};
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  return run_command(static_cast<int>(argv.size() - 1), argv.data());
}

Runner::Runner(bool is_json)
    : output_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)), report_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
  if (!is_json) return;
  capture_ = std::make_unique<Capture>();
  gateway().watchers.push_back([this](const Exchanged& exchanged) { note(exchanged); });
}

Runner::~Runner() {
  flush();
  close(output_);
  close(report_);
}

int Runner::run(std::vector<std::string>& words) {
  if (capture_ == nullptr) return run_handler(words);
  begin_object(words);
  is_running_ = true;
  const int status = run_handler(words);
  is_running_ = false;
  end_object(status, capture_->take_report());
  return status;
}

void Runner::reject(const std::string& why) {
  say(why);
  if (capture_ == nullptr) return;
  begin_object({});
  end_object(1, why + "\n");
}

void Runner::say(const std::string& line) {
  fflush(stdout);
  write_all(report_, line + "\n");
}

void Runner::flush() {
  const bool is_text_written = fflush(stdout) == 0 && ferror(stdout) == 0;
  is_all_written_ = write_all(output_, objects_) && is_text_written && is_all_written_;
  objects_.clear();
}

// Answers are long: they are written where they stay, and the text that the handler makes of them is lost.
void Runner::note(const Exchanged& exchanged) {
  if (!is_running_ || exchanged.returned != 0) return;
  has_sent_ = true;
  OrderRecord header;
  memcpy(&header, exchanged.answer.data(), sizeof header);
  error_ = is_result_a_count(header.module, header.command) ? 0 : header.result;
  if (error_ != 0) return;
  capture_->drop_output();
  objects_ += answers_ == 0 ? ",\"answer\":" : ",";
  if (answers_ == 0) first_answer_ = objects_.size();
  if (answers_++ == 1) objects_.insert(first_answer_, "[");
  const std::span payload(reinterpret_cast<const uint8_t*>(exchanged.answer.data()), exchanged.length);
  const Message message = {header.module, header.command, true, header.result,
                           payload.subspan(sizeof header)};
  if (!append_json(objects_, message)) objects_ += "null";
}

void Runner::begin_object(const std::vector<std::string>& words) {
  has_sent_ = false;
  answers_ = 0;
  error_ = 0;
  objects_ += "{\"words\":[";
  for (const std::string& word : words) {
    objects_ += &word == words.data() ? "" : ",";
    append_quoted(objects_, word);
  }
  objects_ += "]";
}

void Runner::end_object(int status, const std::string& report) {
  if (answers_ > 1) objects_ += ']';
  const std::string output = capture_->take_output();
  if (!has_sent_) {
    objects_ += ",\"text\":";
    append_quoted(objects_, output);
  }
  if (error_ != 0) {
    const char* const text = error_ < std::size(tvlret_err_str) ? tvlret_err_str[error_] : nullptr;
    objects_ += ",\"error\":{\"code\":" + std::to_string(error_) + ",\"text\":";
    append_quoted(objects_, text == nullptr ? "not find err!" : text);
    objects_ += '}';
  }
  objects_ += ",\"status\":" + std::to_string(status) + ",\"report\":";
  append_quoted(objects_, report);
  objects_ += "}\n";
  if (objects_.size() >= kEnoughToWrite) flush();
}
