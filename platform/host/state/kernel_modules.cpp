// Which loadable kernel modules there are, and which of them needs another.
#include "state/kernel_modules.h"

#include <elf.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "linux/file.h"
#include "state/store.h"

namespace {

constexpr const char* kSteps[] = {R"(
CREATE TABLE kernel_module (
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL UNIQUE,
  size INTEGER NOT NULL,
  needs TEXT NOT NULL
);
INSERT INTO kernel_module (name, size, needs) VALUES ('vek_pg2', 65536, ''), ('vek_sj', 65536, 'vek_pg2'))"};
constexpr Schema kSchemas[] = {{0, kSteps}};
constexpr const char* kFile = "kernel_modules.db";

constexpr std::string_view kFilter = "vek_pg2";
constexpr std::string_view kAudit = "vek_sj";
constexpr uint32_t kAuditSize = 65536;

constexpr size_t kMaxSize = 64 << 20;
constexpr size_t kMaxName = 55;  // Linux's limit
constexpr int64_t kMaxModules = 64;

// The name of the module in a file of that path, as Linux writes it.
std::string name_of(const std::string& path) {
  std::string name = path.substr(path.find_last_of('/') + 1);
  if (name.ends_with(".ko")) name.resize(name.size() - 3);
  std::ranges::replace(name, '-', '_');
  const bool is_name = !name.empty() && name.size() <= kMaxName && std::ranges::all_of(name, [](char c) {
    return c == '_' || (static_cast<uint8_t>(c) < 0x80 && isalnum(c) != 0);
  });
  if (!is_name) throw std::runtime_error(path + ": not the name of a kernel module");
  return name;
}

// The type stands at the same place in objects of both sizes.
bool is_relocatable_object(const std::string& file) {
  if (file.size() < sizeof(Elf32_Ehdr) || !file.starts_with(ELFMAG)) return false;
  const size_t low = file[EI_DATA] == ELFDATA2MSB ? 1 : 0;
  const auto* const type = reinterpret_cast<const uint8_t*>(file.data()) + offsetof(Elf32_Ehdr, e_type);
  return type[low] == ET_REL && type[1 - low] == 0;
}

bool is_loaded(Store& store, std::string_view name) {
  return store.number("SELECT count(*) FROM kernel_module WHERE name = ?", name) != 0;
}

}  // namespace

void load_kernel_module(const std::string& path) {
  const std::string name = name_of(path);
  const std::string file = read_file(path, kMaxSize);
  if (!is_relocatable_object(file)) throw std::runtime_error(path + ": no kernel module");
  Store store(kFile, kSchemas, kWrites);
  if (is_loaded(store, name)) throw std::runtime_error(name + " is loaded already");
  if (store.number("SELECT count(*) FROM kernel_module") >= kMaxModules) {
    throw std::runtime_error("too many kernel modules");
  }
  store.execute("INSERT INTO kernel_module (name, size, needs) VALUES (?, ?, '')", name, file.size());
  store.commit();
}

void unload_kernel_module(const std::string& name_or_file) {
  const std::string name = name_of(name_or_file);
  Store store(kFile, kSchemas, kWrites);
  if (store.number("SELECT count(*) FROM kernel_module WHERE needs = ?", name) != 0) {
    throw std::runtime_error(name + " is in use");
  }
  if (store.execute("DELETE FROM kernel_module WHERE name = ?", name) == 0) {
    throw std::runtime_error(name + " is not loaded");
  }
  store.commit();
}

void attach_audit_module() {
  Store store(kFile, kSchemas, kWrites);
  if (!is_loaded(store, kFilter)) throw std::runtime_error("no audit without the filter module");
  store.execute("INSERT OR IGNORE INTO kernel_module (name, size, needs) VALUES (?, ?, ?)", kAudit,
                kAuditSize, kFilter);
  store.commit();
}

void detach_audit_module() {
  Store store(kFile, kSchemas, kWrites);
  store.execute("DELETE FROM kernel_module WHERE name = ?", kAudit);
  store.commit();
}

std::string kernel_module_list() {
  Store store(kFile, kSchemas, kReads);
  Statement row = store.query(
      "SELECT printf('%s %d %d %s Live 0x0000000000000000', name, size,"
      "    (SELECT count(*) FROM kernel_module WHERE needs = module.name),"
      "    coalesce((SELECT group_concat(name || ',', '') FROM kernel_module WHERE needs = module.name), "
      "'-'))"
      "  FROM kernel_module AS module ORDER BY id DESC");
  std::string list;
  for (std::string line; row.next();) {
    row.read(line);
    list += line + "\n";
  }
  return list;
}
