// What modules keep one of: single numbers, that is switches, limits, levels, and records of settings.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "state/store.h"

extern const Schema kSettingsSchema;

uint32_t get_setting(Store& store, uint32_t module, const char* name, uint32_t if_never_set = 0);
void set_setting(Store& store, uint32_t module, const char* name, uint32_t value);

// The record of a module's command that sets it as a whole. One that was never set reads as all zero.
template <typename Record>
Record get_record(Store& store, uint32_t module, uint32_t command) {
  uint8_t bytes[sizeof(Record)] = {};
  Statement row =
      store.query("SELECT record FROM setting_record WHERE module = ? AND command = ?", module, command);
  if (row.next()) row.read(bytes);
  return std::bit_cast<Record>(bytes);
}
template <typename Record>
void set_record(Store& store, uint32_t module, uint32_t command, const Record& record) {
  uint8_t bytes[sizeof(Record)];
  memcpy(bytes, &record, sizeof bytes);
  store.execute("INSERT OR REPLACE INTO setting_record VALUES (?, ?, ?)", module, command, bytes);
}
