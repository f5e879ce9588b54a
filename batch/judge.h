#pragma once

#include <cstdint>
#include <string>

#include "batch/drawing.h"
#include "batch/file_report.h"

namespace trellion::batch {

/// What the way to a result allows to differ.
struct judging_rule {
  int tolerance = 0;         ///< levels of 255 by which colours may differ
  bool mesh_closed = false;  ///< outlines are stroked, so that pixels between polygons differ
  bool steady = false;       ///< only what stays wrong when the page is moved by next to nothing
                             ///< counts; for PDF
};

/// How far two pictures agree that show the same.
struct agreement {
  std::int64_t pixels = 0;
  std::int64_t differing = 0;
};

/// In the words of the table: "same", or how many pixels differ.
std::string in_words(const agreement& found);

/// Whether a page of the result shows what that of the input shows. Throws dead_end where it does
/// not, or that cannot be known.
///
/// 1. A pixel is wrong when its colour occurs nowhere within one pixel of it in the other picture.
///    Renderers may decide otherwise about a pixel at the rim of an area whose outline has fewer
///    points now; but a line that vanishes, however thin, is wrong, and so is another colour.
/// 2. That holds at the resolution of a screen and at that of print, where slivers show; for a page
///    of PDF by both renderers, where they are there.
///    Drawn centre-sampled, polygons that only just meet let through what is below wherever the
///    centre of a pixel lies on their edge or in a crack. What is seen there is chance: moved by a
///    hundredth of a point, both pictures show something else. So, where that is the rule, a wrong
///    pixel counts only if it is wrong in these, too. What is wider than that stays.
/// 3. Drawn anti-aliased, hairlines may vanish, but none may appear, nor grow in number.
///
/// A dead end tells the place where few pixels, in small groups, are wrong.
agreement judge(appearance& input, appearance& result, const judging_rule& rule);

/// Whether only 1 and 2 hold, be it of a part of the page that shows nothing.
bool shows_the_same(appearance& input, appearance& result, const judging_rule& rule);

}  // namespace trellion::batch
