#include "pdf/run.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace trellion::pdf {
namespace {

bool is_even_odd(op painter) {
  return painter == op::fill_even_odd || painter == op::both_even_odd ||
         painter == op::close_both_even_odd;
}

bool strokes_too(op painter) {
  return painter == op::both || painter == op::both_even_odd || painter == op::close_both ||
         painter == op::close_both_even_odd;
}

bool closes(op painter) {
  return painter == op::close_both || painter == op::close_both_even_odd ||
         painter == op::close_stroke;
}

std::string_view text_of(op painter) {
  switch (painter) {
    case op::fill_even_odd: return "f*";
    case op::both: return "B";
    case op::both_even_odd: return "B*";
    case op::close_both: return "b";
    case op::close_both_even_odd: return "b*";
    case op::stroke: return "S";
    case op::close_stroke: return "s";
    default: return "f";
  }
}

/// A fill and a stroke of the same path, as one operator.
op together(bool is_even_odd, bool is_closing) {
  if (is_even_odd) return is_closing ? op::close_both_even_odd : op::both_even_odd;
  return is_closing ? op::close_both : op::both;
}

/// Whether a pen goes all the way round each subpath.
bool goes_round(const path& painted, op painter) {
  const std::span<const subpath> parts = painted.subpaths();
  const std::size_t n_looked_at = parts.size() - (closes(painter) ? 1 : 0);
  return std::ranges::all_of(parts.first(n_looked_at), &subpath::is_closed);
}

/// Whether a pen draws ends, and no corner, where a subpath begins.
bool has_ends(const path& painted, op painter) {
  const std::span<const subpath> parts = painted.subpaths();
  const std::size_t n_looked_at = parts.size() - (closes(painter) ? 1 : 0);
  return std::ranges::any_of(parts.first(n_looked_at), &subpath::has_ends);
}

bool same_outlines(const path& a, const path& b) {
  if (a.has_curves() || b.has_curves() || a.subpaths().size() != b.subpaths().size()) return false;
  return std::ranges::equal(a.subpaths(), b.subpaths(),
                            [&](const subpath& of_a, const subpath& of_b) {
                              return std::ranges::equal(a.corners_of(of_a), b.corners_of(of_b));
                            });
}

/// Points on the page. Viewers draw with numbers of limited size, so that what reaches far beyond
/// any page can look otherwise in a larger outline, and cover other places than it should.
constexpr double largest_polygon = 20'000;

/// The larger side of the upright box around corners.
double extent_of(std::span<const place> corners) {
  const auto [left, right] = std::ranges::minmax(corners, {}, &place::x);
  const auto [low, high] = std::ranges::minmax(corners, {}, &place::y);
  return static_cast<double>(std::max(right.x - left.x, high.y - low.y));
}

/// Whether all corners lie on one line.
bool is_flat(std::span<const place> corners) {
  __extension__ using wide = __int128;
  const place& first = corners[0];
  const auto other = std::ranges::find_if(corners, [&](const place& at) { return at != first; });
  if (other == corners.end()) return true;
  return std::ranges::all_of(corners, [&](const place& at) {
    return wide{other->x - first.x} * (at.y - first.y) ==
           wide{other->y - first.y} * (at.x - first.x);
  });
}

}  // namespace

