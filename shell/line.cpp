// Lines of commands: their words.
#include "shell/line.h"

#include <nlohmann/json.hpp>

namespace {

constexpr std::string_view kBlanks = " \t\r";

// Takes a line to pieces, a word a call.
class Splitter {
 public:
  explicit Splitter(std::string_view line) : line_(line) {}

  // False where there are no more words; the rest is blanks or a comment.
  bool next(std::string& word) {
    if (at_ == line_.size()) return false;
    at_ = std::min(line_.find_first_not_of(kBlanks, at_), line_.size());
    ends_in_word_ = at_ < line_.size() && line_[at_] != '#';
    if (!ends_in_word_) return false;
    word.clear();
    while (at_ < line_.size() && kBlanks.find(line_[at_]) == kBlanks.npos) take(word);
    ends_in_word_ = at_ == line_.size();
    return true;
  }

  const char* open_end() const { return open_end_; }  // what is missing at the end; null when nothing is
  bool ends_in_word() const { return ends_in_word_; }

 private:
  void take(std::string& word) {
    const char c = line_[at_++];
    if (c == '\'' || c == '"') {
      take_quoted(word, c);
    } else if (c != '\\') {
      word += c;
    } else if (at_ < line_.size()) {
      word += line_[at_++];
    } else {
      open_end_ = "nothing stands behind the last backslash";
    }
  }

  void take_quoted(std::string& word, char quote) {
    for (; at_ < line_.size(); ++at_) {
      const char c = line_[at_];
      const char next = at_ + 1 < line_.size() ? line_[at_ + 1] : '\0';
      if (c == quote) {
        ++at_;
        return;
      }
      const bool is_escape = quote == '"' && c == '\\' && (next == '"' || next == '\\');
      word += is_escape ? next : c;
      at_ += is_escape ? 1 : 0;
    }
    open_end_ = "a quote is open at the end";
  }

  std::string_view line_;
  size_t at_ = 0;
  const char* open_end_ = nullptr;
  bool ends_in_word_ = false;
};

std::vector<std::string> words_of_json(std::string_view line) {
  int keys = 0;  // of which the object has only the last where some are equal
  const auto count_keys = [&](int, nlohmann::json::parse_event_t event, const nlohmann::json&) {
    keys += event == nlohmann::json::parse_event_t::key ? 1 : 0;
    return true;
  };
  const nlohmann::json object = nlohmann::json::parse(line, count_keys, false);
  const bool is_line = keys == 1 && object.is_object() && object.contains("words");
  if (!is_line || !object["words"].is_array() || object["words"].empty()) {
    throw LineError("not as in {\"words\": [\"arp\", \"list\"]}");
  }
  std::vector<std::string> words;
  for (const auto& word : object["words"]) {
    if (!word.is_string()) throw LineError("a word is no text");
    words.push_back(word.get<std::string>());
  }
  return words;
}

}  // namespace

std::vector<std::string> words_of_line(std::string_view line) {
  if (line.find('\0') != line.npos) throw LineError("a character of no value");
  std::vector<std::string> words;
  if (line.substr(std::min(line.find_first_not_of(kBlanks), line.size())).starts_with('{')) {
    words = words_of_json(line);
    for (const std::string& word : words) {
      if (word.find('\0') != word.npos) throw LineError("a character of no value");
    }
    return words;
  }
  Splitter splitter(line);
  for (std::string word; splitter.next(word);) words.push_back(word);
  if (splitter.open_end() != nullptr) throw LineError(splitter.open_end());
  return words;
}

UnfinishedLine words_of_unfinished_line(std::string_view line) {
  UnfinishedLine found;
  Splitter splitter(line);
  for (std::string word; splitter.next(word);) found.words.push_back(word);
  if (splitter.ends_in_word()) {
    found.last = found.words.back();
    found.words.pop_back();
  }
  return found;
}

std::string quoted(std::string_view word) {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=:,./@%^?";
  if (!word.empty() && word.find_first_not_of(kPlain) == word.npos) return std::string(word);
  std::string text = "'";
  for (const char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return text + "'";
}
