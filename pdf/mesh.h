#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace trellion::pdf {

/// A point of user space. Its numbers count the last decimal that is written: with three digits
/// after the point 1.5 is 1500. Neither goes beyond max_coordinate, so that products of differences
/// and sums of 2^32 of them fit 128 bits.
struct place {
  std::int64_t x = 0;
  std::int64_t y = 0;

  bool operator==(const place&) const = default;
};
inline constexpr std::int64_t max_coordinate = std::int64_t{1} << 45;

__extension__ using doubled_area = __int128;

/// Twice the area of a triangle: above 0 when c lies to the left of the way from a to b.
inline doubled_area turn(const place& a, const place& b, const place& c) {
  return doubled_area{b.x - a.x} * (c.y - a.y) - doubled_area{b.y - a.y} * (c.x - a.x);
}

/// Whether b lies on the straight way from a to c, which is no way back.
inline bool is_straight(const place& a, const place& b, const place& c) {
  return turn(a, b, c) == 0 &&
         doubled_area{b.x - a.x} * (c.x - b.x) + doubled_area{b.y - a.y} * (c.y - b.y) > 0;
}

/// Whether the sides from a to b and from c to d run along each other for more than `least`, no
/// farther from the first than `distance`. For choices that cannot be wrong, as doubles do.
bool run_along(const place& a, const place& b, const place& c, const place& d, double distance,
               double least);

/// Stands for one exact place. Below max_labels, so that a bit is left for those who need one.
using label = std::uint32_t;
inline constexpr label max_labels = label{1} << 31;

/// Gives each place one label, from 0 on.
class places {
 public:
  /// Throws run_error when there are too many.
  label label_of(const place& point);
  const place& operator[](label at) const { return points_[at]; }
  [[nodiscard]] std::size_t size() const { return points_.size(); }

 private:
  void grow();

  std::vector<place> points_;
  std::vector<label> slots_;  // open addressing, a power of two of them
};

/// What is known of an outline.
enum class shape : std::uint8_t {
  convex,  ///< winds once round each point of its inside, and a line along any side bounds it
  simple,  ///< winds once round each point of its inside
  other,   ///< may wind round a point several times, or has no inside
};

/// An outline as it was read: its corners, without the first repeated at the end.
struct outline_traits {
  shape form = shape::other;
  bool is_clockwise = false;
};
/// Looks at an outline. Equal neighbours among the corners do not matter. Exact; an outline of many
/// corners that is not convex counts as `other`, so that the time stays near-linear.
outline_traits traits_of(std::span<const place> corners);

/// A painted polygon: `n_corners` labels of the mesh from `first_corner` on, counter-clockwise and
/// no two neighbours equal unless its shape is `other`.
struct polygon {
  std::uint32_t paint = 0;
  shape form = shape::other;
  bool was_clockwise = false;  ///< as it was read
  std::uint32_t first_corner = 0;
  std::uint32_t n_corners = 0;
};

/// The polygons that one stretch of a content stream paints, in the order of painting. All of it is
/// opaque: where two overlap, the later one is seen.
struct mesh {
  places points;
  std::vector<label> corners;
  std::vector<polygon> polygons;
  /// By paint: how far beyond the outline it may reach, as a pen along it does, in the units of
  /// places; 0 when it fills only.
  std::vector<std::int64_t> reach;

  /// Adds a polygon: turned counter-clockwise and rid of equal neighbours, unless `other`. Throws
  /// run_error when the mesh is too large.
  void add(std::uint32_t paint, const outline_traits& traits, std::span<const place> outline);
  [[nodiscard]] std::span<const label> corners_of(const polygon& p) const {
    return std::span(corners).subspan(p.first_corner, p.n_corners);
  }
  /// 0 for a paint that nothing is known of.
  [[nodiscard]] std::int64_t reach_of(std::uint32_t paint) const {
    return paint < reach.size() ? reach[paint] : 0;
  }
};

/// The upright box that holds all that is painted.
struct box {
  place low;
  place high;
};
/// The box of a polygon with the reach of its pen. One of shape `other` may be a mere line, which
/// viewers draw with some width: it gets one unit more on every side.
box painted_box(const mesh& of, const polygon& p);

/// Whether it is proven that what one polygon paints and what the other paints have no point in
/// common but on their rims. Their boxes keep them apart; or, when neither has a pen or the shape
/// `other`, all corners of one lie on or beyond the line along a side of the other, a convex one,
/// which lies on this side of it as a whole. For two convex ones that touch or keep apart there is
/// always such a side. Polygons of very many corners are told apart by their boxes only.
bool are_apart(const mesh& of, const polygon& a, const polygon& b);

}  // namespace trellion::pdf
