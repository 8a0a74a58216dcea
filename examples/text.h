// Texts with numbers and columns, as the readers of the example programs need
// them.
#pragma once

#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>

/// The text without the blanks at its ends.
inline std::string_view Trim(std::string_view text) {
  constexpr std::string_view blanks = " \t";
  const auto first = text.find_first_not_of(blanks);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// The columns `first` to `last` of a line, counted from 1 and trimmed. The line
/// may be shorter.
inline std::string_view Columns(std::string_view line, std::size_t first, std::size_t last) {
  return first <= line.size() ? Trim(line.substr(first - 1, last - first + 1)) : std::string_view();
}

/// Sets `value` to the number that the whole of `text` is; false if it is none.
template <class T>
bool ParseNumber(std::string_view text, T& value) {
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc() && result.ptr == end;
}
