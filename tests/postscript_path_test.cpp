#include "postscript_path.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <vector>

#include "postscript_path_queue.h"
#include "support.h"
#include "tokens.h"

namespace trellion::testing {
namespace {

/// The path that the numbers of a text make, its points in order and its cursor on the last one.
path_index path_of(std::string_view numbers, path_store& store) {
  const auto first = static_cast<point_index>(store.points.size());
  const auto path = static_cast<path_index>(store.paths.size());
  const char* const end = numbers.data() + numbers.size();
  for (token_list list(numbers); !list.empty();) {
    const char* const x = list.take_head().text.data();
    const char* const y = list.take_head().text.data();
    EXPECT_EQ(second_number(x, end), y);
    store.points.push_back(
        {{coordinate_at(x, end).thousandths, coordinate_at(y, end).thousandths}, x});
  }
  store.text_end = end;
  store.links.resize(store.points.size());
  store.paths.resize(path + 1);
  store.boxes.resize(path + 1);
  tokens_to_ps_path(store, path, first, static_cast<std::uint32_t>(store.points.size()) - first);
  return path;
}

std::string written(path_store& store, path_index path) {
  captured_text out;
  output(store, path, {vertex_operator("m"), vertex_operator("l"), "h f"}, out);
  return out.text();
}

/// What is left of a ring after superfluous points are removed.
std::string cleaned(std::string_view numbers) {
  path_store store;
  const path_index path = path_of(numbers, store);
  remove_superfluous_points_v2(store, path);
  return store.paths[path].n_points == 0 ? "nothing" : written(store, path);
}

/// The coordinate of a number, read from the end of a text and from the middle of a longer one.
std::int32_t value(const std::string& number) {
  const std::string longer = number + " 123.456 l";
  const coordinate result = coordinate_at(number.data(), number.data() + number.size());
  EXPECT_EQ(result.fault, coordinate_fault::none) << number;
  EXPECT_EQ(coordinate_at(longer.data(), longer.data() + longer.size()).thousandths,
            result.thousandths)
      << number;
  return result.thousandths;
}

TEST(coordinates, are_thousandths_rounded_away_from_zero) {
  EXPECT_EQ(value("1"), value("1.000"));
  EXPECT_EQ(value("0.0005"), 1);
  EXPECT_EQ(value("-0.0005"), -1);
  EXPECT_EQ(value(".0004"), 0);
  EXPECT_EQ(value("-5."), -5000);
  // Every text of digits and a point, against the rounding of the double that it stands for.
  for (const std::string digits : {"0000004", "1000005", "1499999", "0499949", "2147483", "0000355",
                                   "1876543", "98765", "876", "7"}) {
    for (std::size_t point = 0; point <= digits.size(); ++point) {
      const std::string number = std::string(digits).insert(point, ".");
      const double scaled = std::strtod(number.c_str(), nullptr) * 1000.0;
      EXPECT_EQ(value(number), static_cast<std::int64_t>(scaled + 0.5)) << number;
    }
  }
}

TEST(coordinates, are_cut_to_eight_characters_and_must_fit) {
  EXPECT_EQ(value("123.456789"), 123457);  // 123.4567
  EXPECT_EQ(value("2147483.647"), 2147483000);
  EXPECT_EQ(value("-2147483.648"), -2147483000);
  EXPECT_EQ(value("-1234.567"), -1234560);
  const auto fault = [](std::string_view text) {
    return coordinate_at(text.data(), text.data() + text.size()).fault;
  };
  for (const auto* bad : {".", "-."}) EXPECT_EQ(fault(bad), coordinate_fault::no_value) << bad;
  for (const auto* bad : {"2147484.", "-2147484", "12345678"}) {
    EXPECT_EQ(fault(bad), coordinate_fault::too_large) << bad;
  }
}

TEST(path_output, has_five_vertices_to_a_line_and_the_texts_of_the_input) {
  path_store store;
  const path_index one = path_of("00.10 -.5", store);
  EXPECT_EQ(written(store, one), "00.10 -.5 m\nh f\n");
  captured_text out;
  for (const std::string name : {"begin_an_outline", "begin_an_outline_"}) {
    // The text goes on behind the vertices that are looked at: they could be copied at once.
    const path_index many = path_of("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18", store);
    output(store, many, {vertex_operator(name), vertex_operator(name), "h"}, out);
    EXPECT_NE(out.text().find("\n1 2 " + name + " 3 4 " + name + ' '), std::string::npos);
  }
  const path_index six = path_of("1 1 2 2 3 3 4 4 5 5 123456.789 0", store);
  EXPECT_EQ(written(store, six), "123456.7 0 m\n1 1 l 2 2 l 3 3 l 4 4 l 5 5 l\nh f\n");
  const path_index seven = path_of("1 1\n2\n2 123456.789 3 4  4 5 5 6 6 7 7", store);
  EXPECT_EQ(written(store, seven), "7 7 m\n1 1 l 2 2 l 123456.7 3 l 4 4 l 5 5 l\n6 6 l \nh f\n");
  EXPECT_EQ(written(store, seven), "6 6 m\n7 7 l 1 1 l 2 2 l 123456.7 3 l 4 4 l\n5 5 l \nh f\n")
      << "the cursor has moved back by one";
}

TEST(path_ring, keeps_its_cursor_edge_and_untested_point_when_reversed_or_copied) {
  path_store store;
  const path_index path = path_of("1 1 2 2 3 3 4 4", store);
  for (point_index point = 0; point < 4; ++point) {
    const auto coords = store.points[point].coords;
    store.paths[path].untested = point;
    reverse(store, path);
    EXPECT_EQ(store.points[store.paths[path].untested].coords, coords);
    path_store other;
    const path_index copy = copy_path(store, path, other);
    EXPECT_EQ(other.points[other.paths[copy].untested].coords, coords);
  }
  // The cursor's edge, from 4 to 1, is the same edge afterwards, from 1 to 4.
  reverse(store, path);
  EXPECT_EQ(written(store, path), "1 1 m\n4 4 l 3 3 l 2 2 l \nh f\n");
}

TEST(superfluous_points, are_coinciding_collinear_and_spikes) {
  // The walk starts on the last point and ends on the one before it, if both stay.
  for (const auto* text :
       {"0 0 2 0 4 0 4 4 0 4", "0 0 4 0 4 0 4 4 0 4", "0 0 4 0 9 0 4 0 4 4 0 4"}) {
    EXPECT_EQ(cleaned(text), "4 4 m\n0 4 l 0 0 l 4 0 l \nh f\n") << text;
  }
  EXPECT_EQ(cleaned("0 0 0 4 1.0001 5 1.0004 5 3 3"), "1.0004 5 m\n3 3 l 0 0 l 0 4 l \nh f\n");
  for (const auto* text : {"0 0 1 1 2 2", "5 5 5 5 5 5 5 5", "1 2"}) {
    EXPECT_EQ(cleaned(text), "nothing") << text;
  }
  // The walk can leave the point after its last removal: it starts on the second (0 0), which
  // (1 -4) makes a corner. It comes round to (1 -4), a spike between the two (0 0), removes it,
  // then the first (0 0), and ends on (-5 0). The second (0 0) now lies on a straight line.
  EXPECT_EQ(cleaned("5 0 0 9 -5 0 0 0 1 -4 0 0"), "-5 0 m\n0 0 l 5 0 l 0 9 l \nh f\n");
}

TEST(superfluous_points, a_product_of_distances_that_wraps_to_zero_counts_as_zero) {
  const auto at = [](std::int32_t x, std::int32_t y) { return ps_point{{x, y}, nullptr}; };
  const std::int32_t far = 1 << 21;  // 2^22 * 2^21 * 2^21 is 2^64
  EXPECT_TRUE(is_superfluous(at(0, 0), at(far, 0), at(far, far)));
  EXPECT_FALSE(is_superfluous(at(0, 0), at(far, 0), at(far, far + 1)));
}

TEST(superfluous_points, are_none_in_outlines_that_have_only_corners) {
  // All outlines of four points on a grid, and on some so wide that products can wrap to zero.
  for (const std::int32_t pitch : {1, (1 << 20) - 1, 1 << 20, 1 << 21}) {
    for (int outline = 0; outline < 9 * 9 * 9 * 9; ++outline) {
      path_store store;
      for (int i = 0, rest = outline; i < 4; ++i, rest /= 9) {
        store.points.push_back({{rest % 3 * pitch, rest / 3 % 3 * pitch}, nullptr});
      }
      store.links.resize(4);
      store.paths.resize(1);
      tokens_to_ps_path(store, 0, 0, 4);
      const bool told = has_only_corners(store.points);
      remove_superfluous_points_v2(store, 0);
      const bool all_stay = store.paths[0].n_points == 4;
      ASSERT_EQ(told, all_stay) << outline;
      ASSERT_TRUE(!told || store.paths[0].cursor == 2) << "where the walk ends";
    }
  }
}

TEST(path_merge, joins_rings_along_their_cursor_edges) {
  path_store store;
  store.keeps_boxes = true;
  const std::string_view text = "1 1 0 1 0 0 1 0 1.0 0 2 -1 2 3 1 1";
  const path_index a = path_of(text.substr(0, 15), store);  // cursor edge from (1 0) to (1 1)
  const path_index b = path_of(text.substr(16), store);     // from (1 1) to (1 0)
  merge_postscript_paths(store, a, b);
  EXPECT_EQ(store.paths[a].n_points, 6U);
  EXPECT_EQ(store.boxes[a].x_max, 2000);
  EXPECT_EQ(store.boxes[a].y_min, -1000);
  EXPECT_EQ(store.boxes[a].y_max, 3000);
  EXPECT_EQ(written(store, a), "1 1 m\n0 1 l 0 0 l 1.0 0 l 2 -1 l 2 3 l\nh f\n");
}

TEST(strata, hold_paths_of_any_number_of_points) {
  path_store store;
  const std::vector<std::uint32_t> sizes = {300, 4, 1'000'000, 258, 3, 259, 300, 260, 258, 4};
  ps_path_queue queue(store);
  for (const std::uint32_t n_points : sizes) {
    store.paths.push_back({.n_points = n_points});
    queue.add_after_last(static_cast<path_index>(store.paths.size() - 1));
  }
  strata strata = stratify(store, queue);
  ASSERT_TRUE(queue.is_empty());
  EXPECT_EQ(strata.first_used(5), 258U);
  EXPECT_EQ(strata.first_used(260), 260U);
  EXPECT_EQ(strata.first_used(1'000'001), strata::none);
  EXPECT_EQ(strata.of(260).remove_head(), 7U);
  EXPECT_EQ(strata.first_used(260), 300U);
  strata.of(260).add_after_last(7);

  captured_text ignored;
  gather(strata, queue, ignored);
  std::vector<path_index> order;
  for (path_index p = queue.first(); p != no_path; p = store.paths[p].next_path) order.push_back(p);
  std::vector<path_index> expected(sizes.size());
  std::iota(expected.begin(), expected.end(), 0);
  std::ranges::stable_sort(expected, {}, [&](path_index p) { return sizes[p]; });
  EXPECT_EQ(order, expected);
  EXPECT_EQ(queue.total_points(), std::accumulate(sizes.begin(), sizes.end(), std::int64_t{0}));
}

}  // namespace
}  // namespace trellion::testing
