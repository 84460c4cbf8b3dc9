#include "programs/quagga_telnet/frr.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <sstream>

#include "linux/process.h"
#include "programs/quagga_telnet/words.h"

namespace {

std::optional<Running> known;  // until the next change

// A line as it would be given: some are shown with more blanks, and with defaults that older ones do not
// know.
std::string plain(const std::string& line) {
  std::string text(std::min(line.find_first_not_of(' '), line.size()), ' ');
  for (const std::string& word : words_of(line)) {
    if (!text.empty() && text.back() != ' ') text += " ";
    text += word;
  }
  const std::string known_default = " retransmit-window 50";
  const size_t at = text.find(known_default);
  return at == text.npos ? text : text.erase(at, known_default.size());
}

// The line that takes another back.
std::string inverse(const std::string& line) {
  // "no" means no split horizon at all.
  const size_t split = line.find("split-horizon");
  if (split != line.npos) return without_no(line).substr(0, without_no(line).find("split-horizon") + 13);
  if (line.starts_with("no ")) return line.substr(3);
  if (!is_vlink(line)) return "no " + line;
  // All lines of a virtual link go at once.
  const Words words = words_of(line);
  return "no " + words[0] + " " + words[1] + " " + words[2] + " " + words[3];
}

bool contains(const Words& lines, const std::string& line) {
  return std::ranges::find(lines, line) != lines.end();
}

void change(const std::string& head, const Words& before, const Words& wanted) {
  Words commands;
  for (const std::string& line : before) {
    if (!contains(wanted, line) && !contains(commands, inverse(line))) commands.push_back(inverse(line));
  }
  const bool is_whole = !commands.empty() && is_vlink(commands[0]);
  for (const std::string& line : wanted) {
    if (is_whole || !contains(before, line)) commands.push_back(line);
  }
  if (commands.empty()) return;
  commands.insert(commands.begin(), head);
  configure(commands);
}

}  // namespace

Words words_of(const std::string& line) {
  std::istringstream text(line);
  text.exceptions(std::ios::badbit);  // no part is taken for the whole when there is no memory
  Words words;
  for (std::string word; text >> word;) words.push_back(word);
  return words;
}

std::string without_no(const std::string& line) { return line.starts_with("no ") ? line.substr(3) : line; }
bool is_vlink(const std::string& line) { return line.find(" virtual-link ") != line.npos; }

// They hold passwords: no history is written.
std::string vtysh(const Words& commands) {
  Words words = {"vtysh", "-H", "/dev/null"};
  const char* const folder = getenv("VEK_FRR_VTY");
  if (folder != nullptr) words.insert(words.end(), {"--vty_socket", folder});
  for (const std::string& command : commands) words.insert(words.end(), {"-c", command});
  const ProgramEnd end = read_program(words);
  if (end.status == 0) return end.output;
  if (!end.output.empty()) refuse(end.output.substr(0, end.output.find_last_not_of('\n') + 1));
  refuse(std::string("no daemon of FRR answers at ") + (folder == nullptr ? "/run/frr" : folder));
}

void configure(Words lines) {
  known.reset();
  lines.insert(lines.begin(), "configure terminal");
  vtysh(lines);
}

const Running& running() {
  if (known) return *known;
  std::istringstream text(vtysh({"show daemons", "show running-config"}));
  text.exceptions(std::ios::badbit);
  Running all;
  std::string line;
  std::getline(text, line);
  all.daemons = words_of(line);
  while (std::getline(text, line)) {
    line = plain(line);
    if (line.starts_with(' ') && !all.blocks.empty()) {
      all.blocks.back().lines.push_back(line.substr(1));
    } else if (!line.empty()) {
      all.blocks.push_back({line, {}});
    }
  }
  known = std::move(all);
  return *known;
}

bool has_block(const std::string& head) {
  return std::ranges::find(running().blocks, head, &Block::head) != running().blocks.end();
}

Words owned(const std::string& head, const Owns& owns) {
  Words lines;
  for (const Block& block : running().blocks) {
    if (block.head == head) std::ranges::copy_if(block.lines, std::back_inserter(lines), owns);
  }
  return lines;
}

void settle(const std::string& head, const Owns& owns, const Words& wanted) {
  const Words before = owned(head, owns);
  try {
    change(head, before, wanted);
  } catch (...) {
    change(head, owned(head, owns), before);
    throw;
  }
}

void take_away(const std::string& head, const Owns& owns) {
  const Words before = owned(head, owns);
  if (before.empty()) refuse("no such entry");
  change(head, before, {});
}
