#include "locality.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>

namespace trellion {
namespace {

constexpr int axis_bits = 10;  // the plane has as many columns and rows of cells as these can count

/// A polygon, and the place of its cell along the curve.
struct placed_polygon {
  std::uint32_t place;
  std::uint32_t polygon;
  std::uint32_t first;  ///< of its points
  std::uint32_t n_points;
};

std::int64_t distance(const ps_point& a, const ps_point& b) {
  return std::abs(std::int64_t{a.coords[0]} - b.coords[0]) +
         std::abs(std::int64_t{a.coords[1]} - b.coords[1]);
}

/// The bits of n with a zero between any two.
std::uint32_t spread(std::uint32_t n) {
  n = (n | n << 8) & 0x00ff00ff;
  n = (n | n << 4) & 0x0f0f0f0f;
  n = (n | n << 2) & 0x33333333;
  return (n | n << 1) & 0x55555555;
}

/// Cells of equal size that cover all points.
class cells {
 public:
  explicit cells(const large_array<ps_point>& points) {
    std::array<std::int64_t, 2> most = {INT32_MIN, INT32_MIN};
    for (const ps_point& p : points) {
      for (std::size_t axis = 0; axis < 2; ++axis) {
        least_[axis] = std::min<std::int64_t>(least_[axis], p.coords[axis]);
        most[axis] = std::max<std::int64_t>(most[axis], p.coords[axis]);
      }
    }
    for (std::size_t axis = 0; axis < 2; ++axis) {
      const auto width = static_cast<std::uint64_t>(most[axis] - least_[axis]);
      shift_[axis] = std::max(static_cast<int>(std::bit_width(width)) - axis_bits, 0);
    }
  }

  /// The place of a point's cell along the curve, which goes through the quarters of the plane one
  /// after the other, and so in each.
  [[nodiscard]] std::uint32_t place(const ps_point& p) const {
    return spread(number(p, 0)) | spread(number(p, 1)) << 1;
  }

 private:
  [[nodiscard]] std::uint32_t number(const ps_point& p, std::size_t axis) const {
    return static_cast<std::uint32_t>((p.coords[axis] - least_[axis]) >> shift_[axis]);
  }

  std::array<std::int64_t, 2> least_ = {INT32_MAX, INT32_MAX};
  std::array<int, 2> shift_{};
};

/// Sorts by one half of the place's bits, what is equal in the order in which it stands.
void sort_by_half(const large_array<placed_polygon>& from, large_array<placed_polygon>& to,
                  int shift) {
  constexpr std::size_t n_values = std::size_t{1} << axis_bits;
  std::array<std::size_t, n_values + 1> next{};
  const auto value = [shift](const placed_polygon& p) { return (p.place >> shift) % n_values; };
  for (const placed_polygon& p : from) ++next[value(p) + 1];
  for (std::size_t i = 1; i <= n_values; ++i) next[i] += next[i - 1];
  for (const placed_polygon& p : from) to[next[value(p)]++] = p;
}

}  // namespace

bool are_scattered(const large_array<ps_point>& points,
                   const large_array<std::uint32_t>& n_points) {
  constexpr std::size_t few = std::size_t{1} << 15;  // so many are in the caches anyway
  constexpr std::size_t n_samples = 1024;
  constexpr std::int64_t far = 32;  // times the side of a polygon
  if (n_points.size() < few) return false;
  // All polygons are taken for as long as they are on average: to look where one begins would be a
  // walk through all.
  const std::size_t step = points.size() / n_samples;
  const std::size_t stride = points.size() / n_points.size() + 1;
  std::size_t n_far = 0;
  for (std::size_t i = 0; i + stride < points.size(); i += step) {
    const std::int64_t side = std::max<std::int64_t>(distance(points[i], points[i + 1]), 1);
    if (distance(points[i], points[i + stride]) > far * side) ++n_far;
  }
  return n_far > n_samples / 2;
}

large_array<std::uint32_t> bring_neighbours_together(large_array<ps_point>& points,
                                                     const large_array<std::uint32_t>& n_points) {
  large_array<placed_polygon> polygons(n_points.size());
  const cells cells(points);
  std::uint32_t first = 0;
  for (std::uint32_t i = 0; i < n_points.size(); first += n_points[i++]) {
    polygons[i] = {cells.place(points[first]), i, first, n_points[i]};
  }
  {
    large_array<placed_polygon> half_sorted(n_points.size());
    sort_by_half(polygons, half_sorted, 0);
    sort_by_half(half_sorted, polygons, axis_bits);
  }
  constexpr std::size_t ahead = 16;
  large_array<ps_point> moved(points.size());
  large_array<std::uint32_t> order;
  order.reserve(polygons.size());
  auto* to = moved.data();
  for (std::size_t i = 0; i < polygons.size(); ++i) {
    const placed_polygon& p = polygons[i];
    if (i + ahead < polygons.size()) __builtin_prefetch(&points[polygons[i + ahead].first]);
    to = std::copy_n(points.data() + p.first, p.n_points, to);
    order.push_back(p.polygon);
  }
  points = std::move(moved);
  return order;
}

}  // namespace trellion
