#include "pdf/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "pdf/mesh.h"

namespace trellion::pdf {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

std::string_view without_trailing_zeros(std::string_view decimals) {
  return decimals.substr(0, decimals.find_last_not_of('0') + 1);
}

}  // namespace

std::optional<std::int64_t> scaled_number(std::string_view text, int digits) {
  const char* at = text.data();
  const char* const end = at + text.size();
  const bool is_negative = at != end && *at == '-';
  if (at != end && (*at == '-' || *at == '+')) ++at;
  const char* const first = at;
  // Larger numbers are out of range, and one more digit must not overflow.
  constexpr std::uint64_t limit = std::uint64_t{1} << 59;
  std::uint64_t value = 0;
  while (at != end && is_digit(*at)) {
    if (value > limit) return std::nullopt;
    value = value * 10 + static_cast<std::uint64_t>(*at++ - '0');
  }
  std::ptrdiff_t n_digits = at - first;
  int missing = digits;
  if (at != end && *at == '.') {
    ++at;
    const char* const decimals = at;
    while (at != end && missing > 0 && is_digit(*at)) {
      if (value > limit) return std::nullopt;
      value = value * 10 + static_cast<std::uint64_t>(*at++ - '0');
      --missing;
    }
    if (at != end && is_digit(*at)) {
      if (*at >= '5') ++value;
      while (at != end && is_digit(*at)) ++at;
    }
    n_digits += at - decimals;
  }
  if (at != end || n_digits == 0) return std::nullopt;
  for (; missing > 0; --missing) {
    if (value > limit) return std::nullopt;
    value *= 10;
  }
  if (value > static_cast<std::uint64_t>(max_coordinate)) return std::nullopt;
  const auto magnitude = static_cast<std::int64_t>(value);
  return is_negative ? -magnitude : magnitude;
}

bool is_finer(std::string_view number, int digits) {
  const std::size_t kept = std::min(number.find('.'), number.size() - 1) + 1;
  const std::string_view decimals = without_trailing_zeros(number.substr(kept));
  return decimals.size() > static_cast<std::size_t>(digits);
}

void append_number(std::int64_t value, int digits, std::string& text) {
  if (value == 0) {
    text += '0';
    return;
  }
  std::array<char, 24> buffer{};
  char* const end = buffer.data() + buffer.size();
  char* at = end;
  auto rest = static_cast<std::uint64_t>(value < 0 ? -value : value);
  for (int decimal = 0; decimal < digits; ++decimal) {
    const auto digit = static_cast<char>(rest % 10);
    rest /= 10;
    if (at != end || digit != 0) *--at = static_cast<char>('0' + digit);
  }
  if (at != end) *--at = '.';
  for (; rest != 0; rest /= 10) *--at = static_cast<char>('0' + rest % 10);
  if (value < 0) *--at = '-';
  text.append(at, end);
}

void append_shortest(std::string_view number, std::string& text) {
  const bool is_negative = number.front() == '-';
  if (is_negative || number.front() == '+') number.remove_prefix(1);
  const std::size_t point = std::min(number.find('.'), number.size());
  const std::string_view whole =
      number.substr(0, point).substr(std::min(number.find_first_not_of('0'), point));
  const std::string_view decimals =
      point < number.size() ? without_trailing_zeros(number.substr(point + 1)) : std::string_view();
  if (whole.empty() && decimals.empty()) {
    text += '0';
    return;
  }
  if (is_negative) text += '-';
  text += whole;
  if (!decimals.empty()) (text += '.') += decimals;
}

double to_double(std::string_view number) {
  if (number.starts_with('+')) number.remove_prefix(1);
  double value = 0;
  std::from_chars(number.data(), number.data() + number.size(), value);
  return value;
}

std::optional<int> digits_for(double precision, double scale) {
  // What is rounded moves by half a unit at most: with a fifth, by a tenth of the precision. Half
  // of it moved edges across the raster of 1/256 of a pixel that Ghostscript draws on.
  const double enough = precision / 5;
  double unit = scale;
  for (int digits = 0; digits <= most_digits; ++digits) {
    if (unit <= enough) return digits;
    unit /= 10;
  }
  return std::nullopt;
}

}  // namespace trellion::pdf
