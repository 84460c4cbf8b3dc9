// Drives the shipped vek as a process, with the scripted platform library behind it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "support/process.h"

// Words stand as split reads them. So do payloads, as they must be sent or as a kernel module answers them:
// a place and the values from there on, all else zero, as in
//   0:text eth0 16:u16 250 24:ip 1.2.3.4 5.6.7.8 32:hex a0ff 34:u8 -1
// where "+8" moves the places behind it by 8. What comes later is put over what came earlier.
std::string bytes_of(const std::string& payload);

// The payload of a list: the number of its entries at 4, the entries of that size from 8 on.
std::string list_of(size_t size, const std::vector<std::string>& entries);

// What stands around a run of vek.
struct Given {
  std::string answer = {};  // the gateway's, over the record's payload
  uint32_t result = 0;      // in the record's header
  int returned = 0;         // by the gateway
  std::string header = {};  // over the record's header
  std::string script = {};  // further lines of the script
  std::string shell = {};   // a shell command that runs "$@" in its own way
  // What answers the second order and those behind it, each once and the last for good.
  std::vector<Given> then = {};
};

// Where an order goes.
struct Route {
  uint32_t module;
  uint32_t command;
  uint32_t length = 1040;  // of the record
};

struct Outcome : RunResult {
  std::vector<std::string> orders;  // the record's length, and its bytes up to the last that is not zero
  std::vector<std::string> calls;   // of the other platform functions
};

Outcome vek(const std::string& words, const Given& given = {});

// A line of the script: what the next call of a platform function returns and fills in.
std::string answer(const std::string& function, long returned, const std::string& payload = "");

// The run sent orders with these payloads and nothing else, wrote this and left with this status.
void expect_orders(const Outcome& outcome, const std::vector<std::pair<Route, std::string>>& all_wanted);
inline void expect_order(const Outcome& outcome, const Route& route, const std::string& payload) {
  expect_orders(outcome, {{route, payload}});
}
void expect_end(const Outcome& outcome, int status, const std::string& out, const std::string& err = "");
// It sent none.
void expect_unsent(const Outcome& outcome, int status, const std::string& out, const std::string& err = "");

// A sub-command's whole way, with what the gateway answers and what is then on standard output.
void shows(const std::string& words, const Route& route, const std::string& payload,
           const std::string& answer, const std::string& out);
inline void sends(const std::string& words, const Route& route, const std::string& payload) {
  shows(words, route, payload, "", "ok\n");
}

// How many lines are shown of an answer when the kernel has written over the header's length.
void expect_lines(const std::string& words, const std::string& answer, size_t lines);

// What the runner writes when the words are no good; nothing is sent.
void rejects(const std::string& usage, std::initializer_list<std::string> all_words,
             const std::string& before = "");

// The path of vek as it shows in reports.
std::string vek_path();