bool run::take(path& painted, op painter, const graphics_state& state) {
  if (painted.is_odd() || (closes(painter) && painted.ended_with_point())) return false;
  if (painter == op::end_path) return true;
  // A matrix that makes all of it a line makes it a thin one, which viewers show.
  if (!takes_any_ || !(smallest_scale(state.matrix) * scale_ > 0)) return false;
  if (painter == op::stroke || painter == op::close_stroke)
    return take_stroke(painted, painter, state) || take_line(painted, painter, state);
  if (!state.fills_opaquely() || !state.fill.is_known()) return false;
  if (painted.subpaths().empty()) return true;

  paint with;
  with.ink = state.fill;
  std::int64_t reach = 0;
  bool may_join = true;
  bool shows_ends = false;
  if (strokes_too(painter)) {
    if (state.stroke != state.fill || !state.strokes_opaquely()) return false;
    const auto pen = pen_of(state.line, state.matrix);
    if (!pen) return false;
    reach = pen->reach;
    may_join = pen->may_join && goes_round(painted, painter);
    shows_ends = pen->shows_ends;
    if (!pen->may_close && has_ends(painted, painter)) may_join = false;
    with.has_pen = true;
    with.pen = state.line;
  } else if (std::ranges::any_of(painted.subpaths(), [&](const subpath& part) {
               return is_flat(painted.corners_of(part));
             })) {
    // Viewers show such a fill as a line of at least a pixel.
    const double least = smallest_scale(state.matrix) * scale_;
    const auto scaled = least > 0 ? scaled_reach(1 / least) : std::nullopt;
    if (!scaled) return false;
    reach = *scaled;
    with.is_thin = true;
    may_join = false;
  }
  const double largest = largest_polygon / (largest_scale(state.matrix) * scale_);
  if (extent_of(painted.corners()) > largest * std::pow(10.0, gathered_.digits)) return false;
  const std::uint32_t from = size();
  const std::uint32_t index = index_of(with, reach);
  if (!may_join || !add_parts(painted, is_even_odd(painter), index)) {
    keep_source(painted, painter, from);
    gathered_.polygons.add(index, outline_traits(), painted.corners());
  } else if (shows_ends && size() == from + 1 && has_ends(painted, painter)) {
    // Closed, it would get one more corner.
    keep_source(painted, painter, from);
    const mesh& all = gathered_.polygons;
    const label first = all.corners_of(all.polygons[from])[0];
    const bool is_turned = all.points[first] != painted.corners()[0];
    gathered_.raws.back().open_corner =
        is_turned ? raw_polygon::opening::last : raw_polygon::opening::first;
  }

  has_filled_ = !with.has_pen;
  if (has_filled_) {
    was_even_odd_ = is_even_odd(painter);
    filled_ink_ = with.ink;
    filled_from_ = from;
    std::swap(filled_, painted);
  }
  return true;
}

/// A stroke of what was just filled makes it a fill with a pen.
bool run::take_stroke(path& painted, op painter, const graphics_state& state) {
  if (!has_filled_ || filled_from_ < fixed_ || state.stroke != filled_ink_ ||
      !state.strokes_opaquely() || !same_outlines(painted, filled_) ||
      !pen_of(state.line, state.matrix))
    return false;
  shrink(filled_from_);
  graphics_state when_filled = state;
  when_filled.fill = filled_ink_;
  when_filled.opaque_fill = true;
  return take(painted, together(was_even_odd_, painter == op::close_stroke), when_filled);
}

/// Lines stand between polygons where a program sorts all by depth. Between polygons of one paint
/// they would only be in the way; they are painted as they stand.
bool run::take_line(const path& painted, op painter, const graphics_state& state) {
  if (!state.strokes_opaquely() || !state.stroke.is_known()) return false;
  if (painted.subpaths().empty()) return true;
  const auto pen = pen_of(state.line, state.matrix);
  if (!pen) return false;
  paint with;
  with.ink = state.stroke;
  with.fills = false;
  with.has_pen = true;
  with.pen = state.line;
  with.has_corners = std::ranges::any_of(
      painted.subpaths(), [](const subpath& part) { return part.end - part.begin > 2; });
  keep_source(painted, painter, size());
  gathered_.polygons.add(index_of(with, with.has_corners ? pen->reach : pen->side_reach),
                         outline_traits(), painted.corners());
  has_filled_ = false;
  return true;
}

std::optional<run::pen_use> run::pen_of(const line_style& style, const linear_map& matrix) const {
  linear_map to_page = matrix;
  for (double* part : {&to_page.a, &to_page.b, &to_page.c, &to_page.d}) *part *= scale_;
  const auto traits = traits_of_pen(style, to_page, texts_);
  if (!traits) return std::nullopt;
  const auto reach = scaled_reach(traits->reach);
  const auto side_reach = scaled_reach(traits->side_reach);
  if (!reach || !side_reach) return std::nullopt;
  return pen_use{*reach, *side_reach, traits->may_join, traits->may_close, traits->shows_ends};
}

std::optional<std::int64_t> run::scaled_reach(double units) const {
  const double scaled = std::ceil(units * std::pow(10.0, gathered_.digits));
  if (!(scaled <= static_cast<double>(max_coordinate))) return std::nullopt;
  return static_cast<std::int64_t>(scaled);
}

