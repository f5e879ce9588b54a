#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "coordinates.h"
#include "large_array.h"

namespace trellion {

/// What the hashes are made with, odd numbers.
struct hash_keys {
  std::uint64_t smaller_point;
  std::uint64_t larger_point;
  std::uint64_t last_factor;
};

/// The keys of this run. They are drawn anew for every run, or figures could be made whose edges
/// all hash alike; nothing but the time depends on them.
const hash_keys& drawn_keys();

/// Hashes the edge between two points, whichever comes first.
std::uint64_t edge_hash(const ps_point& a, const ps_point& b, const hash_keys& keys);

/// Which edges there have been, known by how far they reach along both axes, and roughly by their
/// places: the edges of a mesh are of few kinds in a neighbourhood. It can err: some that have
/// never been count, too.
class edge_filter {
 public:
  /// For edges such as those between the points.
  edge_filter(const large_array<ps_point>& points, const hash_keys& keys);

  /// Takes note of the edge between two points, whichever comes first.
  void insert(const ps_point& a, const ps_point& b) {
    const std::size_t i = place_of(a, b);
    bits_[i / 64] |= std::uint64_t{1} << i % 64;
  }
  /// False when there has been no such edge.
  [[nodiscard]] bool contains(const ps_point& a, const ps_point& b) const {
    const std::size_t i = place_of(a, b);
    return (bits_[i / 64] >> i % 64 & 1) != 0;
  }

 private:
  [[nodiscard]] std::size_t place_of(const ps_point& a, const ps_point& b) const {
    const auto [ax, ay] = a.coords;
    const auto [bx, by] = b.coords;
    const auto extent = [](std::int64_t from, std::int64_t to) {
      return static_cast<std::uint64_t>(to - from);
    };
    const auto region = [this](std::int64_t from, std::int64_t to) {
      return static_cast<std::uint64_t>((from + to) >> region_shift_);
    };
    const std::uint64_t root =
        extent(ax, bx) * keys_.smaller_point + extent(ay, by) * keys_.larger_point;
    const std::uint64_t place =
        region(ax, bx) * keys_.larger_point + region(ay, by) * keys_.smaller_point;
    // The square does not know the direction.
    return static_cast<std::size_t>((root * root + place) * keys_.last_factor >> hash_shift_);
  }

  hash_keys keys_;
  int region_shift_;
  int hash_shift_;
  std::vector<std::uint64_t> bits_;
};

}  // namespace trellion
