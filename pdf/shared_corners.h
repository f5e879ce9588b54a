#pragma once

#include <cstdint>
#include <optional>

#include "pdf/mesh.h"

namespace trellion::pdf {

/// The mesh with corners added to sides that polygons of the same paint have theirs along, so that
/// they share whole sides and can be joined: programs that cut polygons in two round where the cut
/// ends, so that it hardly ever lies on the neighbour's side. A side moves by the tolerance at
/// most. Polygons keep their places and paints, and stay convex or simple; those with a pen, of
/// shape `other` or of very many corners stay as they are. Nothing when there is nothing to add, or
/// so many sides are without a partner that it would take long.
std::optional<mesh> with_shared_corners(const mesh& of, std::int64_t tolerance);

}  // namespace trellion::pdf