std::uint32_t run::index_of(const paint& which, std::int64_t reach) {
  const std::uint32_t index = gathered_.paints.index_of(which);
  if (index == gathered_.polygons.reach.size()) gathered_.polygons.reach.push_back(reach);
  return index;
}

/// Adds each subpath as a polygon of its own, when what they paint together is their union.
bool run::add_parts(const path& painted, bool is_even_odd, std::uint32_t paint_index) {
  const std::span<const subpath> parts = painted.subpaths();
  constexpr std::size_t most_compared = 8;
  if (painted.has_curves() || (is_even_odd && parts.size() > most_compared)) return false;
  const std::uint32_t from = size();
  bool is_clockwise = false;
  for (const subpath& part : parts) {
    const std::span<const place> corners = painted.corners_of(part);
    const outline_traits traits = corners.size() < 3 ? outline_traits() : traits_of(corners);
    // Two that run in opposite ways can be an outline and a hole in it.
    if (traits.form == shape::other || (size() != from && traits.is_clockwise != is_clockwise)) {
      shrink(from);
      return false;
    }
    is_clockwise = traits.is_clockwise;
    gathered_.polygons.add(paint_index, traits, corners);
  }
  if (is_even_odd && !are_pairwise_apart(from)) {
    shrink(from);
    return false;
  }
  return true;
}

bool run::are_pairwise_apart(std::uint32_t begin) const {
  const mesh& all = gathered_.polygons;
  for (std::uint32_t i = begin; i < size(); ++i)
    for (std::uint32_t j = begin; j < i; ++j)
      if (!are_apart(all, all.polygons[i], all.polygons[j])) return false;
  return true;
}

/// Keeps the source of a polygon.
void run::keep_source(const path& painted, op painter, std::uint32_t polygon) {
  gathered_.raws.push_back(
      {polygon, painted.source_begin(), painted.source_end(), text_of(painter)});
}

void run::shrink(std::uint32_t size) {
  mesh& all = gathered_.polygons;
  if (size < all.polygons.size()) all.corners.resize(all.polygons[size].first_corner);
  all.polygons.resize(size);
  while (!gathered_.raws.empty() && gathered_.raws.back().polygon >= size)
    gathered_.raws.pop_back();
}

void run::begin(int digits, bool takes_any) {
  if (size() != 0) gathered_ = {};
  gathered_.digits = digits;
  takes_any_ = takes_any;
  fixed_ = 0;
  has_filled_ = false;
}

const raw_polygon* raw_of(const painted_mesh& painted, std::uint32_t polygon) {
  const auto at = std::ranges::lower_bound(painted.raws, polygon, {}, &raw_polygon::polygon);
  return at == painted.raws.end() || at->polygon != polygon ? nullptr : &*at;
}

std::int64_t count_filled(const painted_mesh& painted, std::uint32_t begin, std::uint32_t end) {
  std::int64_t result = 0;
  for (std::uint32_t i = begin; i < end; ++i) {
    if (painted.paints[painted.polygons.polygons[i].paint].fills) ++result;
  }
  return result;
}

painted_mesh part_of(const painted_mesh& whole, std::uint32_t begin, std::uint32_t end) {
  painted_mesh result;
  result.digits = whole.digits;
  auto raw = std::ranges::lower_bound(whole.raws, begin, {}, &raw_polygon::polygon);
  std::vector<place> corners;
  for (std::uint32_t i = begin; i < end; ++i) {
    const polygon& each = whole.polygons.polygons[i];
    const std::uint32_t paint_index = result.paints.index_of(whole.paints[each.paint]);
    if (paint_index == result.polygons.reach.size())
      result.polygons.reach.push_back(whole.polygons.reach[each.paint]);
    corners.clear();
    for (const label at : whole.polygons.corners_of(each))
      corners.push_back(whole.polygons.points[at]);
    result.polygons.add(paint_index, {.form = each.form, .is_clockwise = false}, corners);
    result.polygons.polygons.back().was_clockwise = each.was_clockwise;
    if (raw != whole.raws.end() && raw->polygon == i) {
      result.raws.push_back(*raw++);
      result.raws.back().polygon = i - begin;
    }
  }
  return result;
}

}  // namespace trellion::pdf
