#include "pdf/outlines.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "meshes.h"
#include "pdf/likeness.h"
#include "pdf/shared_corners.h"

namespace trellion::pdf::testing {
namespace {

outlines join_all(const mesh& m) {
  std::vector<std::uint32_t> polygons(m.polygons.size());
  std::iota(polygons.begin(), polygons.end(), 0U);
  return join(m, polygons);
}

TEST(join, leaves_the_rim_in_few_outlines) {
  mesh m;
  for (std::int64_t y = 0; y < 40; ++y) {
    for (std::int64_t x = 0; x < 40; ++x) {
      if (x != 20 || y != 20) add_square(m, 0, x, y);
    }
  }
  add_square(m, 0, 40, 40);  // touches a corner
  std::vector joined = {join_all(m)};
  EXPECT_EQ(joined[0].ends.size(), 2) << "the rim, and that of the hole";
  EXPECT_EQ(joined[0].corners.size(), 4 * 40 + 4 + 4);
  remove_straight_corners(m, joined);
  EXPECT_EQ(joined[0].corners.size(), 4 + 4 + 4);
  EXPECT_EQ(joined[0].ends.back(), joined[0].corners.size());
}

TEST(join, makes_one_of_outlines_that_meet) {
  mesh m;
  for (std::int64_t i = 0; i < 100; ++i) {
    if ((i / 10 + i) % 2 == 0) add_square(m, 0, i % 10, i / 10);
  }
  const outlines joined = join_all(m);
  EXPECT_EQ(joined.ends, std::vector<std::uint32_t>{4 * 50});
}

TEST(join, leaves_out_polygons_that_are_there_twice) {
  mesh m;
  add_square(m, 0, 0, 0);
  add(m, 0, {{1, 1}, {1, 0}, {0, 0}, {0, 1}});
  add_square(m, 0, 1, 0);
  add(m, 0, {{1, 1}, {0, 1}, {0, 0}, {1, 0}});
  const outlines joined = join_all(m);
  EXPECT_EQ(joined.corners.size(), 6);
  EXPECT_EQ(joined.ends.size(), 1);
  mesh halves;
  add(halves, 0, {{0, 0}, {1, 0}, {1, 1}});
  add_square(halves, 0, 0, 0);
  EXPECT_EQ(join_all(halves).corners.size(), 4 + 3) << "a part is not the same";
}

TEST(straight_corners, stay_where_another_outline_turns) {
  mesh m;
  add_square(m, 0, 0, 0);
  add_square(m, 0, 1, 0);                        // a straight corner below, and one above
  add_square(m, 1, 0, 1);                        // turns at the one above
  add(m, 2, {{0, 0}, {1, 0}, {2, 0}, {1, -1}});  // passes the one below
  std::vector all = {join(m, std::vector<std::uint32_t>{0, 1}), join(m, std::vector{2U}),
                     join(m, std::vector{3U})};
  std::vector kept = all;
  remove_straight_corners(m, kept);
  EXPECT_EQ(places_of(m, kept[0].corners),
            (std::vector<place>{{0, 0}, {2, 0}, {2, 1}, {1, 1}, {0, 1}}));
  EXPECT_EQ(kept[1].corners, all[1].corners);
  EXPECT_EQ(kept[2].corners.size(), 3);
  add(m, 3, {{1, 0}, {1, 0}});  // a shape that is not joined
  remove_straight_corners(m, all);
  EXPECT_EQ(all[0].corners.size(), 6);
  EXPECT_EQ(all[2].corners.size(), 4);
}

TEST(shared_corners, are_added_where_they_nearly_lie_on_a_side) {
  // Above a square stand two polygons of another one, cut in two a bit beside its side.
  const auto cut = [](std::int64_t beside, std::uint32_t paint) {
    mesh m;
    add_square(m, 0, 0, 0, 100);
    add(m, paint, {{0, 100}, {50, 100 + beside}, {50, 200}, {0, 200}});
    add(m, paint, {{50, 100 + beside}, {100, 100}, {100, 200}, {50, 200}});
    return m;
  };
  for (const std::int64_t beside : {-3, 0, 3}) {
    const auto meeting = with_shared_corners(cut(beside, 0), 3);
    ASSERT_TRUE(meeting);
    EXPECT_EQ(meeting->polygons.size(), 3);
    std::vector joined = {join_all(*meeting)};
    remove_straight_corners(*meeting, joined);
    EXPECT_EQ(places_of(*meeting, joined[0].corners),
              (std::vector<place>{{0, 0}, {100, 0}, {100, 200}, {0, 200}}));
    EXPECT_EQ(joined[0].ends.size(), 1);
  }
  EXPECT_FALSE(with_shared_corners(cut(4, 0), 3));
  EXPECT_FALSE(with_shared_corners(cut(3, 1), 3)) << "they are not joined";
  mesh thin;
  add(thin, 0, {{0, 0}, {100, 0}, {50, 2}});
  add(thin, 0, {{0, 0}, {0, -50}, {50, -50}, {50, 2}});
  EXPECT_FALSE(with_shared_corners(thin, 3)) << "nothing would be left of the first";
}

TEST(likeness, of_batches_that_share_sides_is_that_they_run_the_same_way) {
  places points;
  for (std::int64_t i = 0; i < 10; ++i) points.label_of({i, i * i});
  outlines all;
  all.corners = {0, 1, 2, 3, /**/ 4, 5, 6, /**/ 2, 1, 7, /**/ 9, 8, 7, 1};
  all.ends = {4, 7, 10, 14};
  const std::vector<outline_batch> batches = {{1, false}, {3, true}, {4, false}};
  turn_alike(points, all, batches);
  // The second batch has a side of the first, and is turned whole; then the third has one of it.
  EXPECT_EQ(all.corners, (std::vector<label>{0, 1, 2, 3, 6, 5, 4, 7, 1, 2, 9, 8, 7, 1}));
}

TEST(likeness, turns_diagonals_of_squares_for_many_sides_only) {
  // An outline up and down a stair, and one the other way.
  const auto turned = [](std::int64_t height, label n_sides, bool were_clockwise) {
    places points;
    outlines all;
    for (label i = 0; i < n_sides; ++i) {
      all.corners.push_back(points.label_of({i, i % 2 * height}));
    }
    for (label i = n_sides; i > 0; --i) all.corners.push_back(i - 1);
    all.ends = {n_sides, 2 * n_sides};
    const std::vector<outline_batch> batches = {{1, were_clockwise}, {2, were_clockwise}};
    turn_alike(points, all, batches);
    return all.corners;
  };
  EXPECT_EQ(turned(1, 3, false), (std::vector<label>{0, 1, 2, 2, 1, 0})) << "as drawn";
  EXPECT_EQ(turned(1, 3, true), (std::vector<label>{2, 1, 0, 0, 1, 2})) << "as drawn, too";
  EXPECT_EQ(turned(1, 4, false), (std::vector<label>{0, 1, 2, 3, 0, 1, 2, 3}));
  EXPECT_EQ(turned(1, 4, true), (std::vector<label>{3, 2, 1, 0, 3, 2, 1, 0}));
  for (const bool were_clockwise : {false, true}) {
    EXPECT_EQ(turned(2, 3, were_clockwise), (std::vector<label>{0, 1, 2, 0, 1, 2}));
  }
}

}  // namespace
}  // namespace trellion::pdf::testing
