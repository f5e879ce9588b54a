#include "v3_engine.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

#include "cleanup.h"
#include "edge_index.h"
#include "fields.h"
#include "param.h"
#include "ring_order.h"

namespace trellion {
namespace {

// The rule of the merging: a path P of n points that is taken up looks at all paths of n points or
// fewer, those of 3 points first, each number of points in the order of filing, and joins the first
// one, B, that shares an edge with it. Comparing P with each would take the square of their number.
// Here the edge index names B, and the choice is the same:
//
// 1. It misses nobody. B shares an edge with P exactly when an edge of B lies like one of P, and
//    the index holds every edge of every living path: all at the start, and whatever a merger
//    changes afterwards. A look that finds nothing changes nothing, so none is owed.
// 2. It picks nobody else. A path's rank is the number of points it is filed under, then a running
//    number, so the order of ranks is the order of looking. B has the smallest rank below n + 1.
// 3. The paths of n points that have found no partner already are looked at only when P has merged.
//    Their ranks are the largest below n + 1. While P is as it was filed none of them shares an
//    edge with it: P was in its stratum already when each of them looked last. So they need no
//    rule.
// 4. The edges joined are the same. P's is the first from its cursor on that lies like any of B,
//    B's the first from its cursor on that lies like that one.
//
// A large path keeps its edges in a heap by the rank of their first neighbour. An entry may be too
// small, never too large, whenever a path looks. While P is current only P looks, and its rank is
// the one it gets if it is filed under n points. Filed under more, it gets a larger one; filed
// under fewer, all its edges are announced, and so is every edge that a clean-up has changed.
//
// The cost: a merger looks at all of B, and a path filed under fewer points is looked at whole, but
// either way as many points are removed, or end in a path of twice the size. One shape costs more:
// an outline that runs along the same edge very many times.

rank first_rank(std::uint32_t n_points) { return rank{n_points} << 32; }

/// The edges of a large path that have neighbours, by the rank of the first.
struct ordered_edges {
  lazy_heap by_rank;
  std::vector<edge> crowded;  // their crowds know the first neighbour
  bool has_labels = false;    // whether the ring's points are labelled
};

class engine {
 public:
  engine(path_store& store, strata& strata, text_writer& console, const engine_sizes& sizes);

  void process(std::int32_t merge_limit);

 private:
  /// The partner that an edge of the current path leads to.
  struct partner {
    path_index path;
    edge at;
  };

  void report_progress();
  bool take_up(std::int32_t merge_limit);
  void file_current();
  /// The rank of whatever is filed next under so many points.
  [[nodiscard]] rank next_rank(std::uint32_t n_points) const {
    return first_rank(n_points) | (filings_ + 1);
  }
  rank take_rank(std::uint32_t n_points) {
    const rank taken = next_rank(n_points);
    ++filings_;  // at most three for each path: at the start, after a merger, without a partner
    return taken;
  }

  std::optional<partner> find_partner();
  std::optional<partner> find_partner_of_small();
  std::optional<partner> find_partner_of_large();
  edge first_shared_edge(path_index partner_path);
  edge first_from_cursor(std::vector<edge> edges);

  void merge(const partner& found);
  edge partner_edge(path_index partner_path, edge at) const;
  void index_changed_edges();

  ordered_edges& order_edges();
  void order_edge(ordered_edges& ordered, edge e);
  void tell_neighbours(edge e);
  void note_new_crowds();

