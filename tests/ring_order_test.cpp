#include "ring_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace trellion::testing {
namespace {

/// A ring that grows between its points.
class growing_ring {
 public:
  growing_ring() {
    store.links.resize(max_points);
    store.paths.push_back({.n_points = 3});
    for (point_index p = 0; p < 3; ++p) {
      store.links[p].next = (p + 1) % 3;
      store.links[p].prev = (p + 2) % 3;
    }
    order.label(0);
  }

  /// Links so many new points in after the given one.
  void grow(point_index before, std::uint32_t n_points) {
    const point_index after = store.next(before);
    const point_index first = size;
    for (; n_points > 0; --n_points, before = size++) {
      store.links[before].next = size;
      store.links[size].prev = before;
    }
    store.links[before].next = after;
    store.links[after].prev = before;
    order.label_inserted(first, before);
  }

  /// Leaves so many points in the ring, from the given one on.
  void shrink(point_index first, std::uint32_t n_points) {
    point_index last = first;
    for (; n_points > 1; --n_points) last = store.next(last);
    store.links[last].next = first;
    store.links[first].prev = last;
  }

  /// The points of the ring, the smallest label first.
  [[nodiscard]] std::set<point_index, ring_order::by_label> by_label(point_index start) const {
    std::set<point_index, ring_order::by_label> points({&order});
    do {
      points.insert(start);
      start = store.next(start);
    } while (!points.contains(start));
    return points;
  }

  [[nodiscard]] bool is_in_order_from(point_index start) const {
    std::uint64_t distance = 0;
    for (point_index p = store.next(start); p != start; p = store.next(p)) {
      if (order.distance(start, p) <= distance) return false;
      distance = order.distance(start, p);
    }
    return true;
  }

  static constexpr std::uint32_t max_points = 6000;
  path_store store;
  ring_order order{store};
  std::uint32_t size = 3;
};

TEST(ring_order, keeps_the_smaller_label_smaller) {
  std::mt19937 random(1);
  growing_ring ring;
  while (ring.size + 100 <= growing_ring::max_points) {
    const auto before = ring.by_label(1);
    for (int i = 0; i < 20; ++i) {
      ring.grow(random() % 2 == 0 ? 1 : *before.begin(),
                1 + static_cast<std::uint32_t>(random() % 3));
    }
    ASSERT_TRUE(std::ranges::is_sorted(before, before.key_comp())) << ring.size;
    ASSERT_TRUE(ring.is_in_order_from(1));
    // Those that stay are so close together that there is soon no room between any.
    if (random() % 4 == 0) ring.shrink(1, 12);
  }
}

}  // namespace
}  // namespace trellion::testing
