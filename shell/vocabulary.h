// What the tool's words are, for people: what may come next, and how it is used.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

// The words that may stand behind these, in the order of the tool's tables.
std::vector<std::string_view> words_behind(std::span<const std::string> before);

// The usage of a command or sub-command and of all that stands behind it. Empty where there is none.
std::string help_on(std::span<const std::string> words);
