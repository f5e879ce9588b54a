#include "postscript_path.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "param.h"

namespace trellion {
namespace {

/// Writes a vertex whatever its numbers look like. Out of line: most look plain.
[[gnu::noinline]] void write_odd_vertex(const char* x, const char* text_end, std::string_view op,
                                        text_writer& out) {
  const char* const y = second_number(x, text_end);
  out.put(coord_text(x, text_end)).put(' ').put(coord_text(y, text_end)).put(' ').put(op);
}

void write_vertex(const path_store& store, point_index point, const vertex_operator& op,
                  text_writer& out) {
  const char* const x = store.points[point].text;
  const std::size_t length = plain_vertex_length(x, store.text_end);
  constexpr std::size_t most = 24;  // of both numbers, rounded up: copying so many needs no loop
  if (length == 0 || op.text.size() > op.start.size()) {
    write_odd_vertex(x, store.text_end, op.text, out);
    return;
  }
  char* const to = out.room_for(2 * most);
  std::memcpy(to, x, most);
  to[length] = ' ';
  std::memcpy(to + length + 1, op.start.data(), op.start.size());
  out.advance(length + 1 + op.text.size());
}

/// The distance of two points, given the differences of x and of y: the sum of both.
wrapping distance(wrapping x, wrapping y) {
  const auto size = [](wrapping n) { return std::abs(static_cast<std::int64_t>(n)); };
  return static_cast<wrapping>(size(x) + size(y));
}

/// Links points that lie side by side to the ring of a path.
void link_ring(path_store& store, path_index path, point_index first, std::uint32_t n_points) {
  const point_index last = first + n_points - 1;
  for (point_index i = first; i <= last; ++i) {
    store.links[i] = {i + 1, i - 1, {i, path & edge_record::no_owner, false, false, false}};
  }
  store.link(last, first);
}

path_box box_of(std::span<const ps_point> points) {
  path_box box;
  for (const ps_point& p : points) box.cover({p.coords[0], p.coords[0], p.coords[1], p.coords[1]});
  return box;
}

}  // namespace

void path_box::cover(const path_box& other) {
  x_min = std::min(x_min, other.x_min);
  x_max = std::max(x_max, other.x_max);
  y_min = std::min(y_min, other.y_min);
  y_max = std::max(y_max, other.y_max);
}

void path_store::clear() {
  points.clear();
  links.clear();
  paths.clear();
  boxes.clear();
  lies_by_place = false;
}

void path_store::check_size(std::size_t n_points, std::size_t n_paths) {
  if (n_points >= no_point) throw run_error("a group has too many points");
  if (n_paths > edge_record::no_owner) throw run_error("a group has too many polygons");
}

void path_store::start_group(large_array<ps_point>& vertices, std::size_t n_paths,
                             const char* end_of_text) {
  clear();
  points.swap(vertices);
  text_end = end_of_text;
  links.resize(points.size());
  paths.resize(n_paths);
  if (keeps_boxes) boxes.resize(n_paths);
}

void tokens_to_ps_path(path_store& store, path_index path, point_index first,
                       std::uint32_t n_points) {
  link_ring(store, path, first, n_points);
  store.paths[path] = {.n_points = n_points, .cursor = first + n_points - 1};
  if (store.keeps_boxes) {
    store.boxes[path] = box_of(std::span(store.points).subspan(first, n_points));
  }
}

void restore_ring(path_store& store, path_index path, point_index first, std::uint32_t n_points) {
  ps_path& p = store.paths[path];
  p.n_points = n_points;
  p.cursor = first;
  p.untested = no_point;
  link_ring(store, edge_record::no_owner, first, n_points);
}

path_index copy_path(const path_store& from, path_index path, path_store& to) {
  ps_path copy = from.paths[path];
  const auto first = static_cast<point_index>(to.points.size());
  const auto number = static_cast<path_index>(to.paths.size());
  point_index at = copy.cursor;
  for (std::uint32_t i = 0; i < copy.n_points; ++i, at = from.next(at)) {
    if (at == from.paths[path].untested) copy.untested = first + i;
    to.points.push_back(from.points[at]);
  }
  to.text_end = from.text_end;
  to.links.resize(first + copy.n_points);
  copy.cursor = first;
  link_ring(to, number, first, copy.n_points);
  to.paths.push_back(copy);
  return number;
}

void output(path_store& store, path_index path, const path_operators& operators, text_writer& out) {
  constexpr std::uint32_t points_per_line = 5;
  ps_path& p = store.paths[path];
  write_vertex(store, p.cursor, operators.moveto, out);
  out.put(nl);
  for (std::uint32_t i = 1; i < p.n_points; ++i) {
    p.cursor = store.next(p.cursor);
    write_vertex(store, p.cursor, operators.lineto, out);
    out.put(i % points_per_line == 0 ? nl : ' ');
  }
  const bool line_is_open = p.n_points > 1 && (p.n_points - 1) % points_per_line != 0;
  if (line_is_open) out.put(nl);

  out.put(operators.end).put(nl);
}

void reverse(path_store& store, path_index path) {
  ps_path& p = store.paths[path];
  if (p.untested != no_point) p.untested = store.prev(p.untested);
  const ps_point first = store.points[p.cursor];
  point_index place = p.cursor;
  for (std::uint32_t i = 0; i < p.n_points; ++i) {
    point_links& links = store.links[place];
    const point_index next = links.next;
    store.points[place] = next == p.cursor ? first : store.points[next];
    std::swap(links.next, links.prev);
    place = next;
  }
}

void merge_postscript_paths(path_store& store, path_index a, path_index b) {
  ps_path& pa = store.paths[a];
  const ps_path& pb = store.paths[b];
  const auto a_cursor = store.neighbours(pa.cursor);
  const auto b_cursor = store.neighbours(pb.cursor);

  store.link(a_cursor.prev, b_cursor.next);
  store.link(b_cursor.prev, a_cursor.next);
  store.drop(pa.cursor);
  store.drop(pb.cursor);

  pa.cursor = a_cursor.next;
  pa.n_points += pb.n_points - 2;
  if (store.keeps_boxes) store.boxes[a].cover(store.boxes[b]);
}

area doubled_area(const path_store& store, path_index path) {
  const ps_path& p = store.paths[path];
  if (p.n_points < 3) return 0;
  const auto& origin = store.points[p.cursor].coords;
  const auto offset = [&](const ps_point& point, std::size_t axis) {
    return std::int64_t{point.coords[axis]} - origin[axis];
  };
  area sum = 0;
  point_index at = store.next(p.cursor);
  for (std::uint32_t i = 2; i < p.n_points; ++i) {
    const ps_point& a = store.points[at];
    at = store.next(at);
    const ps_point& b = store.points[at];
    sum += area{offset(a, 0)} * offset(b, 1) - area{offset(a, 1)} * offset(b, 0);
  }
  return sum;
}

bool is_sound(const path_store& store, path_index path) {
  const ps_path& p = store.paths[path];
  point_index point = p.cursor;
  for (std::uint32_t i = 0; i < p.n_points; ++i) {
    if (i > 0 && point == p.cursor) return false;
    const point_index next = store.next(point);
    if (store.prev(next) != point) return false;
    point = next;
  }
  return point == p.cursor;
}

bool adds_nothing(const ps_point& before, const ps_point& point, const ps_point& after) {
  const wrapping ux = difference(point.coords[0], before.coords[0]);
  const wrapping uy = difference(point.coords[1], before.coords[1]);
  const wrapping vx = difference(after.coords[0], point.coords[0]);
  const wrapping vy = difference(after.coords[1], point.coords[1]);
  if (distance(ux + vx, uy + vy) * distance(vx, vy) * distance(ux, uy) == 0) return true;
  return ux != 0 ? vx * uy == ux * vy : vx == 0;
}

bool has_only_corners(std::span<const ps_point> outline) {
  const ps_point* point = &outline.back();
  wrapping ux = difference(point->coords[0], outline[outline.size() - 2].coords[0]);
  wrapping uy = difference(point->coords[1], outline[outline.size() - 2].coords[1]);
  wrapping all = 0;
  bool is_straight = false;  // somewhere
  for (const ps_point& after : outline) {
    const wrapping vx = difference(after.coords[0], point->coords[0]);
    const wrapping vy = difference(after.coords[1], point->coords[1]);
    all |= (vx + reach) | (vy + reach);
    is_straight |= vx * uy == ux * vy;
    ux = vx;
    uy = vy;
    point = &after;
  }
  if (is_straight || all < 2 * reach) return !is_straight;

  // Products of distances can wrap to zero.
  bool is_zero = false;  // one of them
  wrapping before = distance(ux, uy);
  for (const ps_point& after : outline) {
    const wrapping vx = difference(after.coords[0], point->coords[0]);
    const wrapping vy = difference(after.coords[1], point->coords[1]);
    const wrapping behind = distance(vx, vy);
    is_zero |= distance(ux + vx, uy + vy) * behind * before == 0;
    ux = vx;
    uy = vy;
    before = behind;
    point = &after;
  }
  return !is_zero;
}

void remove_superfluous_points_v2(path_store& store, path_index path) {
  ps_path& p = store.paths[path];
  const large_array<ps_point>& points = store.points;
  point_index stop = store.prev(p.cursor);
  bool finished = false;
  p.untested = no_point;
  while (true) {
    const auto [after, before] = store.neighbours(p.cursor);
    if (is_superfluous(points[before], points[p.cursor], points[after])) {
      store.link(before, after);
      store.drop(p.cursor);
      p.cursor = before;
      p.untested = after;
      if (--p.n_points == 0) return;
      // Backed up over the start: the stop must move too, or the walk would end too early.
      if (before == stop) stop = store.prev(before);
    } else {
      if (p.cursor == p.untested) p.untested = no_point;
      if (finished) return;
      p.cursor = after;
    }
    if (p.cursor == stop) finished = true;
  }
}

}  // namespace trellion
