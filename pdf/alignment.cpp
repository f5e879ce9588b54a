#include "pdf/alignment.h"

#include <algorithm>
#include <vector>

namespace trellion::pdf {
namespace {

/// Places to a column that make a grid; a mesh of another kind has few on any line.
constexpr std::size_t least_places = 8;

/// Which values become which others.
class columns {
 public:
  /// Takes the values that places have along an axis, and sorts them.
  columns(std::vector<std::int64_t>& values, std::int64_t tolerance) {
    std::ranges::sort(values);
    std::size_t n_columns = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i == 0 || values[i] != values[i - 1]) ++n_columns;
    }
    if (n_columns * least_places > values.size()) return;
    for (std::size_t i = 0; i < values.size();) i = add_column(values, i, tolerance);
  }

  [[nodiscard]] bool is_empty() const { return moves_.empty(); }
  [[nodiscard]] std::int64_t moved(std::int64_t value) const {
    const auto at = std::ranges::lower_bound(moves_, value, {}, &move::from);
    return at == moves_.end() || at->from != value ? value : at->to;
  }

 private:
  struct move {
    std::int64_t from;
    std::int64_t to;
  };

  /// Makes one of the values from an index on that lie near it; returns the index after them.
  std::size_t add_column(const std::vector<std::int64_t>& values, std::size_t begin,
                         std::int64_t tolerance) {
    std::size_t end = begin;
    std::size_t most = 0;
    std::int64_t usual = values[begin];
    const std::size_t first_move = moves_.size();
    while (end < values.size() && values[end] - values[begin] <= tolerance) {
      const std::int64_t value = values[end];
      const std::size_t from = end;
      while (end < values.size() && values[end] == value) ++end;
      moves_.push_back({value, value});
      if (end - from <= most) continue;
      most = end - from;
      usual = value;
    }
    if (moves_.size() - first_move == 1) moves_.pop_back();
    for (std::size_t i = first_move; i < moves_.size(); ++i) moves_[i].to = usual;
    return end;
  }

  std::vector<move> moves_;  // in the order of `from`
};

columns columns_along(const mesh& of, std::int64_t place::*axis, std::int64_t tolerance) {
  std::vector<std::int64_t> values;
  values.reserve(of.points.size());
  for (label i = 0; i < of.points.size(); ++i) values.push_back(of.points[i].*axis);
  return {values, tolerance};
}

}  // namespace

std::optional<mesh> with_even_columns(const mesh& of, std::int64_t tolerance) {
  const columns x = columns_along(of, &place::x, tolerance);
  const columns y = columns_along(of, &place::y, tolerance);
  if (x.is_empty() && y.is_empty()) return std::nullopt;
  mesh result;
  result.reach = of.reach;
  std::vector<place> corners;
  for (const polygon& each : of.polygons) {
    corners.clear();
    for (const label at : of.corners_of(each)) {
      corners.push_back({x.moved(of.points[at].x), y.moved(of.points[at].y)});
    }
    const outline_traits traits = each.form == shape::other ? outline_traits() : traits_of(corners);
    if (traits.form != each.form || traits.is_clockwise) return std::nullopt;
    result.add(each.paint, traits, corners);
  }
  return result;
}

}  // namespace trellion::pdf
