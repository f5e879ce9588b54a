#include "ring_order.h"

#include <gtest/gtest.h>

#include <random>

namespace trellion::testing {
namespace {

/// A ring that grows between its points.
class growing_ring {
 public:
  growing_ring() {
    store.points.resize(max_points);
    store.paths.push_back({.n_points = 3});
    for (point_index p = 0; p < 3; ++p) {
      store.points[p].next = (p + 1) % 3;
      store.points[p].prev = (p + 2) % 3;
    }
    order.label(0);
  }

  /// Links so many new points in behind the given one.
  void grow(point_index before, std::uint32_t n_points) {
    const point_index after = store.points[before].next;
    const point_index first = size;
    for (; n_points > 0; --n_points, before = size++) {
      store.points[before].next = size;
      store.points[size].prev = before;
    }
    store.points[before].next = after;
    store.points[after].prev = before;
    order.label_inserted(first, before);
  }

  [[nodiscard]] bool is_in_order_from(point_index start) const {
    std::uint64_t distance = 0;
    for (point_index p = store.points[start].next; p != start; p = store.points[p].next) {
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

TEST(ring_order, holds_wherever_a_ring_grows) {
  enum place { behind_the_last, always_at_one, at_random };
  for (const place where : {behind_the_last, always_at_one, at_random}) {
    for (const std::uint32_t longest : {1U, 7U, 400U}) {
      std::mt19937 random(longest);
      growing_ring ring;
      while (ring.size + longest <= growing_ring::max_points) {
        const auto any = static_cast<point_index>(random() % ring.size);
        ring.grow(where == behind_the_last ? ring.size - 1
                  : where == always_at_one ? 1
                                           : any,
                  1 + static_cast<std::uint32_t>(random() % longest));
        if (random() % 50 == 0) {
          ASSERT_TRUE(ring.is_in_order_from(any)) << where << ' ' << longest << ' ' << ring.size;
        }
      }
      EXPECT_TRUE(ring.is_in_order_from(2));
    }
  }
}

}  // namespace
}  // namespace trellion::testing
