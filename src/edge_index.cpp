#include "edge_index.h"

#include <algorithm>
#include <bit>

namespace trellion {
namespace {

constexpr auto later = [](const ranked& a, const ranked& b) { return a.order > b.order; };

}  // namespace

lazy_queue::lazy_queue(large_array<ranked> entries) : sorted_(std::move(entries)) {
  if (sorted_.empty()) return;
  // A large outline mostly goes along its neighbours as they were drawn, one way or the other. If
  // it is neither, little is lost.
  if (sorted_.front().order < sorted_.back().order) std::ranges::reverse(sorted_);
  if (!std::ranges::is_sorted(sorted_, later)) std::ranges::sort(sorted_, later);
}

void lazy_queue::push(ranked entry) {
  heap_.push_back(entry);
  std::ranges::push_heap(heap_, later);
}

void lazy_queue::pop() {
  if (top_is_sorted()) {
    sorted_.pop_back();
  } else {
    std::ranges::pop_heap(heap_, later);
    heap_.pop_back();
  }
}

void lazy_queue::change_top(rank order) {
  const ranked changed = {order, top().what};
  pop();
  push(changed);
}

edge_index::edge_index(path_store& store, std::uint32_t crowd_size)
    : store_(store),
      keys_(drawn_keys()),
      crowd_size_(crowd_size),
      ranks_(store.paths.size()),
      known_(store.points, keys_),
      more_shares_(0, share_hash{keys_.last_factor}) {
  edge_bits_ = static_cast<int>(std::bit_width(store.points.size()));
  // Three slots a point make searches short; in a table larger than the caches half as many do.
  const std::size_t n = store.points.size();
  constexpr std::size_t many = std::size_t{1} << 18;
  resize_table(n < many ? 3 * n : n + n / 2);
}

/// The table is larger than the caches. So an edge is staged first, while its slot is fetched, and
/// added when a number of others have been staged after it.
void edge_index::add_all() {
  std::array<staged_edge, 16> staged{};  // a ring: the oldest is overwritten by the next
  std::size_t n_staged = 0;              // ever
  const auto n_edges = static_cast<edge>(store_.links.size());
  for (edge e = 0; e < n_edges; ++e) {
    const path_index owner = record(e).owner;
    if (owner == edge_record::no_owner || store_.next(e) == no_point) continue;
    record(e) = {e, owner & edge_record::no_owner, false, false, false};
    staged_edge& oldest = staged[n_staged % staged.size()];
    if (n_staged >= staged.size()) add_staged(oldest);
    oldest = stage(e);
    ++n_staged;
  }
  for (std::size_t i = n_staged - std::min(n_staged, staged.size()); i < n_staged; ++i) {
    add_staged(staged[i % staged.size()]);
  }
}

bool edge_index::lie_alike(edge a, edge b) const {
  const ps_point& a0 = store_.points[a];
  const ps_point& a1 = store_.points[store_.next(a)];
  const ps_point& b0 = store_.points[b];
  const ps_point& b1 = store_.points[store_.next(b)];
  return (a0.same_place(b0) && a1.same_place(b1)) || (a0.same_place(b1) && a1.same_place(b0));
}

std::uint64_t edge_index::hash(edge e) const {
  return edge_hash(store_.points[e], store_.points[store_.next(e)], keys_);
}

void edge_index::add_changed(const std::vector<edge>& edges) {
  staged_.clear();
  for (const edge e : edges) {
    if (known_.contains(store_.points[e], store_.points[store_.next(e)])) {
      staged_.push_back(stage(e));
    } else {
      record(e) = {e, record(e).owner, true, false, false};
      put_off_.push_back(e);
    }
  }
  for (const staged_edge& staged : staged_) add_staged(staged);
}

void edge_index::add_all_put_off() {
  staged_.clear();
  for (const edge e : put_off_) {
    if (!is_put_off(e)) continue;
    record(e).indexed = false;  // it can stand there twice
    staged_.push_back(stage(e));
  }
  put_off_.clear();
  for (const staged_edge& staged : staged_) add_staged(staged);
}

/// Gets an edge ready to be added: its home slot is being fetched.
edge_index::staged_edge edge_index::stage(edge e) {
  const std::uint64_t h = hash(e);
  __builtin_prefetch(&slots_[home(h)]);
  return {e, h};
}

void edge_index::add_staged(const staged_edge& staged) {
  const auto [e, hash] = staged;
  const slot wanted = slot_for(0, hash);
  std::size_t free_slot = slots_.size();
  std::size_t i = home(hash);
  for (; slots_[i] != empty_slot; i = after(i)) {
    const edge found = edge_in(slots_[i]);
    if (slots_[i] != (wanted | found)) continue;
    if (!is_live_head(found)) {
      free_slot = std::min(free_slot, i);
    } else if (lie_alike(found, e)) {
      join(e, found);
      slots_[i] = wanted | e;
      return;
    }
  }
  record(e) = {e, record(e).owner, true, true, false};
  known_.insert(store_.points[e], store_.points[store_.next(e)]);
  if (free_slot < slots_.size()) {
    slots_[free_slot] = wanted | e;
    return;
  }
  slots_[i] = wanted | e;
  if (++used_slots_ > slots_.size() / 4 * 3) resize_table(slots_.size());
}

/// The newest edge is the head: paths are mostly worked in the order of the file, and so the head
/// is mostly the last of its bundle to go.
void edge_index::join(edge e, edge head) {
  edge_record& old = record(head);
  old.head = false;
  record(e) = {old.next_alike, record(e).owner, true, true, old.crowded};
  if (old.crowded) {
    enter_crowd(e, crowd_of(head));
  } else {
    old.next_alike = e;
  }
}

void edge_index::remove(edge e) {
  if (record(e).crowded) {
    remove_from_crowd(e);
    return;
  }
  const edge next = record(e).next_alike;
  if (next != e) {
    edge before = next;
    for (std::uint32_t n = 1; record(before).next_alike != e; before = record(before).next_alike) {
      if (++n <= crowd_size_) continue;
      make_crowd(e);
      remove_from_crowd(e);
      return;
    }
    record(before).next_alike = next;
    if (record(e).head) replace_head(e, next);
  }
  record(e).indexed = false;
}

void edge_index::remove_pair(edge a, edge b) {
  const bool whole_bundle =
      !record(a).crowded && record(a).next_alike == b && record(b).next_alike == a;
  if (whole_bundle) {
    record(a).indexed = false;
    record(b).indexed = false;
  } else {
    remove(a);
    remove(b);
  }
}

void edge_index::replace_head(edge old_head, edge new_head) {
  const std::uint64_t h = hash(old_head);
  std::size_t i = home(h);
  while (slots_[i] != slot_for(old_head, h)) i = after(i);
  slots_[i] = slot_for(new_head, h);
  record(old_head).head = false;
  record(new_head).head = true;
}

/// Makes a table of at least so many slots and puts the heads of the old one into it.
void edge_index::resize_table(std::size_t least_slots) {
  const std::size_t size = std::max<std::size_t>(least_slots, 16);
  const large_array<slot> old_slots = std::exchange(slots_, large_array<slot>(size, empty_slot));
  used_slots_ = 0;
  for (const slot s : old_slots) {
    if (s == empty_slot || !is_live_head(edge_in(s))) continue;
    const std::uint64_t h = hash(edge_in(s));
    if (s != slot_for(edge_in(s), h)) continue;  // from when the edge lay elsewhere
    std::size_t i = home(h);
    while (slots_[i] != empty_slot && slots_[i] != s) i = after(i);
    if (slots_[i] == empty_slot) ++used_slots_;
    slots_[i] = s;
  }
}

void edge_index::fetch(edge e) const {
  __builtin_prefetch(&store_.links[e]);
  __builtin_prefetch(&store_.points[e]);
}

void edge_index::fetch_alike(edge e) const {
  const edge alike = record(e).next_alike;
  if (alike < store_.links.size()) fetch(alike);  // else it is the number of a share
}

void edge_index::fetch_neighbour(edge e) const {
  const edge alike = record(e).next_alike;
  if (alike >= store_.links.size() || owner(alike) >= ranks_.size()) return;
  __builtin_prefetch(&ranks_[owner(alike)]);
  __builtin_prefetch(&store_.paths[owner(alike)]);
}

void edge_index::fetch_slot(edge e) const {
  if (record(e).head && record(e).next_alike != e) __builtin_prefetch(&slots_[home(hash(e))]);
}

ranked edge_index::first_neighbour_in_bundle(edge e) {
  const path_index own = owner(e);
  if (gather_crowd(e)) return first_in_crowd(crowd_of(e), own);
  ranked first = nobody;
  for_each_alike(e, [&](edge other) {
    const path_index path = owner(other);
    if (path != own && ranks_[path] < first.order) first = {ranks_[path], path};
  });
  return first;
}

bool edge_index::gather_from_bundle(edge e) {
  std::uint32_t bundle_size = 1;
  for (edge other = record(e).next_alike; other != e; other = record(other).next_alike) {
    if (++bundle_size <= crowd_size_) continue;
    make_crowd(e);
    return true;
  }
  return false;
}

void edge_index::make_crowd(edge member) {
  const auto id = static_cast<crowd_id>(crowds_.size());
  crowds_.emplace_back();
  first_share_.resize(ranks_.size(), no_share);
  edge e = member;
  do {
    const edge next = record(e).next_alike;
    enter_crowd(e, id);
    crowd_changes_.push_back({e, id});
    e = next;
  } while (e != member);
}

void edge_index::enter_crowd(edge e, crowd_id id) {
  record(e).crowded = true;
  crowds_[id].edges.push_back(e);
  enter_share(e, id, owner(e));
}

void edge_index::remove_from_crowd(edge e) {
  const crowd_id id = crowd_of(e);
  --shares_[record(e).next_alike].n_edges;
  record(e).crowded = false;
  record(e).indexed = false;
  crowd_changes_.push_back({e, id});
  if (!record(e).head) return;
  std::vector<edge>& edges = crowds_[id].edges;
  while (!edges.empty() && !is_member(edges.back(), id)) edges.pop_back();
  if (!edges.empty()) replace_head(e, edges.back());
}

void edge_index::enter_share(edge e, crowd_id id, path_index path) {
  const share_number number = share_of(id, path);
  record(e).next_alike = number;
  share& own = shares_[number];
  if (++own.n_edges > 1) return;
  own.listed = ranks_[path];
  crowds_[id].by_rank.push({own.listed, number});
}

/// The share of a path in a crowd, an empty one when it has none yet.
edge_index::share_number edge_index::share_of(crowd_id id, path_index path) {
  const auto next = static_cast<share_number>(shares_.size());
  constexpr int few = 4;  // the first ones of a path are linked: most have no more
  int n_looked_at = 0;
  share_number* own = &first_share_[path];
  for (; n_looked_at < few && *own != no_share; ++n_looked_at) {
    if (shares_[*own].crowd == id) return *own;
    own = &shares_[*own].next_of_path;
  }
  if (n_looked_at < few) {
    *own = next;
  } else {
    const std::uint64_t key = std::uint64_t{id} << 32 | path;
    const auto [found, added] = more_shares_.try_emplace(key, next);
    if (!added) return found->second;
  }
  shares_.push_back({nobody.order, path, id});
  return next;
}

void edge_index::move_to_share_of(path_index path, edge e) {
  share& old = shares_[record(e).next_alike];
  --old.n_edges;
  enter_share(e, old.crowd, path);
}

void edge_index::announce_to_crowd(edge e) {
  share& own = shares_[record(e).next_alike];
  const rank order = ranks_[own.path];
  if (order >= own.listed) return;
  own.listed = order;
  crowds_[own.crowd].by_rank.push({order, record(e).next_alike});
}

/// Brings the top of a crowd's heap up to date.
ranked edge_index::updated_top(crowd_id id) {
  lazy_queue& by_rank = crowds_[id].by_rank;
  while (!by_rank.empty()) {
    const ranked top = by_rank.top();
    share& first = shares_[top.what];
    const rank order = ranks_[first.path];
    if (first.n_edges == 0 || first.listed != top.order) {
      by_rank.pop();
    } else if (order != top.order) {
      first.listed = order;
      by_rank.change_top(order);
    } else {
      return top;
    }
  }
  return nobody;
}

/// Takes the entries of the path that asks off the heap for the time of the look, when they are in
/// the way: there can be more than one of the same rank, left from when its share was empty.
ranked edge_index::first_in_crowd(crowd_id id, path_index other_than) {
  lazy_queue& by_rank = crowds_[id].by_rank;
  ranked own = nobody;
  ranked top = updated_top(id);
  for (; !by_rank.empty() && shares_[top.what].path == other_than; top = updated_top(id)) {
    own = top;
    by_rank.pop();
  }
  const ranked first = by_rank.empty() ? nobody : ranked{top.order, shares_[top.what].path};
  if (own.order != nobody.order) by_rank.push(own);
  return first;
}

}  // namespace trellion
