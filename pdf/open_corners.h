#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "pdf/mesh.h"
#include "pdf/outlines.h"
#include "pdf/run.h"

namespace trellion::pdf {

/// Has the outlines from `begin` on, joined from polygons with a pen, start at a corner where each
/// of these that has it starts without being closed: the pen still draws none there. `of` has the
/// polygons in the order of `painted`. An outline can have one such corner; at others the pen draws
/// what it did not.
void open_starts(const painted_mesh& painted, const mesh& of,
                 std::span<const std::uint32_t> polygons, outlines& all, std::size_t begin);

}  // namespace trellion::pdf
