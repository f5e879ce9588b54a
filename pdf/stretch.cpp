#include "pdf/stretch.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>
#include <vector>

#include "pdf/alignment.h"
#include "pdf/batches.h"
#include "pdf/content_writer.h"
#include "pdf/likeness.h"
#include "pdf/numbers.h"
#include "pdf/open_corners.h"
#include "pdf/outlines.h"
#include "pdf/packing.h"
#include "pdf/shared_corners.h"
#include "pdf/under.h"

namespace trellion::pdf {
namespace {

/// The pen that closes hairlines, and nothing where it would show.
std::optional<line_style> closing_pen(const stretch& where, const content_settings& settings,
                                      double on_page, text_table& texts) {
  if (settings.close != closing::stroke || !where.before.strokes_opaquely() || !(on_page > 0))
    return std::nullopt;
  // Three digits of it are enough.
  const double width = settings.close_width / on_page;
  const int digits = std::max(0, 3 - static_cast<int>(std::ceil(std::log10(width))));
  const double scaled = std::round(width * std::pow(10.0, digits));
  if (digits > 9 || !(scaled < static_cast<double>(max_coordinate))) return std::nullopt;
  std::string text;
  append_number(static_cast<std::int64_t>(scaled), digits, text);
  line_style pen = where.before.line;
  pen.width = texts.id_of(text);
  pen.join = texts.id_of("1");
  pen.dash = texts.id_of(solid_dash);
  return pen;
}

/// A batch when its polygons have been joined.
struct joined_batch {
  std::uint32_t paint = 0;
  bool was_clockwise = false;
  const raw_polygon* raw = nullptr;  ///< painted as it stands: then it has no outlines
  std::size_t outlines_end = 0;
};

/// Whether most of the polygons were.
bool were_clockwise(const mesh& of, std::span<const std::uint32_t> polygons) {
  const auto was_clockwise = [&](std::uint32_t p) { return of.polygons[p].was_clockwise; };
  return 2 * std::ranges::count_if(polygons, was_clockwise) > std::ssize(polygons);
}

/// Whether a corner more or less of a pen can be seen, at so many points to a unit.
bool is_wide(const line_style& pen, double on_page, const text_table& texts) {
  constexpr double widest_thin = 1;  // a corner has half of that: two pixels of those of --strict
  return to_double(texts[pen.width]) * on_page > widest_thin;
}

stretch_text write(const painted_mesh& painted, const mesh& polygons, const stretch& where,
                   double on_page, std::vector<batch> batches, const std::optional<line_style>& pen,
                   const text_table& texts) {
  outlines all;
  std::vector<joined_batch> joined;
  joined.reserve(batches.size());
  for (batch& each : batches) {
    const std::uint32_t first = each.polygons[0];
    const raw_polygon* raw = each.polygons.size() == 1 ? raw_of(painted, first) : nullptr;
    if (raw == nullptr) {
      const std::size_t begin = all.ends.size();
      join(polygons, each.polygons, all);
      const paint with = painted.paints[each.paint];
      if (with.has_pen) {
        open_starts(painted, polygons, each.polygons, all, begin,
                    is_wide(with.pen, on_page, texts));
      }
    }
    joined.push_back(
        {each.paint, were_clockwise(painted.polygons, each.polygons), raw, all.ends.size()});
  }
  batches = {};
  remove_straight_corners(polygons, {&all, 1});
  std::vector<outline_batch> to_turn;
  to_turn.reserve(joined.size());
  for (const joined_batch& each : joined) {
    to_turn.push_back({each.outlines_end, each.was_clockwise});
  }
  turn_alike(polygons.points, all, to_turn);

  stretch_text result;
  content_writer writer(texts, where.before, where.end - where.begin);
  std::size_t begin = 0;
  for (const joined_batch& each : joined) {
    paint with = painted.paints[each.paint];
    if (each.raw != nullptr) {
      const raw_polygon& raw = *each.raw;
      writer.paint_path(where.content.substr(raw.begin, raw.end - raw.begin), raw.painter, with);
      if (with.fills) ++result.polygons;
      continue;
    }
    if (pen && !with.has_pen) {
      with.has_pen = true;
      with.pen = *pen;
    }
    writer.paint_outlines(all, begin, each.outlines_end, polygons.points, painted.digits, with);
    begin = each.outlines_end;
  }
  result.polygons += static_cast<std::int64_t>(begin);
  result.text = where.after_matters ? writer.finish(where.after) : writer.finish();
  return result;
}

/// So many points of the page in the units of places; 0 when there are too many.
std::int64_t in_units(double points, const painted_mesh& painted, double on_page) {
  const double units = points / on_page * std::pow(10.0, painted.digits);
  return units < static_cast<double>(max_coordinate) ? static_cast<std::int64_t>(units) : 0;
}

/// Keeps the text that is smallest once it is packed.
class smallest {
 public:
  void offer(stretch_text text) {
    if (!best_) {
      best_ = std::move(text);
    } else if (text.text != best_->text) {
      // Packing takes longer than writing: nothing is packed twice, and a single text not at all.
      if (!packed_size_) packed_size_ = estimated_packed_size(best_->text);
      const std::size_t size = estimated_packed_size(text.text);
      if (size >= *packed_size_) return;
      best_ = std::move(text);
      packed_size_ = size;
    }
  }
  [[nodiscard]] const stretch_text& best() const { return *best_; }
  stretch_text take() { return *std::move(best_); }

 private:
  std::optional<stretch_text> best_;
  std::optional<std::size_t> packed_size_;  // of the best
};

}  // namespace

std::optional<stretch_text> repair_stretch(const painted_mesh& painted, const stretch& where,
                                           const content_settings& settings, double scale,
                                           text_table& texts) {
  const double on_page = largest_scale(where.before.matrix) * scale;  // points to a unit
  const std::optional<line_style> pen = closing_pen(where, settings, on_page, texts);
  const std::int64_t tolerance = in_units(settings.precision, painted, on_page);
  // Programs round to hundredths of a point: so far apart cells are neighbours all the same.
  const std::int64_t gap = in_units(0.015, painted, on_page);
  const nearness near = {std::max(5 * tolerance, gap), tolerance};
  const std::optional<mesh> even = with_even_columns(painted.polygons, tolerance);
  const mesh& polygons = even ? *even : painted.polygons;
  // Their sides move by the precision at most: what is proven of the order stays so.
  const std::optional<mesh> meeting = with_shared_corners(polygons, tolerance);
  smallest written;
  const auto try_batches = [&](std::vector<batch> batches, const mesh& outlined) {
    written.offer(write(painted, outlined, where, on_page, std::move(batches), pen, texts));
  };
  // More corners can take more room than fewer outlines save. They also leave fewer gaps.
  const bool tries_both = meeting && settings.close == closing::none;
  const auto try_all = [&](std::vector<batch> batches) {
    if (settings.close == closing::under) paint_under_neighbours(polygons, batches, near);
    if (tries_both) try_batches(batches, *meeting);
    try_batches(std::move(batches), meeting && !tries_both ? *meeting : polygons);
  };
  try_all(batches_in_order(polygons));
  // What is brought together is not always worth that neighbours no longer stand together.
  if (settings.reorder) try_all(batches_by_paint(polygons));
  if (settings.close == closing::none && written.best().text.size() >= where.end - where.begin)
    return std::nullopt;
  return written.take();
}

}  // namespace trellion::pdf
