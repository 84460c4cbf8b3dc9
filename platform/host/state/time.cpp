// Time: reading the clocks, and moments as tables keep them.
#include "state/time.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "state/store.h"

namespace {

// A moment is the seconds since the boot, and above them a number for the boot: as much of its id as fits.
constexpr int kSecondsBits = 32;
constexpr int64_t kSecondsMask = (int64_t{1} << kSecondsBits) - 1;
constexpr int64_t kBootMask = INT32_MAX;

int64_t present_moment() {
  const auto boot = static_cast<int64_t>(strtoull(boot_id().c_str(), nullptr, 16));  // up to its first '-'
  return (boot & kBootMask) << kSecondsBits | (milliseconds_since_boot() / 1000 & kSecondsMask);
}

int64_t age(int64_t moment, int64_t present) {
  const bool is_of_this_boot = moment >> kSecondsBits == present >> kSecondsBits;
  return is_of_this_boot ? std::max<int64_t>(present - moment, 0) : present & kSecondsMask;
}

// What the functions keep for a database, which is open for one transaction.
struct Present {
  int64_t moment = 0;
  bool is_known = false;
};

int64_t present_of(sqlite3_context* context) {
  auto* present = static_cast<Present*>(sqlite3_user_data(context));
  if (!present->is_known) *present = {present_moment(), true};
  return present->moment;
}

// No exception may go through SQLite.
template <typename Result>
void answer(sqlite3_context* context, Result result) {
  try {
    sqlite3_result_int64(context, result());
  } catch (const std::exception& error) {
    sqlite3_result_error(context, error.what(), -1);
  }
}

void sql_present(sqlite3_context* context, int /*count*/, sqlite3_value** /*arguments*/) {
  answer(context, [&] { return present_of(context); });
}

void sql_age(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
  if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) return;
  answer(context, [&] { return age(sqlite3_value_int64(arguments[0]), present_of(context)); });
}

void delete_present(void* present) { delete static_cast<Present*>(present); }

}  // namespace

std::string boot_id() {
  constexpr const char* kFile = "/proc/sys/kernel/random/boot_id";
  char id[64];
  const int file = open(kFile, O_RDONLY | O_CLOEXEC);
  const ssize_t length = file < 0 ? -1 : read(file, id, sizeof id);
  const int error = errno;
  if (file >= 0) close(file);
  if (length <= 0) throw StoreError(std::string(kFile) + ": " + (length < 0 ? strerror(error) : "is empty"));
  return {id, static_cast<size_t>(length)};
}

int64_t milliseconds_since_boot() {
  struct timespec now = {};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

uint64_t calendar_seconds() { return static_cast<uint64_t>(time(nullptr)); }

void add_time_functions(sqlite3* database) {
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_INNOCUOUS;  // innocuous: may stand in defaults and views too
  auto* present = new Present;
  // The database owns what both functions share, by way of the one that is told how to delete it.
  if (sqlite3_create_function_v2(database, "present", 0, kFlags, present, sql_present, nullptr, nullptr,
                                 delete_present) != SQLITE_OK ||
      sqlite3_create_function_v2(database, "age", 1, kFlags, present, sql_age, nullptr, nullptr, nullptr) !=
          SQLITE_OK) {
    throw StoreError(sqlite3_errmsg(database));
  }
}
