// What the tool's words are, for people.
#include "shell/vocabulary.h"

#include <algorithm>

#include "shell/words.h"

namespace {

std::string joined(std::span<const std::string> words) {
  std::string text;
  for (const std::string& word : words) text += word + " ";
  return text;
}

}  // namespace

std::vector<std::string_view> words_behind(std::span<const std::string> before) {
  const std::string prefix = joined(before);
  std::vector<std::string_view> found;
  for (const CommandWords& row : kCommandWords) {
    std::string_view words = row.words;
    if (!words.starts_with(prefix)) continue;
    words.remove_prefix(prefix.size());
    words = words.substr(0, words.find(' '));
    if (std::ranges::find(found, words) == found.end()) found.push_back(words);
  }
  return found;
}

std::string help_on(std::span<const std::string> words) {
  const std::string prefix = joined(words);
  std::string text;
  for (const CommandWords& row : kCommandWords) {
    if (!(std::string(row.words) + " ").starts_with(prefix)) continue;
    std::string_view usage = row.usage;
    while (!usage.empty() && (usage.front() == ' ' || usage.front() == '\n')) usage.remove_prefix(1);
    while (!usage.empty() && (usage.back() == ' ' || usage.back() == '\n')) usage.remove_suffix(1);
    text += row.words;
    text += usage.empty() ? "" : "\t";
    for (const char c : usage) text += c == '\n' ? "\n\t" : std::string(1, c);
    text += '\n';
  }
  return text;
}
