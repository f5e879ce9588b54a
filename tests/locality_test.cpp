#include "locality.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support.h"

namespace trellion::testing {
namespace {

/// Polygons as a group has them.
struct laid_polygons {
  large_array<ps_point> points;
  large_array<std::uint32_t> n_points;
};

laid_polygons laid(const std::vector<polygon>& polygons) {
  laid_polygons result;
  for (const polygon& p : polygons) {
    for (const vertex& v : p) result.points.push_back({{1000 * v[0], 1000 * v[1]}, nullptr});
    result.n_points.push_back(static_cast<std::uint32_t>(p.size()));
  }
  return result;
}

TEST(locality, many_polygons_are_scattered_when_most_lie_far_from_the_ones_before) {
  std::mt19937 random(5);
  const auto scattered = [&random](int columns, int rows, double part) {
    std::vector<polygon> mesh = random_mesh(2, columns, rows);
    const auto n = static_cast<std::ptrdiff_t>(part * static_cast<double>(mesh.size()));
    std::shuffle(mesh.begin(), mesh.begin() + n, random);
    const laid_polygons polygons = laid(mesh);
    return are_scattered(polygons.points, polygons.n_points);
  };
  for (const double part : {0.0, 0.3}) EXPECT_FALSE(scattered(200, 170, part)) << part;
  for (const double part : {0.8, 1.0}) EXPECT_TRUE(scattered(200, 170, part)) << part;
  EXPECT_FALSE(scattered(100, 100, 1.0)) << "so few are in the caches";
  EXPECT_FALSE(scattered(34'000, 1, 0.0));
}

TEST(locality, what_is_laid_side_by_side_covers_little_of_the_plane_both_ways) {
  std::vector<polygon> mesh = random_mesh(4, 60, 60);
  std::ranges::shuffle(mesh, std::mt19937(6));
  const laid_polygons before = laid(mesh);
  large_array<ps_point> points = before.points;
  const large_array<std::uint32_t> order = bring_neighbours_together(points, before.n_points);
  ASSERT_EQ(order.size(), mesh.size());

  constexpr std::size_t length = 256;  // of a stretch of points: some fifty cells of the mesh
  std::size_t n_compact = 0;
  for (std::size_t first = 0; first + length <= points.size(); first += length) {
    const auto is_short = [&](std::size_t axis) {
      const auto [least, most] = std::minmax_element(
          points.begin() + static_cast<std::ptrdiff_t>(first),
          points.begin() + static_cast<std::ptrdiff_t>(first + length),
          [&](const auto& a, const auto& b) { return a.coords[axis] < b.coords[axis]; });
      return most->coords[axis] - least->coords[axis] <= 200'000;  // a third of the mesh
    };
    if (is_short(0) && is_short(1)) ++n_compact;
  }
  EXPECT_GT(4 * n_compact, 3 * (points.size() / length));

  std::vector<polygon> kept(mesh.size());
  auto next = points.begin();
  for (const std::uint32_t number : order) {
    for (; kept[number].size() < mesh[number].size(); ++next) {
      kept[number].push_back({next->coords[0] / 1000, next->coords[1] / 1000});
    }
  }
  EXPECT_EQ(kept, mesh);
}

}  // namespace
}  // namespace trellion::testing
