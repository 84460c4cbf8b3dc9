// A command's answer, again and again.
#pragma once

#include <string>
#include <vector>

// Takes the words behind "watch" and runs until the process is ended. Returns 1 where they are no good.
int watch(const std::vector<std::string>& words);
