// The state store: where its files are, and how they are opened so that nothing that was answered gets lost.
#include "state/store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "linux/file.h"
#include "state/time.h"

namespace {

constexpr int64_t kApplicationId = 0x56454b31;  // marks the files as ours
constexpr int kMaxWaitMs = 60'000;  // a hundred writers on a disk that takes half a second for each

// Waits for another process's transaction to end. All who wait ask equally often, so that nobody is kept
// waiting by later comers, as with SQLite's own handler, whose pauses grow.
int wait_for_lock(void* /*context*/, int waits) {
  if (waits >= kMaxWaitMs) return 0;
  usleep(1000);
  return 1;
}

const char* environment(const char* name) {
  const char* value = getenv(name);
  return value == nullptr ? "" : value;
}

std::string state_folder() {
  std::string folder = environment("VEK_STATE");
  if (!folder.empty()) return folder;
  if (geteuid() == 0) return "/var/lib/vek";
  const std::string state_home = environment("XDG_STATE_HOME");
  if (state_home.starts_with('/')) return state_home + "/vek";
  const std::string home = environment("HOME");
  if (home.empty()) throw StoreError("no state folder: neither VEK_STATE nor HOME is set");
  return home + "/.local/state/vek";
}

[[noreturn]] void throw_folder_error(const std::string& folder, const char* why) {
  throw StoreError("state folder " + folder + ": " + why);
}

std::string parent_of(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  if (slash == path.npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// Makes the folder with its parents, for their owner only, whatever the umask.
void make_folder(const std::string& folder) {
  const std::string parent = parent_of(folder);
  int result = mkdir(folder.c_str(), 0700);
  if (result != 0 && errno == ENOENT && parent != folder) {
    make_folder(parent);
    result = mkdir(folder.c_str(), 0700);
  }
  if (result != 0 && errno == EEXIST) return;
  if (result != 0 || chmod(folder.c_str(), 0700) != 0) throw_folder_error(folder, strerror(errno));
}

// Passwords are kept in it: nobody else may put files there or take them away.
void require_folder(const std::string& folder) {
  struct stat found;
  if (stat(folder.c_str(), &found) != 0) {
    make_folder(folder);
    if (stat(folder.c_str(), &found) != 0) throw_folder_error(folder, strerror(errno));
  }
  if (!S_ISDIR(found.st_mode)) throw_folder_error(folder, strerror(ENOTDIR));
  if (found.st_uid != geteuid()) throw_folder_error(folder, "belongs to another user");
  if ((found.st_mode & (S_IWGRP | S_IWOTH)) != 0) throw_folder_error(folder, "others may write to it");
}

bool is_there(const std::string& file) { return access(file.c_str(), F_OK) == 0 || errno != ENOENT; }

// Nobody else may read the file, nor the journal, which SQLite gives the mode of the file. Neither is opened
// here: closing them would take away the locks that SQLite may have on them in this process.
void keep_for_owner(const std::string& file) {
  constexpr mode_t kOwnerOnly = 0600;
  struct stat found;
  if (stat(file.c_str(), &found) == 0 && (found.st_mode & 0777) == kOwnerOnly) return;
  const std::string journal = file + "-journal";
  if (chmod(file.c_str(), kOwnerOnly) != 0 || (chmod(journal.c_str(), kOwnerOnly) != 0 && errno != ENOENT)) {
    throw StoreError(file + ": " + strerror(errno));
  }
}

// Brings the names of the files, of their folder and of those above it to the disk. A folder that may not be
// opened was not made by us.
void sync_names(const std::string& file) {
  for (std::string path = file, folder = parent_of(path); folder != path; folder = parent_of(path)) {
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool is_synced = fd < 0 || fsync(fd) == 0 || errno != EIO;
    if (fd >= 0) close(fd);
    if (!is_synced) throw_folder_error(folder, strerror(EIO));
    path = folder;
  }
}

[[noreturn]] void throw_database_error(sqlite3* database) {
  const char* file = sqlite3_db_filename(database, "main");
  std::string message = std::string(file == nullptr ? "state store" : file) + ": " + sqlite3_errmsg(database);
  const int primary = sqlite3_errcode(database) & 0xff;
  const int system_error = sqlite3_system_errno(database);
  if ((primary == SQLITE_CANTOPEN || primary == SQLITE_IOERR) && system_error != 0) {
    message += std::string(" (") + strerror(system_error) + ")";
  }
  throw StoreError(message);
}

// A column reads as null when it holds nothing, and when there is no memory for what it holds.
void refuse_lack_of_memory(sqlite3_stmt* statement) {
  sqlite3* database = sqlite3_db_handle(statement);
  if (sqlite3_errcode(database) == SQLITE_NOMEM) throw_database_error(database);
}

int64_t total_steps(std::span<const Schema> schemas) {
  size_t total = 0;
  for (const Schema& schema : schemas) total += schema.steps.size();
  return static_cast<int64_t>(total);
}

}  // namespace

Statement::Statement(sqlite3* database, std::string_view sql) {
  if (sqlite3_prepare_v2(database, sql.data(), static_cast<int>(sql.size()), &statement_, nullptr) !=
      SQLITE_OK) {
    throw_database_error(database);
  }
}

bool Statement::next() {
  const int code = sqlite3_step(statement_);
  if (code != SQLITE_ROW && code != SQLITE_DONE) check(code);
  return code == SQLITE_ROW;
}

void Statement::bind(int index, std::string_view value) {
  const char* bytes = value.data() == nullptr ? "" : value.data();  // null would be SQL's NULL
  check(sqlite3_bind_text(statement_, index, bytes, static_cast<int>(value.size()), SQLITE_TRANSIENT));
}

std::string_view Statement::column_text(int column) const {
  const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  if (bytes == nullptr) {
    refuse_lack_of_memory(statement_);
    return {};
  }
  return {bytes, static_cast<size_t>(sqlite3_column_bytes(statement_, column))};
}

void Statement::get_bytes(int column, void* field, size_t size) const {
  const void* bytes = sqlite3_column_blob(statement_, column);
  if (bytes == nullptr) refuse_lack_of_memory(statement_);
  memset(field, 0, size);
  const auto stored = static_cast<size_t>(sqlite3_column_bytes(statement_, column));
  if (bytes != nullptr) memcpy(field, bytes, std::min(stored, size));
}

void Statement::fail_without_field(std::string_view name) {
  throw StoreError("no record has a field for the column " + std::string(name));
}

void Statement::check(int code) const {
  if (code != SQLITE_OK) throw_database_error(sqlite3_db_handle(statement_));
}

std::string require_state_folder() {
  std::string folder = state_folder();
  require_folder(folder);
  return folder;
}

Store::Store(const char* name, std::span<const Schema> schemas, Access access) {
  const std::string folder = require_state_folder();
  // In front of a path like this one, "file:" has no meaning to SQLite.
  const std::string file = (folder.starts_with('/') ? "" : "./") + folder + "/" + name;
  try {
    if (!is_there(file)) make(file, schemas);
    keep_for_owner(file);
    open(file);
    const int64_t version = total_steps(schemas);
    run("BEGIN");
    const bool is_ready = is_current(version);  // throws before anything could change a file that is not ours
    if (is_ready && access == kReads) return;
    run("ROLLBACK");

    // A rollback journal, not a write-ahead log: processes live for one order, so each would set up the log
    // and fold it back. Readers here write nothing at all. The journal is truncated and synced at each
    // commit, so that no power failure can bring it back and undo what was answered; hence FULL.
    run("PRAGMA journal_mode = TRUNCATE");
    run("PRAGMA synchronous = FULL");
    run("BEGIN IMMEDIATE");
    if (!is_current(version)) upgrade(schemas, version);  // another process may have been first
    if (access == kReads) {
      run("COMMIT");
      run("BEGIN");
    }
  } catch (...) {
    sqlite3_close(database_);
    throw;
  }
}

void Store::open(const std::string& file, int flags) {
  if (sqlite3_open_v2(file.c_str(), &database_, flags | SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX,
                      nullptr) != SQLITE_OK) {
    const int system_error = database_ == nullptr ? ENOMEM : sqlite3_system_errno(database_);
    throw StoreError(file + ": " + (system_error != 0 ? strerror(system_error) : "cannot be opened"));
  }
  sqlite3_busy_handler(database_, wait_for_lock, nullptr);
  sqlite3_db_config(database_, SQLITE_DBCONFIG_ENABLE_FKEY, 1, nullptr);
  add_time_functions(database_);
}

// The file gets its name when all of it is on the disk, so that one without tables is not a new one: it has
// lost them. What an attempt has left that was cut short goes with the next.
void Store::make(const std::string& file, std::span<const Schema> schemas) {
  const std::string folder = parent_of(file);
  const File lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!lock.is_open() || flock(lock.descriptor(), LOCK_EX) != 0) throw_folder_error(folder, strerror(errno));
  if (is_there(file)) return;  // another process was first
  const std::string new_file = file + ".new";
  unlink(new_file.c_str());
  open(new_file, SQLITE_OPEN_CREATE);
  keep_for_owner(new_file);
  run("PRAGMA journal_mode = OFF");
  run("PRAGMA synchronous = FULL");
  run("BEGIN IMMEDIATE");
  upgrade(schemas, total_steps(schemas));
  run("COMMIT");
  sqlite3_close(std::exchange(database_, nullptr));
  sync_names(new_file);
  unlink((file + "-journal").c_str());  // of a file that is gone
  if (rename(new_file.c_str(), file.c_str()) != 0 || (fsync(lock.descriptor()) != 0 && errno == EIO)) {
    throw StoreError(file + ": " + strerror(errno));
  }
}

void Store::begin() {
  add_time_functions(database_);  // the present is another one
  run("BEGIN IMMEDIATE");
}

std::string Store::folder() const {
  const std::string file = sqlite3_db_filename(database_, "main");
  return file.substr(0, file.find_last_of('/'));
}

void Store::run(const char* sql) {
  if (sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) throw_database_error(database_);
}

// Whether the tables are as they should be. Throws when the file is not ours.
bool Store::is_current(int64_t version) {
  const int64_t application = number("PRAGMA application_id");
  const int64_t found = number("PRAGMA user_version");
  if (application == 0 && number("SELECT count(*) FROM sqlite_schema") == 0) {
    fail("has lost all that it held; a new one is made when it is removed");
  }
  if (application != kApplicationId) fail("is not a state file of vek");
  if (found > version) fail("was written by a newer vek");
  return found == version;
}

void Store::upgrade(std::span<const Schema> schemas, int64_t version) {
  run("CREATE TABLE IF NOT EXISTS schema_part (part INTEGER PRIMARY KEY, steps INTEGER NOT NULL)");
  for (const Schema& schema : schemas) {
    const auto done =
        static_cast<size_t>(number("SELECT steps FROM schema_part WHERE part = ?", schema.part));
    if (done >= schema.steps.size()) continue;
    for (const char* step : schema.steps.subspan(done)) run(step);
    execute("INSERT OR REPLACE INTO schema_part VALUES (?, ?)", schema.part, schema.steps.size());
  }
  // Settings of the file take no '?'.
  run(("PRAGMA application_id = " + std::to_string(kApplicationId)).c_str());
  run(("PRAGMA user_version = " + std::to_string(version)).c_str());
}

void Store::fail(const char* why) const {
  throw StoreError(std::string(sqlite3_db_filename(database_, "main")) + ": " + why);
}
