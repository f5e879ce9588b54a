#pragma once

#include <string_view>

namespace trellion {

/// True for an optional leading "-" followed by digits with at most one "." among them. "." and
/// "-." count as numbers: they are told apart only where a value is needed. "+1" and "1e5" do not.
bool string_is_num(std::string_view text);

/// The text without the blanks at its end; only the blank counts, a tab is an ordinary character.
std::string_view trim_trailing_blanks(std::string_view text);

/// Compares as if blanks were appended to the shorter text.
bool equal_blank_padded(std::string_view a, std::string_view b);

}  // namespace trellion
