#include "coordinates.h"

#include <algorithm>
#include <array>
#include <bit>

#include "string_utils.h"

namespace trellion {
namespace {

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

/// The coordinate of any number, from one digit after the other.
coordinate coordinate_by_digits(const char* text, const char* end) {
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

}  // namespace

std::string_view coord_text(const char* text, const char* end) {
  const std::size_t length = std::min(max_coord_length, static_cast<std::size_t>(end - text));
  return {text, static_cast<std::size_t>(skip_number(text, text + length) - text)};
}

coordinate coordinate_at(const char* text, const char* end) {
  const char* const digits_at = *text == '-' ? text + 1 : text;
  if (!words_are_text || end - digits_at < std::ptrdiff_t{common_bytes}) {
    return coordinate_by_digits(text, end);
  }
  const number_form form = number_form_of(load_word(digits_at));
  const auto sign = static_cast<unsigned>(digits_at - text);
  return coordinate_of({text, sign + form.length, sign + form.before_point}, end);
}

/// Some programs write many decimals. The fourth of them tells how to round, unless it is a 5: then
/// the last bit of the double decides that the number stands for.
coordinate uncommon_coordinate(number_text number, const char* end) {
  const bool negative = *number.begin == '-';
  const unsigned sign = negative ? 1 : 0;
  const char* const text = number.begin + sign;
  const unsigned length = std::min<unsigned>(number.length, max_coord_length) - sign;
  const unsigned before_point = std::min(number.before_point - sign, length);
  const unsigned fourth = before_point + 4;
  const bool has_fourth = fourth < length;
  const unsigned common_length = has_fourth ? fourth : length;
  if (!is_common(common_length, before_point) || end - text < std::ptrdiff_t{common_bytes} ||
      (has_fourth && text[fourth] == '5')) {
    return coordinate_by_digits(number.begin, end);
  }
  const bool rounds_up = has_fourth && text[fourth] > '5';
  const std::int32_t thousandths =
      common_thousandths(text, common_length, before_point) + (rounds_up ? 1 : 0);
  return {negative ? -thousandths : thousandths};
}

std::size_t plain_vertex_length(const char* text, const char* end) {
  constexpr std::ptrdiff_t looked_at = 24;
  if (!words_are_text || end - text < looked_at) return 0;
  // That there are numbers is known. Their bytes, "-" to "9", differ from a blank in some of the
  // five lower bits alone; what can end them is a blank, or differs in others. Behind the first end
  // there can be anything. Without an end among eight bytes the length is 8.
  const auto length_at = [](const char* number) {
    constexpr std::uint64_t each = 0x0101010101010101;
    const std::uint64_t word = load_word(number) ^ each * ' ';
    const std::uint64_t ends = (~(word + each * 0x7f) | word << 1 | word << 2) & each * 0x80;
    return static_cast<unsigned>(std::countr_zero(ends)) / 8;
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