  path_store& store_;
  strata& strata_;
  text_writer& console_;
  engine_sizes sizes_;
  edge_index index_;
  cleanup cleanup_;
  ring_order order_;
  std::uint32_t n_ = strata::min_points;  // number of points of the paths being taken up
  rank unmatched_from_ = 0;               // ranks given since n_ became what it is
  std::uint32_t filings_ = 0;
  path_index current_ = no_path;
  std::unordered_map<path_index, ordered_edges> large_;
  std::vector<bool> is_large_;  // by path: whether large_ has it
  std::int64_t merges_ = 0;
  std::int64_t reported_merges_ = -1;
  std::string progress_line_;
};

engine::engine(path_store& store, strata& strata, text_writer& console, const engine_sizes& sizes)
    : store_(store),
      strata_(strata),
      console_(console),
      sizes_(sizes),
      index_(store, sizes.crowd),
      cleanup_(store, index_),
      order_(store),
      is_large_(store.paths.size()) {
  for (std::uint32_t n = strata::min_points; n <= strata.max_points(); ++n) {
    for (path_index p = strata.of(n).first(); p != no_path; p = store.paths[p].next_path) {
      index_.add_path(p, take_rank(n));
    }
  }
  index_.add_rest();
  unmatched_from_ = next_rank(n_);
}

void engine::process(std::int32_t merge_limit) {
  console_.put("  Processing ").put(nl);
  while (true) {
    report_progress();
    if (current_ == no_path && !take_up(merge_limit)) return;
    if (const auto found = find_partner()) {
      merge(*found);
    } else {
      file_current();
    }
  }
}

/// Made in every round, so the line is repeated while the count stays on a hundred.
void engine::report_progress() {
  if (merges_ % 100 != 0) return;
  if (merges_ != reported_merges_) {
    reported_merges_ = merges_;
    progress_line_ = "\x1b[1A  Processing ... mergers :" + integer_field(merges_, 7) + nl;
    console_.put(progress_line_).flush();
  } else {
    console_.put(progress_line_);
  }
}

/// Takes the next path out of its stratum, the stratum after it when that is used up. Paths that
/// have been filed since the stratum's turn began stay. False when there are no more strata, or
/// the next one is beyond the merge limit.
bool engine::take_up(std::int32_t merge_limit) {
  while (true) {
    ps_path_queue& stratum = strata_.of(n_);
    if (!stratum.is_empty() && index_.rank_of(stratum.first()) < unmatched_from_) {
      current_ = stratum.remove_head();
      index_.set_rank(current_, next_rank(n_));
      return true;
    }
    if (n_ >= strata_.max_points()) return false;
    ++n_;
    if (merge_limit > 0 && n_ > static_cast<std::uint32_t>(merge_limit)) return false;
    unmatched_from_ = next_rank(n_);
  }
}

void engine::file_current() {
  const std::uint32_t n_points = store_.paths[current_].n_points;
  index_.set_rank(current_, take_rank(n_points));
  strata_.of(n_points).add_after_last(current_);
  if (n_points < n_) {
    point_index point = store_.paths[current_].cursor;
    for (std::uint32_t i = 0; i < n_points; ++i, point = store_.points[point].next) {
      tell_neighbours(point);
    }
  }
  current_ = no_path;
}

std::optional<engine::partner> engine::find_partner() {
  return store_.paths[current_].n_points < sizes_.large_path ? find_partner_of_small()
                                                             : find_partner_of_large();
}

std::optional<engine::partner> engine::find_partner_of_small() {
  ranked_edge best = {first_rank(n_ + 1), no_point};
  edge own = no_point;
  const ps_path& path = store_.paths[current_];
  edge e = path.cursor;
  for (std::uint32_t i = 0; i < path.n_points; ++i, e = store_.points[e].next) {
    const ranked_edge neighbour = index_.first_neighbour(e);
    if (neighbour.order >= best.order) continue;
    best = neighbour;
    own = e;
  }
  if (own == no_point) return std::nullopt;
  return partner{index_.owner(best.at), own};
}

std::optional<engine::partner> engine::find_partner_of_large() {
  ordered_edges& ordered = order_edges();
  ranked_edge best = nobody;
  while (best.at == no_point && !ordered.by_rank.empty()) {
    const ranked_edge top = ordered.by_rank.top();
    const bool is_own =
        index_.contains(top.at) && index_.owner(top.at) == current_ && !index_.is_crowded(top.at);
    const ranked_edge neighbour = is_own ? index_.first_neighbour(top.at) : nobody;
    if (neighbour.at == no_point) {
      ordered.by_rank.pop();
    } else if (neighbour.order != top.order) {
      ordered.by_rank.change_top(neighbour.order);
    } else {
      best = neighbour;
    }
  }
  note_new_crowds();
  std::erase_if(ordered.crowded, [this](edge e) {
    return !index_.contains(e) || index_.owner(e) != current_ || !index_.is_crowded(e);
  });
  for (const edge e : ordered.crowded) {
    const ranked_edge neighbour = index_.first_neighbour(e);
    if (neighbour.order < best.order) best = neighbour;
  }
  if (best.order >= first_rank(n_ + 1)) return std::nullopt;
  const path_index path = index_.owner(best.at);
  return partner{path, first_shared_edge(path)};
}

/// The first edge of the current path, from its cursor on, that lies like any of the partner.
edge engine::first_shared_edge(path_index partner_path) {
  std::vector<edge> shared;
  const ps_path& path = store_.paths[partner_path];
  edge e = path.cursor;
  for (std::uint32_t i = 0; i < path.n_points; ++i, e = store_.points[e].next) {
    const auto add_own = [&](edge alike) {
      if (index_.owner(alike) == current_) shared.push_back(alike);
    };
    if (!index_.is_crowded(e)) {
      index_.for_each_alike(e, add_own);
      continue;
    }
    for (const edge own : large_.at(current_).crowded) {
      if (index_.lie_alike(own, e)) shared.push_back(own);
    }
  }
  return first_from_cursor(std::move(shared));
}

/// Which of some edges of the current path, a large one, comes first from its cursor on. Walks back
/// from all of them in step: whoever meets another edge is not the first, whoever meets the cursor
/// is. That is quick where they lie side by side, as in a notch, but for a rung between two jaws
/// takes half the ring: when it takes long the ring's order decides, from then on kept in labels.
edge engine::first_from_cursor(std::vector<edge> edges) {
  struct runner {
    edge from;
    point_index at;
  };
  std::ranges::sort(edges);
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  const point_index start = store_.paths[current_].cursor;
  std::vector<runner> runners;
  runners.reserve(edges.size());
  for (const edge e : edges) runners.push_back({e, e});
  for (std::uint32_t steps = 0; steps < sizes_.patience && runners.size() > 1; ++steps) {
    for (const runner& r : runners) {
      if (r.at == start) return r.from;
    }
    std::erase_if(runners, [&](runner& r) {
      r.at = store_.points[r.at].prev;
      return std::ranges::binary_search(edges, r.at);
    });
  }
  if (runners.size() == 1) return runners.front().from;

  bool& has_labels = large_.at(current_).has_labels;
  if (!std::exchange(has_labels, true)) order_.label(current_);
  return std::ranges::min(runners, {},
                          [&](const runner& r) { return order_.distance(start, r.from); })
      .from;
}

void engine::merge(const partner& found) {
  const path_index b = found.path;
  ps_path& path = store_.paths[current_];
  ps_path& other = store_.paths[b];
  strata_.of(other.n_points).remove_this_path(b);

  path.cursor = found.at;
  other.cursor = partner_edge(b, found.at);
  const std::vector<ps_point>& points = store_.points;
  const bool same_direction = points[path.cursor].same_place(points[other.cursor]);
  assert(is_sound(store_, b) && b != current_);
  if (same_direction) reverse(store_, b);
  assert(is_sound(store_, b));

  index_.remove_pair(path.cursor, other.cursor);
  for (point_index p = points[other.cursor].next; p != other.cursor; p = points[p].next) {
    index_.set_owner(p, current_);
  }
  cleanup_.note_suspects(current_, b);
  const edge first_of_b = points[other.cursor].next;
  const edge last_of_b = points[other.cursor].prev;
  merge_postscript_paths(store_, current_, b);
  if (is_large_[b]) {
    large_.erase(b);
    is_large_[b] = false;
  }
  if (is_large_[current_]) {
    ordered_edges& ordered = large_.at(current_);
    if (ordered.has_labels) order_.label_inserted(first_of_b, last_of_b);
    for (edge e = first_of_b;; e = points[e].next) {
      order_edge(ordered, e);
      if (e == last_of_b) break;
    }
  }

  cleanup_.run(current_);
  if (path.n_points < strata::min_points) {
    console_.put("trellion: fatal error --- collapsed path!").put(nl);
    throw early_end{end_reason::collapsed_path};
  }
  assert(is_sound(store_, current_));
  index_changed_edges();
  ++merges_;
  if (path.n_points > n_) file_current();
}

/// The first edge of the partner, from its cursor on, that lies like the given one.
edge engine::partner_edge(path_index partner_path, edge at) const {
  const edge only = index_.only_partner(at);
  if (only != no_point) return only;
  edge e = store_.paths[partner_path].cursor;
  while (!index_.lie_alike(e, at)) e = store_.points[e].next;
  return e;
}

void engine::index_changed_edges() {
  for (const edge e : cleanup_.changed_edges()) index_.prefetch(e);
  for (const edge e : cleanup_.changed_edges()) {
    index_.add(e);
    tell_neighbours(e);
    if (is_large_[current_]) order_edge(large_.at(current_), e);
  }
}

/// The ordered edges of the current path, made when it has none yet.
ordered_edges& engine::order_edges() {
  const auto [found, added] = large_.try_emplace(current_);
  if (added) {
    is_large_[current_] = true;
    const ps_path& path = store_.paths[current_];
    edge e = path.cursor;
    for (std::uint32_t i = 0; i < path.n_points; ++i, e = store_.points[e].next) {
      order_edge(found->second, e);
    }
  }
  return found->second;
}

void engine::order_edge(ordered_edges& ordered, edge e) {
  const ranked_edge neighbour = index_.first_neighbour(e);
  if (index_.is_crowded(e)) {
    ordered.crowded.push_back(e);
  } else if (neighbour.at != no_point) {
    ordered.by_rank.push({neighbour.order, e});
  }
}

/// Lets the large paths beside an edge of the current path know that it is there, or that its rank
/// has become smaller.
void engine::tell_neighbours(edge e) {
  if (index_.is_crowded(e)) {
    index_.announce_to_crowd(e);
    return;
  }
  if (large_.empty()) return;
  index_.for_each_alike(e, [&](edge alike) {
    const path_index neighbour = index_.owner(alike);
    if (!is_large_[neighbour]) return;
    large_.at(neighbour).by_rank.push({index_.rank_of(index_.owner(e)), alike});
  });
}

/// An edge of a large path that has become crowded is no longer kept in order by its heap.
void engine::note_new_crowds() {
  for (const edge e : index_.take_newly_crowded()) {
    const path_index path = index_.owner(e);
    if (is_large_[path]) large_.at(path).crowded.push_back(e);
  }
}

}  // namespace

void v3_process(path_store& store, strata& strata, std::int32_t merge_limit, text_writer& console,
                const engine_sizes& sizes) {
  engine(store, strata, console, sizes).process(merge_limit);
}

}  // namespace trellion
