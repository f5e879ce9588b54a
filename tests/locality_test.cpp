#include "locality.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
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

/// Side by side in memory, those that are so in the plane.
TEST(locality, neighbours_are_brought_together_and_polygons_kept) {
  std::vector<polygon> mesh = random_mesh(4, 60, 50);
  std::ranges::shuffle(mesh, std::mt19937(6));
  const laid_polygons before = laid(mesh);
  large_array<ps_point> points = before.points;
  const large_array<std::uint32_t> order = bring_neighbours_together(points, before.n_points);
  ASSERT_EQ(order.size(), mesh.size());

  std::vector<polygon> kept(mesh.size());
  auto next = points.begin();
  std::size_t n_near = 0;
  for (const std::uint32_t number : order) {
    const ps_point& first = *next;
    for (; kept[number].size() < mesh[number].size(); ++next) {
      kept[number].push_back({next->coords[0] / 1000, next->coords[1] / 1000});
    }
    if (next == points.end()) break;
    const auto apart = [&](std::size_t i) { return std::abs(next->coords[i] - first.coords[i]); };
    if (std::max(apart(0), apart(1)) <= 40'000) ++n_near;
  }
  EXPECT_EQ(kept, mesh);
  EXPECT_GT(10 * n_near, 9 * mesh.size());
}

}  // namespace
}  // namespace trellion::testing
