#include "batch/judge.h"

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

/// Where the outlines of a mesh are stroked each moves by a pixel: so many of all may differ.
constexpr std::int64_t percent_of_outlines = 10;

picture_difference compare_sharp(const pixmap& input, const pixmap& result,
                                 const judging_rule& rule) {
  const std::optional<picture_difference> compared = compare(input, result, rule.tolerance);
  if (!compared) withhold("the picture has another size");
  const picture_difference& difference = *compared;
  if (difference.blank) withhold("the page is blank: is the BoundingBox beside the drawing?");
  if (difference.wrong > 0) {
    constexpr std::int64_t few = 400;
    constexpr std::int64_t few_together = 64;
    throw dead_end{verdict::withheld,
                   "the picture changed: " + std::to_string(difference.wrong) +
                       " pixels have a colour that is not there in the other picture",
                   difference.wrong <= few && difference.wrong_together <= few_together};
  }
  const bool too_many = difference.differing > percent_of_outlines * difference.pixels / 100;
  if (rule.mesh_closed && too_many) {
    withhold("the picture changed: " + percent(difference.differing, difference.pixels) +
             " of the pixels differ");
  }
  return difference;
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
  // A few at corners are nothing against a mesh that has gone.
  if (appeared > corners + *before.ghostscript / 50) {
    withhold(std::to_string(appeared) + " pixels of hairlines appear where none were");
  }
}

}  // namespace

bool shows_the_same(appearance& input, appearance& result, const judging_rule& rule) {
  try {
    compare_sharp(input.coarse(), result.coarse(), rule);
    compare_sharp(input.fine(), result.fine(), rule);
    return true;
  } catch (const dead_end& end) {
    if (end.result == verdict::withheld) return false;
    throw;
  }
}

std::string judge(appearance& input, appearance& result, const judging_rule& rule) {
  const picture_difference coarse = compare_sharp(input.coarse(), result.coarse(), rule);
  const picture_difference fine = compare_sharp(input.fine(), result.fine(), rule);
  compare_hairlines(input, result, rule);
  if (coarse.differing + fine.differing == 0) return "same";
  return "same but " + percent(coarse.differing + fine.differing, coarse.pixels + fine.pixels);
}

}  // namespace trellion::batch
