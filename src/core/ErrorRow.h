// A table of error numbers and their texts.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace quillon {

struct ErrorRow {
  std::int32_t number;
  std::string_view text;
};

// The text of a number, or the empty text.
inline std::string FindErrorText(std::span<const ErrorRow> rows, std::int32_t number) {
  for (const auto& row : rows) {
    if (row.number == number) return std::string(row.text);
  }
  return {};
}

}  // namespace quillon
