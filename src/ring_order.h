#pragma once

#include <cstdint>
#include <vector>

#include "postscript_path.h"

namespace trellion {

/// Tells in constant time how far round a growing ring a point is from another. Each point of a
/// ring has a label; they become larger from point to point, modulo 2^64, once round the ring.
/// Labels change, but the one of two points of a ring that has the smaller label always has it.
/// Points that leave a ring do not matter. The labels take memory from the first use on.
class ring_order {
 public:
  /// The store must outlive the order; it gets no more points.
  explicit ring_order(const path_store& store) : store_(store) {}

  /// Labels a ring, in time of its length.
  void label(path_index path);
  /// Labels the stretch of points from `first` to `last`, which has just been linked into a
  /// labelled ring. Over many insertions the time for each point grows with the logarithm of the
  /// ring's length.
  void label_inserted(point_index first, point_index last);
  /// Larger for a point further on from `start` in the same labelled ring; 0 for `start` itself.
  [[nodiscard]] std::uint64_t distance(point_index start, point_index to) const {
    return labels_[to] - labels_[start];
  }

  /// Compares points of the same labelled ring, for sets of them. A point must be taken out of its
  /// set before points are inserted into a ring that it has left.
  struct by_label {
    const ring_order* order;
    bool operator()(point_index a, point_index b) const {
      return order->labels_[a] < order->labels_[b];
    }
  };

 private:
  void make_room(point_index first, point_index last, std::uint64_t n_inserted);
  void spread(point_index first, std::uint64_t n_points, std::uint64_t label, std::uint64_t step);

  const path_store& store_;
  std::vector<std::uint64_t> labels_;  // by point
};

}  // namespace trellion
