#include "edge_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace trellion::testing {
namespace {

TEST(edge_index, finds_edges_that_were_put_off_once_they_are_added) {
  path_store store;
  const std::array<ps_point, 2> ends = {ps_point{{0, 0}, nullptr}, ps_point{{9, 5}, nullptr}};
  constexpr std::uint32_t n_points = 4;  // there and back twice: all edges lie alike
  for (std::uint32_t i = 0; i < 2 * n_points; ++i) store.points.push_back(ends[i % 2]);
  store.links.resize(store.points.size());
  store.paths.resize(2);
  for (const path_index path : {0U, 1U}) {
    tokens_to_ps_path(store, path, path * n_points, n_points);
  }
  edge_index index(store, 8);
  index.set_rank(0, 1);
  index.set_rank(1, 2);

  // Put off, changed, and put off again: it is in the list twice, with another one between.
  index.add_changed({0, 1});
  index.remove(0);
  index.add_changed({0, 2});
  index.remove(2);
  EXPECT_TRUE(index.contains(0));
  EXPECT_EQ(index.only_partner(0), no_point);
  index.add_put_off();
  EXPECT_FALSE(index.contains(2));
  EXPECT_EQ(index.only_partner(0), 1U);
  EXPECT_EQ(index.only_partner(1), 0U);

  // There is such an edge now: the next one is not put off.
  index.add_changed({n_points});
  EXPECT_EQ(index.first_neighbour(n_points).what, 0U);
  EXPECT_EQ(index.first_neighbour(0).what, 1U);
}

TEST(edge_index, knows_a_path_once_in_each_of_many_crowds) {
  constexpr point_index n_points = 12;  // six steps there, six back: each edge has another like it
  for (const bool first_goes : {false, true}) {
    path_store store;
    for (const path_index path : {0U, 1U}) {
      for (point_index i = 0; i < n_points; ++i) {
        const auto step = static_cast<std::int32_t>(std::min(i, n_points - i));
        store.points.push_back({{step, 7 * step * step}, nullptr});
      }
      store.links.resize(store.points.size());
      store.paths.emplace_back();
      tokens_to_ps_path(store, path, path * n_points, n_points);
    }
    edge_index index(store, 1);
    index.set_rank(0, 1);
    index.set_rank(1, 2);
    index.add_all();
    for (edge e = 0; e < n_points / 2; ++e) {
      const edge back = n_points - 1 - e;
      ASSERT_TRUE(index.gather_crowd(e));
      const crowd_id crowd = index.crowd_of(e);
      ASSERT_EQ(index.crowd_of(back), crowd);
      EXPECT_EQ(index.first_in_crowd(crowd, 0).what, 1U);
      // One of its edges goes: by the other one it is found all the same.
      index.remove(first_goes ? e : back);
      EXPECT_EQ(index.first_in_crowd(crowd, 1).what, 0U) << e;
      index.remove(first_goes ? back : e);
      EXPECT_EQ(index.first_in_crowd(crowd, 1).what, no_path) << e;
    }
  }
}

}  // namespace
}  // namespace trellion::testing
