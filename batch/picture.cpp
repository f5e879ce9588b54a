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

/// Makes a box hold a pixel that is no higher than it.
void widen(pixel_box& box, const pixel_place& place) {
  box = {std::min(box.left, place.x), box.top, std::max(box.right, place.x + 1), place.y + 1};
}

/// Counts again when some of the places have been dropped.
void count_places(std::size_t width, picture_difference& found) {
  found.wrong = std::ssize(found.places);
  found.wrong_together = 0;
  found.wrong_within = {};
  if (found.places.empty()) return;
  pixel_groups groups(width);
  std::size_t row = found.places.front().y;
  found.wrong_within = {width, row, 0, 0};
  for (const pixel_place& place : found.places) {
    for (; row < place.y; ++row) groups.next_row();
    groups.add(place.x);
    widen(found.wrong_within, place);
  }
  found.wrong_together = groups.largest();
}

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
    if (sum_.wrong > most_places) sum_.places = {};
    return std::move(sum_);
  }

  /// How many of the two pixels there are wrong.
  [[nodiscard]] int wrong_at(std::size_t x, std::size_t y) const {
    if (!differ(a_.row(y) + 3 * x, b_.row(y) + 3 * x)) return 0;
    return (occurs_near(a_.row(y) + 3 * x, b_, x, y) ? 0 : 1) +
           (occurs_near(b_.row(y) + 3 * x, a_, x, y) ? 0 : 1);
  }

  [[nodiscard]] bool is_wrong_near(const pixel_place& place) const {
    const std::size_t right = std::min(place.x + 1, a_.width - 1);
    const std::size_t bottom = std::min(place.y + 1, a_.height - 1);
    for (std::size_t y = place.y - std::min<std::size_t>(place.y, 1); y <= bottom; ++y) {
      for (std::size_t x = place.x - std::min<std::size_t>(place.x, 1); x <= right; ++x) {
        if (wrong_at(x, y) > 0) return true;
      }
    }
    return false;
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
    const int n_wrong = wrong_at(x, y);
    if (n_wrong == 0) return;
    if (sum_.wrong == 0) sum_.wrong_within = {x, y, x + 1, y + 1};
    widen(sum_.wrong_within, {x, y});
    sum_.wrong += n_wrong;
    wrong_.add(x);
    if (sum_.wrong <= most_places) sum_.places.push_back({x, y});
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

void keep_wrong_in(const pixmap& a, const pixmap& b, int tolerance, picture_difference& found) {
  const comparison others(a, b, tolerance);
  if (std::erase_if(found.places, [&others](const pixel_place& place) {
        return !others.is_wrong_near(place);
      }) > 0) {
    count_places(a.width, found);
  }
}

void keep_wrong_in_rows(std::size_t least, picture_difference& found) {
  const std::size_t width = found.wrong_within.right;
  std::vector<pixel_place> kept;
  const std::vector<pixel_place>& all = found.places;
  for (std::size_t n = 0; n < all.size();) {
    const std::size_t begin = n++;
    while (n < all.size() && all[n] == pixel_place{all[n - 1].x + 1, all[begin].y}) {
      ++n;
    }
    if (n - begin < least) continue;
    for (std::size_t i = begin; i < n; ++i) kept.push_back(all[i]);
  }
  if (kept.size() == all.size()) return;
  found.places = std::move(kept);
  count_places(width, found);
}

}  // namespace trellion::batch
