#include "pdf/shared_corners.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>
#include <vector>

#include "pdf/overlaps.h"
#include "pdf/sorted_keys.h"

namespace trellion::pdf {
namespace {

/// More sides to look about are not worth the time.
constexpr std::size_t most_lone = std::size_t{1} << 18;
/// How many others are looked at for each polygon, on the average: where polygons lie on each other
/// no more corners are added then.
constexpr std::size_t most_near = 64;
constexpr std::uint32_t many_corners = 64;

bool is_fit(const mesh& of, const polygon& p) {
  return p.form != shape::other && of.reach_of(p.paint) == 0 && p.n_corners <= many_corners;
}

/// Calls f with the ends of each side of a polygon.
template <class F>
void for_each_side(std::span<const label> corners, F f) {
  label from = corners.back();
  for (const label to : corners) f(std::exchange(from, to), to);
}

std::uint64_t scrambled(label at) {
  std::uint64_t x = (std::uint64_t{at} + 1) * 0x9e3779b97f4a7c15U;
  x ^= x >> 32;
  return x * 0xd6e8feb86659fd93U;
}

/// By label, whether sides without a partner start or end there: what the others are the sums of
/// goes out again. Most meshes have few, and all sides need not be sorted to find them. Were two
/// sums equal by chance, some corners would not be shared.
std::vector<bool> ragged_labels(const mesh& of) {
  std::vector<std::uint64_t> sums(of.points.size());
  for (const polygon& p : of.polygons) {
    if (p.form == shape::other) continue;
    for_each_side(of.corners_of(p), [&](label from, label to) {
      sums[from] += scrambled(to);
      sums[to] -= scrambled(from);
    });
  }
  std::vector<bool> result(sums.size());
  for (std::size_t i = 0; i < sums.size(); ++i) result[i] = sums[i] != 0;
  return result;
}

/// The sides, as keys of where they start and end, that none runs opposite to; sorted.
std::vector<std::uint64_t> lone_sides(const mesh& of, const std::vector<bool>& ragged) {
  std::vector<std::uint64_t> sides;
  for (const polygon& p : of.polygons) {
    if (p.form == shape::other) continue;
    for_each_side(of.corners_of(p), [&](label from, label to) {
      if (!ragged[from] || !ragged[to]) return;
      sides.push_back(from < to ? joint_key(from, to << 1) : joint_key(to, from << 1 | 1));
    });
  }
  sort_keys(sides);
  std::size_t n_lone = 0;
  for (std::size_t i = 0; i < sides.size();) {
    const std::uint64_t first = sides[i];
    while (i < sides.size() && sides[i] == first) ++i;
    if (i < sides.size() && sides[i] >> 1 == first >> 1) {
      while (i < sides.size() && sides[i] >> 1 == first >> 1) ++i;
      continue;
    }
    const label smaller = first_of(first);
    const label larger = second_of(first) >> 1;
    sides[n_lone++] = first % 2 == 0 ? joint_key(smaller, larger) : joint_key(larger, smaller);
  }
  sides.resize(n_lone);
  sort_keys(sides);
  return sides;
}

/// The polygons that are fit and have a lone side.
std::vector<std::uint32_t> with_lone_sides(const mesh& of, const std::vector<bool>& ragged,
                                           std::span<const std::uint64_t> lone) {
  std::vector<std::uint32_t> result;
  for (std::uint32_t i = 0; i < of.polygons.size(); ++i) {
    if (!is_fit(of, of.polygons[i])) continue;
    bool has_one = false;
    for_each_side(of.corners_of(of.polygons[i]), [&](label from, label to) {
      has_one = has_one || (ragged[from] && ragged[to] &&
                            std::ranges::binary_search(lone, joint_key(from, to)));
    });
    if (has_one) result.push_back(i);
  }
  return result;
}

/// Finds the corners that a side gets.
class finder {
 public:
  /// `polygons` have the lone sides.
  finder(const mesh& of, std::int64_t tolerance, std::vector<std::uint64_t> lone,
         std::span<const std::uint32_t> polygons)
      : of_(of), tolerance_(tolerance), lone_(std::move(lone)), search_(of, polygons) {}

  /// The corners to add to a side of a polygon, from its start on.
  const std::vector<label>& corners_on(std::uint32_t p, label from, label to);

 private:
  struct found_corner {
    double along;
    label corner;
  };

