#include "fields.h"

#include <charconv>
#include <string_view>

namespace trellion {
namespace {

std::string aligned(std::string_view digits, int width) {
  const auto columns = static_cast<std::size_t>(width);
  if (digits.size() > columns) return std::string(columns, '*');
  return std::string(columns - digits.size(), ' ').append(digits);
}

}  // namespace

std::string integer_field(std::int64_t value, int width) {
  return aligned(std::to_string(value), width);
}

std::string fixed_field(float value, int width, int decimals) {
  char digits[64];  // the largest float takes 39 digits before the point
  const auto end = std::to_chars(std::begin(digits), std::end(digits), value,
                                 std::chars_format::fixed, decimals);
  return aligned({digits, static_cast<std::size_t>(end.ptr - digits)}, width);
}

}  // namespace trellion
