#pragma once

#include <vector>

#include "postscript_path_queue.h"

namespace trellion {

/// Splits the paths of a queue into layers that can be joined, each on its own, without losing any
/// of the area that they wind round. The layers come in the order in which they are needed, the
/// paths of each in the order of the queue; one layer is the rule. Every path must be cleaned and
/// have an area that is not zero. The time grows with the number of points, times its logarithm.
///
/// Think of every path turned so that it runs counter-clockwise. Proper neighbours then run along
/// their common edge in opposite directions, and joining them adds up what they wind round. Two
/// paths that run the same way lie on the same side of it (a fold, or a polygon drawn twice):
/// joining them subtracts one from the other, which opens a hole, or leaves nothing. So:
///
///   In a layer no two paths run along a common stretch of a line, however short, the same way.
///
/// 1. It is enough for the paths as they are, and joining keeps it. Call the stretches of a line
///    between the ends of any edges its pieces. Joining takes a pair of opposite runs along an
///    edge away, and so does removing the tip of a spike; removing a point on a straight line
///    changes no run along any piece. So whatever runs along a piece one way comes from the one
///    path of the layer that did so at the start, and is now in one path. (Equal edges alone would
///    not do: two edges that have become one can equal a third that neither of them did.)
/// 2. So two paths that share an edge run along it in opposite ways, and joining them adds up.
///    The joined path runs the same way in all its parts, whichever way it is stored.
/// 3. The area of a joined path is the sum of those of its parts, each greater than zero. So no
///    path collapses, which would take an area of zero.
///
/// This takes paths that wind round every point once or not at all: where one crosses itself it has
/// a lobe that runs the other way, which can cancel what another path winds round. And it takes
/// exact arithmetic. That of is_superfluous wraps for points far apart, which the
/// repair's summary tells as an area lost. What is drawn by another rule than that of windings
/// that are not zero (even-odd, say) can differ where joined polygons overlap.
///
/// A path goes to the layer after the last one that has a path in its way. An earlier one can have
/// room for it, too, but this asks only for the last layer on each piece, so that n equal paths do
/// not take n * n looks.
std::vector<std::vector<path_index>> split_into_layers(const path_store& store,
                                                       const ps_path_queue& queue);

}  // namespace trellion
