// Texts of enumerations as tables.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

template <typename Enumeration>
struct CTextRow {
  Enumeration value;
  std::string_view text;
};

// The value's text, or the fallback where the table has none.
template <typename Enumeration, std::size_t Rows>
std::string TextOf(const std::array<CTextRow<Enumeration>, Rows>& table, Enumeration value,
                   std::string_view fallback) {
  const auto row = std::ranges::find(table, value, &CTextRow<Enumeration>::value);
  return std::string(row == table.end() ? fallback : row->text);
}
