#include "pdf/under.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "pdf/overlaps.h"
#include "pdf/sorted_keys.h"

namespace trellion::pdf {
namespace {

constexpr std::uint32_t nothing = UINT32_MAX;
/// A side of a polygon, among those between the same two places.
struct side {
  std::uint32_t batch;
  std::uint32_t polygon;
  std::size_t direction;  ///< 0 from the smaller label to the larger one, or 1
};

/// The sides of polygons in batches, by the smaller of their two labels: the other one, the polygon
/// and the direction in one number.
class sides_by_label {
 public:
  sides_by_label(const mesh& of, std::span<const batch> batches) : starts_(of.points.size() + 1) {
    for_each_side(of, batches,
                  [&](label smaller, label, std::uint32_t, bool) { ++starts_[smaller]; });
    std::uint32_t sum = 0;
    for (std::uint32_t& s : starts_) s = sum += s;
    sides_.resize(sum);
    for_each_side(of, batches, [&](label smaller, label larger, std::uint32_t polygon, bool back) {
      sides_[--starts_[smaller]] = joint_key(larger, polygon << 1 | (back ? 1U : 0U));
    });
  }

  /// Calls f with two places and all sides between them, for all such places. The order is that of
  /// the labels.
  template <class F>
  void for_each_pair_of_places(std::span<const std::uint32_t> batch_of, F f) {
    std::vector<side> together;
    for (std::size_t i = 0; i + 1 < starts_.size(); ++i) {
      const auto sides = std::span(sides_).subspan(starts_[i], starts_[i + 1] - starts_[i]);
      std::ranges::sort(sides);
      for (auto s = sides.begin(); s != sides.end();) {
        together.clear();
        const label end = first_of(*s);
        for (; s != sides.end() && first_of(*s) == end; ++s) {
          const std::uint32_t polygon = second_of(*s) >> 1;
          together.push_back({batch_of[polygon], polygon, *s & 1});
        }
        f(static_cast<label>(i), end, std::span(together));
      }
    }
  }

 private:
  template <class F>
  static void for_each_side(const mesh& of, std::span<const batch> batches, F f) {
    for (const batch& b : batches) {
      for (const std::uint32_t p : b.polygons) {
        if (of.polygons[p].form == shape::other) continue;
        const std::span<const label> corners = of.corners_of(of.polygons[p]);
        label from = corners.back();
        for (const label to : corners) {
          f(std::min(from, to), std::max(from, to), p, to < from);
          from = to;
        }
      }
    }
  }

