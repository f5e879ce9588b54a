#include "postscript_path.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "param.h"
#include "string_utils.h"

namespace trellion {
namespace {

constexpr std::size_t max_coord_length = std::tuple_size_v<decltype(coord_texts::x)>;

std::array<char, max_coord_length> padded(std::string_view text) {
  std::array<char, max_coord_length> result;
  result.fill(' ');
  std::copy_n(text.begin(), std::min(text.size(), max_coord_length), result.begin());
  return result;
}

std::string_view trimmed(const std::array<char, max_coord_length>& text) {
  return trim_trailing_blanks({text.data(), text.size()});
}

std::int32_t coordinate(const token& number) {
  try {
    return thousandths(number.text);
  } catch (const coordinate_error& error) {
    throw coordinate_error(error.what() + (" in line " + std::to_string(number.line_number)));
  }
}

point_index add_point(const token& x, const token& y, path_store& store) {
  const auto index = static_cast<point_index>(store.points.size());
  if (store.points.size() >= no_point) throw run_error("a group has too many points");
  store.points.push_back({{coordinate(x), coordinate(y)}, index + 1, index - 1});
  store.texts.push_back({padded(x.text), padded(y.text)});
  return index;
}

void write_vertex(const coord_texts& texts, const token& op, text_writer& out) {
  out.put(trimmed(texts.x)).put(' ').put(trimmed(texts.y)).put(' ').put(op.text);
}

// Differences, distances and products are unsigned so that their overflow is defined: they wrap at
// 64 bits, and a product that wraps to zero counts as zero.
using wrapping = std::uint64_t;

wrapping difference(std::int32_t a, std::int32_t b) {
  return static_cast<wrapping>(std::int64_t{a} - std::int64_t{b});
}

/// Sum of the absolute differences of x and of y.
wrapping distance(const ps_point& a, const ps_point& b) {
  return static_cast<wrapping>(std::abs(std::int64_t{a.coords[0]} - b.coords[0]) +
                               std::abs(std::int64_t{a.coords[1]} - b.coords[1]));
}

}  // namespace

void path_store::clear() {
  points.clear();
  texts.clear();
  paths.clear();
}

std::int32_t thousandths(std::string_view text) {
  text = text.substr(0, max_coord_length);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) {
    throw coordinate_error("'" + std::string(text) + "' is not a coordinate");
  }
  value *= 1000.0;
  value = std::trunc(value >= 0 ? value + 0.5 : value - 0.5);
  if (value < INT32_MIN || value > INT32_MAX) {
    throw coordinate_error("'" + std::string(text) + "' is too large for a coordinate");
  }
  return static_cast<std::int32_t>(value);
}

path_index tokens_to_ps_path(token_range tokens, path_store& store) {
  const auto first = static_cast<point_index>(store.points.size());
  while (!tokens.begin.same_head(tokens.end)) {
    const token x = tokens.begin.take_head();
    if (!x.is_number()) continue;
    add_point(x, tokens.begin.take_head(), store);
  }
  const auto last = static_cast<point_index>(store.points.size() - 1);
  store.points[first].prev = last;
  store.points[last].next = first;

  ps_path path;
  path.n_points = last - first + 1;
  path.cursor = last;
  const auto [x_min, x_max] = std::minmax_element(
      store.points.begin() + first, store.points.end(),
      [](const ps_point& a, const ps_point& b) { return a.coords[0] < b.coords[0]; });
  const auto [y_min, y_max] = std::minmax_element(
      store.points.begin() + first, store.points.end(),
      [](const ps_point& a, const ps_point& b) { return a.coords[1] < b.coords[1]; });
  path.x_min = x_min->coords[0];
  path.x_max = x_max->coords[0];
  path.y_min = y_min->coords[1];
  path.y_max = y_max->coords[1];
  store.paths.push_back(path);
  return static_cast<path_index>(store.paths.size() - 1);
}

