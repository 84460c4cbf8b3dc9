// The state store: what the host library remembers, in SQLite files of the state folder.
#pragma once

#include <arpa/inet.h>
#include <sqlite3.h>

#include <concepts>
#include <cstdint>
#include <cstring>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "state/columns.h"

// The store cannot be used: the text says which file and why.
class StoreError : public std::exception {
 public:
  explicit StoreError(std::string text) : text_(std::move(text)) {}
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::string text_;
};

// The text in a record's field, which ends at its NUL or with the field.
template <size_t kSize>
std::string_view text(const char (&field)[kSize]) {
  return {field, strnlen(field, kSize)};
}

template <size_t kSize>
void copy_text(char (&field)[kSize], std::string_view value) {
  const size_t length = value.copy(field, kSize - 1);
  memset(field + length, 0, kSize - length);
}

// The folder that the store's files are in, made where it is missing. Throws when it is not ours alone.
std::string require_state_folder();

// A query under way. Fields of records take part as what they mean: an Ip4, a HostIp4 or a Port as its
// number, so that it sorts and compares, other addresses and uint8_t[N] as bytes, bits as their word.
class Statement {
 public:
  Statement(sqlite3* database, std::string_view sql);
  // Gives each '?' its value. Records stand for all their columns (state/columns.h): a ":name" takes the
  // field of that name.
  template <typename... Values>
  Statement(sqlite3* database, std::string_view sql, const Values&... values) : Statement(database, sql) {
    int index = 0;
    (bind_value(index, values), ...);
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // Steps to the next row; false at the end.
  bool next();

  // The row's columns in their order: numbers, texts (char[N], std::string), bytes (vector) and fields.
  template <typename... Fields>
  void read(Fields&... fields) const {
    int column = 0;
    (get(column++, fields), ...);
  }

  // Each of the row's columns into the field of its name, which one of the records must have.
  template <typename... Records>
  void read_fields(Records&... records) const {
    for (int column = 0; column < sqlite3_column_count(statement_); ++column) {
      const std::string_view name = sqlite3_column_name(statement_, column);
      if (!(read_field(column, name, records) || ...)) fail_without_field(name);
    }
  }

 private:
  template <typename Value>
  void bind_value(int& index, const Value& value) {
    if constexpr (Described<Value>) {
      each_column(value, [this](const std::string& name, const auto& field) {
        const int place = sqlite3_bind_parameter_index(statement_, (":" + name).c_str());
        if (place != 0) bind(place, field);
      });
    } else {
      bind(++index, value);
    }
  }

  template <typename Record>
  bool read_field(int column, std::string_view name, Record& record) const {
    bool is_found = false;
    each_column(record, [&](const std::string& its_name, auto& field) {
      if (its_name != name) return;
      get(column, field);
      is_found = true;
    });
    return is_found;
  }
  [[noreturn]] static void fail_without_field(std::string_view name);

  template <typename Number>
  requires std::is_integral_v<Number> || std::is_enum_v<Number>
  void bind(int index, Number value) {
    check(sqlite3_bind_int64(statement_, index, static_cast<int64_t>(value)));
  }
  void bind(int index, std::string_view value);
  template <size_t kSize>
  void bind(int index, const char (&field)[kSize]) {
    bind(index, text(field));
  }
  template <size_t kSize>
  void bind(int index, const uint8_t (&field)[kSize]) {
    check(sqlite3_bind_blob(statement_, index, field, kSize, SQLITE_TRANSIENT));
  }
  void bind(int index, const Ip4& ip) { bind(index, ntohl(ip.value)); }
  void bind(int index, const HostIp4& ip) { bind(index, ip.value); }
  void bind(int index, const Port& port) { bind(index, ntohs(port.value)); }
  void bind(int index, const Mac& mac) { bind(index, mac.bytes); }
  void bind(int index, const Ip6& ip) { bind(index, ip.bytes); }
  void bind(int index, const IpAddress& ip) {
    check(sqlite3_bind_blob(statement_, index, &ip, sizeof ip, SQLITE_TRANSIENT));
  }
  template <typename Word, int kCount>
  void bind(int index, const Bits<Word, kCount>& bits) {
    bind(index, bits.value);
  }
  template <typename Number>
  void bind(int index, const Unaligned<Number>& number) {
    bind(index, number.value());
  }
  void bind(int index, const std::vector<uint8_t>& bytes) {
    const void* first =
        bytes.empty() ? "" : static_cast<const void*>(bytes.data());  // null would be SQL's NULL
    check(sqlite3_bind_blob64(statement_, index, first, bytes.size(), SQLITE_TRANSIENT));
  }

  template <std::integral Number>
  void get(int column, Number& value) const {
    value = get_number<Number>(column);
  }
  template <typename Number>
  Number get_number(int column) const {
    return static_cast<Number>(sqlite3_column_int64(statement_, column));
  }
  void get(int column, std::string& value) const { value = column_text(column); }
  template <size_t kSize>
  void get(int column, char (&field)[kSize]) const {
    copy_text(field, column_text(column));
  }
  template <size_t kSize>
  void get(int column, uint8_t (&field)[kSize]) const {
    get_bytes(column, field, kSize);
  }
  void get(int column, Ip4& ip) const { ip.value = htonl(get_number<uint32_t>(column)); }
  void get(int column, HostIp4& ip) const { get(column, ip.value); }
  void get(int column, Port& port) const { port.value = htons(get_number<uint16_t>(column)); }
  void get(int column, Mac& mac) const { get(column, mac.bytes); }
  void get(int column, Ip6& ip) const { get(column, ip.bytes); }
  void get(int column, IpAddress& ip) const { get_bytes(column, &ip, sizeof ip); }
  template <typename Word, int kCount>
  void get(int column, Bits<Word, kCount>& bits) const {
    get(column, bits.value);
  }
  template <typename Number>
  void get(int column, Unaligned<Number>& number) const {
    number = get_number<Number>(column);
  }
  void get(int column, std::vector<uint8_t>& bytes) const {
    const auto* stored = static_cast<const uint8_t*>(sqlite3_column_blob(statement_, column));
    bytes.assign(stored, stored + sqlite3_column_bytes(statement_, column));
  }
  std::string_view column_text(int column) const;
  void get_bytes(int column, void* field, size_t size) const;  // zeros behind those that are stored

  void check(int code) const;

  sqlite3_stmt* statement_ = nullptr;
};

// What one part of the system keeps in a file: the steps that bring its tables from nothing to their present
// shape. A step that has been shipped never changes; a table changes by one more step.
struct Schema {
  uint32_t part;
  std::span<const char* const> steps;
};

enum Access { kReads, kWrites };

// One transaction on a file of the store. What is not committed when the object goes was never done.
class Store {
 public:
  // Opens the file, makes it or brings its tables up to date where necessary, and begins. Transactions that
  // write wait for each other here, and nowhere else.
  Store(const char* name, std::span<const Schema> schemas, Access access);
  ~Store() { sqlite3_close(database_); }
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  // Ends the transaction. When this returns, what was written outlives a power failure.
  void commit() { run("COMMIT"); }
  // Begins the next one, for what is not to be waited for within a transaction.
  void begin();

