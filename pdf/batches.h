#pragma once

#include <cstdint>
#include <vector>

#include "pdf/mesh.h"

namespace trellion::pdf {

/// Polygons of one paint that are painted at once, as indices into the mesh, in their order there.
/// One of shape `other` has a batch to itself.
struct batch {
  std::uint32_t paint = 0;
  std::vector<std::uint32_t> polygons;
};

/// Splits a mesh where the paint changes: nothing changes places.
std::vector<batch> batches_in_order(const mesh& polygons);

/// Brings polygons of one paint together, as far as it is proven that nothing changes.
///
/// Two polygons keep their order unless they are of one paint, which leaves the same picture either
/// way, since all is opaque, or are apart: then they have no point in common where one could cover
/// the other. Any order that keeps that of all other pairs paints the same: whatever covers a point
/// last still does. (Take two neighbours that stand the wrong way round: they are no such pair, and
/// can be swapped; so step by step all come to their places.) Among these orders one of few batches
/// is chosen: all polygons of a paint that wait for none of another are painted at once, those
/// paints first of which nothing is left behind.
///
/// The work for one polygon is bounded. When there is too much about it to look at, it counts as
/// not apart from anything before it: an epoch ends, and another begins with it.
std::vector<batch> batches_by_paint(const mesh& polygons);

}  // namespace trellion::pdf
