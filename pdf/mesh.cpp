#include "pdf/mesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "files.h"

namespace trellion::pdf {
namespace {

__extension__ using wide_product = unsigned __int128;

constexpr label no_label = UINT32_MAX;
/// The corners up to which all sides are compared with each other.
constexpr std::size_t max_simple_corners = 64;
/// The most looks at a corner from a side that telling two polygons apart may take.
constexpr std::size_t max_looks = 4096;

/// Drawn anew for every process, or figures could be made whose places all hash alike; nothing but
/// the time depends on it.
std::uint64_t hash_key() {
  static const std::uint64_t key = [] {
    std::random_device source;
    return std::uint64_t{source()} << 32 | source();
  }();
  return key;
}

std::uint64_t folded_product(std::uint64_t a, std::uint64_t b) {
  const wide_product p = wide_product{a} * b;
  return static_cast<std::uint64_t>(p) ^ static_cast<std::uint64_t>(p >> 64);
}

std::size_t hash_of(const place& point) {
  const std::uint64_t key = hash_key();
  const std::uint64_t x =
      folded_product(static_cast<std::uint64_t>(point.x) ^ key, 0x9e3779b97f4a7c15U);
  return folded_product(x ^ static_cast<std::uint64_t>(point.y), key | 1);
}

/// Whether points to the right are above it, in a turn about the start: [0, 180) degrees.
bool points_up(const place& from, const place& to) {
  return to.y > from.y || (to.y == from.y && to.x > from.x);
}

/// Whether b, which is on the line through a and c, lies between them or is one of them.
bool is_between(const place& a, const place& b, const place& c) {
  return std::min(a.x, c.x) <= b.x && b.x <= std::max(a.x, c.x) && std::min(a.y, c.y) <= b.y &&
         b.y <= std::max(a.y, c.y);
}

int sign(doubled_area a) { return a == 0 ? 0 : (a > 0 ? 1 : -1); }

/// Whether two sides have a point in common.
bool touch(const place& a, const place& b, const place& c, const place& d) {
  const int abc = sign(turn(a, b, c));
  const int abd = sign(turn(a, b, d));
  if (abc != 0 && abc == abd) return false;
  const int cda = sign(turn(c, d, a));
  const int cdb = sign(turn(c, d, b));
  if (cda != 0 && cda == cdb) return false;
  if (abc * abd < 0 && cda * cdb < 0) return true;
  return (abc == 0 && is_between(a, c, b)) || (abd == 0 && is_between(a, d, b)) ||
         (cda == 0 && is_between(c, a, d)) || (cdb == 0 && is_between(c, b, d));
}

/// Whether sides that are no neighbours touch.
bool meets_itself(std::span<const place> corners) {
  const std::size_t n = corners.size();
  for (std::size_t i = 0; i + 2 < n; ++i) {
    const std::size_t end = i == 0 ? n - 1 : n;
    for (std::size_t j = i + 2; j < end; ++j) {
      if (touch(corners[i], corners[i + 1], corners[j], corners[(j + 1) % n])) return true;
    }
  }
  return false;
}

bool is_clockwise(std::span<const place> corners) {
  doubled_area sum = 0;
  for (std::size_t i = 2; i < corners.size(); ++i) {
    sum += turn(corners[0], corners[i - 1], corners[i]);
  }
  return sum < 0;
}

/// The traits of an outline without equal neighbours.
outline_traits traits_of_distinct(std::span<const place> corners) {
  const std::size_t n = corners.size();
  if (n < 3) return {};
  bool left = false;
  bool right = false;
  // Between sides that point up and such that point down an outline changes twice when it turns one
  // way and goes round once: no turn is as much as a half.
  int changes = 0;
  place a = corners[n - 2];
  place b = corners[n - 1];
  for (const place& c : corners) {
    const doubled_area turned = turn(a, b, c);
    if (turned == 0 && !is_straight(a, b, c)) return {};
    left |= turned > 0;
    right |= turned < 0;
    if (points_up(a, b) != points_up(b, c)) ++changes;
    a = b;
    b = c;
  }
  if (left != right) return changes == 2 ? outline_traits{shape::convex, right} : outline_traits{};
  if (n > max_simple_corners || meets_itself(corners)) return {};
  return {shape::simple, is_clockwise(corners)};
}

/// Whether all corners of a polygon lie on or beyond the line along a side of a convex one.
bool has_line_between(const mesh& of, const polygon& convex, const polygon& p) {
  const std::span<const label> sides = of.corners_of(convex);
  const std::span<const label> corners = of.corners_of(p);
  const place* from = &of.points[sides.back()];
  for (const label end : sides) {
    const place* const to = &of.points[end];
    if (std::ranges::all_of(corners,
                            [&](label c) { return turn(*from, *to, of.points[c]) <= 0; })) {
      return true;
    }
    from = to;
  }
  return false;
}

}  // namespace

bool run_along(const place& a, const place& b, const place& c, const place& d, double distance,
               double least) {
  const auto dx = static_cast<double>(b.x - a.x);
  const auto dy = static_cast<double>(b.y - a.y);
  const double length = std::hypot(dx, dy);
  const auto along = [&](const place& p) {
    return (static_cast<double>(p.x - a.x) * dx + static_cast<double>(p.y - a.y) * dy) / length;
  };
  const auto aside = [&](const place& p) {
    return (static_cast<double>(p.x - a.x) * dy - static_cast<double>(p.y - a.y) * dx) / length;
  };
  const auto [low, high] = std::minmax({along(c), along(d)});
  return std::abs(aside(c)) <= distance && std::abs(aside(d)) <= distance &&
         std::min(high, length) - std::max(low, 0.0) > least;
}

label places::label_of(const place& point) {
  if (2 * points_.size() >= slots_.size()) grow();
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash_of(point) & mask;
  for (; slots_[slot] != no_label; slot = (slot + 1) & mask) {
    if (points_[slots_[slot]] == point) return slots_[slot];
  }
  if (points_.size() == max_labels) throw run_error("too many points");
  const auto result = static_cast<label>(points_.size());
  slots_[slot] = result;
  points_.push_back(point);
  return result;
}

void places::grow() {
  const std::size_t n_slots = std::max<std::size_t>(16, 2 * slots_.size());
  const std::size_t mask = n_slots - 1;
  slots_.clear();
  slots_.resize(n_slots, no_label);
  for (std::size_t i = 0; i < points_.size(); ++i) {
    std::size_t slot = hash_of(points_[i]) & mask;
    while (slots_[slot] != no_label) slot = (slot + 1) & mask;
    slots_[slot] = static_cast<label>(i);
  }
}

outline_traits traits_of(std::span<const place> corners) {
  if (corners.size() == 3) {
    const doubled_area area = turn(corners[0], corners[1], corners[2]);
    return area == 0 ? outline_traits{} : outline_traits{shape::convex, area < 0};
  }
  if (corners.empty()) return {};
  const bool is_closed = corners.front() == corners.back();
  if (!is_closed && std::ranges::adjacent_find(corners) == corners.end()) {
    return traits_of_distinct(corners);
  }
  std::vector<place> distinct;
  std::ranges::unique_copy(corners, std::back_inserter(distinct));
  while (distinct.size() > 1 && distinct.front() == distinct.back()) distinct.pop_back();
  return traits_of_distinct(distinct);
}

void mesh::add(std::uint32_t paint, const outline_traits& traits, std::span<const place> outline) {
  const std::size_t first = corners.size();
  if (first + outline.size() > UINT32_MAX || polygons.size() == max_labels) {
    throw run_error("too many polygons");
  }
  const bool keeps_all = traits.form == shape::other;
  for (const place& p : outline) {
    const label corner = points.label_of(p);
    if (keeps_all || corners.size() == first || corners.back() != corner) corners.push_back(corner);
  }
  if (!keeps_all) {
    while (corners.size() > first + 1 && corners.back() == corners[first]) corners.pop_back();
    if (traits.is_clockwise) {
      std::reverse(corners.begin() + static_cast<std::ptrdiff_t>(first), corners.end());
    }
  }
  polygons.push_back({paint, traits.form, traits.is_clockwise, static_cast<std::uint32_t>(first),
                      static_cast<std::uint32_t>(corners.size() - first)});
}

box painted_box(const mesh& of, const polygon& p) {
  const std::span<const label> corners = of.corners_of(p);
  if (corners.empty()) return {};
  box result = {of.points[corners[0]], of.points[corners[0]]};
  for (const label l : corners.subspan(1)) {
    const place& c = of.points[l];
    result.low = {std::min(result.low.x, c.x), std::min(result.low.y, c.y)};
    result.high = {std::max(result.high.x, c.x), std::max(result.high.y, c.y)};
  }
  // Beyond all coordinates it makes no difference.
  const std::int64_t more = std::clamp<std::int64_t>(of.reach_of(p.paint), 0, 2 * max_coordinate) +
                            (p.form == shape::other ? 1 : 0);
  return {{result.low.x - more, result.low.y - more}, {result.high.x + more, result.high.y + more}};
}

bool are_apart(const mesh& of, const polygon& a, const polygon& b) {
  const box one = painted_box(of, a);
  const box two = painted_box(of, b);
  if (one.high.x <= two.low.x || two.high.x <= one.low.x || one.high.y <= two.low.y ||
      two.high.y <= one.low.y) {
    return true;
  }
  if (a.form == shape::other || b.form == shape::other || of.reach_of(a.paint) > 0 ||
      of.reach_of(b.paint) > 0 || std::size_t{a.n_corners} * b.n_corners > max_looks) {
    return false;
  }
  return (a.form == shape::convex && has_line_between(of, a, b)) ||
         (b.form == shape::convex && has_line_between(of, b, a));
}

}  // namespace trellion::pdf
