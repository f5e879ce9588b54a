#include "v3_engine.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <string>
#include <utility>

#include "cleanup.h"
#include "edge_index.h"
#include "fields.h"
#include "large_paths.h"
#include "param.h"

namespace trellion {
namespace {

// The rule of the merging: a path P of n points that is taken up looks at all paths of n points or
// fewer, those of 3 points first, each number of points in the order of filing, and joins the first
// one, B, that shares an edge with it. Comparing P with each would take the square of their number.
// Here the edge index names B, and the choice is the same:
//
// 1. It misses nobody. B shares an edge with P exactly when an edge of B lies like one of P, and
//    the index holds every edge of every living path: all at the start, and whatever a merger
//    changes afterwards. Some edges of P itself wait until P is filed; they lie like none that is
//    in the index (see edge_index.h, 4). A look that finds nothing changes nothing, so none is
//    owed.
// 2. It picks nobody else. A path's rank is the number of points it is filed under, then a running
//    number, so the order of ranks is the order of looking. B has the smallest rank below n + 1.
// 3. The paths of n points that have found no partner already are looked at only when P has merged.
//    Their ranks are the largest below n + 1. While P is as it was filed none of them shares an
//    edge with it: P was in its stratum already when each of them looked last. So they need no
//    rule.
// 4. The edges joined are the same. P's is the first from its cursor on that lies like any of B,
//    B's the first from its cursor on that lies like that one.
//
// What a large path knows about its neighbours is kept from look to look: see large_paths.h. That
// begins when it joins a path that is much smaller. Before, a look goes round the whole ring, which
// is quicker than keeping its edges in order, and is paid for by the partner: it has an eighth of
// the points or more, and they end in a path of at least twice its size.
//
// While P is current only P looks, and its rank is the one it gets if it is filed under n points.
// Filed under more, it gets a larger one, also when it is taken up again at once, which needs no
// filing; filed under fewer, all its edges are announced, and so is every edge that a clean-up has
// changed.
//
// The time is that of the points, times a few logarithms, also where an edge is shared very often:
//
// 1. A merger looks at all of B, and a path filed under fewer points is looked at whole; that path
//    is not taken up again. After either look as many points are removed, or end in a path of twice
//    the size.
// 2. A large path P finds out that a neighbour's rank has become larger when no smaller rank is
//    left. Either P is then not taken up again, or it joins a path that comes after the rank that
//    was out of date. If that rank was beyond P when P last looked, P has at least doubled since.
//    If it was not, the neighbour has been taken up after P and joined to another path, as P was.
// 3. An edge that very many edges lie like is a crowd. Whoever looks at it finds each of its paths
//    once, and is not in its own way, however many of the edges are its own.

rank first_rank(std::uint32_t n_points) { return rank{n_points} << 32; }

class engine {
 public:
  engine(path_store& store, strata& strata, std::int32_t merge_limit, text_writer& console,
         const engine_sizes& sizes);

  void process();

 private:
  /// The partner that an edge of the current path leads to.
  struct partner {
    path_index path;
    edge at;
  };

  void report_progress();
  std::uint32_t next_stratum();
  void begin_stratum(std::uint32_t n_points);
  bool take_up();
  void move_up();
  void fetch_ahead() const;
  void fetch_beyond(path_index path) const;
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
  void merge(const partner& found);
  edge partner_edge(path_index partner_path, edge at) const;
  void index_changed_edges();

