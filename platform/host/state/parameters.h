// The parameter store: running values, which are those of this boot, and what was committed to the flash,
// which they start from. Everything throws when it cannot be done.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

using Parameters = std::map<std::string, std::string>;

// Not empty, and without '='.
bool is_parameter_key(std::string_view key);

// The running values.
std::optional<std::string> get_parameter(std::string_view key);
Parameters all_parameters();

// What was set and not committed is gone with the boot. A null value takes the key away.
void set_parameter(std::string_view key, const char* value);
void replace_parameters(const Parameters& parameters);
void commit_parameters();

// As if the machine had been started again.
void restart_parameters();

// The text of a backup, and of the flash: a line a parameter, and their number at the end, so that a part is
// not taken for the whole.
std::string text_of(const Parameters& parameters);
Parameters parse_parameters(std::string_view text, const std::string& place);