  // Where the store's files are, and those of the programs that serve from it.
  std::string folder() const;

  // Statements with a value for each of their '?', for reading and for changing (returns the rows changed).
  template <typename... Values>
  Statement query(const char* sql, const Values&... values) {
    return Statement(database_, sql, values...);
  }
  template <typename... Values>
  int execute(const char* sql, const Values&... values) {
    query(sql, values...).next();
    return sqlite3_changes(database_);
  }
  // Adds a row with the columns of the records, or where one stands under the same key gives it these columns
  // anew: what else stands in the row stays.
  template <typename... Records>
  void put(const std::string& table, const Records&... records) {
    std::string names;
    std::string values;
    std::string updates;
    const auto add = [&](const std::string& name, const auto&) {
      const char* const separator = names.empty() ? "" : ", ";
      names += separator + name;
      values += separator + (":" + name);
      updates += separator + name + " = excluded." + name;
    };
    (each_column(records, add), ...);
    execute(("INSERT INTO " + table + " (" + names + ") VALUES (" + values + ") ON CONFLICT DO UPDATE SET " +
             updates)
                .c_str(),
            records...);
  }

  // The number in the first column of the first row; 0 when there is none.
  template <typename... Values>
  int64_t number(const char* sql, const Values&... values) {
    Statement statement = query(sql, values...);
    int64_t value = 0;
    if (statement.next()) statement.read(value);
    return value;
  }

 private:
  void open(const std::string& file, int flags = 0);
  void make(const std::string& file, std::span<const Schema> schemas);
  void run(const char* sql);
  bool is_current(int64_t version);
  void upgrade(std::span<const Schema> schemas, int64_t version);
  [[noreturn]] void fail(const char* why) const;

  sqlite3* database_ = nullptr;
};
