#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "pdf/mesh.h"
#include "pdf/outlines.h"
#include "pdf/run.h"

namespace trellion::pdf {

/// Notes where the outlines from `begin` on, joined from polygons with a pen, start open: at each
/// corner where all of these that have it start without being closed, so that the pen still draws
/// none there. Of a pen that is not wide one in each outline will do: at others it draws what it
/// did not, which does not show. `of` has the polygons in the order of `painted`.
void open_starts(const painted_mesh& painted, const mesh& of,
                 std::span<const std::uint32_t> polygons, outlines& all, std::size_t begin,
                 bool is_wide);

}  // namespace trellion::pdf