  [[nodiscard]] bool is_lone(label from, label to) const {
    return std::ranges::binary_search(lone_, joint_key(from, to));
  }
  void look_at(std::uint32_t other, const place& a, const place& b);

  const mesh& of_;
  std::int64_t tolerance_;
  std::vector<std::uint64_t> lone_;
  overlaps search_;
  std::size_t n_near_ = 0;  // so many polygons were looked at
  std::vector<std::uint32_t> near_;
  std::vector<found_corner> found_;
  std::vector<label> result_;
};

const std::vector<label>& finder::corners_on(std::uint32_t p, label from, label to) {
  result_.clear();
  if (n_near_ > most_near * of_.polygons.size() || !is_lone(from, to)) return result_;
  const place& a = of_.points[from];
  const place& b = of_.points[to];
  near_.clear();
  search_.add_near({{std::min(a.x, b.x) - tolerance_, std::min(a.y, b.y) - tolerance_},
                    {std::max(a.x, b.x) + tolerance_, std::max(a.y, b.y) + tolerance_}},
                   near_);
  n_near_ += near_.size();
  found_.clear();
  for (const std::uint32_t other : near_) {
    const polygon& q = of_.polygons[other];
    if (other != p && q.paint == of_.polygons[p].paint) look_at(other, a, b);
  }
  std::ranges::sort(found_, {}, &found_corner::along);
  for (const found_corner& each : found_) {
    if (result_.empty() || result_.back() != each.corner) result_.push_back(each.corner);
  }
  return result_;
}

/// Notes the ends of sides of another polygon that run back along the one from a to b.
void finder::look_at(std::uint32_t other, const place& a, const place& b) {
  const auto dx = static_cast<double>(b.x - a.x);
  const auto dy = static_cast<double>(b.y - a.y);
  const double length = std::hypot(dx, dy);
  const auto tolerance = static_cast<double>(tolerance_);
  for_each_side(of_.corners_of(of_.polygons[other]), [&](label from, label to) {
    const place& c = of_.points[from];
    const place& d = of_.points[to];
    const double back = static_cast<double>(d.x - c.x) * dx + static_cast<double>(d.y - c.y) * dy;
    if (back >= 0 || !run_along(a, b, c, d, tolerance, tolerance) || !is_lone(from, to)) return;
    for (const label end : {from, to}) {
      const place& at = of_.points[end];
      const double along =
          (static_cast<double>(at.x - a.x) * dx + static_cast<double>(at.y - a.y) * dy) / length;
      if (along > tolerance && along < length - tolerance) found_.push_back({along, end});
    }
  });
}

}  // namespace

std::optional<mesh> with_shared_corners(const mesh& of, std::int64_t tolerance) {
  const std::vector<bool> ragged = ragged_labels(of);
  std::vector<std::uint64_t> lone = lone_sides(of, ragged);
  if (lone.empty() || lone.size() > most_lone) return std::nullopt;
  const std::vector<std::uint32_t> with_lone = with_lone_sides(of, ragged, lone);
  if (with_lone.empty()) return std::nullopt;
  finder corners(of, tolerance, std::move(lone), with_lone);
  std::optional<mesh> result;
  std::vector<place> outline;
  const auto copy = [&](std::uint32_t i) {
    outline.clear();
    for (const label at : of.corners_of(of.polygons[i])) outline.push_back(of.points[at]);
    result->add(of.polygons[i].paint, {.form = of.polygons[i].form, .is_clockwise = false},
                outline);
  };
  auto next_with_lone = with_lone.begin();
  for (std::uint32_t i = 0; i < of.polygons.size(); ++i) {
    const polygon& p = of.polygons[i];
    outline.clear();
    if (next_with_lone != with_lone.end() && *next_with_lone == i) {
      ++next_with_lone;
      for_each_side(of.corners_of(p), [&](label from, label to) {
        for (const label at : corners.corners_on(i, from, to)) outline.push_back(of.points[at]);
        outline.push_back(of.points[to]);
      });
    }
    const bool has_more = outline.size() > p.n_corners;
    const outline_traits traits = has_more ? traits_of(outline) : outline_traits();
    if (has_more && traits.form != shape::other && !traits.is_clockwise) {
      if (!result) {
        result.emplace();
        result->reach = of.reach;
        const std::vector<place> added = outline;
        for (std::uint32_t before = 0; before < i; ++before) copy(before);
        outline = added;
      }
      result->add(p.paint, traits, outline);
    } else if (result) {
      copy(i);
    }
  }
  return result;
}

}  // namespace trellion::pdf
