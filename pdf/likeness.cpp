#include "pdf/likeness.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "pdf/sorted_keys.h"

namespace trellion::pdf {
namespace {

/// Sides that stand a little before. A side that comes later takes the place of another, by and by
/// of all those that are too far away for deflate to see.
class recent_sides {
 public:
  recent_sides() : slots_(n_slots) {}

  /// Above 0 when the side was written in this direction, below when in the other.
  [[nodiscard]] int direction(label from, label to) const {
    const std::uint64_t found = slots_[slot_of(from, to)];
    if (found == joint_key(from, to)) return 1;
    return found == joint_key(to, from) ? -1 : 0;
  }
  void note(label from, label to) { slots_[slot_of(from, to)] = joint_key(from, to); }

 private:
  static constexpr std::size_t n_slots = 4096;
  static std::size_t slot_of(label from, label to) {
    // 2^64 over the golden ratio; the highest bits depend on all of the key.
    return joint_key(std::min(from, to), std::max(from, to)) * 0x9e3779b97f4a7c15U >> 52U;
  }

  std::vector<std::uint64_t> slots_;
};

/// 1 for a diagonal of a square, or nearly so, -1 for other slopes, and 0 for none.
int diagonal(const place& from, const place& to) {
  const std::int64_t width = std::abs(to.x - from.x);
  const std::int64_t height = std::abs(to.y - from.y);
  if (width == 0 || height == 0) return 0;
  return 100 * std::abs(width - height) <= width ? 1 : -1;
}

}  // namespace

void turn_alike(const places& points, outlines& all, std::span<const outline_batch> batches) {
  constexpr std::int64_t few_sides = 3;
  recent_sides recent;
  // Calls f with the ends of each side of the outlines in a range.
  const auto for_each_side = [&all](std::size_t begin, std::size_t end, auto f) {
    std::uint32_t first = begin == 0 ? 0 : all.ends[begin - 1];
    for (std::size_t i = begin; i < end; ++i) {
      label from = all.corners[all.ends[i] - 1];
      for (; first < all.ends[i]; ++first) {
        f(from, all.corners[first]);
        from = all.corners[first];
      }
    }
  };
  std::size_t begin = 0;
  for (const auto& [end, was_clockwise] : batches) {
    std::int64_t alike = 0;
    std::int64_t diagonals = 0;
    for_each_side(begin, end, [&](label a, label b) {
      alike += recent.direction(a, b);
      diagonals += diagonal(points[a], points[b]);
    });
    const bool turns_back = diagonals > 0 && was_clockwise;
    const bool turns_alike = (turns_back ? -alike : alike) < (diagonals > 0 ? -few_sides : 0);
    if (turns_back != turns_alike) {
      for (std::size_t i = begin; i < end; ++i) {
        const std::uint32_t first = i == 0 ? 0 : all.ends[i - 1];
        std::reverse(all.corners.begin() + first, all.corners.begin() + all.ends[i]);
      }
    }
    for_each_side(begin, end, [&](label a, label b) { recent.note(a, b); });
    begin = end;
  }
}

}  // namespace trellion::pdf
