// Writes the scripts and reads the logs of the scripted platform library.
#include "tool/driver.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

constexpr size_t kHeaderSize = 16;

std::string to_hex(std::string_view bytes) {
  std::string hex;
  for (const char byte : bytes) {
    for (const int shift : {4, 0}) hex += "0123456789abcdef"[(static_cast<uint8_t>(byte) >> shift) & 15];
  }
  return hex;
}

std::string from_hex(std::string digits) {
  std::erase(digits, ' ');
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

void write_script(const std::string& path, const std::vector<Reply>& replies, const std::string& rest) {
  std::ofstream script(path);
  for (const Reply& reply : replies) {
    script << "call\nreturn " << reply.returned << "\nresult " << reply.result << "\n";
    if (!reply.header.str().empty()) script << "put 0 " << to_hex(reply.header.str()) << "\n";
    if (!reply.payload.str().empty())
      script << "put " << kHeaderSize << " " << to_hex(reply.payload.str()) << "\n";
  }
  script << rest;
}

Order read_order(const std::string& line) {
  std::istringstream fields(line);
  std::string word;
  std::string hex;
  Order order;
  fields >> word >> order.length >> hex;
  std::string record = from_hex(hex);
  if (record.size() < kHeaderSize) record.resize(kHeaderSize);
  memcpy(&order.module, record.data(), 4);
  memcpy(&order.header_length, record.data() + 4, 4);
  memcpy(&order.result, record.data() + 8, 4);
  memcpy(&order.command, record.data() + 12, 4);
  order.payload = record.substr(kHeaderSize);
  return order;
}

std::string setting(const char* name, const char* otherwise) {
  const char* value = getenv(name);
  return value == nullptr ? otherwise : value;
}

}  // namespace

void Bytes::put(size_t offset, std::string_view bytes) {
  if (bytes_.size() < offset + bytes.size()) bytes_.resize(offset + bytes.size());
  bytes_.replace(offset, bytes.size(), bytes);
}

Bytes& Bytes::text(size_t offset, std::string_view value) {
  put(offset, value);
  return *this;
}

Bytes& Bytes::hex(size_t offset, std::string_view digits) {
  put(offset, from_hex(std::string(digits)));
  return *this;
}

Bytes& Bytes::number(size_t offset, uint64_t value, size_t width) {
  char bytes[8];
  for (size_t i = 0; i < width; ++i) bytes[i] = static_cast<char>(value >> (8 * i));
  put(offset, {bytes, width});
  return *this;
}

Bytes& Bytes::ip(size_t offset, std::string_view dotted) {
  in_addr address{};
  if (inet_pton(AF_INET, std::string(dotted).c_str(), &address) != 1)
    ADD_FAILURE() << "no address: " << dotted;
  put(offset, {reinterpret_cast<const char*>(&address), sizeof address});
  return *this;
}

Bytes& Bytes::at(size_t offset, const Bytes& other) {
  put(offset, other.str());
  return *this;
}

std::vector<std::string> split(const std::string& words) {
  std::istringstream stream(words);
  return {std::istream_iterator<std::string>(stream), {}};
}

std::string answer(const std::string& function, long returned, const Bytes& bytes) {
  return "answer " + function + " " + std::to_string(returned) + " " + to_hex(bytes.str()) + "\n";
}

std::string vek_path() { return setting("VEK_TEST_BINARY", VEK_BINARY); }

Outcome vek(const std::vector<std::string>& words, const std::vector<Reply>& replies,
            const Surroundings& surroundings) {
  const TempFolder folder;
  write_script(folder.file("script"), replies, surroundings.script);
  std::vector<std::string> env = {"VEK_SCRIPT=" + folder.file("script"), "VEK_LOG=" + folder.file("log")};
  std::vector<std::string> argv;
  if (!surroundings.shell.empty()) argv = {"/bin/sh", "-c", surroundings.shell, "sh"};
  const std::string runner = setting("VEK_TEST_RUNNER", "");
  if (!runner.empty()) argv.push_back(runner);
  argv.push_back(vek_path());
  // The static programs have the scripted library inside.
  if (getenv("VEK_TEST_BINARY") == nullptr) env.push_back("LD_PRELOAD=" VEK_SCRIPTED_LIBRARY);
  argv.insert(argv.end(), words.begin(), words.end());

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

void expect_order(const Outcome& outcome, uint32_t module, uint32_t command, uint32_t length,
                  const Bytes& payload) {
  ASSERT_EQ(outcome.orders.size(), 1u);
  const Order& order = outcome.orders[0];
  EXPECT_EQ(order.module, module);
  EXPECT_EQ(order.command, command);
  EXPECT_EQ(order.length, length);
  EXPECT_EQ(order.header_length, length);
  EXPECT_EQ(order.result, 0u);
  std::string wanted = payload.str();
  wanted.resize(wanted.find_last_not_of('\0') + 1);
  EXPECT_EQ(to_hex(order.payload), to_hex(wanted));
}

void expect_end(const Outcome& outcome, int status, const std::string& out, const std::string& err) {
  EXPECT_EQ(outcome.out, out);
  EXPECT_EQ(outcome.err, err);
  EXPECT_EQ(outcome.status, status);
}

void expect_rejected(const std::vector<std::string>& words, const std::string& usage,
                     const std::string& before) {
  SCOPED_TRACE(testing::PrintToString(words));
  const Outcome outcome = vek(words);
  EXPECT_TRUE(outcome.orders.empty());
  expect_end(outcome, 1, before + "go to help\n",
             " " + vek_path() + " " + words[0] + " " + words[1] + " " + usage + "\n");
}

void expect_setting(const std::vector<std::string>& words, uint32_t module, uint32_t command, uint32_t length,
                    const Bytes& payload) {
  SCOPED_TRACE(testing::PrintToString(words));
  const Outcome outcome = vek(words);
  expect_order(outcome, module, command, length, payload);
  expect_end(outcome, 0, "ok\n");
}
