// Writes the scripts and reads the logs of the scripted platform library.
#include "tool/driver.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace {

std::string from_hex(const std::string& digits) {
  std::string bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

std::string value_of(const std::string& kind, const std::string& text) {
  if (kind == "text") return text;
  if (kind == "hex") return from_hex(text);
  std::string bytes(8, '\0');
  if (inet_pton(AF_INET, text.c_str(), bytes.data()) == 1) return bytes.substr(0, 4);  // network byte order
  const uint64_t number = std::stoull(text, nullptr, 0);
  memcpy(bytes.data(), &number, 8);
  return bytes.substr(0, std::stoul(kind.substr(1)) / 8);
}

void write_answer(std::ofstream& script, const Given& given) {
  script << "order " << given.returned << " 8 " << to_hex(bytes_of("0:u32 " + std::to_string(given.result)));
  if (!given.header.empty()) script << " 0 " << to_hex(bytes_of(given.header));
  if (!given.answer.empty()) script << " 16 " << to_hex(bytes_of(given.answer));
  script << "\n";
}

std::string setting(const char* name, const char* otherwise) {
  const char* value = getenv(name);
  return value == nullptr ? otherwise : value;
}

}  // namespace

std::string bytes_of(const std::string& payload) {
  const std::string kinds = " text hex ip u8 u16 u32 u64 ";
  std::string bytes;
  std::string kind;
  size_t base = 0;
  size_t place = 0;
  for (const std::string& word : split(payload)) {
    const std::string behind = word.substr(word.find(':') + 1);
    if (word[0] == '+') {
      base = std::stoul(word);
    } else if (kinds.find(" " + behind + " ") != kinds.npos) {
      place = base + std::stoul(word);
      kind = behind;
    } else {
      const std::string value = value_of(kind, word);
      bytes.resize(std::max(bytes.size(), place + value.size()));
      bytes.replace(place, value.size(), value);
      place += value.size();
    }
  }
  return bytes;
}

std::string list_of(size_t size, const std::vector<std::string>& entries) {
  std::string list = "4:u32 " + std::to_string(entries.size());
  for (size_t i = 0; i < entries.size(); ++i) list += " +" + std::to_string(8 + i * size) + " " + entries[i];
  return list + " +0 ";
}

std::string answer(const std::string& function, long returned, const std::string& payload) {
  return function + " " + std::to_string(returned) + " 0 " + to_hex(bytes_of(payload)) + "\n";
}

std::string vek_path() { return setting("VEK_TEST_BINARY", VEK_BINARY); }

Outcome vek(const std::string& words, const Given& given) {
  const TempFolder folder;
  std::ofstream script(folder.file("script"));
  write_answer(script, given);
  for (const Given& next : given.then) write_answer(script, next);
  script << given.script << std::flush;
  std::vector<std::string> env = {"VEK_SCRIPT=" + folder.file("script"), "VEK_LOG=" + folder.file("log")};
  // The static programs have the scripted library inside.
  if (getenv("VEK_TEST_BINARY") == nullptr) env.push_back("LD_LIBRARY_PATH=" VEK_SCRIPTED_FOLDER);
  std::vector<std::string> argv;
  if (!given.shell.empty()) argv = {"/bin/sh", "-c", given.shell, "sh"};
  const std::string runner = setting("VEK_TEST_RUNNER", "");
  if (!runner.empty()) argv.push_back(runner);
  argv.push_back(vek_path());
  std::ranges::copy(split(words), std::back_inserter(argv));

  Outcome outcome;
  static_cast<RunResult&>(outcome) = run(argv, env);
  std::ifstream log(folder.file("log"));
  for (std::string line; std::getline(log, line);) {
    const bool is_order = line.starts_with("order ");
    (is_order ? outcome.orders : outcome.calls).push_back(is_order ? line.substr(6) : line);
  }
  return outcome;
}

void expect_orders(const Outcome& outcome, const std::vector<std::pair<Route, std::string>>& all_wanted) {
  ASSERT_EQ(outcome.orders.size(), all_wanted.size());
  for (size_t i = 0; i < all_wanted.size(); ++i) {
    const auto& [route, payload] = all_wanted[i];
    const uint32_t header[] = {route.module, route.length, 0, route.command};
    std::string record(reinterpret_cast<const char*>(header), sizeof header);
    record += bytes_of(payload);
    record.resize(record.find_last_not_of('\0') + 1);
    EXPECT_EQ(outcome.orders[i], std::to_string(route.length) + " " + to_hex(record));
  }
}

void expect_end(const Outcome& outcome, int status, const std::string& out, const std::string& err) {
  EXPECT_EQ(outcome.out, out);
  EXPECT_EQ(outcome.err, err);
  EXPECT_EQ(outcome.status, status);
}

void expect_unsent(const Outcome& outcome, int status, const std::string& out, const std::string& err) {
  EXPECT_TRUE(outcome.orders.empty());
  expect_end(outcome, status, out, err);
}

void shows(const std::string& words, const Route& route, const std::string& payload,
           const std::string& answer, const std::string& out) {
  SCOPED_TRACE(words);
  const Outcome outcome = vek(words, {.answer = answer});
  expect_order(outcome, route, payload);
  expect_end(outcome, 0, out);
}

void expect_lines(const std::string& words, const std::string& answer, size_t lines) {
  SCOPED_TRACE(words + " " + answer);
  const Outcome outcome = vek(words, {.answer = answer, .header = "4:u32 -1"});
  expect_end(outcome, 0, outcome.out);
  EXPECT_EQ(static_cast<size_t>(std::ranges::count(outcome.out, '\n')), lines);
}

void rejects(const std::string& usage, std::initializer_list<std::string> all_words,
             const std::string& before) {
  for (const std::string& text : all_words) {
    SCOPED_TRACE(text);
    const std::vector<std::string> words = split(text);
    expect_unsent(vek(text), 1, before + "go to help\n",
                  " " + vek_path() + " " + words[0] + " " + words[1] + " " + usage + "\n");
  }
}
