#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "bytes.h"
#include "coordinates.h"
#include "large_array.h"

namespace trellion {

using point_index = std::uint32_t;
using path_index = std::uint32_t;
/// Each of 2^32 points adds less than 2^66.
__extension__ using area = __int128;
inline constexpr point_index no_point = UINT32_MAX;
inline constexpr path_index no_path = UINT32_MAX;

/// What edge_index keeps about the edge that begins at a point.
struct edge_record {
  static constexpr path_index no_owner = (path_index{1} << 29) - 1;

  point_index next_alike;  ///< lies alike, or is the edge itself; in a crowd its share
  path_index owner : 29;   ///< no_owner when its path is not to be joined
  bool indexed : 1;
  bool head : 1;
  bool crowded : 1;
};

/// How a point hangs in the ring of its outline. An edge is a point and its `next`.
struct point_links {
  point_index next;  ///< no_point when it has been taken out of its ring
  point_index prev;
  edge_record record;  ///< side by side with the links: they are looked at together
};

/// The points on both sides of a point in the ring of its outline.
struct point_neighbours {
  point_index next;
  point_index prev;
};

/// A polygon: a closed ring of points, entered at its cursor.
struct ps_path {
  std::uint32_t n_points = 0;
  point_index cursor = 0;
  /// The point that the last clean-up changed a neighbour of without looking at it again, if any.
  point_index untested = no_point;
  /// Neighbours in the queue that holds the path.
  path_index next_path = no_path;
  path_index previous_path = no_path;
};

/// A box that covers every point of a path; those that are removed later do not shrink it.
struct path_box {
  std::int32_t x_min = INT32_MAX;
  std::int32_t x_max = INT32_MIN;
  std::int32_t y_min = INT32_MAX;
  std::int32_t y_max = INT32_MIN;

  void cover(const path_box& other);
};

/// The points and paths of one group of polygons. They are made while the group is read, refer to
/// each other by index, and are released together; what is dropped on the way stays unused.
struct path_store {
  large_array<ps_point> points;
  large_array<point_links> links;  ///< by point, of those that are in paths
  large_array<ps_path> paths;

  const char* text_end = nullptr;  ///< where the text ends that the points' numbers stand in

  bool lies_by_place = false;   ///< not in the order in which paths are looked at
  bool keeps_boxes = false;     ///< pictures of the merging need them, and nothing else does
  std::vector<path_box> boxes;  ///< by path, if they are kept

  /// Drops everything and keeps the memory.
  void clear();
  /// Throws run_error for more points or paths than indices can tell apart.
  static void check_size(std::size_t n_points, std::size_t n_paths);
  /// Drops everything, exchanges `points` for those of a group, whose size has been checked, and
  /// makes links for all of them and so many paths, whose contents have no value yet.
  void start_group(large_array<ps_point>& vertices, std::size_t n_paths, const char* end_of_text);

  [[nodiscard]] point_index next(point_index point) const { return links[point].next; }
  [[nodiscard]] point_index prev(point_index point) const { return links[point].prev; }
  /// Both at once, without the record beside them: that would be one wide load, which had to wait
  /// for narrow stores just before.
  [[nodiscard]] point_neighbours neighbours(point_index point) const {
    return {next(point), prev(point)};
  }
  void drop(point_index point) { links[point].next = no_point; }
  void link(point_index point, point_index next) {
    links[point].next = next;
    links[next].prev = point;
  }
};

/// The text of the operator that takes a vertex.
struct vertex_operator {
  explicit vertex_operator(std::string_view operator_text) : text(operator_text) {
    text.copy(start.data(), start.size());
  }

  std::string_view text;
  std::array<char, 16> start{};  ///< of the text: to copy it all takes no loop
};

/// The texts that paths are written with.
struct path_operators {
  vertex_operator moveto;
  vertex_operator lineto;
  std::string end;  ///< whatever ends a polygon
};

/// Makes a path of the `n_points` points from `first` on; at least one. Path and links must be in
/// the store. The cursor is left on the last point.
void tokens_to_ps_path(path_store& store, path_index path, point_index first,
                       std::uint32_t n_points);

/// Makes a path the ring of points that it was when it was added: `n_points` of them, side by side
/// in the store. The cursor is on the first. The edges have no owner: they are not to be joined.
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

// Differences, distances and products are unsigned so that their overflow is defined: they wrap at
// 64 bits, and a product that wraps to zero counts as zero.
using wrapping = std::uint64_t;

inline wrapping difference(std::int32_t a, std::int32_t b) {
  return static_cast<wrapping>(std::int64_t{a} - std::int64_t{b});
}

/// Neighbours no further away than this, along either axis, are near: the product of the three
/// distances between a point and two of them is at most 2 to the power 61 and cannot wrap to zero.
inline constexpr wrapping reach = wrapping{1} << 19;

/// What is_superfluous finds out, of any three points.
bool adds_nothing(const ps_point& before, const ps_point& point, const ps_point& after);

/// True when the point adds nothing to the outline between its two neighbours: two of the three
/// coincide, or it lies on the straight line through the others, at the tip of a spike included.
inline bool is_superfluous(const ps_point& before, const ps_point& point, const ps_point& after) {
  const wrapping ux = difference(point.coords[0], before.coords[0]);
  const wrapping uy = difference(point.coords[1], before.coords[1]);
  const wrapping vx = difference(after.coords[0], point.coords[0]);
  const wrapping vy = difference(after.coords[1], point.coords[1]);
  // Most points are corners between neighbours that are near. Then no two of the three coincide.
  const bool all_near = ((ux + reach) | (uy + reach) | (vx + reach) | (vy + reach)) < 2 * reach;
  return !all_near || vx * uy == ux * vy ? adds_nothing(before, point, after) : false;
}

/// Whether no point of an outline is superfluous. The outline has two points or more, side by side:
/// that is looked through sooner than a ring.
bool has_only_corners(std::span<const ps_point> outline);

/// Removes superfluous points in one walk round the ring that backs up after each removal. Leaves
/// three points or more, or none: then the path must only be discarded. The point after the last
/// removed one can stay untested. The cursor ends on the point tested last.
void remove_superfluous_points_v2(path_store& store, path_index path);

}  // namespace trellion