void output(path_store& store, path_index path, const drawing_token_set& operators,
            text_writer& out) {
  constexpr std::uint32_t points_per_line = 5;
  ps_path& p = store.paths[path];
  write_vertex(store.texts[p.cursor], operators.moveto_token, out);
  out.put(nl);
  for (std::uint32_t i = 1; i < p.n_points; ++i) {
    p.cursor = store.points[p.cursor].next;
    write_vertex(store.texts[p.cursor], operators.lineto_token, out);
    out.put(i % points_per_line == 0 ? nl : ' ');
  }
  const bool line_is_open = p.n_points > 1 && (p.n_points - 1) % points_per_line != 0;
  if (line_is_open) out.put(nl);

  out.put(operators.end_polygon_token.text);
  for (const token& t : operators.trailing_operators) out.put(' ').put(t.text);
  out.put(nl);
}

void reverse(path_store& store, path_index path) {
  ps_path& p = store.paths[path];
  if (p.untested != no_point) p.untested = store.points[p.untested].prev;
  const auto first_coords = store.points[p.cursor].coords;
  const coord_texts first_texts = store.texts[p.cursor];
  point_index place = p.cursor;
  for (std::uint32_t i = 0; i < p.n_points; ++i) {
    ps_point& point = store.points[place];
    const bool last = point.next == p.cursor;
    point.coords = last ? first_coords : store.points[point.next].coords;
    store.texts[place] = last ? first_texts : store.texts[point.next];
    place = point.next;
    std::swap(point.next, point.prev);
  }
}

void merge_postscript_paths(path_store& store, path_index a, path_index b) {
  ps_path& pa = store.paths[a];
  const ps_path& pb = store.paths[b];
  std::vector<ps_point>& points = store.points;
  const ps_point a_cursor = points[pa.cursor];
  const ps_point b_cursor = points[pb.cursor];

  points[a_cursor.prev].next = b_cursor.next;
  points[b_cursor.next].prev = a_cursor.prev;
  points[b_cursor.prev].next = a_cursor.next;
  points[a_cursor.next].prev = b_cursor.prev;

  pa.cursor = a_cursor.next;
  pa.n_points += pb.n_points - 2;
  pa.x_min = std::min(pa.x_min, pb.x_min);
  pa.x_max = std::max(pa.x_max, pb.x_max);
  pa.y_min = std::min(pa.y_min, pb.y_min);
  pa.y_max = std::max(pa.y_max, pb.y_max);
}

bool is_sound(const path_store& store, path_index path) {
  const ps_path& p = store.paths[path];
  point_index point = p.cursor;
  for (std::uint32_t i = 0; i < p.n_points; ++i) {
    if (i > 0 && point == p.cursor) return false;
    const point_index next = store.points[point].next;
    if (store.points[next].prev != point) return false;
    point = next;
  }
  return point == p.cursor;
}

bool is_superfluous(const ps_point& before, const ps_point& point, const ps_point& after) {
  if (distance(before, after) * distance(point, after) * distance(before, point) == 0) return true;
  const wrapping ux = difference(point.coords[0], before.coords[0]);
  const wrapping uy = difference(point.coords[1], before.coords[1]);
  const wrapping vx = difference(after.coords[0], point.coords[0]);
  const wrapping vy = difference(after.coords[1], point.coords[1]);
  return ux != 0 ? vx * uy == ux * vy : vx == 0;
}

void remove_superfluous_points_v2(path_store& store, path_index path) {
  ps_path& p = store.paths[path];
  std::vector<ps_point>& points = store.points;
  point_index stop = points[p.cursor].prev;
  bool finished = false;
  p.untested = no_point;
  while (true) {
    const ps_point& point = points[p.cursor];
    const point_index before = point.prev;
    const point_index after = point.next;
    if (is_superfluous(points[before], point, points[after])) {
      points[before].next = after;
      points[after].prev = before;
      p.cursor = before;
      p.untested = after;
      if (--p.n_points == 0) return;
      // Backed up over the start: the stop must move too, or the walk would end too early.
      if (before == stop) stop = points[before].prev;
    } else {
      if (p.cursor == p.untested) p.untested = no_point;
      if (finished) return;
      p.cursor = after;
    }
    if (p.cursor == stop) finished = true;
  }
}

}  // namespace trellion
