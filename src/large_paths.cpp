#include "large_paths.h"

#include <algorithm>

namespace trellion {

large_paths::large_paths(const path_store& store, edge_index& index, std::uint32_t patience)
    : store_(store),
      index_(index),
      patience_(patience),
      order_(store),
      is_large_(store.paths.size()) {}

void large_paths::add(path_index path) {
  is_large_[path] = true;
  large_.try_emplace(path);
  const ps_path& p = store_.paths[path];
  large_array<ranked> lone;
  lone.reserve(p.n_points);
  edge e = p.cursor;
  for (std::uint32_t i = 0; i < p.n_points; ++i, e = store_.next(e)) {
    const ranked neighbour = index_.first_neighbour(e);
    if (index_.is_crowded(e)) {
      enter_crowd(path, e);
    } else if (neighbour.what != no_path) {
      lone.push_back({neighbour.order, e});
    }
  }
  of(path).by_rank = lazy_queue(std::move(lone));
}

void large_paths::forget(path_index path) {
  if (path == last_) last_ = no_path;
  large_.erase(path);
  is_large_[path] = false;
}

/// Mostly the path that was asked for last is asked for again.
large_paths::large_path& large_paths::of(path_index path) {
  if (path != last_) {
    last_ = path;
    last_large_ = &large_.at(path);
  }
  return *last_large_;
}

void large_paths::note_edge(path_index path, edge e) {
  const ranked neighbour = index_.first_neighbour(e);
  if (index_.is_crowded(e)) {
    enter_crowd(path, e);
  } else if (neighbour.what != no_path) {
    of(path).by_rank.push({neighbour.order, e});
  }
}

void large_paths::note_stretch(path_index path, edge first, edge last) {
  if (of(path).has_labels) order_.label_inserted(first, last);
  for (edge e = first;; e = store_.next(e)) {
    note_edge(path, e);
    if (e == last) return;
  }
}

void large_paths::note_crowd_changes() {
  for (const auto [e, id] : index_.crowd_changes()) {
    const path_index path = index_.owner(e);
    if (!is_large_[path]) continue;
    if (index_.is_member(e, id)) {
      enter_crowd(path, e);
      continue;
    }
    large_path& large = of(path);
    const auto own = large.crowds.find(id);
    if (own == large.crowds.end()) continue;
    auto& edges = own->second.edges;
    const auto left = edges.find(e);
    if (left != edges.end() && *left == e) edges.erase(left);
  }
  index_.forget_crowd_changes();
}

void large_paths::set_bound(large_path& large, crowd_id id, own_crowd& own, rank bound) {
  auto entry = large.bounds.extract({own.bound, id});
  own.bound = bound;
  entry.value().first = bound;
  large.bounds.insert(std::move(entry));
}

void large_paths::enter_crowd(path_index path, edge e) {
  large_path& large = of(path);
  label(large, path);
  const crowd_id id = index_.crowd_of(e);
  const auto [found, added] =
      large.crowds.try_emplace(id, own_crowd{std::set<edge, ring_order::by_label>({&order_})});
  own_crowd& own = found->second;
  if (added) {
    large.bounds.insert({own.bound, id});
  } else if (own.edges.empty()) {
    set_bound(large, id, own, 0);
  }
  own.edges.insert(e);
}

void large_paths::label(large_path& large, path_index path) {
  if (!std::exchange(large.has_labels, true)) order_.label(path);
}

void large_paths::announce(edge e) {
  if (!large_.empty()) index_.gather_crowd(e);
  if (index_.is_crowded(e)) {
    index_.announce_to_crowd(e);
    const crowd_id id = index_.crowd_of(e);
    if (id >= watchers_.size()) return;
    for (const path_index path : std::exchange(watchers_[id], {})) {
      if (!is_large_[path]) continue;
      large_path& large = of(path);
      own_crowd& own = large.crowds.at(id);
      own.watched = false;
      set_bound(large, id, own, 0);
    }
    return;
  }
  if (large_.empty()) return;
  const rank order = index_.rank_of(index_.owner(e));
  index_.for_each_alike(e, [&](edge alike) {
    const path_index neighbour = index_.owner(alike);
    if (is_large_[neighbour]) of(neighbour).by_rank.push({order, alike});
  });
}

ranked large_paths::first_neighbour(path_index path) {
  large_path& large = of(path);
  ranked best = first_lone_neighbour(large, path);
  catch_up();
  while (!large.bounds.empty()) {
    const auto [bound, id] = *large.bounds.begin();
    if (bound >= best.order) break;
    own_crowd& own = large.crowds.at(id);
    if (own.edges.empty()) {
      set_bound(large, id, own, nobody.order);
      continue;
    }
    if (!std::exchange(own.watched, true)) {
      if (id >= watchers_.size()) watchers_.resize(id + 1);
      watchers_[id].push_back(path);
    }
    const ranked first = index_.first_in_crowd(id, path);
    if (first.order == bound) {
      best = first;
    } else {
      set_bound(large, id, own, first.order);
    }
  }
  return best;
}

/// The first of the neighbours outside of the crowds.
ranked large_paths::first_lone_neighbour(large_path& large, path_index path) {
  lazy_queue& by_rank = large.by_rank;
  constexpr std::size_t far = 16;
  const ranked last = by_rank.upcoming(far);
  if (last.what != no_path) {
    index_.fetch(last.what);
    index_.fetch_alike(by_rank.upcoming(far / 2).what);
    index_.fetch_neighbour(by_rank.upcoming(far / 4).what);
  }
  while (!by_rank.empty()) {
    const ranked top = by_rank.top();
    const edge e = top.what;
    const bool is_own = index_.contains(e) && index_.owner(e) == path && !index_.is_crowded(e);
    const ranked neighbour = is_own ? index_.first_neighbour(e) : nobody;
    if (neighbour.what == no_path || index_.is_crowded(e)) {
      by_rank.pop();
    } else if (neighbour.order != top.order) {
      by_rank.change_top(neighbour.order);
    } else {
      return neighbour;
    }
  }
  return nobody;
}

edge large_paths::first_shared_edge(path_index path, path_index partner) {
  shared_.clear();
  std::vector<crowd_id> crowds;
  const ps_path& p = store_.paths[partner];
  edge e = p.cursor;
  for (std::uint32_t i = 0; i < p.n_points; ++i, e = store_.next(e)) {
    if (index_.gather_crowd(e)) {
      crowds.push_back(index_.crowd_of(e));
      continue;
    }
    index_.for_each_alike(e, [&](edge alike) {
      if (index_.owner(alike) == path) shared_.push_back(alike);
    });
  }
  catch_up();  // the look may have made crowds
  std::ranges::sort(crowds);
  crowds.erase(std::unique(crowds.begin(), crowds.end()), crowds.end());
  const large_path& large = of(path);
  for (const crowd_id id : crowds) {
    const auto own = large.crowds.find(id);
    if (own == large.crowds.end() || own->second.edges.empty()) continue;
    const auto& edges = own->second.edges;
    const auto from_cursor = edges.lower_bound(store_.paths[path].cursor);
    shared_.push_back(from_cursor == edges.end() ? *edges.begin() : *from_cursor);
  }
  return first_from_cursor(path);
}

/// Which of the shared edges of a large path comes first from its cursor on. Walks back from all of
/// them in step: whoever meets another edge is not the first, whoever meets the cursor is. That is
/// quick where they lie side by side, as in a notch, but for a rung between two jaws takes half the
/// ring: when it takes long the ring's order decides, from then on kept in labels.
edge large_paths::first_from_cursor(path_index path) {
  if (shared_.size() == 1) return shared_.front();
  std::ranges::sort(shared_);
  shared_.erase(std::unique(shared_.begin(), shared_.end()), shared_.end());
  const point_index start = store_.paths[path].cursor;
  runners_.clear();
  for (const edge e : shared_) runners_.push_back({e, e});
  for (std::uint32_t steps = 0; steps < patience_ && runners_.size() > 1; ++steps) {
    for (const runner& r : runners_) {
      if (r.at == start) return r.from;
    }
    std::erase_if(runners_, [&](runner& r) {
      r.at = store_.prev(r.at);
      return std::ranges::binary_search(shared_, r.at);
    });
  }
  if (runners_.size() == 1) return runners_.front().from;

  label(of(path), path);
  return std::ranges::min(runners_, {},
                          [&](const runner& r) { return order_.distance(start, r.from); })
      .from;
}

}  // namespace trellion
