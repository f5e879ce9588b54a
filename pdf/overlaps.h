#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "pdf/mesh.h"

namespace trellion::pdf {

/// A box on a coarser grid. Boxes that overlap do so on the grid.
struct coarse_box {
  std::int32_t left;
  std::int32_t bottom;
  std::int32_t right;
  std::int32_t top;

  [[nodiscard]] bool overlaps(const coarse_box& other) const {
    // Jumps would be hard to foretell.
    return (static_cast<int>(left <= other.right) & static_cast<int>(other.left <= right) &
            static_cast<int>(bottom <= other.top) & static_cast<int>(other.bottom <= top)) != 0;
  }
  void include(const coarse_box& other);
};

/// Makes the boxes of a mesh coarse.
class coarse_grid {
 public:
  explicit coarse_grid(const mesh& of);

  [[nodiscard]] coarse_box operator()(const box& b) const;
  /// The place of a box along a curve through the grid on which neighbours are near each other.
  [[nodiscard]] std::uint32_t place_on_curve(const coarse_box& b) const;

 private:
  place origin_ = {INT64_MAX, INT64_MAX};
  place end_ = {INT64_MIN, INT64_MIN};
  int shift_ = 0;
  int curve_shift_ = 0;  // to 16 bits
};

/// Finds the polygons of a mesh that are in each other's way, or near a place. It is a tree of
/// boxes over all polygons, those near each other side by side, in which every eight make a node of
/// the level above, so that it serves meshes of any density.
class overlaps {
 public:
  /// The mesh must outlive this, and stay as it is.
  explicit overlaps(const mesh& of);
  /// Of some polygons of it only, at least one: for add_near().
  overlaps(const mesh& of, std::span<const std::uint32_t> polygons);

  /// Adds the polygons from `first` up to a polygon that are not proven apart from it and have
  /// another paint. Their order is that of the tree. False when that takes too long to find out:
  /// the work is bounded, and some of them may have been added.
  bool add_earlier(std::uint32_t polygon, std::uint32_t first,
                   std::vector<std::uint32_t>& found) const;
  /// Adds the polygons whose boxes have a point in common with the given one, and some that only
  /// nearly have; not all, when there are very many.
  void add_near(const box& around, std::vector<std::uint32_t>& found) const;

 private:
  struct node {
    coarse_box bounds;
    std::uint32_t first;  ///< the smallest index of a polygon below
    std::uint32_t last;   ///< the largest
  };

  /// A key with the place on the curve and the index of a polygon.
  [[nodiscard]] std::uint64_t key_of(std::uint32_t polygon) const;
  void build(std::vector<std::uint64_t> order);

  /// Calls f with the polygons below nodes that are wanted and overlap a box; it tells what that
  /// cost. False when it ends before all have been looked at, since the work is bounded.
  template <class Wanted, class F>
  bool search(const coarse_box& around, Wanted is_wanted, F f) const;

  const mesh& of_;
  coarse_grid grid_;
  std::vector<std::uint32_t> leaves_;      // by polygon, its place in the lowest level
  std::vector<std::vector<node>> levels_;  // from the single polygons up to one node
};

}  // namespace trellion::pdf
