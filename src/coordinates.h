#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace trellion {

/// What can be wrong with a number that should be a coordinate.
enum class coordinate_fault : std::uint8_t { none, no_value, too_large };

struct coordinate {
  std::int32_t thousandths = 0;
  coordinate_fault fault = coordinate_fault::none;
};

/// A vertex of a polygon: the numbers decide where it is, the text is what is written of it.
struct ps_point {
  std::array<std::int32_t, 2> coords;  ///< x and y in thousandths of a PostScript unit
  const char* text;                    ///< where its two numbers stand in the input

  [[nodiscard]] bool same_place(const ps_point& other) const {
    return coords[0] == other.coords[0] && coords[1] == other.coords[1];
  }
};

/// The coordinate that the number at `text` stands for: times 1000, rounded to nearest, halves away
/// from zero. It ends after eight characters, or where something follows that does not belong to a
/// number, or at `end`. A fault when no value can be read or it does not fit 32 bits.
coordinate coordinate_at(const char* text, const char* end);

/// That number as it is written.
std::string_view coord_text(const char* text, const char* end);

/// The length of a vertex's two numbers as they are written, when that is just how they stand at
/// `text`: at most eight characters each, and one blank between them; 0 when it is not, or cannot
/// be told from the next 24 bytes.
std::size_t plain_vertex_length(const char* text, const char* end);

/// Where the second of a vertex's numbers stands, given the first; only blanks and line ends are
/// between them.
const char* second_number(const char* first, const char* end);

}  // namespace trellion
