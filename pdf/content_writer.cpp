#include "pdf/content_writer.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>
#include <vector>

#include "pdf/numbers.h"

namespace trellion::pdf {
namespace {

std::string_view device_operator(text_id space, bool is_fill) {
  switch (space) {
    case gray_text: return is_fill ? "g" : "G";
    case rgb_text: return is_fill ? "rg" : "RG";
    case cmyk_text: return is_fill ? "k" : "K";
    default: return {};
  }
}

bool is_rectangle(const std::array<place, 4>& at) {
  const auto is_upright = [](const place& a, const place& b) { return a.x == b.x && a.y != b.y; };
  const auto is_level = [](const place& a, const place& b) { return a.y == b.y && a.x != b.x; };
  return (is_level(at[0], at[1]) && is_upright(at[1], at[2]) && is_level(at[2], at[3]) &&
          is_upright(at[3], at[0])) ||
         (is_upright(at[0], at[1]) && is_level(at[1], at[2]) && is_upright(at[2], at[3]) &&
          is_level(at[3], at[0]));
}

/// Writes subpaths.
class path_text {
 public:
  path_text(const places& points, int digits, std::string& text)
      : points_(points), digits_(digits), text_(text) {}

  void add(std::span<const label> ring, bool is_closed) {
    if (ring.size() == 4 && add_rectangle(ring)) return;
    for (std::size_t i = 0; i < ring.size(); ++i) corner(ring[i], i == 0);
    if (is_closed) text_ += "h ";
  }

  /// As open subpaths, each from one of the starts that are given, sorted, to the next.
  void add_open(std::span<const label> ring, std::span<const outlines::open_start> starts) {
    const auto is_start = [&](label at) {
      return std::ranges::binary_search(starts, at, {}, &outlines::open_start::corner);
    };
    const auto first = std::ranges::find_if(ring, is_start) - ring.begin();
    for (std::size_t i = 0; i <= ring.size(); ++i) {
      const label at = ring[(static_cast<std::size_t>(first) + i) % ring.size()];
      if (i > 0) corner(at, false);
      if (i < ring.size() && is_start(at)) corner(at, true);
    }
  }

 private:
  void corner(label at, bool is_first) {
    number(points_[at].x);
    number(points_[at].y);
    text_ += is_first ? "m " : "l ";
  }

  void number(std::int64_t value) {
    append_number(value, digits_, text_);
    text_ += ' ';
  }

  /// From the corner where a level side begins, so that it runs the same way.
  bool add_rectangle(std::span<const label> ring) {
    std::array<place, 4> at{};
    for (std::size_t i = 0; i < at.size(); ++i) at[i] = points_[ring[i]];
    if (!is_rectangle(at)) return false;
    std::size_t first = at[0].y == at[1].y ? 0 : 1;
    if (at[first].x > at[first + 1].x) first = (first + 2) % 4;  // a width needs no sign
    const place& begin = at[first];
    const place& far = at[(first + 2) % 4];
    number(begin.x);
    number(begin.y);
    number(far.x - begin.x);
    number(far.y - begin.y);
    text_ += "re ";
    return true;
  }

  const places& points_;
  int digits_;
  std::string& text_;
};

}  // namespace

content_writer::content_writer(const text_table& texts, const graphics_state& before,
                               std::size_t expected_size)
    : texts_(texts), before_(before), now_{before.fill, before.stroke, before.line} {
  text_.reserve(expected_size);
}

void content_writer::paint_outlines(const outlines& all, std::size_t begin, std::size_t end,
                                    const places& points, int digits, const paint& with) {
  set_state(with);
  path_text path(points, digits, text_);
  const auto ring_of = [&](std::size_t i) {
    const std::uint32_t from = i == 0 ? 0 : all.ends[i - 1];
    return std::span(all.corners).subspan(from, all.ends[i] - from);
  };
  const auto starts_of = [&](std::size_t i) {
    constexpr auto outline = &outlines::open_start::outline;
    return std::span(std::ranges::lower_bound(all.open_starts, i, {}, outline),
                     std::ranges::upper_bound(all.open_starts, i, {}, outline));
  };
  std::vector<std::size_t> in_parts;
  for (std::size_t i = begin; i < end; ++i) {
    const auto starts = starts_of(i);
    if (starts.empty()) {
      path.add(ring_of(i), with.has_pen);
    } else if (starts.size() == 1) {
      path.add_open(ring_of(i), starts);
    } else {
      in_parts.push_back(i);
    }
  }
  if (in_parts.size() < end - begin) text_ += with.has_pen ? "B\n" : "f\n";
  if (in_parts.empty()) return;
  for (const std::size_t i : in_parts) path.add(ring_of(i), false);
  text_ += "f\n";
  for (const std::size_t i : in_parts) path.add_open(ring_of(i), starts_of(i));
  text_ += "S\n";
}

void content_writer::paint_path(std::string_view path, std::string_view painter,
                                const paint& with) {
  set_state(with);
  ((text_ += path) += ' ') += painter;
  text_ += '\n';
}

void content_writer::set_state(const paint& with) {
  if (with.fills) set_colour(now_.fill, with.ink, true);
  if (!with.has_pen) return;
  set_colour(now_.stroke, with.ink, false);
  set_line(with.pen);
}

void content_writer::set_colour(colour& now, const colour& to, bool is_fill) {
  if (now == to || !to.is_known()) return;
  const std::string_view device = device_operator(to.space, is_fill);
  if (device.empty() && (now.space != to.space || to.components == initial_text)) {
    text_ += texts_[to.space];
    text_ += is_fill ? " cs\n" : " CS\n";
  }
  if (to.components != initial_text) {
    text_ += texts_[to.components];
    text_ += ' ';
    text_ += !device.empty() ? device : is_fill ? "scn" : "SCN";
    text_ += '\n';
  }
  now = to;
}

void content_writer::set_line(const line_style& to) {
  set_text(now_.line.width, to.width, " w\n");
  set_text(now_.line.cap, to.cap, " J\n");
  set_text(now_.line.join, to.join, " j\n");
  set_text(now_.line.miter, to.miter, " M\n");
  set_text(now_.line.dash, to.dash, " d\n");
}

void content_writer::set_text(text_id& now, text_id to, std::string_view name) {
  if (now == to || to == unknown_text) return;
  text_ += texts_[to];
  text_ += name;
  now = to;
}

/// Whether all of it could be written.
bool content_writer::set_all(const graphics_state& to) {
  set_colour(now_.fill, to.fill, true);
  set_colour(now_.stroke, to.stroke, false);
  set_line(to.line);
  return now_.fill == to.fill && now_.stroke == to.stroke && now_.line == to.line;
}

std::string content_writer::finish(const graphics_state& after) {
  const std::size_t painted = text_.size();
  if (set_all(after)) return std::move(text_);
  // Something was set that began with a value nobody knows.
  text_.resize(painted);
  text_.insert(1, "q\n");
  text_ += "Q\n";
  now_ = {before_.fill, before_.stroke, before_.line};
  set_all(after);
  return std::move(text_);
}

}  // namespace trellion::pdf
