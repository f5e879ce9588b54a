#include "plain_engine.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "fields.h"
#include "param.h"

namespace trellion::testing {
namespace {

enum class shared_edge { none, same_direction, opposite_direction };

/// Looks for an edge that two paths share and leaves their cursors on it: the first of a's from its
/// cursor on that matches one of b's, and the first of b's that does.
shared_edge compare(path_store& store, path_index a, path_index b) {
  ps_path& pa = store.paths[a];
  ps_path& pb = store.paths[b];
  const path_box& box_a = store.boxes[a];
  const path_box& box_b = store.boxes[b];
  if (std::max(box_a.x_min, box_b.x_min) > std::min(box_a.x_max, box_b.x_max) ||
      std::max(box_a.y_min, box_b.y_min) > std::min(box_a.y_max, box_b.y_max)) {
    return shared_edge::none;
  }
  for (std::uint32_t i = 0; i < pa.n_points; ++i) {
    const ps_point& a0 = store.points[pa.cursor];
    const ps_point& a1 = store.points[store.next(pa.cursor)];
    for (std::uint32_t j = 0; j < pb.n_points; ++j) {
      const ps_point& b0 = store.points[pb.cursor];
      const ps_point& b1 = store.points[store.next(pb.cursor)];
      if (a0.same_place(b0) && a1.same_place(b1)) return shared_edge::same_direction;
      if (a0.same_place(b1) && a1.same_place(b0)) return shared_edge::opposite_direction;
      pb.cursor = store.next(pb.cursor);
    }
    pa.cursor = store.next(pa.cursor);
  }
  return shared_edge::none;
}

/// Swaps the links of every point; the cursor then moves to the point before its own, so that its
/// edge is the same, the other way round.
void turn_round(path_store& store, path_index path) {
  ps_path& p = store.paths[path];
  point_index point = p.cursor;
  for (std::uint32_t i = 0; i < p.n_points; ++i) {
    point_links& turned = store.links[point];
    point = turned.next;
    std::swap(turned.next, turned.prev);
  }
  p.cursor = store.prev(p.cursor);
}

class engine {
 public:
  engine(path_store& store, strata& strata, text_writer& console)
      : store_(store), strata_(strata), console_(console), unmatched_(store) {}

  void process(std::int32_t merge_limit);

 private:
  struct partner {
    ps_path_queue* queue;
    path_index path;
    shared_edge edge;
  };

  void report_progress();
  bool next_stratum(std::int32_t merge_limit);
  std::optional<partner> find_partner();
  std::optional<partner> find_partner_in(ps_path_queue& queue);
  void merge(const partner& found);
  void file_unmerged();

  path_store& store_;
  strata& strata_;
  text_writer& console_;
  std::uint32_t n_ = strata::min_points;  // number of points of the paths being taken up
  ps_path_queue unmatched_;               // those of them that found no partner
  path_index current_ = no_path;
  bool merged_ = false;  // the current path has merged since it was taken up
  std::int64_t merges_ = 0;
};

void engine::process(std::int32_t merge_limit) {
  console_.put("  Processing ").put(nl);
  while (true) {
    report_progress();
    if (current_ == no_path) {
      while (strata_.of(n_).is_empty()) {
        if (!next_stratum(merge_limit)) return;
      }
      current_ = strata_.of(n_).remove_head();
      merged_ = false;
    }
    if (const auto found = find_partner()) {
      merge(*found);
    } else {
      file_unmerged();
    }
  }
}

/// Made in every round, so the line is repeated while the count stays on a hundred.
void engine::report_progress() {
  if (merges_ % 100 != 0) return;
  console_.put("\x1b[1A  Processing ... mergers :").put(integer_field(merges_, 7)).put(nl);
}

/// Puts the unmatched paths back in their stratum's place and goes on to the next stratum. False
/// when there is none, or its paths are beyond the merge limit.
bool engine::next_stratum(std::int32_t merge_limit) {
  strata_.of(n_).append(unmatched_);
  if (strata_.first_used(n_ + 1) == strata::none) return false;
  ++n_;
  return merge_limit < 1 || n_ <= static_cast<std::uint32_t>(merge_limit);
}

/// The paths in the unmatched queue have been compared with the current path as it was when they
/// were taken up; they are worth a look only after it has changed.
std::optional<engine::partner> engine::find_partner() {
  for (std::uint32_t n = strata::min_points; n <= n_; ++n) {
    if (auto found = find_partner_in(strata_.of(n))) return found;
  }
  return merged_ ? find_partner_in(unmatched_) : std::nullopt;
}

std::optional<engine::partner> engine::find_partner_in(ps_path_queue& queue) {
  for (path_index path = queue.first(); path != no_path; path = store_.paths[path].next_path) {
    const shared_edge edge = compare(store_, current_, path);
    if (edge != shared_edge::none) return partner{&queue, path, edge};
  }
  return std::nullopt;
}

void engine::merge(const partner& found) {
  found.queue->remove_this_path(found.path);
  if (found.edge == shared_edge::same_direction) turn_round(store_, found.path);
  merge_postscript_paths(store_, current_, found.path);
  remove_superfluous_points_v2(store_, current_);
  const std::uint32_t n_points = store_.paths[current_].n_points;
  if (n_points < strata::min_points) {
    console_.put("trellion: fatal error --- collapsed path!").put(nl);
    throw early_end{end_reason::collapsed_path};
  }
  ++merges_;
  merged_ = true;
  if (n_points > n_) {
    strata_.of(n_points).add_after_last(current_);
    current_ = no_path;
  }
}

void engine::file_unmerged() {
  const std::uint32_t n_points = store_.paths[current_].n_points;
  (n_points == n_ ? unmatched_ : strata_.of(n_points)).add_after_last(current_);
  current_ = no_path;
}

}  // namespace

void plain_process(path_store& store, strata& strata, std::int32_t merge_limit,
                   text_writer& console) {
  engine(store, strata, console).process(merge_limit);
}

}  // namespace trellion::testing
