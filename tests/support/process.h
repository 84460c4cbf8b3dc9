// Runs a program for a test and gathers what it wrote.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct RunResult {
  std::string out;
  std::string err;
  int status = 0;  // exit status, or 128 and the signal that ended it
};

// argv[0] is the program's path. extra_env ("NAME=value") takes the place of what this process's environment
// says.
RunResult run(const std::vector<std::string>& argv, const std::vector<std::string>& extra_env = {});

// Words that are separated by blanks, each unfolded; one that is empty or has blanks inside stands in ''.
std::vector<std::string> split(const std::string& words);

// The same, two by two: a word and what it is to become.
std::vector<std::pair<std::string, std::string>> pairs(const std::string& words);

// The lines of a text that are not empty, each as its cells: what stands between '|', without the blanks
// around.
std::vector<std::vector<std::string>> rows(const std::string& text);

// "{ab}*3" is "ababab", wherever it stands in the text.
std::string unfolded(std::string text);

// Each byte in two digits.
std::string to_hex(std::string_view bytes);

// A folder of its own under the system's temporary folder, removed with all in it at the end.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  const std::string& path() const { return path_; }
  std::string file(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};
