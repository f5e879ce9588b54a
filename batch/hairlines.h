#pragma once

#include <cstdint>

#include "batch/pixmap.h"

namespace trellion::batch {

// Drawn with anti-aliasing, a pixel on the edge of two areas has a mixture of their colours, and
// each part of it lies between theirs. Where two polygons only just meet, what is below them shines
// through: the mixture has a part that lies outside. This is judged part by part, as a white mesh
// over yellow shows in the blue alone and hardly in the brightness.

/// How many pixels of a drawing with anti-aliasing have a part that is more than 8 levels above, or
/// below, that of all true colours within one pixel of them. `sharp` is the same page without
/// anti-aliasing. Throws run_error when the pictures differ in their sizes.
std::int64_t hairline_pixels(const pixmap& smooth, const pixmap& sharp);

/// How many pixels of the result's drawing with anti-aliasing have a part that is more than 8
/// levels and the tolerance above, or below, that of everything that the input's two drawings show
/// within one pixel of them: what was not there before. Throws run_error as above.
std::int64_t new_hairlines(const pixmap& smooth_before, const pixmap& sharp_before,
                           const pixmap& smooth_after, int tolerance);

}  // namespace trellion::batch
