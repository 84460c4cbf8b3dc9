// The columns of a record in a table: its fields by their names. An array's are numbered from 1, those of a
// record within a record stand among its own; unused bytes have none.
#pragma once

#include <string>
#include <type_traits>

#include "records/field.h"

// A column beside those of the records: what only the store knows of them.
template <typename Value>
struct Column {
  const char* name;
  Value value;

  static constexpr void each_field(auto& r, auto&& field) { field(r.name, r.value); }
};
template <typename Value>
Column(const char*, Value) -> Column<Value>;

namespace columns_detail {

// Texts and bytes are one value, whatever their length.
template <typename Field>
constexpr bool is_array_of_fields =
    std::is_array_v<Field> && !std::is_same_v<std::remove_cv_t<std::remove_extent_t<Field>>, char> &&
    !std::is_same_v<std::remove_cv_t<std::remove_extent_t<Field>>, uint8_t>;

template <typename Field>
void visit_column(const std::string& name, Field& field, auto& visit) {
  if constexpr (Described<std::remove_cv_t<Field>>) {
    each_column(field, visit);
  } else if constexpr (is_array_of_fields<Field>) {
    int number = 0;
    for (auto& element : field) visit_column(name + "_" + std::to_string(++number), element, visit);
  } else {
    visit(name, field);
  }
}

}  // namespace columns_detail

// Calls visit(name, field) for each column.
template <typename Record>
void each_column(Record& record, auto&& visit) {
  std::remove_cv_t<Record>::each_field(record, [&](const char* name, auto& field) {
    if constexpr (!is_unused<std::remove_cvref_t<decltype(field)>>) {
      columns_detail::visit_column(name, field, visit);
    }
  });
}
