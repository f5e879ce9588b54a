#pragma once

#include <string>
#include <string_view>

namespace trellion::batch {

/// The text with "?" for every byte that would steer a terminal, and for what is no UTF-8.
std::string printable(std::string_view text);

/// The text as a field of tab-separated values, from which all of it can be had back: tabs, line
/// feeds and backslashes are written as \t, \n and \\, other bytes that printable replaces as \x
/// and two digits.
std::string escaped(std::string_view text);

/// Tells the user on standard error what is the matter, as far as it can be shown.
void complain(std::string_view what);

/// How many columns a text in UTF-8 takes, wide and combining characters aside.
std::size_t width_of(std::string_view text);

/// The beginning of such a text that takes at most so many.
std::string_view first_columns(std::string_view text, std::size_t columns);

}  // namespace trellion::batch
