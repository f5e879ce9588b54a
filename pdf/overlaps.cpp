#include "pdf/overlaps.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <utility>

#include "pdf/sorted_keys.h"

namespace trellion::pdf {
namespace {

/// Polygons below a node.
constexpr std::uint32_t width = 8;
/// What one search may cost: 1 for a look at a box, and 1 for each corner seen from a side.
constexpr std::uint32_t most_work = 2048;

/// The 16 bits of a number with a 0 before each.
std::uint32_t spread(std::uint32_t b) {
  b = (b | b << 8) & 0x00ff00ffU;
  b = (b | b << 4) & 0x0f0f0f0fU;
  b = (b | b << 2) & 0x33333333U;
  return (b | b << 1) & 0x55555555U;
}

}  // namespace

coarse_grid::coarse_grid(const mesh& of) {
  for (const polygon& p : of.polygons) {
    const box b = painted_box(of, p);
    origin_ = {std::min(origin_.x, b.low.x), std::min(origin_.y, b.low.y)};
    end_ = {std::max(end_.x, b.high.x), std::max(end_.y, b.high.y)};
  }
  const std::int64_t size = std::max({end_.x - origin_.x, end_.y - origin_.y, std::int64_t{1}});
  const int bits = static_cast<int>(std::bit_width(static_cast<std::uint64_t>(size)));
  shift_ = std::max(0, bits - 31);
  curve_shift_ = std::max(0, bits - shift_ - 16);
}

coarse_box coarse_grid::operator()(const box& b) const {
  const auto coarse = [this](std::int64_t value, std::int64_t low, std::int64_t high) {
    return static_cast<std::int32_t>((std::clamp(value, low, high) - low) >> shift_);
  };
  return {coarse(b.low.x, origin_.x, end_.x), coarse(b.low.y, origin_.y, end_.y),
          coarse(b.high.x, origin_.x, end_.x), coarse(b.high.y, origin_.y, end_.y)};
}

std::uint32_t coarse_grid::place_on_curve(const coarse_box& b) const {
  const std::int64_t x = (std::int64_t{b.left} + b.right) / 2 >> curve_shift_;
  const std::int64_t y = (std::int64_t{b.bottom} + b.top) / 2 >> curve_shift_;
  return spread(static_cast<std::uint32_t>(x)) | spread(static_cast<std::uint32_t>(y)) << 1;
}

void coarse_box::include(const coarse_box& other) {
  left = std::min(left, other.left);
  bottom = std::min(bottom, other.bottom);
  right = std::max(right, other.right);
  top = std::max(top, other.top);
}

overlaps::overlaps(const mesh& of) : of_(of), grid_(of), leaves_(of.polygons.size()) {
  std::vector<std::uint64_t> order(of.polygons.size());
  for (std::uint32_t p = 0; p < order.size(); ++p) order[p] = key_of(p);
  build(std::move(order));
}

overlaps::overlaps(const mesh& of, std::span<const std::uint32_t> polygons)
    : of_(of), grid_(of), leaves_(of.polygons.size()) {
  std::vector<std::uint64_t> order;
  order.reserve(polygons.size());
  for (const std::uint32_t p : polygons) order.push_back(key_of(p));
  build(std::move(order));
}

std::uint64_t overlaps::key_of(std::uint32_t polygon) const {
  return joint_key(grid_.place_on_curve(grid_(painted_box(of_, of_.polygons[polygon]))), polygon);
}

void overlaps::build(std::vector<std::uint64_t> order) {
  sort_keys(order);
  const std::size_t n = order.size();
  std::vector<node> level(n);
  for (std::uint32_t i = 0; i < n; ++i) {
    const std::uint32_t p = second_of(order[i]);
    leaves_[p] = i;
    level[i] = {grid_(painted_box(of_, of_.polygons[p])), p, p};
  }
  while (level.size() > 1) {
    std::vector<node> above((level.size() + width - 1) / width);
    for (std::size_t i = 0; i < level.size(); ++i) {
      node& to = above[i / width];
      if (i % width == 0) {
        to = level[i];
      } else {
        to.bounds.include(level[i].bounds);
        to.first = std::min(to.first, level[i].first);
        to.last = std::max(to.last, level[i].last);
      }
    }
    levels_.push_back(std::move(level));
    level = std::move(above);
  }
  levels_.push_back(std::move(level));
}

template <class Wanted, class F>
bool overlaps::search(const coarse_box& around, Wanted is_wanted, F f) const {
  struct position {
    std::uint32_t level;
    std::uint32_t index;
  };
  std::uint32_t work = 0;
  // Of each level but the lowest at most the nodes below one node wait.
  std::array<position, std::size_t{12} * width> waiting;
  std::size_t n_waiting = 0;
  waiting[n_waiting++] = {static_cast<std::uint32_t>(levels_.size() - 1), 0};
  while (n_waiting > 0) {
    const position at = waiting[--n_waiting];
    if (at.level == 0) {
      work += f(levels_[0][at.index].first);
      if (work > most_work) return false;
      continue;
    }
    const std::vector<node>& below = levels_[at.level - 1];
    const std::size_t begin = std::size_t{at.index} * width;
    const std::size_t end = std::min(begin + width, below.size());
    work += width;
    if (work > most_work) return false;
    for (std::size_t i = begin; i < end; ++i) {
      waiting[n_waiting] = {at.level - 1, static_cast<std::uint32_t>(i)};
      n_waiting += static_cast<std::size_t>(is_wanted(below[i])) &
                   static_cast<std::size_t>(below[i].bounds.overlaps(around));
    }
  }
  return true;
}

bool overlaps::add_earlier(std::uint32_t polygon, std::uint32_t first,
                           std::vector<std::uint32_t>& found) const {
  const trellion::pdf::polygon& p = of_.polygons[polygon];
  const auto is_earlier = [&](const node& n) { return n.first < polygon && n.last >= first; };
  return search(levels_[0][leaves_[polygon]].bounds, is_earlier, [&](std::uint32_t other) {
    const trellion::pdf::polygon& q = of_.polygons[other];
    if (q.paint == p.paint) return 0U;
    const std::uint32_t work = std::min(p.n_corners, most_work) * std::min(q.n_corners, most_work);
    if (work <= most_work && !are_apart(of_, p, q)) found.push_back(other);
    return work;
  });
}

void overlaps::add_near(const box& around, std::vector<std::uint32_t>& found) const {
  search(
      grid_(around), [](const node&) { return true; },
      [&](std::uint32_t polygon) {
        found.push_back(polygon);
        return 1U;
      });
}

}  // namespace trellion::pdf
