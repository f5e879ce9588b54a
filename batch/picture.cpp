#include "batch/picture.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

namespace trellion::batch {
namespace {

bool is_blank(const pixmap& picture) {
  const std::size_t size = picture.rgb.size();
  return size <= 3 || std::memcmp(picture.rgb.data(), picture.rgb.data() + 3, size - 3) == 0;
}

/// Puts pixels that touch, at their corners too, in groups and counts them. They come row by row
/// and from left to right.
class pixel_groups {
 public:
  explicit pixel_groups(std::size_t width) : above_(width + 2), row_(width + 2) {}

  void next_row() {
    above_.swap(row_);
    if (above_is_used_) std::fill(row_.begin(), row_.end(), 0);
    above_is_used_ = std::exchange(is_used_, false);
  }
  void add(std::size_t x) {
    std::size_t group = 0;
    for (const std::size_t neighbour : {row_[x], above_[x], above_[x + 1], above_[x + 2]}) {
      if (neighbour != 0) group = group == 0 ? head_of(neighbour) : join(group, head_of(neighbour));
    }
    if (group == 0) {
      group = groups_.size();
      groups_.push_back({group, 0});
    }
    row_[x + 1] = group;
    is_used_ = true;
    largest_ = std::max(largest_, ++groups_[group].size);
  }
  [[nodiscard]] std::int64_t largest() const { return largest_; }

 private:
  /// A group that has become part of another one leads there.
  struct group_node {
    std::size_t parent;
    std::int64_t size;
  };

  std::size_t head_of(std::size_t group) {
    while (groups_[group].parent != group) {
      groups_[group].parent = groups_[groups_[group].parent].parent;
      group = groups_[group].parent;
    }
    return group;
  }
  std::size_t join(std::size_t a, std::size_t b) {
    if (a == b) return a;
    if (groups_[a].size < groups_[b].size) std::swap(a, b);
    groups_[b].parent = a;
    groups_[a].size += groups_[b].size;
    return a;
  }

  // By column, with one more at either end; 0 for none.
  std::vector<std::size_t> above_;
  std::vector<std::size_t> row_;
  bool is_used_ = false;  ///< the row
  bool above_is_used_ = false;
  std::vector<group_node> groups_{{0, 0}};
  std::int64_t largest_ = 0;
};

class comparison {
 public:
  comparison(const pixmap& a, const pixmap& b, int tolerance)
      : a_(a), b_(b), tolerance_(tolerance), wrong_(a.width) {}

  picture_difference run() {
    sum_.pixels = static_cast<std::int64_t>(a_.width * a_.height);
    sum_.blank = is_blank(a_) || is_blank(b_);
    for (std::size_t y = 0; y < a_.height; ++y) {
      wrong_.next_row();
      compare_rows(y);
    }
    sum_.wrong_together = wrong_.largest();
    return sum_;
  }

 private:
  /// Most of two pictures is the same: stretches of pixels that are need no closer look.
  void compare_rows(std::size_t y) {
    const std::uint8_t* const row_of_a = a_.row(y);
    const std::uint8_t* const row_of_b = b_.row(y);
    if (std::memcmp(row_of_a, row_of_b, 3 * a_.width) == 0) return;
    constexpr std::size_t stretch = 32;
    for (std::size_t begin = 0; begin < a_.width; begin += stretch) {
      const std::size_t end = std::min(begin + stretch, a_.width);
      const std::size_t n_bytes = 3 * (end - begin);
      if (std::memcmp(row_of_a + 3 * begin, row_of_b + 3 * begin, n_bytes) == 0) continue;
      for (std::size_t x = begin; x < end; ++x) {
        if (differ(row_of_a + 3 * x, row_of_b + 3 * x)) look_closely(x, y);
      }
    }
  }

  void look_closely(std::size_t x, std::size_t y) {
    ++sum_.differing;
    const int n_wrong = (occurs_near(a_.row(y) + 3 * x, b_, x, y) ? 0 : 1) +
                        (occurs_near(b_.row(y) + 3 * x, a_, x, y) ? 0 : 1);
    if (n_wrong == 0) return;
    pixel_box& box = sum_.wrong_within;
    if (sum_.wrong == 0) box = {x, y, x + 1, y + 1};
    box = {std::min(box.left, x), box.top, std::max(box.right, x + 1), y + 1};
    sum_.wrong += n_wrong;
    wrong_.add(x);
  }

  [[nodiscard]] bool occurs_near(const std::uint8_t* colour, const pixmap& picture, std::size_t x,
                                 std::size_t y) const {
    const std::size_t right = std::min(x + 1, picture.width - 1);
    const std::size_t bottom = std::min(y + 1, picture.height - 1);
    for (std::size_t i = y - std::min<std::size_t>(y, 1); i <= bottom; ++i) {
      for (std::size_t j = x - std::min<std::size_t>(x, 1); j <= right; ++j) {
        if (!differ(colour, picture.row(i) + 3 * j)) return true;
      }
    }
    return false;
  }

  [[nodiscard]] bool differ(const std::uint8_t* p, const std::uint8_t* q) const {
    return std::abs(p[0] - q[0]) > tolerance_ || std::abs(p[1] - q[1]) > tolerance_ ||
           std::abs(p[2] - q[2]) > tolerance_;
  }

  const pixmap& a_;
  const pixmap& b_;
  int tolerance_;
  pixel_groups wrong_;
  picture_difference sum_;
};

}  // namespace

std::optional<picture_difference> compare(const pixmap& a, const pixmap& b, int tolerance) {
  if (a.width != b.width || a.height != b.height) return std::nullopt;
  return comparison(a, b, tolerance).run();
}

}  // namespace trellion::batch
