// Child processes, their words, and temporary folders of the tests.
#include "support/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <iomanip>
#include <optional>
#include <sstream>
#include <system_error>

namespace {

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

// What comes out of a pipe until its writers are gone.
std::string read_all(int fd) {
  std::string text;
  std::array<char, 65536> buffer;
  for (ssize_t got; (got = read(fd, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<size_t>(got));
  }
  close(fd);
  return text;
}

// Nothing that a test runs sees the user's own state, and shells find the programs by their names.
class OwnState : public testing::Environment {
  void SetUp() override {
    folder_.emplace();
    setenv("VEK_STATE", folder_->path().c_str(), 1);
    const char* path = getenv("PATH");
    setenv("PATH", (std::string(VEK_FOLDER ":") + (path == nullptr ? "/usr/bin:/bin" : path)).c_str(), 1);
  }
  void TearDown() override { folder_.reset(); }

  std::optional<TempFolder> folder_;
};
[[maybe_unused]] const auto* const own_state = testing::AddGlobalTestEnvironment(new OwnState);

// Whether a setting ("NAME=value") is of the same name as one of the others.
bool is_among(const std::vector<std::string>& settings, const std::string& setting) {
  const std::string name = setting.substr(0, setting.find('=') + 1);
  return std::ranges::any_of(settings, [&](const std::string& each) { return each.starts_with(name); });
}

}  // namespace

RunResult run(const std::vector<std::string>& argv, const std::vector<std::string>& extra_env) {
  std::vector<char*> words;
  for (const std::string& word : argv) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  std::vector<char*> env;
  for (const std::string& setting : extra_env) env.push_back(const_cast<char*>(setting.c_str()));
  for (char** setting = environ; *setting != nullptr; ++setting) {
    if (!is_among(extra_env, *setting)) env.push_back(*setting);
  }
  env.push_back(nullptr);

  int out[2];
  int err[2];
  if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) fail("pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err[1], STDERR_FILENO);
  pid_t child = 0;
  const int error = posix_spawn(&child, words[0], &actions, nullptr, words.data(), env.data());
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);
  close(err[1]);
  if (error != 0) throw std::system_error(error, std::generic_category(), argv[0]);

  // Both at once, so that neither can fill up and block the child.
  std::future<std::string> err_text = std::async(std::launch::async, read_all, err[0]);
  RunResult result;
  result.out = read_all(out[0]);
  result.err = err_text.get();
  int status = 0;
  if (waitpid(child, &status, 0) != child) fail("waitpid");
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

std::vector<std::string> split(const std::string& words) {
  std::istringstream stream(words);
  std::vector<std::string> all;
  for (std::string word; stream >> std::quoted(word, '\'');) all.push_back(unfolded(word));
  return all;
}

std::vector<std::pair<std::string, std::string>> pairs(const std::string& words) {
  const std::vector<std::string> all = split(words);
  std::vector<std::pair<std::string, std::string>> two_by_two;
  for (size_t i = 0; i < all.size(); i += 2) two_by_two.emplace_back(all[i], all.at(i + 1));
  return two_by_two;
}

std::vector<std::vector<std::string>> rows(const std::string& text) {
  std::vector<std::vector<std::string>> all;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.find_first_not_of(' ') == line.npos) continue;
    std::istringstream cells(line + "|");
    all.emplace_back();
    for (std::string cell; std::getline(cells, cell, '|');) {
      const size_t first = std::min(cell.find_first_not_of(' '), cell.size());
      all.back().push_back(cell.substr(first, cell.find_last_not_of(' ') + 1 - first));
    }
  }
  return all;
}

std::string unfolded(std::string text) {
  for (size_t open = 0; (open = text.find('{')) != text.npos;) {
    const size_t close = text.find("}*", open);
    size_t digits = 0;
    std::string all;
    for (int left = std::stoi(text.substr(close + 2), &digits); left > 0; --left) {
      all += text.substr(open + 1, close - open - 1);
    }
    text.replace(open, close + 2 + digits - open, all);
  }
  return text;
}

std::string to_hex(std::string_view bytes) {
  std::string digits;
  for (const char byte : bytes) {
    for (const int shift : {4, 0}) digits += "0123456789abcdef"[(static_cast<uint8_t>(byte) >> shift) & 15];
  }
  return digits;
}

TempFolder::TempFolder() {
  path_ = (std::filesystem::temp_directory_path() / "vek-test-XXXXXX").string();
  if (mkdtemp(path_.data()) == nullptr) fail("mkdtemp");
}

TempFolder::~TempFolder() { std::filesystem::remove_all(path_); }
