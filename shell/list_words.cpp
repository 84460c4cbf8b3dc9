// Lists the words of the tool, as JSON or as the C++ of shell/words.h. It is made of the families themselves,
// with other functions in place of those that look words up in the families' tables and run what they find
// there: these walk the tables. The platform library is the one that only logs its calls.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "main/command_table.h"
#include "order/order.h"
#include "order/words.h"
#include "platform/order.h"
#include "script.h"
#include "shell/words.h"

namespace {

using Kind = CommandWords::Kind;
constexpr const char* kKindNames[] = {"command", "reserved", "group", "request", "own"};

struct Words {
  std::string words;
  std::string usage;
  Kind kind;
  bool has_answer = false;
  uint32_t module = 0;
  uint32_t command = 0;
  int32_t buf_size = 0;
  int32_t min_words = 0;
};

std::vector<Words> all;
std::vector<std::string> path;        // to the table that is walked
const CommandEntry* entry = nullptr;  // the command

std::string joined() {
  std::string words;
  for (const std::string& word : path) words += (words.empty() ? "" : " ") + word;
  return words;
}

void walk(std::span<const SubCommand> table);

// Words with a way of their own are run without any behind them: what they look up or send then is theirs.
void walk_handled(const SubCommand& row) {
  all.push_back({joined(), "", Kind::kOwnWay});
  const size_t before = all.size();
  std::string tool = "vek";
  std::string unknown = "?";
  std::vector<char*> argv = {tool.data()};
  for (std::string& word : path) argv.push_back(word.data());
  argv.push_back(unknown.data());
  row.by_kind.handle(Args(static_cast<int>(argv.size()), argv.data()), entry);
  if (all.size() > before) all[before - 1].kind = Kind::kGroup;
}

void walk_row(const SubCommand& row) {
  path.emplace_back(row.word);
  const char* const usage = row.usage == nullptr ? "" : row.usage;
  switch (row.kind) {
    case SubCommand::kGroup:
      all.push_back({joined(), usage, Kind::kGroup});
      walk({row.by_kind.rows, row.row_count});
      break;
    case SubCommand::kHandled:
      walk_handled(row);
      break;
    default:
      all.push_back({joined(), usage, Kind::kRequest, row.print != nullptr, row.module, row.command,
                     row.buf_size, row.min_words});
  }
  path.pop_back();
}

void walk(std::span<const SubCommand> table) {
  for (const SubCommand& row : table) walk_row(row);
}

// An order that goes out at once is that of the words that were walked last.
void note_order(uint32_t module, uint32_t command, uint32_t size) {
  Words& words = all.back();
  words.module = module;
  words.command = command;
  words.buf_size = static_cast<int32_t>(size);
}

void take_own(const char* command, const char* second, const char* third, const char* fourth,
              const char* usage, int min_words) {
  if (path.front() != command) return;
  path.clear();
  for (const char* word : {command, second, third, fourth}) {
    if (word != nullptr) path.emplace_back(word);
  }
  all.push_back({joined(), usage == nullptr ? "" : usage, Kind::kOwnWay});
  all.back().min_words = min_words;
  path.resize(1);
}

void walk_command(const CommandEntry& row) {
  entry = &row;
  path = {row.name};
  const bool is_reserved = row.handler == cmd_usage_only || row.handler == nullptr;
  all.push_back({row.name, row.usage, is_reserved ? Kind::kReserved : Kind::kOwnWay});
  if (is_reserved) return;
  const size_t before = all.size();
  std::string tool = "vek";
  std::string name = row.name;
  char* argv[] = {tool.data(), name.data(), nullptr};
  row.handler(2, argv, &row);
  for (const auto each : {each_routing_words, each_rtl_words, each_rzglapi_words}) each(take_own);
  if (all.size() > before) all[before - 1].kind = Kind::kCommand;
}

void print_json() {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const Words& words : all) {
    list.push_back({{"words", words.words},
                    {"usage", words.usage},
                    {"kind", kKindNames[words.kind]},
                    {"has_answer", words.has_answer},
                    {"module", words.module},
                    {"command", words.command},
                    {"buf_size", words.buf_size},
                    {"min_words", words.min_words}});
  }
  puts(list.dump(1).c_str());
}

void print_cpp() {
  puts("// Made by list_words from the families' tables.\n#include \"shell/words.h\"\n");
  puts("static const CommandWords kWords[] = {");
  for (const Words& words : all) {
    printf("    {%s, %s, static_cast<CommandWords::Kind>(%d), %s, %u, %u, %d, %d},\n",
           nlohmann::json(words.words).dump().c_str(), nlohmann::json(words.usage).dump().c_str(), words.kind,
           words.has_answer ? "true" : "false", words.module, words.command, words.buf_size, words.min_words);
  }
  puts("};\nconst std::span<const CommandWords> kCommandWords = kWords;");
}

}  // namespace

// ---- In place of order/order.cpp ----

const SubCommand* find_sub_command(std::span<const SubCommand> table, const Args&, int) {
  walk(table);
  return nullptr;
}

int run_sub_command(SubCommands tables, const Args&, const CommandEntry*, int) {
  for (const auto& table : tables) walk(table);
  return kStatusRejected;
}

int run_request(const SubCommand& row, const Args&) {
  note_order(row.module, row.command, static_cast<uint32_t>(row.buf_size));
  all.back().kind = Kind::kRequest;
  all.back().has_answer = row.print != nullptr;
  all.back().min_words = row.min_words;
  return kStatusRejected;
}

int order_run(int, char**, uint32_t module, uint32_t command, int32_t buf_size, int32_t, const char*, ParseFn,
              PrintFn) {
  note_order(module, command, static_cast<uint32_t>(buf_size));
  return kStatusRejected;
}

int print_usage(const CommandEntry*) { return kStatusRejected; }
void print_order_usage(const Args&, const char*) {}
int report_kernel_error(uint32_t) { return kStatusKernelError; }

// ---- In place of args/shell.cpp ----

void run_shell(const char*) {}

// ---- In place of the platform ----

const char* const tvlret_err_str[52] = {};

int tesvel_order_opt_fun(void* record, uint32_t length) {
  OrderRecord header;
  memcpy(&header, record, sizeof header);
  note_order(header.module, header.command, length - uint32_t{sizeof header});
  return -1;
}

void log_call(std::initializer_list<LoggedWord>) {}
long next_answer(const char*, void*, size_t) { return -1; }

int main(int argc, char** argv) try {
  // What the commands say of missing words is of no interest here.
  FILE* const out = fdopen(dup(STDOUT_FILENO), "w");
  if (out == nullptr || freopen("/dev/null", "w", stdout) == nullptr ||
      freopen("/dev/null", "w", stderr) == nullptr) {
    return 1;
  }
  for (const CommandEntry* row = kCommandTable; row->name != nullptr; ++row) walk_command(*row);
  fflush(stdout);
  if (dup2(fileno(out), STDOUT_FILENO) < 0) return 1;
  if (argc > 1 && strcmp(argv[1], "--cpp") == 0) {
    print_cpp();
  } else {
    print_json();
  }
  return fflush(stdout) == 0 ? 0 : 1;
} catch (const std::exception&) {
  return 1;
}
