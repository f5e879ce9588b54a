#include "batch/hairlines.h"

#include <algorithm>
#include <initializer_list>
#include <vector>

namespace trellion::batch {
namespace {

constexpr int visible_step = 8;

/// For every part of a row's pixels the least and the greatest value in that row and those beside
/// it, of all pictures looked at. The first and the last pixel stand there twice, so that all have
/// two neighbours.
class value_range {
 public:
  explicit value_range(std::size_t width)
      : low_(3 * (width + 2)), high_(low_.size()), n_bytes_(3 * width) {}

  void clear() {
    std::fill(low_.begin(), low_.end(), std::uint8_t{255});
    std::fill(high_.begin(), high_.end(), std::uint8_t{0});
  }
  void take_in(const pixmap& picture, std::size_t y) {
    const std::size_t last = std::min(y + 1, picture.height - 1);
    for (std::size_t i = y - std::min<std::size_t>(y, 1); i <= last; ++i) take_in(picture.row(i));
  }
  /// For every part of a row how far it lies outside, its neighbours' range included.
  void measure(const std::uint8_t* row, std::vector<std::uint8_t>& distance) const {
    // Copies of the members, which a byte written could be part of for all the compiler knows.
    const std::size_t n_bytes = n_bytes_;
    const std::uint8_t* const low = low_.data();
    const std::uint8_t* const high = high_.data();
    std::uint8_t* const result = distance.data();
    for (std::size_t i = 0; i < n_bytes; ++i) {
      const std::uint8_t least = std::min(std::min(low[i], low[i + 3]), low[i + 6]);
      const std::uint8_t greatest = std::max(std::max(high[i], high[i + 3]), high[i + 6]);
      result[i] = static_cast<std::uint8_t>(std::max(row[i], greatest) - greatest + least -
                                            std::min(row[i], least));
    }
  }

 private:
  void take_in(const std::uint8_t* row) {
    const std::size_t n_bytes = n_bytes_;
    std::uint8_t* const low = low_.data() + 3;
    std::uint8_t* const high = high_.data() + 3;
    for (std::size_t i = 0; i < n_bytes; ++i) {
      low[i] = std::min(low[i], row[i]);
      high[i] = std::max(high[i], row[i]);
    }
  }

  std::vector<std::uint8_t> low_;
  std::vector<std::uint8_t> high_;
  std::size_t n_bytes_;
};

/// How many pixels of a picture lie outside what the others show near them by more than a step.
std::int64_t count_outside(const pixmap& picture, std::initializer_list<const pixmap*> others,
                           int step) {
  for (const pixmap* other : others) {
    if (other->width != picture.width || other->height != picture.height) {
      throw run_error("the pictures differ in their sizes");
    }
  }
  std::int64_t count = 0;
  value_range range(picture.width);
  std::vector<std::uint8_t> distance(3 * picture.width);
  for (std::size_t y = 0; y < picture.height; ++y) {
    range.clear();
    for (const pixmap* other : others) range.take_in(*other, y);
    range.measure(picture.row(y), distance);
    for (std::size_t i = 0; i < distance.size(); i += 3) {
      const int farthest = std::max({distance[i], distance[i + 1], distance[i + 2]});
      count += farthest > step ? 1 : 0;
    }
  }
  return count;
}

}  // namespace

std::int64_t hairline_pixels(const pixmap& smooth, const pixmap& sharp) {
  return count_outside(smooth, {&sharp}, visible_step);
}

std::int64_t new_hairlines(const pixmap& smooth_before, const pixmap& sharp_before,
                           const pixmap& smooth_after, int tolerance) {
  return count_outside(smooth_after, {&smooth_before, &sharp_before}, visible_step + tolerance);
}

}  // namespace trellion::batch
