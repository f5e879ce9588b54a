#include "batch/judge.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "batch/hairlines.h"
#include "batch/picture.h"

namespace trellion::batch {
namespace {

std::string percent(std::int64_t part, std::int64_t whole) {
  const std::int64_t hundredths = part * 10'000 / whole;
  if (part > 0 && hundredths == 0) return "< 0.01 %";
  const std::string digits = std::to_string(hundredths % 100);
  return std::to_string(hundredths / 100) + '.' + std::string(2 - digits.size(), '0') + digits +
         " %";
}

/// The result is wrong; another may be right.
[[noreturn]] void withhold(std::string reason, std::optional<page_part> place = std::nullopt) {
  throw dead_end{verdict::withheld, std::move(reason), place, true};
}

/// One of the drawings that are compared.
struct sharp_drawing {
  const pixmap& (appearance::*draw)();
  double dpi;
  /// Wrong pixels count only where so many stand in a row. Cairo paints over a gap within one path
  /// that is a single pixel wide in its row, at every resolution alike, and over two where a sliver
  /// lies in it. So it depends on which polygons share a path what is seen of slivers, and
  /// Ghostscript must tell whether they are there.
  std::size_t least_in_row;
};

/// What the comparison of one of them showed.
struct sharp_view {
  picture_difference difference;
  double dpi;
};

/// Moves that share no direction with each other or the pixels. A pixel has 0.12 points at 600 dpi.
constexpr std::array<shift, 2> moves = {{{0.01, 0.007}, {-0.007, 0.01}}};

/// Drops what a renderer decides by chance.
void keep_steady(appearance& input, appearance& result, const sharp_drawing& drawing,
                 const judging_rule& rule, picture_difference& found) {
  keep_wrong_in_rows(drawing.least_in_row, found);
  for (const shift& by : moves) {
    if (found.places.empty()) return;
    appearance moved_input = input.moved(by);
    appearance moved_result = result.moved(by);
    const pixmap& before = (moved_input.*drawing.draw)();
    const pixmap& after = (moved_result.*drawing.draw)();
    const auto has_size_of = [&before](const pixmap& other) {
      return before.width == other.width && before.height == other.height;
    };
    if (!has_size_of(after) || !has_size_of((input.*drawing.draw)())) return;
    keep_wrong_in(before, after, rule.tolerance, found);
  }
  keep_wrong_in_rows(drawing.least_in_row, found);
}

sharp_view compared(appearance& input, appearance& result, const sharp_drawing& drawing,
                    const judging_rule& rule) {
  std::optional<picture_difference> difference =
      compare((input.*drawing.draw)(), (result.*drawing.draw)(), rule.tolerance);
  if (!difference) withhold("the picture has another size");
  if (rule.steady) keep_steady(input, result, drawing, rule, *difference);
  return {std::move(*difference), drawing.dpi};
}

/// Both resolutions, that of the screen first.
std::vector<sharp_view> sharp_views(appearance& input, appearance& result,
                                    const judging_rule& rule) {
  const resolutions& dpi = input.dpi();
  std::vector<sharp_drawing> drawings = {{&appearance::coarse, dpi.coarse, 1},
                                         {&appearance::fine, dpi.fine, 1}};
  if (input.has_cairo()) {
    drawings.push_back({&appearance::cairo_coarse, dpi.coarse, 3});
    drawings.push_back({&appearance::cairo_fine, dpi.fine, 3});
  }
  std::vector<sharp_view> views;
  views.reserve(drawings.size());
  for (const sharp_drawing& drawing : drawings) {
    views.push_back(compared(input, result, drawing, rule));
  }
  return views;
}

bool is_right(const sharp_view& view) { return view.difference.wrong == 0; }

/// Around the wrong pixels of all views, if they are few and in small groups.
std::optional<page_part> place_of_few(std::span<const sharp_view> views) {
  constexpr std::int64_t few = 4000;
  constexpr std::int64_t few_together = 1000;
  std::optional<page_part> place;
  for (const auto& [difference, dpi] : views) {
    if (difference.wrong > few || difference.wrong_together > few_together) return std::nullopt;
    if (difference.wrong == 0) continue;
    const double points = points_per_inch / dpi;
    const pixel_box& box = difference.wrong_within;
    const page_part part{
        points * static_cast<double>(box.left), points * static_cast<double>(box.top),
        points * static_cast<double>(box.right), points * static_cast<double>(box.bottom)};
    if (!place) place = part;
    place = {std::min(place->left, part.left), std::min(place->top, part.top),
             std::max(place->right, part.right), std::max(place->bottom, part.bottom)};
  }
  return place;
}

void check_colours(std::span<const sharp_view> views, const judging_rule& rule) {
  // Where the outlines of a mesh are stroked each moves by a pixel: so many of all may differ.
  constexpr std::int64_t percent_of_outlines = 10;
  for (const sharp_view& view : views) {
    const picture_difference& difference = view.difference;
    if (difference.blank) {
      throw dead_end{
          verdict::withheld,
          "the page shows nothing but one colour: is the BoundingBox beside the drawing?"};
    }
    if (!is_right(view)) {
      const std::string count = std::to_string(difference.wrong);
      withhold("the picture changed: the colour of " + count +
                   (difference.wrong == 1 ? " pixel" : " pixels") +
                   " is not there in the other picture",
               place_of_few(views));
    }
    const bool too_many = difference.differing > percent_of_outlines * difference.pixels / 100;
    if (rule.mesh_closed && too_many) {
      withhold("the picture changed: " + percent(difference.differing, difference.pixels) +
               " of the pixels differ");
    }
  }
}

/// Beyond what the rounding of a few corners does.
constexpr std::int64_t corners = 8;

/// By one renderer: the other can gain more than is lost here, but nobody is to see many more.
bool grew_much(std::optional<std::int64_t> before, std::optional<std::int64_t> after) {
  return before && after && *after > *before + *before / 4 + corners;
}

void compare_hairlines(appearance& input, appearance& result, const judging_rule& rule) {
  const hairline_counts& before = input.hairlines();
  const hairline_counts& after = result.hairlines();
  if (sum(after) > sum(before) + corners || grew_much(before.ghostscript, after.ghostscript) ||
      grew_much(before.cairo, after.cairo)) {
    withhold("there are more hairlines than before");
  }
  const std::int64_t appeared =
      new_hairlines(input.smooth(), input.coarse(), result.smooth(), rule.tolerance);
  // Some are nothing against a mesh that has gone.
  if (appeared > corners + *before.ghostscript / 16) {
    withhold(std::to_string(appeared) + " pixels of hairlines appear where none were");
  }
}

}  // namespace

bool shows_the_same(appearance& input, appearance& result, const judging_rule& rule) {
  input.expect_sharp();
  result.expect_sharp();
  return std::ranges::all_of(sharp_views(input, result, rule), is_right);
}

agreement judge(appearance& input, appearance& result, const judging_rule& rule) {
  input.expect_all();
  result.expect_all();
  const std::vector<sharp_view> views = sharp_views(input, result, rule);
  check_colours(views, rule);
  compare_hairlines(input, result, rule);
  agreement found;
  for (const auto& [difference, dpi] : views) {
    found.pixels += difference.pixels;
    found.differing += difference.differing;
  }
  return found;
}

std::string in_words(const agreement& found) {
  return found.differing == 0 ? "same" : "same but " + percent(found.differing, found.pixels);
}

}  // namespace trellion::batch
