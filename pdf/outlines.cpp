#include "pdf/outlines.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "files.h"
#include "pdf/sorted_keys.h"

namespace trellion::pdf {
namespace {

constexpr std::uint32_t none = UINT32_MAX;

void end_outline(outlines& to) {
  if (to.corners.size() > UINT32_MAX) throw run_error("too many points");
  to.ends.push_back(static_cast<std::uint32_t>(to.corners.size()));
}

/// The sides of polygons, sorted: the label that is smaller, the larger one, and a last bit for
/// those that run from the larger one to the smaller.
std::vector<std::uint64_t> sides_of(const mesh& of, std::span<const std::uint32_t> polygons) {
  std::size_t n_sides = 0;
  for (const std::uint32_t p : polygons) n_sides += of.polygons[p].n_corners;
  std::vector<std::uint64_t> sides;
  sides.reserve(n_sides);
  for (const std::uint32_t p : polygons) {
    const std::span<const label> corners = of.corners_of(of.polygons[p]);
    label from = corners.back();
    for (const label to : corners) {
      sides.push_back(from < to ? joint_key(from, to << 1) : joint_key(to, from << 1 | 1));
      from = to;
    }
  }
  sort_keys(sides);
  return sides;
}

/// Orders polygons by their corners, from that with the smallest label on.
class by_corners {
 public:
  explicit by_corners(const mesh& of) : of_(of) {}
  /// Below 0, 0 for the very same corners, or above 0.
  [[nodiscard]] int compare(std::uint32_t a, std::uint32_t b) const {
    const std::span<const label> one = of_.corners_of(of_.polygons[a]);
    const std::span<const label> two = of_.corners_of(of_.polygons[b]);
    if (one.size() != two.size()) return one.size() < two.size() ? -1 : 1;
    auto i = std::ranges::min_element(one);
    auto j = std::ranges::min_element(two);
    for (std::size_t n = one.size(); n > 0; --n) {
      if (*i != *j) return *i < *j ? -1 : 1;
      if (++i == one.end()) i = one.begin();
      if (++j == two.end()) j = two.begin();
    }
    return 0;
  }

 private:
  const mesh& of_;
};

std::vector<std::uint32_t> without_twins(const mesh& of, std::span<const std::uint32_t> polygons) {
  std::vector<std::uint32_t> result(polygons.begin(), polygons.end());
  const by_corners order(of);
  std::ranges::sort(result, [&](auto a, auto b) { return order.compare(a, b) < 0; });
  const auto is_twin = [&](auto a, auto b) { return order.compare(a, b) == 0; };
  result.erase(std::unique(result.begin(), result.end(), is_twin), result.end());
  return result;
}

/// Leaves out pairs of opposite sides. What is left are keys of where a side starts and ends.
void cancel(std::vector<std::uint64_t>& sides) {
  auto out = sides.begin();
  for (auto in = sides.begin(); in != sides.end();) {
    const std::uint64_t side = *in >> 1;
    const label smaller = first_of(*in);
    const label larger = second_of(*in) >> 1;
    std::ptrdiff_t sum = 0;
    for (; in != sides.end() && *in >> 1 == side; ++in) sum += *in % 2 == 0 ? 1 : -1;
    out = std::fill_n(out, sum, joint_key(smaller, larger));
    out = std::fill_n(out, -sum, joint_key(larger, smaller));
  }
  sides.erase(out, sides.end());
}

/// Strings sides into outlines. A side is known by its place in the order by where sides start.
class stringer {
 public:
  explicit stringer(std::vector<std::uint64_t> sides) : sides_(std::move(sides)) {
    sort_keys(sides_);
    // Where as many start as end both orders have the sides of a place at the same indices.
    ending_.reserve(sides_.size());
    for (std::uint32_t i = 0; i < sides_.size(); ++i) {
      ending_.push_back(joint_key(second_of(sides_[i]), i));
    }
    sort_keys(ending_);
    next_.resize(sides_.size());
    for (std::uint32_t i = 0; i < sides_.size(); ++i) next_[second_of(ending_[i])] = i;
    if (std::ranges::adjacent_find(sides_, {}, first_of) != sides_.end()) unite();
  }

