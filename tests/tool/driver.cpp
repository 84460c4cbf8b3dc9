// Writes the scripts and reads the logs of the scripted platform library.
#include "tool/driver.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

constexpr size_t kHeaderSize = 16;

std::string to_hex(const std::string& bytes) {
  std::string hex;
  for (const char byte : bytes) {
    for (const int shift : {4, 0}) hex += "0123456789abcdef"[(static_cast<uint8_t>(byte) >> shift) & 15];
  }
  return hex;
}

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
  if (kind == "ip") {  // network byte order
    if (inet_pton(AF_INET, text.c_str(), bytes.data()) == 1) return bytes.substr(0, 4);
  } else if (kind == "u8" || kind == "u16" || kind == "u32" || kind == "u64") {
    const uint64_t number = std::stoull(text, nullptr, 0);
    memcpy(bytes.data(), &number, 8);
    return bytes.substr(0, std::stoul(kind.substr(1)) / 8);
  }
  throw std::invalid_argument(kind + " " + text);
}

void write_answer(std::ofstream& script, const Given& given) {
  script << "order\nreturn " << given.returned << "\nresult " << given.result << "\n";
  if (!given.header.empty()) script << "put 0 " << to_hex(bytes_of(given.header)) << "\n";
  if (!given.answer.empty()) script << "put " << kHeaderSize << " " << to_hex(bytes_of(given.answer)) << "\n";
}

Order read_order(const std::string& line) {
  const std::vector<std::string> fields = split(line);
  Order order;
  order.route.length = static_cast<uint32_t>(std::stoul(fields[1]));
  std::string record = from_hex(fields.at(2));
  if (record.size() < kHeaderSize) record.resize(kHeaderSize);
  memcpy(&order.route.module, record.data(), 4);
  memcpy(&order.header_length, record.data() + 4, 4);
  memcpy(&order.result, record.data() + 8, 4);
  memcpy(&order.route.command, record.data() + 12, 4);
  order.payload = record.substr(kHeaderSize);
  return order;
}

std::string setting(const char* name, const char* otherwise) {
  const char* value = getenv(name);
  return value == nullptr ? otherwise : value;
}

}  // namespace

std::string bytes_of(const std::string& payload) {
  constexpr const char* kKinds[] = {"text", "hex", "ip", "u8", "u16", "u32", "u64"};
  std::string bytes;
  std::string kind;
  size_t base = 0;
  size_t place = 0;
  for (const std::string& word : split(payload)) {
    const std::string behind = word.substr(word.find(':') + 1);
    if (word[0] == '+') {
      base = std::stoul(word);
    } else if (std::ranges::find(kKinds, behind) != std::end(kKinds)) {
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
  return "answer " + function + " " + std::to_string(returned) + " " + to_hex(bytes_of(payload)) + "\n";
}

std::string vek_path() { return setting("VEK_TEST_BINARY", VEK_BINARY); }

size_t lines_of(const std::string& text) { return static_cast<size_t>(std::ranges::count(text, '\n')); }

Outcome vek(const std::string& words, const Given& given) {
  const TempFolder folder;
  std::ofstream script(folder.file("script"));
  write_answer(script, given);
  for (const Given& next : given.then) write_answer(script, next);
  script << given.script << std::flush;
  std::vector<std::string> env = {"VEK_SCRIPT=" + folder.file("script"), "VEK_LOG=" + folder.file("log")};
  // The static programs have the scripted library inside.
  if (getenv("VEK_TEST_BINARY") == nullptr) env.push_back("LD_PRELOAD=" VEK_SCRIPTED_LIBRARY);
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
    if (line.starts_with("order ")) {
      outcome.orders.push_back(read_order(line));
    } else {
      outcome.calls.push_back(line);
    }
  }
  return outcome;
}

void expect_order(const Outcome& outcome, const Route& route, const std::string& payload) {
  ASSERT_EQ(outcome.orders.size(), 1u);
  const Order& order = outcome.orders[0];
  EXPECT_EQ(order.route.module, route.module);
  EXPECT_EQ(order.route.command, route.command);
  EXPECT_EQ(order.route.length, route.length);
  EXPECT_EQ(order.header_length, route.length);
  EXPECT_EQ(order.result, 0u);
  std::string wanted = bytes_of(payload);
  wanted.resize(wanted.find_last_not_of('\0') + 1);
  EXPECT_EQ(to_hex(order.payload), to_hex(wanted));
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

void rejects(const std::string& usage, std::initializer_list<std::string> all_words,
             const std::string& before) {
  for (const std::string& text : all_words) {
    SCOPED_TRACE(text);
    const std::vector<std::string> words = split(text);
    expect_unsent(vek(text), 1, before + "go to help\n",
                  " " + vek_path() + " " + words[0] + " " + words[1] + " " + usage + "\n");
  }
}