  std::vector<std::uint32_t> starts_;  // by label, and the end of all
  std::vector<std::uint64_t> sides_;
};

/// A side of a batch's outline that no polygon of another batch shares whole.
struct lone_side {
  std::uint32_t batch;
  std::uint32_t polygon;
  label from;
  label to;
};

/// The upright box of a side, with a margin.
box box_around(const place& a, const place& b, std::int64_t margin) {
  return {{std::min(a.x, b.x) - margin, std::min(a.y, b.y) - margin},
          {std::max(a.x, b.x) + margin, std::max(a.y, b.y) + margin}};
}

/// Whether no point of a side lies in a box. It spares most sides a closer look.
bool keeps_out(const box& of, const place& c, const place& d) {
  return std::max(c.x, d.x) < of.low.x || std::min(c.x, d.x) > of.high.x ||
         std::max(c.y, d.y) < of.low.y || std::min(c.y, d.y) > of.high.y;
}

bool has_side_along(const mesh& of, const polygon& p, const place& a, const place& b,
                    const nearness& near) {
  const box around = box_around(a, b, near.distance + 1);
  const auto distance = static_cast<double>(near.distance);
  const auto least = static_cast<double>(near.least);
  const auto squared_length = [](const place& from, const place& to) {
    const auto x = static_cast<double>(to.x - from.x);
    const auto y = static_cast<double>(to.y - from.y);
    return x * x + y * y;
  };
  const double length = squared_length(a, b);
  const std::span<const label> corners = of.corners_of(p);
  place from = of.points[corners.back()];
  return std::ranges::any_of(corners, [&](label corner) {
    const place c = std::exchange(from, of.points[corner]);
    const place& d = of.points[corner];
    if (keeps_out(around, c, d)) return false;
    return squared_length(c, d) > length ? run_along(c, d, a, b, distance, least)
                                         : run_along(a, b, c, d, distance, least);
  });
}

/// What lone sides have along them.
struct lone_findings {
  std::vector<std::uint64_t> beside;  ///< a batch, and a polygon of a later one
  std::vector<bool> at_rim;           ///< by polygon: it has a side with nothing beyond
};

// Beyond these a side counts as one with nothing beyond, so that the time stays near-linear where
// polygons lie on each other.
constexpr std::uint32_t most_corners = 256;   ///< of a polygon to look at
constexpr std::size_t most_looks = 4096;      ///< at sides, from a side
constexpr std::size_t most_looks_each = 256;  ///< on the average
constexpr std::size_t most_beside = 4;        ///< on the average: twice what meshes have

lone_findings look_along(const mesh& of, std::span<const lone_side> lone,
                         std::span<const std::uint32_t> batch_of, const nearness& near) {
  lone_findings result;
  result.at_rim.resize(of.polygons.size());
  if (lone.empty()) return result;
  const overlaps search(of);
  std::vector<std::uint32_t> around;
  constexpr std::size_t few_sides = 4096;
  const std::size_t most_all_looks = most_looks_each * std::max(lone.size(), few_sides);
  std::size_t n_all_looks = 0;
  for (const lone_side& each : lone) {
    const place& a = of.points[each.from];
    const place& b = of.points[each.to];
    around.clear();
    if (n_all_looks <= most_all_looks && result.beside.size() <= most_beside * lone.size()) {
      search.add_near(box_around(a, b, near.distance), around);
    }
    bool is_rim = true;
    std::size_t n_looks = 0;
    for (const std::uint32_t p : around) {
      const polygon& other = of.polygons[p];
      if (p == each.polygon || other.form == shape::other || other.n_corners > most_corners)
        continue;
      n_looks += other.n_corners;
      if (n_looks > most_looks) break;
      if (!has_side_along(of, other, a, b, near)) continue;
      is_rim = false;
      if (batch_of[p] > each.batch) result.beside.push_back(joint_key(each.batch, p));
    }
    n_all_looks += n_looks;
    if (is_rim) result.at_rim[each.polygon] = true;
  }
  return result;
}

}  // namespace

void paint_under_neighbours(const mesh& of, std::span<batch> batches, const nearness& near) {
  std::vector<std::uint32_t> batch_of(of.polygons.size());
  for (std::uint32_t b = 0; b < batches.size(); ++b) {
    for (const std::uint32_t p : batches[b].polygons) batch_of[p] = b;
  }
  std::vector<std::uint64_t> added;  // a batch, and a polygon
  sides_by_label sides(of, batches);
  std::vector<lone_side> lone;
  sides.for_each_pair_of_places(batch_of, [&](label one, label other, std::span<side> together) {
    std::ranges::sort(together, [](const side& a, const side& b) {
      return joint_key(a.batch, a.polygon) > joint_key(b.batch, b.polygon);
    });
    std::array<std::uint32_t, 2> last = {nothing, nothing};  // in later batches, by direction
    for (auto s = together.begin(); s != together.end();) {
      const std::uint32_t b = s->batch;
      std::array<std::uint32_t, 2> last_here = last;
      std::ptrdiff_t sum = 0;
      for (; s != together.end() && s->batch == b; ++s) {
        sum += s->direction == 0 ? 1 : -1;
        if (last_here[s->direction] == nothing) last_here[s->direction] = s->polygon;
      }
      const std::uint32_t beside = last[sum > 0 ? 1 : 0];
      if (sum != 0 && s == together.end() && together.front().batch == b) {
        lone.push_back({b, together.front().polygon, one, other});
      } else if (sum != 0 && beside != nothing) {
        added.push_back(joint_key(b, beside));
      }
      last = last_here;
    }
  });
  const lone_findings found = look_along(of, lone, batch_of, near);
  added.insert(added.end(), found.beside.begin(), found.beside.end());
  sort_keys(added);
  added.erase(std::unique(added.begin(), added.end()), added.end());
  for (const std::uint64_t a : added) {
    batch& to = batches[first_of(a)];
    const std::uint32_t p = second_of(a);
    if (of.reach_of(to.paint) == 0 && !found.at_rim[p]) to.polygons.push_back(p);
  }
}

}  // namespace trellion::pdf