  void string(outlines& to) {
    for (std::uint32_t first = 0; first < sides_.size(); ++first) {
      if (next_[first] == none) continue;
      for (std::uint32_t i = first; next_[i] != none; i = std::exchange(next_[i], none)) {
        to.corners.push_back(first_of(sides_[i]));
      }
      end_outline(to);
    }
  }

 private:
  /// Makes one of outlines that meet at a place: there each goes on as the other did.
  void unite() {
    std::vector<std::uint32_t> outline(sides_.size(), none);
    std::vector<std::uint32_t> united;  // with an earlier outline, or itself
    for (std::uint32_t first = 0; first < sides_.size(); ++first) {
      if (outline[first] != none) continue;
      const auto number = static_cast<std::uint32_t>(united.size());
      united.push_back(number);
      for (std::uint32_t i = first; outline[i] == none; i = next_[i]) outline[i] = number;
    }
    const auto find = [&united](std::uint32_t i) {
      for (; united[i] != i; i = united[i]) united[i] = united[united[i]];
      return i;
    };
    for (std::size_t i = 1; i < sides_.size(); ++i) {
      if (first_of(ending_[i - 1]) != first_of(ending_[i])) continue;
      const std::uint32_t a = second_of(ending_[i - 1]);
      const std::uint32_t b = second_of(ending_[i]);
      const auto [earlier, later] = std::minmax({find(outline[a]), find(outline[b])});
      if (earlier == later) continue;
      united[later] = earlier;
      std::swap(next_[a], next_[b]);
    }
  }

  std::vector<std::uint64_t> sides_;
  std::vector<std::uint64_t> ending_;  // where a side ends, and the side
  std::vector<std::uint32_t> next_;    // the side that follows a side
};

/// Calls f with the corners of each outline.
template <class F>
void for_each_outline(const outlines& o, F f) {
  std::uint32_t first = 0;
  for (const std::uint32_t end : o.ends) {
    f(std::span(o.corners).subspan(first, end - first));
    first = end;
  }
}

}  // namespace

bool is_straight_at(const mesh& of, std::span<const label> outline, std::size_t i) {
  const label before = i == 0 ? outline.back() : outline[i - 1];
  const label after = i + 1 == outline.size() ? outline.front() : outline[i + 1];
  return is_straight(of.points[before], of.points[outline[i]], of.points[after]);
}

void join(const mesh& of, std::span<const std::uint32_t> polygons, outlines& to) {
  if (polygons.size() == 1) {
    const std::span<const label> corners = of.corners_of(of.polygons[polygons[0]]);
    to.corners.insert(to.corners.end(), corners.begin(), corners.end());
    end_outline(to);
    return;
  }
  std::vector<std::uint64_t> sides = sides_of(of, polygons);
  if (std::ranges::adjacent_find(sides) != sides.end()) {
    sides = sides_of(of, without_twins(of, polygons));
  }
  cancel(sides);
  stringer(std::move(sides)).string(to);
}

outlines join(const mesh& of, std::span<const std::uint32_t> polygons) {
  outlines result;
  join(of, polygons, result);
  return result;
}

void remove_straight_corners(const mesh& of, std::span<outlines> all) {
  std::vector<bool> is_true(of.points.size());
  for (const polygon& p : of.polygons) {
    if (p.form != shape::other) continue;
    for (const label corner : of.corners_of(p)) is_true[corner] = true;
  }
  for (const outlines& o : all) {
    for_each_outline(o, [&](std::span<const label> outline) {
      for (std::size_t i = 0; i < outline.size(); ++i) {
        if (!is_straight_at(of, outline, i)) is_true[outline[i]] = true;
      }
    });
  }
  for (outlines& o : all) {
    auto out = o.corners.begin();
    std::uint32_t first = 0;
    for (std::uint32_t& end : o.ends) {
      const std::span outline = std::span(o.corners).subspan(first, end - first);
      out = std::ranges::copy_if(outline, out, [&](label c) { return is_true[c]; }).out;
      first = std::exchange(end, static_cast<std::uint32_t>(out - o.corners.begin()));
    }
    o.corners.erase(out, o.corners.end());
  }
}

}  // namespace trellion::pdf
