#include "edge_hash.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <random>

namespace trellion {
namespace {

std::uint64_t packed(const ps_point& p) {
  return std::uint64_t{static_cast<std::uint32_t>(p.coords[0])} << 32 |
         static_cast<std::uint32_t>(p.coords[1]);
}

std::uint64_t drawn_number(std::random_device& source) {
  static_assert(std::random_device::max() == UINT32_MAX);
  const std::uint64_t upper = source();
  return upper << 32 | source();
}

/// Both halves of a product of 128 bits, so that no bit of n is lost, not the highest either.
std::uint64_t folded(std::uint64_t n, std::uint64_t key) {
  __extension__ using product = unsigned __int128;
  const product p = product{n} * key;
  return static_cast<std::uint64_t>(p) + static_cast<std::uint64_t>(p >> 64);
}

/// The mean of the extents between points that follow each other, of some of them. A few very large
/// ones make it large: then the filter knows less, and its user does more in vain.
std::uint64_t mean_extent(const large_array<ps_point>& points) {
  constexpr std::size_t n_samples = 256;
  const std::size_t step = points.size() / n_samples + 1;
  std::uint64_t sum = 0;
  std::uint64_t n = 1;
  for (std::size_t i = 1; i < points.size(); i += step, ++n) {
    for (std::size_t axis = 0; axis < 2; ++axis) {
      const std::int64_t from = points[i - 1].coords[axis];
      sum += static_cast<std::uint64_t>(std::abs(points[i].coords[axis] - from));
    }
  }
  return sum / n;
}

}  // namespace

/// Drawn once: a file can have very many groups, each with an index.
const hash_keys& drawn_keys() {
  static const hash_keys keys = [] {
    std::random_device source;
    return hash_keys{drawn_number(source) | 1, drawn_number(source) | 1, drawn_number(source) | 1};
  }();
  return keys;
}

std::uint64_t edge_hash(const ps_point& a, const ps_point& b, const hash_keys& keys) {
  const auto [smaller, larger] = std::minmax({packed(a), packed(b)});
  const std::uint64_t h = folded(smaller, keys.smaller_point) + folded(larger, keys.larger_point);
  return (h ^ h >> 32) * keys.last_factor;
}

edge_filter::edge_filter(const large_array<ps_point>& points, const hash_keys& keys)
    : keys_(keys),
      // A region is some eight extents wide.
      region_shift_(static_cast<int>(std::bit_width(mean_extent(points))) + 3) {
  constexpr int most_bits = 21;  // near at hand in the caches
  const int n_bits = std::clamp(static_cast<int>(std::bit_width(points.size())), 6, most_bits);
  hash_shift_ = 64 - n_bits;
  bits_.resize((std::size_t{1} << n_bits) / 64);
}

}  // namespace trellion
