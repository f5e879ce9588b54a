#include "cleanup.h"

#include <cassert>

namespace trellion {

/// The joined ring begins after the edge of a that disappears; that of b lay at its other end.
void cleanup::note_suspects(path_index a, path_index b) {
  suspects_.clear();
  for (const path_index path : {a, b}) {
    const ps_path& p = store_.paths[path];
    const auto [first, last] = store_.neighbours(p.cursor);
    suspects_.push_back(first);
    const bool new_one = p.untested != first && p.untested != last && p.untested != p.cursor;
    if (p.untested != no_point && new_one) suspects_.push_back(p.untested);
    suspects_.push_back(last);
  }
}

void cleanup::run(path_index path) {
  const large_array<ps_point>& points = store_.points;
  ps_path& p = store_.paths[path];
  changed_.clear();
  std::size_t first = 1;  // suspects_[first .. last) are ahead of the cursor
  std::size_t last = suspects_.size();
  point_index stop = suspects_.back();
  bool finished = false;
  bool is_suspect = true;
  p.untested = no_point;
  while (true) {
    const auto [after, before] = store_.neighbours(p.cursor);
    if (is_suspect && is_superfluous(points[before], points[p.cursor], points[after])) {
      remove_point(p.cursor);
      p.cursor = before;
      p.untested = after;
      if (--p.n_points == 0) return;
      // The slot of the suspect that the cursor was, or came from, is free for the one after it.
      const bool known = first < last && suspects_[first] == after;
      if (!finished && !known) {
        assert(first > 0);
        suspects_[--first] = after;
      }
      if (before == stop) {
        if (first < last && suspects_[last - 1] == before) --last;
        stop = store_.prev(before);
      }
    } else {
      if (p.cursor == p.untested) p.untested = no_point;
      if (finished) return;
      is_suspect = first < last;
      p.cursor = is_suspect ? suspects_[first++] : stop;
    }
    if (p.cursor == stop) finished = true;
  }
}

/// Takes a point out of its ring. Its edge goes, and that of the point before it gets another end.
void cleanup::remove_point(point_index point) {
  const auto [after, before] = store_.neighbours(point);
  const ps_point& end = store_.points[after];
  const bool stays_alike = store_.points[point].same_place(end) && before != point;
  const bool is_new_change = index_.contains(before) && before != point && !stays_alike;
  const bool is_spike = store_.points[before].same_place(end);
  if (!index_.contains(point)) {
    // Backing up, the walk meets its changes in the reverse of their order.
    assert(!changed_.empty() && changed_.back() == point);
    changed_.pop_back();
    if (is_new_change) index_.remove(before);
  } else if (is_spike && is_new_change) {
    index_.remove_pair(before, point);
  } else {
    index_.remove(point);
    if (is_new_change) index_.remove(before);
  }
  if (is_new_change) changed_.push_back(before);
  store_.link(before, after);
  store_.drop(point);
}

}  // namespace trellion
