#include "pdf/alignment.h"

#include <gtest/gtest.h>

#include <set>

#include "meshes.h"

namespace trellion::pdf::testing {
namespace {

/// Cells of 100 by 100 whose right sides are off by some units.
mesh uneven_grid(std::int64_t off) {
  mesh m;
  for (std::int64_t y = 0; y < 2000; y += 100) {
    for (std::int64_t x = 0; x < 2000; x += 100) {
      const std::int64_t right = x + 100 + (y % 400 == 0 ? off : 0);
      add(m, 0, {{x, y}, {right, y}, {right, y + 100}, {x, y + 100}});
    }
  }
  return m;
}

TEST(alignment, makes_columns_one_that_are_one_but_for_rounding) {
  const mesh uneven = uneven_grid(3);
  EXPECT_FALSE(with_even_columns(uneven, 2));
  const auto even = with_even_columns(uneven, 3);
  ASSERT_TRUE(even);
  ASSERT_EQ(even->polygons.size(), uneven.polygons.size());
  std::set<std::int64_t> columns;
  for (label i = 0; i < even->points.size(); ++i) columns.insert(even->points[i].x);
  EXPECT_EQ(columns.size(), 21);
  EXPECT_EQ(*columns.rbegin(), 2000) << "where most of its places are";
  EXPECT_FALSE(with_even_columns(uneven_grid(0), 3)) << "nothing moves";
}

TEST(alignment, takes_no_polygon_its_shape) {
  mesh m = uneven_grid(3);
  add(m, 0, {{0, 0}, {2, 0}, {2, 100}, {0, 100}});
  EXPECT_FALSE(with_even_columns(m, 3));
}

TEST(alignment, leaves_places_alone_that_form_no_columns) {
  mesh m;
  for (std::int64_t i = 0; i < 100; ++i) add_square(m, 0, 2 * i, i, 1);
  EXPECT_FALSE(with_even_columns(m, 1));
}

}  // namespace
}  // namespace trellion::pdf::testing
