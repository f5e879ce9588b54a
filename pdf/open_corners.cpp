#include "pdf/open_corners.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace trellion::pdf {
namespace {

void sort_once(std::vector<label>& labels) {
  std::ranges::sort(labels);
  labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
}

/// The corners at which all polygons that have them are open, sorted.
std::vector<label> open_corners(const painted_mesh& painted, const mesh& of,
                                std::span<const std::uint32_t> polygons) {
  std::vector<label> open;
  std::vector<label> drawn;
  for (const std::uint32_t p : polygons) {
    std::span<const label> corners = of.corners_of(of.polygons[p]);
    const raw_polygon* const raw = raw_of(painted, p);
    const auto opening = raw == nullptr ? raw_polygon::opening::none : raw->open_corner;
    if (opening == raw_polygon::opening::first) {
      open.push_back(corners.front());
      corners = corners.subspan(1);
    } else if (opening == raw_polygon::opening::last) {
      open.push_back(corners.back());
      corners = corners.first(corners.size() - 1);
    }
    drawn.insert(drawn.end(), corners.begin(), corners.end());
  }
  if (open.empty()) return open;
  sort_once(open);
  sort_once(drawn);
  std::vector<label> result;
  std::ranges::set_difference(open, drawn, std::back_inserter(result));
  return result;
}

}  // namespace

void open_starts(const painted_mesh& painted, const mesh& of,
                 std::span<const std::uint32_t> polygons, outlines& all, std::size_t begin,
                 bool is_wide) {
  const std::vector<label> open = open_corners(painted, of, polygons);
  if (open.empty()) return;
  std::vector<label> starts;
  std::uint32_t first = begin == 0 ? 0 : all.ends[begin - 1];
  for (std::size_t i = begin; i < all.ends.size(); ++i) {
    const std::span outline = std::span(all.corners).subspan(first, all.ends[i] - first);
    starts.clear();
    for (std::size_t at = 0; at < outline.size(); ++at) {
      if (!std::ranges::binary_search(open, outline[at]) || is_straight_at(of, outline, at))
        continue;
      starts.push_back(outline[at]);
      if (!is_wide) break;
    }
    sort_once(starts);
    for (const label corner : starts) all.open_starts.push_back({i, corner});
    first = all.ends[i];
  }
}

}  // namespace trellion::pdf
