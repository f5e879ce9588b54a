#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "pdf/mesh.h"

namespace trellion::pdf {

/// Closed outlines: the labels of all their corners, and where each ends.
struct outlines {
  /// A corner of an outline where a pen is to draw none, but two ends.
  struct open_start {
    std::size_t outline;
    label corner;
  };

  std::vector<label> corners;
  std::vector<std::uint32_t> ends;
  std::vector<open_start> open_starts;  ///< by outline and corner; of few
};

/// Adds the outline of what polygons cover together, to be filled at once by the rule that windings
/// are not zero. None may be of shape `other`. The outlines do not depend on the order of the
/// polygons; those of one connected piece, be it by a corner, are one. The time is linear.
///
/// 1. Take a polygon for the sum of its sides, each from a place to the next. How often such a sum
///    winds round a point can be read off a ray from that point: the sides that cross it
///    from right to left, less those that cross from left to right. So the windings of a sum of
///    polygons are the sums of their windings, and two sides that run between the same places in
///    opposite directions add nothing and can go.
/// 2. Every polygon winds round each point of its inside once and round no other, for its shape is
///    `convex` or `simple` and it is turned counter-clockwise. So a sum of them winds round a point
///    as many times as polygons hold it: never less than 0, and 0 just outside of all. However
///    they lie, folded over, twice in one place, or across each other: no hole can open, and
///    nothing is painted that was not.
/// 3. From every place of the sum as many sides start as end there: it holds for each polygon, and
///    for pairs of opposite sides. So the sides that are left can be strung into closed outlines,
///    and in which way does not matter, as windings come from the sides alone.
///
/// Of polygons with the very same corners one is enough; the others are left out first.
void join(const mesh& of, std::span<const std::uint32_t> polygons, outlines& to);

/// The same, on its own.
outlines join(const mesh& of, std::span<const std::uint32_t> polygons);

/// Whether a corner of an outline is straight.
bool is_straight_at(const mesh& of, std::span<const label> outline, std::size_t i);

/// Removes corners that lie on a straight line between their neighbours, except where another
/// outline, or a polygon of shape `other`, has a true corner at that place: neighbours that shared
/// it keep it, so that renderers round both alike.
void remove_straight_corners(const mesh& of, std::span<outlines> all);

}  // namespace trellion::pdf
