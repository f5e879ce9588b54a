#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "pdf/batches.h"

namespace trellion::pdf {

/// What counts as beside each other where sides are not shared, in the units of places.
struct nearness {
  std::int64_t distance;  ///< no farther apart
  std::int64_t least;     ///< and for more than this along each other
};

/// Adds to each batch the polygons of later ones beside its own, one ring wide, so that its colour
/// also lies under them: where viewers smooth the common side, what neither covers shows a colour
/// of the mesh, not the paper's.
///
/// The picture stays: a polygon is added only to batches before its own, in which it is painted
/// in full. So of every point of it the last paint is its own or a later one, as before; and
/// nothing is painted outside of the mesh. Polygons of shape `other` are not added, as batches that
/// hold them cannot be joined, and nothing is added to batches with a pen. Nor are polygons at the
/// rim of the mesh: a pixel that they half cover would be painted twice. The time is near-linear.
///
/// Beside a side are those that share it. Where nobody does, as where a side meets two shorter
/// ones, they are those that have a side along it, as near as told.
void paint_under_neighbours(const mesh& of, std::span<batch> batches, const nearness& near);

}  // namespace trellion::pdf
