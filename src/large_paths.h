#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

#include "edge_index.h"
#include "postscript_path.h"
#include "ring_order.h"

namespace trellion {

/// What is kept about the neighbours of the large paths, so that a look of such a path for a
/// partner costs what has changed since its last look, not its number of points.
///
/// An edge outside of the crowds stands in a queue of its path by the rank of its first neighbour.
/// An entry may be too small, never too large, whenever the path looks: neighbours whose ranks
/// become smaller are announced, and those whose ranks have become larger are found out at the top.
///
/// A crowd in which the path has edges stands by a bound: no other path of the crowd has a smaller
/// rank. A crowd that a path has looked at is watched by it. The next announcement in the crowd
/// sets the bound to the smallest of all, "look again", and ends the watch. So an announcement is
/// paid for by looks that are over, and a path owes one look for it, however often the outline runs
/// along the crowd's edge.
///
/// The path's own edges in the crowd are kept in the order of the ring, which is labelled from its
/// first crowd on: the first of them from the cursor on takes one search.
class large_paths {
 public:
  /// Store and index must outlive this. After `patience` steps along a ring its points are
  /// labelled.
  large_paths(const path_store& store, edge_index& index, std::uint32_t patience);

  [[nodiscard]] bool contains(path_index path) const { return is_large_[path]; }
  /// Makes a path a large one: looks at all its edges.
  void add(path_index path);
  void remove(path_index path) {
    if (is_large_[path]) forget(path);
  }
  /// Takes note of an edge that has been added to a large path, or to the index.
  void note_edge(path_index path, edge e);
  /// Takes note of the points from `first` to `last` that have been linked into a large path.
  void note_stretch(path_index path, edge first, edge last);
  /// Takes note of the edges that have come into crowds or left them. Must be called before edges
  /// get other owners or points are linked into a large path; looks call it themselves.
  void catch_up() {
    if (!index_.crowd_changes().empty()) note_crowd_changes();
  }
  /// Lets the large paths beside an edge, and its crowd, know that it is there, or that the rank of
  /// its path has become smaller.
  void announce(edge e);

  /// The first in rank of the paths that share an edge with a large path, or nobody.
  ranked first_neighbour(path_index path);
  /// The first edge of a large path, from its cursor on, that lies like any of a partner's.
  edge first_shared_edge(path_index path, path_index partner);

 private:
  /// Walks back from an edge.
  struct runner {
    edge from;
    point_index at;
  };

  struct own_crowd {
    std::set<edge, ring_order::by_label> edges;  // the path's own
    rank bound = 0;
    bool watched = false;  // whenever the bound is not 0, unless the path has left the crowd
  };

  struct large_path {
    lazy_queue by_rank;  // of edges outside of crowds
    std::map<crowd_id, own_crowd> crowds;
    std::set<std::pair<rank, crowd_id>> bounds;  // those of all crowds above
    bool has_labels = false;
  };

  large_path& of(path_index path);
  void forget(path_index path);
  void note_crowd_changes();
  static void set_bound(large_path& large, crowd_id id, own_crowd& own, rank bound);
  void enter_crowd(path_index path, edge e);
  void label(large_path& large, path_index path);
  ranked first_lone_neighbour(large_path& large, path_index path);
  edge first_from_cursor(path_index path);

  const path_store& store_;
  edge_index& index_;
  std::uint32_t patience_;
  ring_order order_;
  std::unordered_map<path_index, large_path> large_;
  path_index last_ = no_path;  // that `of` was called with
  large_path* last_large_ = nullptr;
  std::vector<bool> is_large_;  // by path: whether large_ has it
  std::vector<edge> shared_;    // for the time of a search, as the runners
  std::vector<runner> runners_;
  std::vector<std::vector<path_index>> watchers_;  // by crowd; some are large paths no longer
};

}  // namespace trellion
