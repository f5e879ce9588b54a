#include "pdf/mesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "meshes.h"

namespace trellion::pdf::testing {
namespace {

constexpr std::int64_t far = max_coordinate;

/// A polygon with corners on a circle, `step` corners further on each time.
std::vector<place> star(std::size_t n, std::size_t step) {
  std::vector<place> corners;
  for (std::size_t i = 0; i < n; ++i) {
    // Points of a parabola and one above: a convex polygon in whole numbers.
    const auto k = static_cast<std::int64_t>(i * step % n);
    corners.push_back({k, k * k});
  }
  return corners;
}

/// A comb of so many teeth, which is simple and has four corners for each.
std::vector<place> comb(std::int64_t n_teeth) {
  std::vector<place> corners = {{4 * n_teeth, 10}, {0, 10}};
  for (std::int64_t i = 0; i < n_teeth; ++i) {
    corners.insert(corners.end(), {{4 * i, 0}, {4 * i + 1, 0}, {4 * i + 1, 5}, {4 * i + 4, 5}});
  }
  return corners;
}

TEST(places, get_one_label_each) {
  places all;
  std::mt19937 random(1);
  std::vector<place> points;
  points.reserve(5000);
  for (int i = 0; i < 5000; ++i) {
    const std::int64_t sign = i % 2 == 0 ? 1 : -1;
    points.push_back({static_cast<std::int64_t>(random() % 50), sign * (far - i / 100)});
  }
  std::vector<label> labels;
  labels.reserve(points.size());
  for (const place& p : points) labels.push_back(all.label_of(p));
  for (std::size_t i = 0; i < points.size(); ++i) {
    ASSERT_EQ(all[labels[i]], points[i]);
    ASSERT_EQ(all.label_of(points[i]), labels[i]);
  }
  ASSERT_EQ(all.size(), 1 + std::ranges::max(labels));
}

TEST(traits, tell_shapes_and_sense_exactly) {
  struct {
    const char* what;
    std::vector<place> corners;
    shape form;
  } const cases[] = {
      {"nothing", {}, shape::other},
      {"a point", {{1, 1}, {1, 1}, {1, 1}, {1, 1}}, shape::other},
      {"a line", {{0, 0}, {2, 0}, {1, 0}}, shape::other},
      {"a line with repeats", {{0, 0}, {0, 0}, {2, 0}, {1, 0}}, shape::other},
      {"there and back", {{0, 0}, {1, 0}, {2, 0}, {1, 0}}, shape::other},
      {"a sliver", {{-far, -far}, {far, far}, {far - 1, far}}, shape::convex},
      {"a line as long", {{-far, -far}, {far, far}, {0, 0}}, shape::other},
      {"repeats", {{0, 0}, {0, 0}, {4, 0}, {4, 4}, {4, 4}, {0, 4}, {0, 0}}, shape::convex},
      {"straight corner", {{0, 0}, {1, 0}, {2, 0}, {2, 2}, {0, 2}}, shape::convex},
      {"spike on a side", {{0, 0}, {3, 0}, {2, 0}, {2, 2}, {0, 2}}, shape::other},
      {"arrow", {{0, 0}, {4, -4}, {1, 0}, {4, 4}}, shape::simple},
      {"bow tie", {{0, 0}, {2, 2}, {2, 0}, {0, 2}}, shape::other},
      {"touches its side", {{0, 0}, {4, 0}, {2, 3}, {2, 0}, {1, 3}}, shape::other},
      {"touches its corner", {{0, 0}, {4, 0}, {2, 2}, {4, 4}, {0, 4}, {2, 2}}, shape::other},
      {"a round of many corners", star(1001, 1), shape::convex},
      {"a pentagram", star(5, 2), shape::other},
      {"twice round", {{0, 0}, {3, 0}, {0, 3}, {0, 0}, {3, 0}, {0, 3}}, shape::other},
      {"a comb", comb(15), shape::simple},
      {"a comb of too many corners", comb(16), shape::other},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::vector<place> corners = c.corners;
    for (std::size_t i = 0; i <= corners.size(); ++i) {
      EXPECT_EQ(traits_of(corners).form, c.form);
      if (c.form != shape::other) {
        EXPECT_FALSE(traits_of(corners).is_clockwise);
        EXPECT_TRUE(traits_of(std::vector<place>(corners.rbegin(), corners.rend())).is_clockwise);
      }
      if (!corners.empty()) std::rotate(corners.begin(), corners.begin() + 1, corners.end());
    }
  }
}

TEST(mesh, keeps_polygons_counter_clockwise_without_repeats) {
  mesh m;
  add(m, 3, {{0, 0}, {0, 0}, {0, 1}, {1, 1}, {1, 1}, {1, 0}, {0, 0}});
  add(m, 4, {{5, 5}, {6, 6}, {6, 6}, {5, 5}});
  const std::vector<place> square = places_of(m, m.corners_of(m.polygons.at(0)));
  EXPECT_EQ(square.size(), 4);
  EXPECT_FALSE(traits_of(square).is_clockwise);
  EXPECT_EQ(m.polygons[0].paint, 3);
  EXPECT_EQ(m.polygons.at(1).form, shape::other);
  EXPECT_EQ(m.polygons[1].n_corners, 4) << "the outline as it was";
}

TEST(polygons, are_apart_when_a_line_keeps_them_so) {
  const std::vector<place> triangle = {{0, 0}, {10, 0}, {1, 10}};
  struct {
    const char* what;
    std::vector<place> other;
    bool apart;
    std::int64_t reach = 0;
  } const cases[] = {
      {"beside it", {{20, 0}, {30, 0}, {30, 10}}, true},
      {"box touches", {{10, 0}, {30, 0}, {30, 10}}, true},
      {"on the long side", {{10, 0}, {10, 10}, {1, 10}}, true},
      {"just over it", {{9, 1}, {20, 1}, {20, 20}}, false},
      {"an arrow round its corner", {{-5, -5}, {-5, 20}, {-1, -1}, {20, -5}}, false},
      {"a line on its side", {{10, 0}, {1, 10}}, false},
      {"a line at its box", {{10, 0}, {10, 10}}, false},
      {"a line beside it", {{11, 0}, {11, 10}}, true},
      {"pen reaches it", {{20, 0}, {30, 0}, {30, 10}}, false, 11},
      {"pen just does not", {{20, 0}, {30, 0}, {30, 10}}, true, 10},
      {"pen on the long side", {{10, 0}, {10, 10}, {1, 10}}, false, 1},
      {"the same", triangle, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    mesh m;
    m.reach = {0, c.reach};
    add(m, 0, triangle);
    add(m, 1, c.other);
    EXPECT_EQ(are_apart(m, m.polygons[0], m.polygons[1]), c.apart);
    EXPECT_EQ(are_apart(m, m.polygons[1], m.polygons[0]), c.apart);
  }
}

}  // namespace
}  // namespace trellion::pdf::testing
