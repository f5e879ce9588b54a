#include "batch/judge.h"

#include <algorithm>
#include <array>
#include <span>

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

[[noreturn]] void withhold(std::string reason) {
  throw dead_end{verdict::withheld, std::move(reason)};
}

/// What the comparison at one resolution showed.
struct sharp_view {
  picture_difference difference;
  double dpi;
};

sharp_view compared(const pixmap& input, const pixmap& result, double dpi,
                    const judging_rule& rule) {
  const std::optional<picture_difference> difference = compare(input, result, rule.tolerance);
  if (!difference) withhold("the picture has another size");
  return {*difference, dpi};
}

/// Both resolutions, that of the screen first.
std::array<sharp_view, 2> sharp_views(appearance& input, appearance& result,
                                      const judging_rule& rule) {
  return {compared(input.coarse(), result.coarse(), input.dpi().coarse, rule),
          compared(input.fine(), result.fine(), input.dpi().fine, rule)};
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
  for (const auto& [difference, dpi] : views) {
    if (difference.blank) {
      withhold("the page shows nothing but one colour: is the BoundingBox beside the drawing?");
    }
    if (difference.wrong > 0) {
      const std::string count = std::to_string(difference.wrong);
      throw dead_end{verdict::withheld,
                     "the picture changed: the colour of " + count +
                         (difference.wrong == 1 ? " pixel" : " pixels") +
                         " is not there in the other picture",
                     place_of_few(views)};
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
  return std::ranges::all_of(sharp_views(input, result, rule), is_right);
}

std::string judge(appearance& input, appearance& result, const judging_rule& rule) {
  const std::array<sharp_view, 2> views = sharp_views(input, result, rule);
  check_colours(views, rule);
  compare_hairlines(input, result, rule);
  std::int64_t pixels = 0;
  std::int64_t differing = 0;
  for (const auto& [difference, dpi] : views) {
    pixels += difference.pixels;
    differing += difference.differing;
  }
  return differing == 0 ? "same" : "same but " + percent(differing, pixels);
}

}  // namespace trellion::batch
