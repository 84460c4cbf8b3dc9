// Asking DNS servers by way of a library of its own, which brings c-ares along: most orders need neither.
#include "linux/resolver.h"

#include <dlfcn.h>

#include <stdexcept>

ResolveResult resolve_name(const std::vector<std::string>& servers, const std::string& name, uint32_t tries,
                           Resolved& resolved) {
  void* const library = dlopen("libvek_resolver.so", RTLD_NOW | RTLD_LOCAL);
  void* const function = library == nullptr ? nullptr : dlsym(library, "vek_resolve_name");
  if (function == nullptr) throw std::runtime_error(std::string("no DNS: ") + dlerror());
  std::string list;
  for (const std::string& server : servers) list += (list.empty() ? "" : ",") + server;
  const auto resolve = reinterpret_cast<ResolveName*>(function);
  return static_cast<ResolveResult>(resolve(list.c_str(), name.c_str(), tries, &resolved));
}
