#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bytes.h"
#include "tokens.h"

namespace trellion {

using point_index = std::uint32_t;
using path_index = std::uint32_t;
/// Each of 2^32 points adds less than 2^66.
__extension__ using area = __int128;
inline constexpr point_index no_point = UINT32_MAX;
inline constexpr path_index no_path = UINT32_MAX;

/// A vertex of a polygon, linked into the ring of its outline.
struct ps_point {
  std::array<std::int32_t, 2> coords;  ///< x and y in thousandths of a PostScript unit
  point_index next;
  point_index prev;

  [[nodiscard]] bool same_place(const ps_point& other) const {
    return coords[0] == other.coords[0] && coords[1] == other.coords[1];
  }
};

/// A polygon: a closed ring of points, entered at its cursor. An edge is a point and its `next`.
struct ps_path {
  std::uint32_t n_points = 0;
  point_index cursor = 0;
  /// The point that the last clean-up changed a neighbour of without looking at it again, if any.
  point_index untested = no_point;
  /// Covers every point. Points that are removed later do not shrink it.
  std::int32_t x_min = 0;
  std::int32_t x_max = 0;
  std::int32_t y_min = 0;
  std::int32_t y_max = 0;
  /// Neighbours in the queue that holds the path.
  path_index next_path = no_path;
  path_index previous_path = no_path;
};

/// The points and paths of one group of polygons. They are made while the group is read, refer to
/// each other by index, and are released together; what is dropped on the way stays unused.
struct path_store {
  std::vector<ps_point> points;
  std::vector<coord_texts> texts;  ///< texts[i] belongs to points[i]: the numbers decide where a
                                   ///< point is, the texts are what is written of it
  std::vector<ps_path> paths;

  const char* text_end = nullptr;  ///< where the text that they stand in ends

  /// Drops everything and keeps the memory.
  void clear();
  /// Does that, and exchanges `texts` for those of the points to come.
  void start_group(std::vector<coord_texts>& vertices, const char* end_of_text);
};

/// What can be wrong with a number that should be a coordinate.
enum class coordinate_fault : std::uint8_t { none, no_value, too_large };

struct coordinate {
  std::int32_t thousandths = 0;
  coordinate_fault fault = coordinate_fault::none;
};

/// The texts that paths are written with.
struct path_operators {
  std::string_view moveto;
  std::string_view lineto;
  std::string end;  ///< whatever ends a polygon
};

/// The coordinate that the number at `text` stands for: times 1000, rounded to nearest, halves away
/// from zero. It ends after eight characters, or where something follows that does not belong to a
/// number, or at `end`. A fault when no value can be read or it does not fit 32 bits.
coordinate coordinate_at(const char* text, const char* end);

/// That number as it is written.
std::string_view coord_text(const char* text, const char* end);

/// Adds a path to the store, of the next `n_points` texts that have no points yet; at least one.
/// The cursor is left on the last point. When a number is no coordinate the path is given up, and
/// no_path returned: the number is in the first text that has no point then.
path_index tokens_to_ps_path(std::uint32_t n_points, path_store& store);

/// Makes a path the ring of points that it was when it was added: `n_points` of them, side by side
/// in the store. The cursor is on the first.
void restore_ring(path_store& store, path_index path, point_index first, std::uint32_t n_points);

/// Adds a copy of a path, its cursor on the same point, to another store of the same text.
path_index copy_path(const path_store& from, path_index path, path_store& to);

/// Writes a path with the given operators, five vertices to a line after the first, beginning at
/// the cursor. The cursor ends one point before where it was.
void output(path_store& store, path_index path, const path_operators& operators, text_writer& out);

/// Makes the ring run the other way. Each edge keeps its place in the store, that of the point it
/// starts at: the contents of the points move on by one instead. The cursor stays on its edge.
void reverse(path_store& store, path_index path);

/// Joins b into a along their cursor edges, which must match in opposite directions: the edge
/// disappears, its end points are kept once. The cursor of a is then the end point that was its
/// cursor's next. b must not be used any more.
void merge_postscript_paths(path_store& store, path_index a, path_index b);

/// Twice the area that a path winds round, in square thousandths: positive when it does so
/// counter-clockwise. Of a path that crosses itself parts can subtract from others. Exact.
area doubled_area(const path_store& store, path_index path);

/// True when the points form a closed ring of the right size, linked both ways. For assertions.
bool is_sound(const path_store& store, path_index path);

/// True when the point adds nothing to the outline between its two neighbours: two of the three
/// coincide, or it lies on the straight line through the others, at the tip of a spike included.
bool is_superfluous(const ps_point& before, const ps_point& point, const ps_point& after);

/// Removes superfluous points in one walk round the ring that backs up after each removal. Leaves
/// three points or more, or none: then the path must only be discarded. The point after the last
/// removed one can stay untested. The cursor ends on the point tested last.
void remove_superfluous_points_v2(path_store& store, path_index path);

}  // namespace trellion
