#include "coordinates.h"

#include <algorithm>
#include <array>

#include "string_utils.h"

namespace trellion {
namespace {

constexpr std::size_t max_coord_length = 8;

/// A number cut to the length of a coordinate text, its sign and point taken apart.
struct decimal {
  bool negative = false;
  std::int64_t digits = 0;
  std::size_t n_digits = 0;
  std::size_t decimals = 0;
};

decimal decimal_at(const char* text, const char* end) {
  decimal result;
  const char* c = text;
  end = text + std::min<std::ptrdiff_t>(end - text, max_coord_length);
  result.negative = *c == '-';
  if (result.negative) ++c;
  bool point_seen = false;
  for (; c < end; ++c) {
    if (is_digit(*c)) {
      result.digits = 10 * result.digits + (*c - '0');
      ++result.n_digits;
      result.decimals += point_seen ? 1 : 0;
    } else if (*c == '.' && !point_seen) {
      point_seen = true;
    } else {
      break;
    }
  }
  return result;
}

/// The thousandths of most numbers, from the eight bytes of their text at once; not_common for
/// those of more than three decimals, without a digit, or too large.
constexpr std::int64_t not_common = INT64_MAX;

std::int64_t common_thousandths(std::uint64_t word) {
  const bool negative = (word & 0xff) == '-';
  word >>= negative ? 8 : 0;
  const number_form form = number_form_of(word);
  const unsigned n_digits = form.length - (form.has_point ? 1 : 0);
  const unsigned decimals = n_digits - form.before_point;
  if (n_digits == 0 || decimals > 3) return not_common;

  // The digits without the point, the last one in the highest byte, zeros before the first.
  const std::uint64_t before = (std::uint64_t{1} << (8 * form.before_point % 64)) - 1;
  std::uint64_t digits = form.has_point ? (word & before) | (word >> 8 & ~before) : word;
  digits = (digits & 0x0f0f0f0f0f0f0f0f) << (8 * (8 - n_digits));
  // Neighbours are joined to numbers of two digits, those to four, those to eight.
  digits = digits * 10 + (digits >> 8);
  digits = ((digits & 0x000000ff000000ff) * 0x000f424000000064 +
            (digits >> 16 & 0x000000ff000000ff) * 0x0000271000000001) >>
           32;
  static constexpr std::array<std::int64_t, 4> unit = {1000, 100, 10, 1};
  const std::int64_t value = static_cast<std::int64_t>(digits) * unit[decimals];
  if (value > INT32_MAX) return not_common;
  return negative ? -value : value;
}

}  // namespace

std::string_view coord_text(const char* text, const char* end) {
  const std::size_t length = std::min(max_coord_length, static_cast<std::size_t>(end - text));
  return {text, static_cast<std::size_t>(skip_number(text, text + length) - text)};
}

coordinate coordinate_at(const char* text, const char* end) {
  if (words_are_text && end - text >= 8) {
    const std::int64_t common = common_thousandths(load_word(text));
    if (common != not_common) return {static_cast<std::int32_t>(common)};
  }
  const decimal number = decimal_at(text, end);
  if (number.n_digits == 0) return {0, coordinate_fault::no_value};
  // The value is digits over a power of ten, both exact, so the quotient is the correctly rounded
  // double. With up to three decimals the thousandths are whole, and rounding gives just them.
  static constexpr std::array<double, 8> power_of_ten = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7};
  const double value = static_cast<double>(number.digits) / power_of_ten[number.decimals];
  // The half is added to the double, whatever that does to its last bit.
  const auto rounded =
      static_cast<std::int64_t>(value * 1000.0 + 0.5);  // NOLINT(bugprone-incorrect-roundings)
  const std::int64_t result = number.negative ? -rounded : rounded;
  if (result < INT32_MIN || result > INT32_MAX) return {0, coordinate_fault::too_large};
  return {static_cast<std::int32_t>(result)};
}

std::size_t plain_vertex_length(const char* text, const char* end) {
  constexpr std::ptrdiff_t looked_at = 24;
  if (!words_are_text || end - text < looked_at) return 0;
  const auto length_at = [](const char* number) {
    const std::uint64_t word = load_word(number);
    const unsigned sign = (word & 0xff) == '-' ? 1 : 0;
    return sign + number_form_of(word >> (8 * sign)).length;
  };
  const unsigned x = length_at(text);
  if (text[x] != ' ') return 0;
  const unsigned y = length_at(text + x + 1);
  return y == 0 ? 0 : x + 1 + y;
}

const char* second_number(const char* first, const char* end) {
  const char* at = skip_number(first, end);
  while (class_of(*at) == byte_class::blank || class_of(*at) == byte_class::line_end) ++at;
  return at;
}

}  // namespace trellion
