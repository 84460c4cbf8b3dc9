// nvram: the parameter store for scripts. Done whole or not at all; status 1 says that it was not.
#include <sys/stat.h>

#include <cstdio>
#include <exception>
#include <iterator>
#include <stdexcept>

#include "linux/file.h"
#include "state/parameters.h"

namespace {

constexpr size_t kMostOfBackup = 1 << 20;

void require_key(const std::string& key) {
  if (!is_parameter_key(key)) throw std::runtime_error("a key is neither empty nor has '=' in it");
}

void get(const char* key) {
  const std::optional<std::string> value = get_parameter(key);
  if (!value) throw std::runtime_error(std::string(key) + " is not set");
  puts(value->c_str());
}

void set(const char* word) {
  const std::string assignment = word;
  const size_t middle = assignment.find('=');
  if (middle == assignment.npos) throw std::runtime_error("KEY=VALUE is wanted");
  const std::string key = assignment.substr(0, middle);
  require_key(key);
  set_parameter(key, word + middle + 1);
}

void unset(const char* key) {
  require_key(key);
  set_parameter(key, nullptr);
}

void show(const char*) { fputs(text_of(all_parameters()).c_str(), stdout); }

void commit(const char*) { commit_parameters(); }

// The storage for it may be a new one, where its folder is missing.
void backup(const char* path) {
  const std::string file = path;
  const size_t slash = file.find_last_of('/');
  if (slash != file.npos) mkdir(file.substr(0, slash).c_str(), 0700);
  replace_file(path, text_of(all_parameters()));
}

void restore(const char* path) { replace_parameters(parse_parameters(read_file(path, kMostOfBackup), path)); }

struct Action {
  std::string_view word;
  int arguments;
  void (*run)(const char* argument);
};
constexpr Action kActions[] = {{"get", 1, get},        {"set", 1, set},       {"unset", 1, unset},
                               {"show", 0, show},      {"commit", 0, commit}, {"backup", 1, backup},
                               {"restore", 1, restore}};

}  // namespace

int main(int argc, char** argv) {
  for (const Action& action : kActions) {
    if (argc != 2 + action.arguments || action.word != argv[1]) continue;
    try {
      action.run(argv[argc - 1]);
      if (fflush(stdout) == 0 && ferror(stdout) == 0) return 0;
      perror("nvram");
    } catch (const std::exception& error) {
      fprintf(stderr, "nvram: %s\n", error.what());
    }
    return 1;
  }
  fputs(
      "nvram get KEY\nnvram set KEY=VALUE\nnvram unset KEY\nnvram show\nnvram commit\n"
      "nvram backup FILE\nnvram restore FILE (commit makes it last)\n",
      stderr);
  return 1;
}
