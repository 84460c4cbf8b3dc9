// Stand-ins for programs of the router: vek and whatever it runs find them in front of all others.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "api/guard.h"

namespace {

// They lie in a folder beside the library, or elsewhere where it is installed.
std::string programs_folder() {
  Dl_info library = {};
  if (dladdr(reinterpret_cast<void*>(programs_folder), &library) == 0) return {};
  char* const path = realpath(library.dli_fname, nullptr);
  if (path == nullptr) return {};
  std::string folder = path;
  free(path);
  folder.resize(folder.find_last_of('/') + 1);
  for (const char* place : {"programs", VEK_INSTALLED_PROGRAMS}) {
    if (access((folder + place).c_str(), X_OK) == 0) return folder + place;
  }
  return {};
}

// At once when the library is loaded: vek runs shell lines of its own.
[[gnu::constructor]] void put_programs_in_front() {
  const auto put = [] {
    const std::string folder = programs_folder();
    const char* const path = getenv("PATH");
    const std::string before = path == nullptr ? "/usr/sbin:/usr/bin:/sbin:/bin" : path;
    const bool is_there = (before + ":").starts_with(folder + ":");
    return folder.empty() || is_there ? 0 : setenv("PATH", (folder + ":" + before).c_str(), 1);
  };
  guarded(put, -1);
}

}  // namespace
