#pragma once

#include <cstddef>
#include <span>

#include "pdf/outlines.h"

namespace trellion::pdf {

/// Outlines that are painted at once.
struct outline_batch {
  std::size_t end;     ///< of its outlines; they begin where those of the one before end
  bool was_clockwise;  ///< drawn the other way round than they run now
};

/// Turns outlines so that, where they run along others that stand a little before them, they do so
/// in the same direction: then the same numbers follow one another again, and deflate finds them.
/// All of a batch are turned, or none, so that what they wind round stays the same.
///
/// Diagonals of squares, as they are before pages are drawn, can run through the corners of many
/// pixels, and which of these a renderer takes for touched depends on the way they run. So outlines
/// that slope like that run as they were drawn, unless more than a few sides gain by it.
void turn_alike(const places& points, outlines& all, std::span<const outline_batch> batches);

}  // namespace trellion::pdf
