#pragma once

#include <cstddef>
#include <span>

#include "pdf/outlines.h"

namespace trellion::pdf {

/// Turns outlines so that, where they run along others that stand a little before them, they do so
/// in the same direction: then the same numbers follow one another again, and deflate finds them.
/// `batches` tells where each batch of outlines ends, which are painted at once: all of a batch are
/// turned, or none, so that what they wind round stays the same.
void turn_alike(outlines& all, std::span<const std::size_t> batches);

}  // namespace trellion::pdf
