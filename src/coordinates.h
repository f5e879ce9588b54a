#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "string_utils.h"

namespace trellion {

/// What can be wrong with a number that should be a coordinate.
enum class coordinate_fault : std::uint8_t { none, no_value, too_large };

struct coordinate {
  std::int32_t thousandths = 0;
  coordinate_fault fault = coordinate_fault::none;
};

/// The bytes of a number after which a coordinate ends.
inline constexpr std::size_t max_coord_length = 8;

/// A vertex of a polygon: the numbers decide where it is, the text is what is written of it.
struct ps_point {
  std::array<std::int32_t, 2> coords;  ///< x and y in thousandths of a PostScript unit
  const char* text;                    ///< where its two numbers stand in the input

  [[nodiscard]] bool same_place(const ps_point& other) const {
    return coords[0] == other.coords[0] && coords[1] == other.coords[1];
  }
};

/// The coordinate that the number at `text`, before `end`, stands for: times 1000, rounded to
/// nearest, halves away from zero. It ends after eight characters, or where something follows that
/// does not belong to a number, or at `end`. A fault when no value can be read or it does not fit
/// 32 bits.
coordinate coordinate_at(const char* text, const char* end);

/// A number in a text, and how it is made up.
struct number_text {
  const char* begin;
  unsigned length;        ///< in bytes
  unsigned before_point;  ///< bytes before its "."; when it has none, as many as its length or more
};

/// The coordinate of a number whose make-up is known, in a text that ends at `end`: that of
/// coordinate_at.
coordinate coordinate_of(number_text number, const char* end);

/// The number at `text` as it is written, so much of it as makes a coordinate.
std::string_view coord_text(const char* text, const char* end);

/// The length of the two numbers of a vertex as they are written, when that is just how they stand
/// at `text`, which must be where a vertex does: at most eight characters each, and one blank
/// between them; 0 when it is not, or cannot be told from the next 24 bytes.
std::size_t plain_vertex_length(const char* text, const char* end);

/// Where the second of a vertex's numbers stands, given the first; only blanks and line ends are
/// between them.
const char* second_number(const char* first, const char* end);

// In the header because every number of a polygon comes here. Common ones have at most six digits
// before the point and three behind it, eight bytes in all, which are taken at once.

/// What coordinate_of makes of numbers that are not common.
[[gnu::noinline]] coordinate uncommon_coordinate(number_text number, const char* end);

/// So many bytes are read of a common number, also when it has fewer.
inline constexpr unsigned common_bytes = 8;

/// Whether common_thousandths can be given digits and a point, so many bytes in all.
inline bool is_common(unsigned length, unsigned before_point) {
  const unsigned missing = before_point < 4 ? 4 - before_point : 0;
  return words_are_text && before_point <= 6 && length + missing <= common_bytes &&
         length + before_point > 1;  // there is a digit
}

/// The thousandths of a common number, given where its digits begin.
inline std::int32_t common_thousandths(const char* text, unsigned length, unsigned before_point) {
  // The bytes are shifted so that the point is the fifth of them, or further behind if need be.
  // What is missing on either side counts as zeros.
  const unsigned missing = before_point < 4 ? 4 - before_point : 0;
  // Pairs of bytes are numbers of two digits, in which the point is a zero. Two of them are weighed
  // by one product: the earlier one by the upper half of a constant, the later one by its lower
  // half.
  struct place_values {
    std::uint64_t digits;           // the bytes that are digits, for each place of the point
    std::uint64_t first_and_third;  // weights of these pairs
    std::uint64_t second_and_fourth;
  };
  static constexpr std::array<place_values, 3> by_point = {
      {{0x0f0f0f000f0f0f0f, 100'000ULL << 32 | 100, 1'000ULL << 32 | 1},
       {0x0f0f000f0f0f0f0f, 1'000'000ULL << 32 | 100, 10'000ULL << 32 | 10},
       {0x0f000f0f0f0f0f0f, 10'000'000ULL << 32 | 1'000, 100'000ULL << 32 | 100}}};
  const place_values& values = by_point[before_point + missing - 4];
  const unsigned behind = common_bytes - length;
  const std::uint64_t digits =
      load_word(text) << (8 * behind) >> (8 * (behind - missing)) & values.digits;
  const std::uint64_t pairs = digits * 10 + (digits >> 8);
  constexpr std::uint64_t every_fourth = 0x000000ff000000ff;
  const std::uint64_t sum = (pairs & every_fourth) * values.first_and_third +
                            (pairs >> 16 & every_fourth) * values.second_and_fourth;
  return static_cast<std::int32_t>(sum >> 32);
}

inline coordinate coordinate_of(number_text number, const char* end) {
  const char* text = number.begin;
  unsigned before_point = std::min(number.before_point, number.length);
  unsigned length = number.length;
  const bool negative = *text == '-';
  if (negative) {
    ++text;
    --before_point;
    --length;
  }
  if (number.length > max_coord_length || !is_common(length, before_point) ||
      end - text < std::ptrdiff_t{common_bytes}) {
    return uncommon_coordinate(number, end);
  }
  const std::int32_t thousandths = common_thousandths(text, length, before_point);
  return {negative ? -thousandths : thousandths};
}

}  // namespace trellion
