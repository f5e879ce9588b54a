#pragma once

#include <vector>

#include "edge_index.h"
#include "postscript_path.h"

namespace trellion {

/// Does to a path just merged what remove_superfluous_points_v2 does, without walking all of it.
///
/// Whether a point is superfluous depends on it and its two neighbours alone, whichever way round.
/// So a point that survived its last test survives again while it keeps its neighbours, and only
/// the others, the suspects, need a test: the four points next to the seams of the merger, the one
/// point of each path that its last clean-up left untested, and those next to a point removed now.
/// The walk jumps from suspect to suspect, in the order of the ring. What it jumps over would have
/// been tested, kept and left alone, so the ring, the cursor, and the point left untested are the
/// same. The jumps end at the stop point: it begins as the last suspect, and when the walk backs
/// up over its start it moves, always to the point before the cursor, so it stays after all
/// suspects that are still to come.
class cleanup {
 public:
  cleanup(path_store& store, edge_index& index) : store_(store), index_(index) {}

  /// Notes what becomes suspect by joining b into a along their cursors, before that is done.
  void note_suspects(path_index a, path_index b);
  /// The walk of the joined path from its cursor. The edges of removed points are taken out of the
  /// index.
  void run(path_index path);

  /// The edges that have got another end by the last run. They are not in the index.
  [[nodiscard]] const std::vector<edge>& changed_edges() const { return changed_; }

 private:
  void remove_point(point_index point);

  path_store& store_;
  edge_index& index_;
  std::vector<point_index> suspects_;  // in the order of the ring, from the cursor on
  std::vector<edge> changed_;          // those that the walk has passed, in the order of the ring
};

}  // namespace trellion
