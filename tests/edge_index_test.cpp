#include "edge_index.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace trellion::testing
