#include "pdf/batches.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "meshes.h"
#include "pdf/outlines.h"
#include "pdf/under.h"

namespace trellion::pdf::testing {
namespace {

constexpr std::int64_t unit = 1000;
constexpr std::int64_t n_cells = 6;

/// A mesh of triangles on a small grid, some twice and some across others, and such shapes
/// as cannot be joined.
mesh random_mesh(std::mt19937& random) {
  mesh m;
  const auto n_paints = static_cast<std::uint32_t>(2 + random() % 4);
  m.reach.resize(n_paints);
  const auto any = [&random] { return static_cast<std::int64_t>(random() % (n_cells + 1)) * unit; };
  std::vector<std::vector<place>> outlines;
  if (random() % 4 != 0) {
    for (std::int64_t y = 0; y < n_cells * unit; y += unit) {
      for (std::int64_t x = 0; x < n_cells * unit; x += unit) {
        outlines.push_back({{x, y}, {x + unit, y}, {x + unit, y + unit}});
        outlines.push_back({{x, y}, {x, y + unit}, {x + unit, y + unit}});
      }
    }
  }
  for (auto n = random() % 30; n > 0; --n) {
    outlines.push_back({{any(), any()}, {any(), any()}, {any(), any()}});
    if (random() % 4 == 0) outlines.back().push_back({any(), any()});
    if (random() % 4 == 0) outlines.push_back(outlines[random() % outlines.size()]);
  }
  if (random() % 2 == 0) std::ranges::shuffle(outlines, random);
  std::uniform_int_distribution<std::uint32_t> paint(0, n_paints - 1);
  for (const std::vector<place>& outline : outlines) add(m, paint(random), outline);
  return m;
}

picture empty_picture() { return {4 * n_cells, unit / 4, {37, 101}}; }

/// What the polygons of a mesh show, painted one after the other.
picture picture_of(const mesh& m) {
  picture result = empty_picture();
  for (const polygon& p : m.polygons) result.fill(p.paint, {places_of(m, m.corners_of(p))});
  return result;
}

/// What batches show, those that can be joined as outlines without straight corners.
picture picture_of(const mesh& m, const std::vector<batch>& batches) {
  std::vector<outlines> joined;
  for (const batch& b : batches) {
    joined.emplace_back();
    if (m.polygons[b.polygons[0]].form != shape::other) joined.back() = join(m, b.polygons);
  }
  remove_straight_corners(m, joined);
  picture result = empty_picture();
  for (std::size_t i = 0; i < batches.size(); ++i) {
    std::vector<std::vector<place>> filled;
    std::uint32_t first = 0;
    for (const std::uint32_t end : joined[i].ends) {
      filled.push_back(places_of(m, std::span(joined[i].corners).subspan(first, end - first)));
      first = end;
    }
    const polygon& p = m.polygons[batches[i].polygons[0]];
    if (filled.empty()) filled = {places_of(m, m.corners_of(p))};
    result.fill(batches[i].paint, filled);
  }
  return result;
}

/// All polygons of batches, sorted.
std::vector<std::uint32_t> polygons_of(const std::vector<batch>& batches) {
  std::vector<std::uint32_t> result;
  for (const batch& b : batches) result.insert(result.end(), b.polygons.begin(), b.polygons.end());
  std::ranges::sort(result);
  return result;
}

TEST(batches, show_the_same_whatever_is_joined_moved_or_painted_under) {
  std::mt19937 random(20);
  std::size_t n_in_order = 0;
  std::size_t n_by_paint = 0;
  std::size_t n_under = 0;
  for (int run = 0; run < 300; ++run) {
    SCOPED_TRACE(run);
    const mesh m = random_mesh(random);
    const picture before = picture_of(m);
    std::vector<batch> in_order = batches_in_order(m);
    ASSERT_EQ(picture_of(m, in_order), before);
    std::vector<batch> by_paint = batches_by_paint(m);
    ASSERT_EQ(picture_of(m, by_paint), before);
    ASSERT_EQ(polygons_of(by_paint), polygons_of(in_order)) << "each once";
    n_in_order += in_order.size();
    n_by_paint += by_paint.size();
    for (std::vector<batch>* batches : {&in_order, &by_paint}) {
      paint_under_neighbours(m, *batches, {10, 10});
      n_under += polygons_of(*batches).size() - m.polygons.size();
      ASSERT_EQ(picture_of(m, *batches), before);
    }
  }
  EXPECT_LT(2 * n_by_paint, n_in_order) << "and much is brought together";
  EXPECT_GT(n_under, 0);
}

TEST(batches, by_paint_are_as_many_as_the_paints_of_a_mesh_without_overlaps) {
  mesh m;
  std::mt19937 random(3);
  std::uniform_int_distribution<std::uint32_t> paint(0, 7);
  for (std::int64_t y = 0; y < 100; ++y) {
    for (std::int64_t x = 0; x < 100; ++x) {
      // Cells grow to the right and upwards, so that no single size of grid suits them.
      const std::int64_t left = x * x * x;
      const std::int64_t low = y * y * y;
      const std::int64_t right = (x + 1) * (x + 1) * (x + 1);
      const std::int64_t high = (y + 1) * (y + 1) * (y + 1);
      add(m, paint(random), {{left, low}, {right, low}, {right, high}});
      add(m, paint(random), {{left, low}, {right, high}, {left, high}});
    }
  }
  EXPECT_EQ(batches_by_paint(m).size(), 8);
}

TEST(batches, of_a_paint_are_not_in_each_others_way) {
  mesh m;
  add_square(m, 0, 0, 0, 10);
  add(m, 0, {{5, 5}, {9, 9}});  // has a batch to itself
  add_square(m, 0, 5, 5, 10);
  const std::vector<batch> batches = batches_by_paint(m);
  ASSERT_EQ(batches.size(), 2);
  EXPECT_EQ(batches[0].polygons, (std::vector<std::uint32_t>{0, 2}));
}

TEST(batches, stay_apart_where_pens_reach) {
  mesh m;
  m.reach = {0, 2};
  add_square(m, 0, 0, 0, 10);
  add_square(m, 1, 10, 0, 10);
  add_square(m, 0, 22, 0, 10);  // just beyond the pen
  add_square(m, 0, 0, 10, 10);  // not so, by its box
  const std::vector<batch> batches = batches_by_paint(m);
  ASSERT_EQ(batches.size(), 3);
  EXPECT_EQ(batches[0].polygons, (std::vector<std::uint32_t>{0, 2}));
}

TEST(under, does_not_reach_what_covers_a_batch_later) {
  mesh m;
  for (const std::uint32_t paint : {0U, 1U}) {
    add_square(m, paint, 0, 0);
    add_square(m, paint, 1, 0);
  }
  std::vector<batch> batches = batches_in_order(m);
  paint_under_neighbours(m, batches, {0, 0});
  EXPECT_EQ(batches.at(0).polygons, (std::vector<std::uint32_t>{0, 1}));
}

TEST(under, puts_a_colour_below_later_neighbours_inside_of_the_mesh) {
  mesh m;
  // A cell of one colour within another.
  const std::int64_t n = 5;
  add_square(m, 0, 2, 2);
  for (std::int64_t i = 0; i < n * n; ++i) {
    if (i != 12) add_square(m, 1, i % n, i / n);
  }
  std::vector<batch> batches = batches_by_paint(m);
  ASSERT_EQ(batches.at(0).polygons, (std::vector<std::uint32_t>{0}));
  paint_under_neighbours(m, batches, {0, 0});
  EXPECT_EQ(batches[0].polygons, (std::vector<std::uint32_t>{0, 8, 12, 13, 17}));
}

}  // namespace
}  // namespace trellion::pdf::testing
