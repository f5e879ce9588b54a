#pragma once

#include <cstdint>

#include "coordinates.h"
#include "large_array.h"

namespace trellion {

/// True for many polygons that follow each other in no order of place. `n_points` is what each has
/// of the points, one after the other.
bool are_scattered(const large_array<ps_point>& points, const large_array<std::uint32_t>& n_points);

/// Lays the points of polygons so that neighbours in the plane are neighbours in memory: along a
/// curve that fills it. Those of a polygon stay together. Returns the polygons in their new order.
large_array<std::uint32_t> bring_neighbours_together(large_array<ps_point>& points,
                                                     const large_array<std::uint32_t>& n_points);

}  // namespace trellion
