#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "postscript_path.h"

namespace trellion {

struct polygon_group;

/// A queue of paths of one store, first in, first out, with running totals. Any path can be taken
/// out of it, each step in constant time. A path is in one queue at a time.
class ps_path_queue {
 public:
  /// The store must outlive the queue.
  explicit ps_path_queue(path_store& store) : store_(&store) {}

  /// Takes the path in after the last one. The totals count its points as they are now.
  void add_after_last(path_index path);
  /// Takes out the first path; the queue must not be empty.
  path_index remove_head();
  /// Takes out a path that is in this queue.
  void remove_this_path(path_index path);
  [[nodiscard]] bool is_empty() const { return first_ == no_path; }

  /// The first path, from which `next_path` leads to the others; no_path when there is none.
  [[nodiscard]] path_index first() const { return first_; }
  [[nodiscard]] std::int64_t n_paths() const { return n_paths_; }
  [[nodiscard]] std::int64_t total_points() const { return total_points_; }

  /// Moves all paths of the other queue, in their order, after the last one of this.
  void append(ps_path_queue& other);
  /// Writes every path in order.
  void output(const path_operators& operators, text_writer& out) const;

 private:
  path_store* store_;
  path_index first_ = no_path;
  path_index last_ = no_path;
  std::int64_t n_paths_ = 0;
  std::int64_t total_points_ = 0;
};

/// Queues by number of points: the paths with 3 points, those with 4, and so on.
class strata {
 public:
  static constexpr std::uint32_t min_points = 3;
  static constexpr std::uint32_t none = UINT32_MAX;  ///< more points than any path has

  explicit strata(path_store& store) : store_(&store) {}

  /// The stratum for paths of `n_points` points. The reference holds until the next call, of this
  /// or of another: strata are made, and empty ones dropped, as they are met.
  ps_path_queue& of(std::uint32_t n_points) {
    const std::size_t position = n_points - min_points;
    return position < low_.size() ? low_[position] : made_for(n_points);
  }
  /// The least number of points, not below `n_points`, that a stratum has paths of, or `none`.
  /// Drops empty strata on the way.
  std::uint32_t first_used(std::uint32_t n_points) {
    for (std::size_t i = n_points - min_points; i < low_.size(); ++i) {
      if (!low_[i].is_empty()) return min_points + static_cast<std::uint32_t>(i);
    }
    return high_.empty() ? none : first_used_high(n_points);
  }
  /// Those that have paths, fewest points first.
  std::vector<ps_path_queue> used();

 private:
  ps_path_queue& made_for(std::uint32_t n_points);
  std::uint32_t first_used_high(std::uint32_t n_points);

  path_store* store_;
  std::vector<ps_path_queue> low_;               // of few points: mostly used
  std::map<std::uint32_t, ps_path_queue> high_;  // of many: an outline can go through millions
};

/// A number of the input that cannot be a coordinate: the text says which, and its line.
class coordinate_error : public run_error {
 public:
  using run_error::run_error;
};

/// How the points of a group lie in the store. It makes a difference to time alone.
enum class point_order : std::uint8_t { as_it_pays, by_place };

/// Makes a path in the store of every polygon of a group, cleaned of superfluous points; those that
/// keep fewer than three points are left out. The texts of the group's vertices go to the store.
/// The console gets the rest of the group's line: the input lines that it covers, and the points
/// and polygons read. Throws coordinate_error, naming the text and its line.
ps_path_queue tokens_to_ps_path_queue(polygon_group& group, path_store& store, text_writer& console,
                                      point_order order = point_order::as_it_pays);

/// Moves every path to the stratum of its number of points, which must be at least 3. Leaves the
/// queue empty.
strata stratify(path_store& store, ps_path_queue& queue);

/// Moves the paths of all strata to the queue, which must be empty: fewest points first, each
/// stratum in its order. Reports the totals on the console.
void gather(strata& strata, ps_path_queue& queue, text_writer& console);

}  // namespace trellion