  path_store& store_;
  strata& strata_;
  std::uint32_t merge_limit_;
  text_writer& console_;
  engine_sizes sizes_;
  edge_index index_;
  cleanup cleanup_;
  large_paths large_;
  std::uint32_t n_ = strata::min_points;  // number of points of the paths being taken up
  rank unmatched_from_ = 0;               // ranks given since n_ became what it is
  std::uint32_t filings_ = 0;
  path_index current_ = no_path;
  std::int64_t merges_ = 0;
  std::int64_t reported_merges_ = -1;
  std::string progress_line_;
};

engine::engine(path_store& store, strata& strata, std::int32_t merge_limit, text_writer& console,
               const engine_sizes& sizes)
    : store_(store),
      strata_(strata),
      merge_limit_(merge_limit > 0 ? static_cast<std::uint32_t>(merge_limit) : UINT32_MAX),
      console_(console),
      sizes_(sizes),
      index_(store, sizes.crowd),
      cleanup_(store, index_),
      large_(store, index_, sizes.patience) {
  std::uint32_t n = strata.first_used(strata::min_points);
  for (; n != strata::none; n = strata.first_used(n + 1)) {
    for (path_index p = strata.of(n).first(); p != no_path; p = store.paths[p].next_path) {
      index_.set_rank(p, take_rank(n));
    }
  }
  index_.add_all();
  unmatched_from_ = next_rank(n_);
}

void engine::process() {
  console_.put("  Processing ").put(nl);
  while (true) {
    report_progress();
    if (current_ == no_path && !take_up()) return;
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

/// The number of points of the next path to be taken up: that of this stratum while there is one
/// that has not been looked at, else of the next one that has paths. Paths that have been filed
/// since the stratum's turn began stay.
std::uint32_t engine::next_stratum() {
  const std::uint32_t next = strata_.first_used(n_);
  const bool used_up = next == n_ && index_.rank_of(strata_.of(n_).first()) >= unmatched_from_;
  return used_up ? strata_.first_used(n_ + 1) : next;
}

void engine::begin_stratum(std::uint32_t n_points) {
  n_ = n_points;
  unmatched_from_ = next_rank(n_);
}

/// False when there are no more paths, or those that are left are beyond the merge limit.
bool engine::take_up() {
  const std::uint32_t next = next_stratum();
  if (next == strata::none) return false;
  if (next > n_) {
    if (next > merge_limit_) return false;
    begin_stratum(next);
  }
  current_ = strata_.of(n_).remove_head();
  index_.set_rank(current_, next_rank(n_));
  if (store_.lies_by_place) fetch_ahead();
  return true;
}

/// Files the current path, which has got more points, unless it would be the next to be taken up.
void engine::move_up() {
  const std::uint32_t n_points = store_.paths[current_].n_points;
  if (next_stratum() <= n_points || n_points > merge_limit_) {
    file_current();
    return;
  }
  begin_stratum(n_points);
  index_.set_rank(current_, next_rank(n_));
}

/// Paths are mostly taken up in the order of their numbers. Where the points lie by place, what
/// their looks need lies anywhere.
void engine::fetch_ahead() const {
  constexpr path_index far = 16;
  if (current_ + far >= store_.paths.size()) return;
  const auto for_first_edges = [this](path_index path, auto fetch) {
    constexpr edge n_edges = 4;
    const edge last = store_.paths[path].cursor;
    for (edge e = last - std::min(last, n_edges - 1); e <= last; ++e) fetch(e);
  };
  index_.fetch(store_.paths[current_ + far].cursor);
  for_first_edges(current_ + far / 2, [this](edge e) { index_.fetch_alike(e); });
  for_first_edges(current_ + far / 4, [this](edge e) { index_.fetch_neighbour(e); });
}

/// Fetches what the next look will meet on the other sides of a partner.
void engine::fetch_beyond(path_index path) const {
  const ps_path& p = store_.paths[path];
  constexpr std::uint32_t few = 8;
  if (p.n_points > few) return;
  for (edge e = store_.next(p.cursor); e != p.cursor; e = store_.next(e)) index_.fetch_alike(e);
  for (edge e = store_.next(p.cursor); e != p.cursor; e = store_.next(e)) {
    index_.fetch_neighbour(e);
    index_.fetch_slot(e);
  }
}

void engine::file_current() {
  index_.add_put_off();
  const std::uint32_t n_points = store_.paths[current_].n_points;
  index_.set_rank(current_, take_rank(n_points));
  strata_.of(n_points).add_after_last(current_);
  if (n_points < n_) {
    point_index point = store_.paths[current_].cursor;
    for (std::uint32_t i = 0; i < n_points; ++i, point = store_.next(point)) {
      large_.announce(point);
    }
  }
  current_ = no_path;
}

std::optional<engine::partner> engine::find_partner() {
  return large_.contains(current_) ? find_partner_of_large() : find_partner_of_small();
}

std::optional<engine::partner> engine::find_partner_of_small() {
  ranked best = {first_rank(n_ + 1), no_path};
  edge own = no_point;
  const ps_path& path = store_.paths[current_];
  edge e = path.cursor;
  for (std::uint32_t i = 0; i < path.n_points; ++i, e = store_.next(e)) {
    const ranked neighbour = index_.first_neighbour(e);
    if (neighbour.order >= best.order) continue;
    best = neighbour;
    own = e;
  }
  if (best.what == no_path) return std::nullopt;
  return partner{best.what, own};
}

std::optional<engine::partner> engine::find_partner_of_large() {
  const ranked best = large_.first_neighbour(current_);
  if (best.order >= first_rank(n_ + 1)) return std::nullopt;
  return partner{best.what, large_.first_shared_edge(current_, best.what)};
}

void engine::merge(const partner& found) {
  const path_index b = found.path;
  ps_path& path = store_.paths[current_];
  ps_path& other = store_.paths[b];
  const bool is_much_larger = path.n_points >= sizes_.large_path &&
                              std::uint64_t{other.n_points} * sizes_.much_smaller < path.n_points;
  strata_.of(other.n_points).remove_this_path(b);

  path.cursor = found.at;
  other.cursor = partner_edge(b, found.at);
  const large_array<ps_point>& points = store_.points;
  const bool same_direction = points[path.cursor].same_place(points[other.cursor]);
  assert(is_sound(store_, b) && b != current_);
  if (same_direction) reverse(store_, b);
  assert(is_sound(store_, b));

  index_.remove_pair(path.cursor, other.cursor);
  large_.catch_up();
  for (point_index p = store_.next(other.cursor); p != other.cursor; p = store_.next(p)) {
    index_.set_owner(p, current_);
  }
  cleanup_.note_suspects(current_, b);
  const edge first_of_b = store_.next(other.cursor);
  const edge last_of_b = store_.prev(other.cursor);
  if (store_.lies_by_place) fetch_beyond(b);
  merge_postscript_paths(store_, current_, b);
  large_.remove(b);
  if (large_.contains(current_)) large_.note_stretch(current_, first_of_b, last_of_b);

  cleanup_.run(current_);
  if (path.n_points < strata::min_points) {
    console_.put("trellion: fatal error --- collapsed path!").put(nl);
    throw early_end{end_reason::collapsed_path};
  }
  assert(is_sound(store_, current_));
  index_changed_edges();
  ++merges_;
  if (is_much_larger && !large_.contains(current_)) large_.add(current_);
  if (path.n_points > n_) move_up();
}

/// The first edge of the partner, from its cursor on, that lies like the given one.
edge engine::partner_edge(path_index partner_path, edge at) const {
  const edge only = index_.only_partner(at);
  if (only != no_point) return only;
  edge e = store_.paths[partner_path].cursor;
  while (!index_.lie_alike(e, at)) e = store_.next(e);
  return e;
}

void engine::index_changed_edges() {
  if (cleanup_.changed_edges().empty()) return;
  index_.add_changed(cleanup_.changed_edges());
  for (const edge e : cleanup_.changed_edges()) {
    large_.announce(e);
    if (large_.contains(current_)) large_.note_edge(current_, e);
  }
}

}  // namespace

void v3_process(path_store& store, strata& strata, std::int32_t merge_limit, text_writer& console,
                const engine_sizes& sizes) {
  engine(store, strata, merge_limit, console, sizes).process();
}

}  // namespace trellion
