#include "postscript_path.h"

#include <algorithm>
#include <cstdlib>

#include "param.h"
#include "string_utils.h"

namespace trellion {
namespace {

constexpr std::size_t max_coord_length = 8;

/// A number cut to the length of a coordinate text, its sign and point taken apart.
struct decimal {
  bool negative = false;
  std::int64_t digits = 0;
  std::size_t n_digits = 0;
  std::size_t decimals = 0;
};

decimal decimal_at(const char* text, const char* end) {
  decimal result;
  const char* c = text;
  end = text + std::min<std::ptrdiff_t>(end - text, max_coord_length);
  result.negative = *c == '-';
  if (result.negative) ++c;
  bool point_seen = false;
  for (; c < end; ++c) {
    if (is_digit(*c)) {
      result.digits = 10 * result.digits + (*c - '0');
      ++result.n_digits;
      result.decimals += point_seen ? 1 : 0;
    } else if (*c == '.' && !point_seen) {
      point_seen = true;
    } else {
      break;
    }
  }
  return result;
}

/// The thousandths of most numbers, from the eight bytes of their text at once; not_common for
/// those of more than three decimals, without a digit, or too large.
constexpr std::int64_t not_common = INT64_MAX;

std::int64_t common_thousandths(std::uint64_t word) {
  const bool negative = (word & 0xff) == '-';
  word >>= negative ? 8 : 0;
  const number_form form = number_form_of(word);
  const unsigned n_digits = form.length - (form.has_point ? 1 : 0);
  const unsigned decimals = n_digits - form.before_point;
  if (n_digits == 0 || decimals > 3) return not_common;

  // The digits without the point, the last one in the highest byte, zeros before the first.
  const std::uint64_t before = (std::uint64_t{1} << (8 * form.before_point % 64)) - 1;
  std::uint64_t digits = form.has_point ? (word & before) | (word >> 8 & ~before) : word;
  digits = (digits & 0x0f0f0f0f0f0f0f0f) << (8 * (8 - n_digits));
  // Neighbours are joined to numbers of two digits, those to four, those to eight.
  digits = digits * 10 + (digits >> 8);
  digits = ((digits & 0x000000ff000000ff) * 0x000f424000000064 +
            (digits >> 16 & 0x000000ff000000ff) * 0x0000271000000001) >>
           32;
  constexpr std::array<std::int64_t, 4> unit = {1000, 100, 10, 1};
  const std::int64_t value = static_cast<std::int64_t>(digits) * unit[decimals];
  if (value > INT32_MAX) return not_common;
  return negative ? -value : value;
}

void write_vertex(const path_store& store, point_index point, std::string_view op,
                  text_writer& out) {
  const coord_texts& texts = store.texts[point];
  out.put(coord_text(texts.x, store.text_end)).put(' ');
  out.put(coord_text(texts.y, store.text_end)).put(' ').put(op);
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

/// Links points that lie side by side to a ring.
void link_ring(path_store& store, point_index first, std::uint32_t n_points) {
  const point_index last = first + n_points - 1;
  for (point_index i = first; i <= last; ++i) {
    store.points[i].next = i == last ? first : i + 1;
    store.points[i].prev = i == first ? last : i - 1;
  }
}

}  // namespace

void path_store::clear() {
  points.clear();
  texts.clear();
  paths.clear();
}

void path_store::start_group(std::vector<coord_texts>& vertices, const char* end_of_text) {
  clear();
  texts.swap(vertices);
  text_end = end_of_text;
  if (texts.size() >= no_point) throw run_error("a group has too many points");
  points.reserve(texts.size());
}

std::string_view coord_text(const char* text, const char* end) {
  const std::size_t length = std::min(max_coord_length, static_cast<std::size_t>(end - text));
  return {text, static_cast<std::size_t>(skip_number(text, text + length) - text)};
}

coordinate coordinate_at(const char* text, const char* end) {
  if (words_are_text && end - text >= 8) {
    const std::int64_t common = common_thousandths(load_word(text));
    if (common != not_common) return {static_cast<std::int32_t>(common)};
  }
  const decimal number = decimal_at(text, end);
  if (number.n_digits == 0) return {0, coordinate_fault::no_value};
  // The value is digits over a power of ten, both exact, so the quotient is the correctly rounded
  // double. With up to three decimals the thousandths are whole, and rounding gives just them.
  constexpr std::array<double, 8> power_of_ten = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7};
  const double value = static_cast<double>(number.digits) / power_of_ten[number.decimals];
  // The half is added to the double, whatever that does to its last bit.
  const auto rounded =
      static_cast<std::int64_t>(value * 1000.0 + 0.5);  // NOLINT(bugprone-incorrect-roundings)
  const std::int64_t result = number.negative ? -rounded : rounded;
  if (result < INT32_MIN || result > INT32_MAX) return {0, coordinate_fault::too_large};
  return {static_cast<std::int32_t>(result)};
}

path_index tokens_to_ps_path(std::uint32_t n_points, path_store& store) {
  const auto first = static_cast<point_index>(store.points.size());
  const point_index last = first + n_points - 1;
  ps_path path{n_points,  last,      no_point, INT32_MAX, INT32_MIN,
               INT32_MAX, INT32_MIN, no_path,  no_path};
  for (point_index i = first; i <= last; ++i) {
    const coordinate at_x = coordinate_at(store.texts[i].x, store.text_end);
    const coordinate at_y = coordinate_at(store.texts[i].y, store.text_end);
    if (at_x.fault != coordinate_fault::none || at_y.fault != coordinate_fault::none) {
      return no_path;
    }
    const std::int32_t x = at_x.thousandths;
    const std::int32_t y = at_y.thousandths;
    store.points.push_back({{x, y}, i + 1, i - 1});
    path.x_min = std::min(path.x_min, x);
    path.x_max = std::max(path.x_max, x);
    path.y_min = std::min(path.y_min, y);
    path.y_max = std::max(path.y_max, y);
  }
  store.points[first].prev = last;
  store.points[last].next = first;
  store.paths.push_back(path);
  return static_cast<path_index>(store.paths.size() - 1);
}

void restore_ring(path_store& store, path_index path, point_index first, std::uint32_t n_points) {
  ps_path& p = store.paths[path];
  p.n_points = n_points;
  p.cursor = first;
  p.untested = no_point;
  link_ring(store, first, n_points);
}

path_index copy_path(const path_store& from, path_index path, path_store& to) {
  ps_path copy = from.paths[path];
  const auto first = static_cast<point_index>(to.points.size());
  point_index at = copy.cursor;
  for (std::uint32_t i = 0; i < copy.n_points; ++i, at = from.points[at].next) {
    if (at == from.paths[path].untested) copy.untested = first + i;
    to.points.push_back(from.points[at]);
    to.texts.push_back(from.texts[at]);
  }
  to.text_end = from.text_end;
  copy.cursor = first;
  link_ring(to, first, copy.n_points);
  to.paths.push_back(copy);
  return static_cast<path_index>(to.paths.size() - 1);
}

void output(path_store& store, path_index path, const path_operators& operators, text_writer& out) {
  constexpr std::uint32_t points_per_line = 5;
  ps_path& p = store.paths[path];
  write_vertex(store, p.cursor, operators.moveto, out);
  out.put(nl);
  for (std::uint32_t i = 1; i < p.n_points; ++i) {
    p.cursor = store.points[p.cursor].next;
    write_vertex(store, p.cursor, operators.lineto, out);
    out.put(i % points_per_line == 0 ? nl : ' ');
  }
  const bool line_is_open = p.n_points > 1 && (p.n_points - 1) % points_per_line != 0;
  if (line_is_open) out.put(nl);

  out.put(operators.end).put(nl);
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

area doubled_area(const path_store& store, path_index path) {
  const ps_path& p = store.paths[path];
  if (p.n_points < 3) return 0;
  const auto& origin = store.points[p.cursor].coords;
  const auto offset = [&](const ps_point& point, std::size_t axis) {
    return std::int64_t{point.coords[axis]} - origin[axis];
  };
  area sum = 0;
  point_index at = store.points[p.cursor].next;
  for (std::uint32_t i = 2; i < p.n_points; ++i) {
    const ps_point& a = store.points[at];
    const ps_point& b = store.points[a.next];
    sum += area{offset(a, 0)} * offset(b, 1) - area{offset(a, 1)} * offset(b, 0);
    at = a.next;
  }
  return sum;
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
  const wrapping ux = difference(point.coords[0], before.coords[0]);
  const wrapping uy = difference(point.coords[1], before.coords[1]);
  const wrapping vx = difference(after.coords[0], point.coords[0]);
  const wrapping vy = difference(after.coords[1], point.coords[1]);
  const bool turns = vx * uy != ux * vy;
  // Most points are corners between neighbours that are not far away. Then no two coincide, and the
  // product of the distances is below 2 to the power 61, so that it cannot wrap to zero.
  constexpr wrapping reach = wrapping{1} << 19;
  const bool all_near = ((ux + reach) | (uy + reach) | (vx + reach) | (vy + reach)) < 2 * reach;
  if (turns && all_near) return false;

  if (distance(before, after) * distance(point, after) * distance(before, point) == 0) return true;
  return ux != 0 ? !turns : vx == 0;
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
