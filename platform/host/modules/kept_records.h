// Tables that keep what they hold as the records that it came in.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "modules/checks.h"

// The record of a request with the lists that follow it, which must hold what their counts say.
template <typename Record>
std::vector<uint8_t> whole_record(const Record& record, const Order& order) {
  std::vector<uint8_t> bytes = order.request_bytes(order.room());
  std::span<const uint8_t> rest(bytes.data() + sizeof record, bytes.size() - sizeof record);
  check_lists(record, rest);
  bytes.resize(bytes.size() - rest.size());
  return bytes;
}

// The fixed part of a record that is kept.
template <typename Record>
Record fixed_part(const std::vector<uint8_t>& bytes) {
  Record record;
  memcpy(&record, bytes.data(), sizeof record);
  return record;
}

// Answers with the records of the rows.
inline void list_records(Statement row, Order& order) {
  RecordList answer(order);
  for (std::vector<uint8_t> record; row.next();) {
    row.read(record);
    answer.add_bytes(record.data(), static_cast<uint32_t>(record.size()));
  }
}
