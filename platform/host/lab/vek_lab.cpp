// vek-lab: puts hosts and whatever else only packets would tell in place, all at once or not at all.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <new>

#include "lab/audit_listen.h"
#include "lab/enter.h"
#include "lab/hosts.h"
#include "lab/made_hosts.h"
#include "lab/sections.h"
#include "modules/board.h"
#include "modules/dnsmasq.h"
#include "modules/host.h"
#include "modules/modules.h"
#include "state/parameters.h"

namespace {

using nlohmann::json;

// One that builds on another comes behind it.
// clang-format off
constexpr const Section* kSections[] = {
    &kHostsSection,
    &kThirdSection,
    &kCountersSection,
    &kLinesSection,
    &kAccountsSection,
    &kRulesSection,
    &kProfilesSection,
    &kTypesSection,
    &kPppoeSection,
    &kPppoeBridgeSection,
    &kPppFastSection,
    &kAuditSection,
    &kLeasesSection,
    &kDhcpSection,
    &kDnsCacheSection,
    &kSignalsSection,
    &kDelaysSection,
    &kSwitchPortsSection,
};
// clang-format on

void clear(Store& store) {
  for (const Section* section : kSections) section->clear(store);
}

// A scenario is an object: "about" is a text for its readers, every other member a section. They are loaded
// in the order of the table, whatever theirs in the file.
void load_sections(Store& store, const Node& scenario) {
  scenario.each_member([](const std::string& name, const Node& value) {
    if (name == "about") {
      value.text(1000);
    } else if (std::ranges::find(kSections, name, [](const Section* each) { return each->name; }) ==
               std::end(kSections)) {
      value.fail("unknown section");
    }
  });
  for (const Section* section : kSections) {
    scenario.each_member([&](const std::string& name, const Node& value) {
      if (name == section->name) section->load(store, value);
    });
  }
}

std::string read_file(const std::string& path) {
  try {
    std::ifstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(file)), {});
  } catch (const std::ios::failure&) {
    throw ScenarioError("cannot be read");
  }
}

json parse_file(const std::string& path) {
  try {
    return json::parse(read_file(path));
  } catch (const json::exception& error) {
    // The library's own number of the error stands in front.
    const std::string what = error.what();
    const size_t end = what.find("] ");
    throw ScenarioError(end == what.npos ? what : what.substr(end + 2));
  }
}

// Puts it in the place of whatever was there; nothing lasts until that is committed.
void read_scenario(const char* path, Store& store) {
  try {
    const json scenario = parse_file(path);
    clear(store);
    load_sections(store, Node(scenario, ""));
  } catch (const ScenarioError& error) {
    throw ScenarioError(std::string(path) + ": " + error.what());
  }
}

void load(const char* path) {
  Store store = open_state(kWrites);
  read_scenario(path, store);
  store.commit();
  follow_settings(store);
}

// Which sections there are, and which members the objects of the file may have.
void tell_members(const char* path) {
  std::vector<std::string> members;
  Node::set_members(&members);
  Store store = open_state(kWrites);
  read_scenario(path, store);
  for (const Section* section : kSections) printf("%s\n", section->name);
  for (const std::string& member : members) printf("%s\n", member.c_str());
}

void reset(const char*) {
  Store store = open_state(kWrites);
  clear(store);
  store.commit();
  follow_settings(store);
}

void show(const char*) {
  Store store = open_state(kReads);
  for (const Section* section : kSections) {
    printf("%s: %lld\n", section->name, static_cast<long long>(section->count(store)));
  }
  fputs(describe_board(store).c_str(), stdout);
}

void make_hosts(const char* word) {
  char* end = nullptr;
  const long count = strtol(word, &end, 10);
  if (end == word || *end != '\0' || count < 0 || count > kMaxHosts) {
    throw ScenarioError("the number of hosts is 0 to " + std::to_string(kMaxHosts));
  }
  Store store = open_state(kWrites);
  kHostsSection.clear(store);
  for (uint32_t i = 0; i < static_cast<uint32_t>(count); ++i) add_host(store, make_host(i));
  store.commit();
}

// What a start of the machine does to the state: what was not committed of the parameters is gone.
void reboot(const char*) {
  restart_parameters();
  Store store = open_state(kWrites);
  restart_board(store);
  store.commit();
}

struct Action {
  std::string_view word;
  int arguments;
  void (*run)(const char* argument);
};

constexpr Action kActions[] = {{"load", 1, load},
                               {"members", 1, tell_members},
                               {"reset", 0, reset},
                               {"show", 0, show},
                               {"reboot", 0, reboot},
                               {"hosts", 1, make_hosts},
                               {"audit-listen", 0, audit_listen}};

// Nothing ends here but what needs memory where it cannot be refused: throwing, and letting go of JSON.
[[noreturn]] void end() {
  fputs("vek-lab: out of memory\n", stderr);
  _exit(1);
}

}  // namespace

int main(int argc, char** argv) {
  std::set_terminate(end);
  if (argc > 1 && std::string_view(argv[1]) == "enter") {
    try {
      return enter({argv + 2, argv + argc});
    } catch (const std::exception& error) {
      fprintf(stderr, "vek-lab: %s\n", error.what());
    }
    return 1;
  }
  for (const Action& action : kActions) {
    if (argc != 2 + action.arguments || action.word != argv[1]) continue;
    try {
      action.run(argv[argc - 1]);
      if (fflush(stdout) == 0 && ferror(stdout) == 0) return 0;
      fprintf(stderr, "vek-lab: cannot write: %s\n", strerror(errno));
    } catch (const std::bad_alloc&) {
      fputs("vek-lab: out of memory\n", stderr);
    } catch (const std::exception& error) {
      fprintf(stderr, "vek-lab: %s\n", error.what());
    }
    return 1;
  }
  fputs(
      "vek-lab load FILE\nvek-lab members FILE\nvek-lab reset\nvek-lab show\nvek-lab reboot\nvek-lab hosts "
      "N\nvek-lab "
      "audit-listen\n"
      "vek-lab enter [--routing] [COMMAND...]\n",
      stderr);
  return 1;
}
