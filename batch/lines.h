#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace trellion::batch {

// What workers are told and say: numbers as text, and lines of a name and a value.

/// Reads a number that is all of the text; false when there is none.
template <class Number>
bool read_number(std::string_view text, Number& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc{} && end == text.data() + text.size();
}

/// Takes "NAME VALUE\n" off the text and returns the value; nothing when it does not begin so.
inline std::optional<std::string_view> take_value(std::string_view& text, std::string_view name) {
  const std::size_t end = text.find('\n');
  std::string_view line = text.substr(0, end);
  if (end == std::string_view::npos || !line.starts_with(name)) return std::nullopt;
  line.remove_prefix(name.size());
  if (!line.starts_with(' ')) return std::nullopt;
  text.remove_prefix(end + 1);
  return line.substr(1);
}

}  // namespace trellion::batch
