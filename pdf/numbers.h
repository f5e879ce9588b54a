#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trellion::pdf {

/// The number at hand, counted in units of the last of `digits` decimals and rounded to nearest,
/// halves away from zero. Nothing when the text is no number as PDF writes them, or it is beyond
/// max_coordinate.
std::optional<std::int64_t> scaled_number(std::string_view text, int digits);

/// Whether a number has digits, not 0, behind so many decimals. The text must be a number as PDF
/// writes them.
bool is_finer(std::string_view number, int digits);

/// Writes such a number with as few characters as it takes: 1.5, -.25, 3.
void append_number(std::int64_t value, int digits, std::string& text);

/// Writes a number of a file with as few characters as it takes, to the last digit it has: equal
/// numbers give equal texts. The text must be a number as PDF writes them.
void append_shortest(std::string_view number, std::string& text);

/// The same as a floating-point number. The text must be a number as PDF writes them.
double to_double(std::string_view number);

inline constexpr int most_digits = 9;

/// The decimals that a coordinate needs so that rounding moves it by far less than `precision`
/// points on the page, a tenth of it at most, when a unit is at most `scale` points there. 0 to
/// most_digits, and nothing when these are not enough.
std::optional<int> digits_for(double precision, double scale);

}  // namespace trellion::pdf
