// The parameter store. It has a file of its own, so that an order can set a parameter without waiting for its
// own transaction to end.
#include "state/parameters.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "state/flash.h"
#include "state/store.h"
#include "state/time.h"

namespace {

// What older versions kept as committed goes to the flash with the first change.
constexpr const char* kSteps[] = {R"(
CREATE TABLE parameter (key TEXT PRIMARY KEY, live TEXT, committed TEXT) WITHOUT ROWID;
CREATE TABLE boot (id TEXT NOT NULL);
INSERT INTO boot VALUES (''))",
                                  R"(
CREATE TABLE running (key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
INSERT INTO running SELECT key, live FROM parameter WHERE live IS NOT NULL;
CREATE TABLE committed (key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
INSERT INTO committed SELECT key, committed FROM parameter WHERE committed IS NOT NULL;
DROP TABLE parameter)"};
constexpr Schema kSchemas[] = {{0, kSteps}};
constexpr const char* kFile = "nvram.db";

constexpr std::string_view kEnd = "# parameters: ";

Parameters read_table(Store& store, const char* sql) {
  Parameters parameters;
  Statement row = store.query(sql);
  for (std::string key, value; row.next();) {
    row.read(key, value);
    parameters[key] = value;
  }
  return parameters;
}

Parameters committed_parameters(Store& store) {
  Parameters older = read_table(store, "SELECT key, value FROM committed");
  if (!older.empty()) return older;
  const std::string text = read_partition(kConfigPartition);
  return text.empty() ? Parameters() : parse_parameters(text, "the flash partition Config");
}

bool is_of_this_boot(Store& store) {
  return store.number("SELECT count(*) FROM boot WHERE id = ?", boot_id()) != 0;
}

Parameters running_parameters(Store& store) {
  return is_of_this_boot(store) ? read_table(store, "SELECT key, value FROM running")
                                : committed_parameters(store);
}

void put_running(Store& store, const Parameters& parameters) {
  store.execute("DELETE FROM running");
  for (const auto& [key, value] : parameters) store.execute("INSERT INTO running VALUES (?, ?)", key, value);
}

void write_committed(Store& store, const Parameters& parameters) {
  write_partition(kConfigPartition, 0, text_of(parameters));
  store.execute("DELETE FROM committed");
}

// What was not committed before the machine last started is gone. Nothing may be written before this.
void begin_boot(Store& store) {
  const Parameters older = read_table(store, "SELECT key, value FROM committed");
  if (!older.empty()) write_committed(store, older);
  if (is_of_this_boot(store)) return;
  put_running(store, committed_parameters(store));
  store.execute("UPDATE boot SET id = ?", boot_id());
}

// The running values of a router have no more room than the flash has for them.
void refuse_if_full(Store& store) {
  const int64_t size =
      store.number("SELECT sum(length(CAST(key AS BLOB)) + length(CAST(value AS BLOB)) + 2) FROM running");
  if (size > partition_size(kConfigPartition)) throw StoreError("no room for more parameters");
}

// A line shows a parameter: what would end or hide it is written as its number.
void append_escaped(std::string& text, std::string_view value) {
  constexpr const char* kDigits = "0123456789abcdef";
  for (const char c : value) {
    const auto byte = static_cast<uint8_t>(c);
    if (byte >= ' ' && byte != 0x7f && c != '\\') {
      text += c;
    } else {
      text += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
}

// False where it is not as it was written.
bool read_escaped(std::string_view text, std::string& value) {
  for (size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      value += text[at];
      continue;
    }
    uint8_t byte = 0;
    const std::string_view digits = text.substr(at).substr(0, 4);
    const char* const end = digits.data() + digits.size();
    if (!digits.starts_with("\\x") || digits.size() != 4 ||
        std::from_chars(digits.data() + 2, end, byte, 16).ptr != end || byte == 0) {
      return false;
    }
    value += static_cast<char>(byte);
    at += digits.size() - 1;
  }
  return true;
}

}  // namespace

bool is_parameter_key(std::string_view key) { return !key.empty() && key.find('=') == key.npos; }

std::optional<std::string> get_parameter(std::string_view key) {
  Store store(kFile, kSchemas, kReads);
  if (is_of_this_boot(store)) {
    Statement row = store.query("SELECT value FROM running WHERE key = ?", key);
    std::string value;
    if (!row.next()) return {};
    row.read(value);
    return value;
  }
  const Parameters committed = committed_parameters(store);
  const auto found = committed.find(std::string(key));
  return found == committed.end() ? std::nullopt : std::optional(found->second);
}

Parameters all_parameters() {
  Store store(kFile, kSchemas, kReads);
  return running_parameters(store);
}

void set_parameter(std::string_view key, const char* value) {
  Store store(kFile, kSchemas, kWrites);
  begin_boot(store);
  if (value == nullptr) {
    store.execute("DELETE FROM running WHERE key = ?", key);
  } else {
    store.execute("INSERT OR REPLACE INTO running VALUES (?, ?)", key, std::string_view(value));
    refuse_if_full(store);
  }
  store.commit();
}

void replace_parameters(const Parameters& parameters) {
  Store store(kFile, kSchemas, kWrites);
  begin_boot(store);
  put_running(store, parameters);
  refuse_if_full(store);
  store.commit();
}

void commit_parameters() {
  Store store(kFile, kSchemas, kWrites);
  begin_boot(store);
  write_committed(store, running_parameters(store));
  store.commit();
}

void restart_parameters() {
  Store store(kFile, kSchemas, kWrites);
  begin_boot(store);
  put_running(store, committed_parameters(store));
  store.commit();
}

std::string text_of(const Parameters& parameters) {
  std::string text;
  for (const auto& [key, value] : parameters) {
    append_escaped(text, key);
    text += '=';
    append_escaped(text, value);
    text += '\n';
  }
  return text.append(kEnd).append(std::to_string(parameters.size())) + "\n";
}

Parameters parse_parameters(std::string_view text, const std::string& place) {
  Parameters parameters;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    if (end != text.npos && text.empty() && line == std::string(kEnd) + std::to_string(parameters.size())) {
      return parameters;
    }
    const size_t middle = line.find('=');
    std::string key;
    std::string value;
    if (middle == line.npos || !read_escaped(line.substr(0, middle), key) || !is_parameter_key(key) ||
        !read_escaped(line.substr(middle + 1), value)) {
      break;
    }
    parameters[key] = value;
  }
  throw StoreError(place + " holds no whole set of parameters");
}
