#include "edge_index.h"

#include <algorithm>
#include <bit>

namespace trellion {
namespace {

constexpr auto later = [](const ranked_edge& a, const ranked_edge& b) { return a.order > b.order; };

std::uint64_t packed(const ps_point& p) {
  return std::uint64_t{static_cast<std::uint32_t>(p.coords[0])} << 32 |
         static_cast<std::uint32_t>(p.coords[1]);
}

}  // namespace

void lazy_heap::push(ranked_edge entry) {
  entries_.push_back(entry);
  std::ranges::push_heap(entries_, later);
}

void lazy_heap::pop() {
  std::ranges::pop_heap(entries_, later);
  entries_.pop_back();
}

void lazy_heap::change_top(rank order) {
  std::ranges::pop_heap(entries_, later);
  entries_.back().order = order;
  std::ranges::push_heap(entries_, later);
}

edge_index::edge_index(const path_store& store, std::uint32_t crowd_size)
    : store_(store),
      crowd_size_(crowd_size),
      links_(store.points.size()),
      ranks_(store.paths.size()) {
  if (store.paths.size() > owner_mask) throw run_error("a group has too many polygons");
  edge_bits_ = static_cast<int>(std::bit_width(store.points.size()));
  resize_table(store.points.size() + store.points.size() / 2);
}

/// The table is larger than the caches. So an edge is staged first, while its slot is fetched, and
/// added when a number of others have been staged after it.
void edge_index::add_path(path_index path, rank order) {
  const ps_path& p = store_.paths[path];
  ranks_[path] = order;
  edge e = p.cursor;
  for (std::uint32_t i = 0; i < p.n_points; ++i, e = store_.points[e].next) {
    set_owner(e, path);
    staged_edge& place = staged_[n_staged_ % staged_.size()];
    if (n_staged_ >= staged_.size()) add_hashed(place.at, place.hash);
    place = {e, hash(e)};
    __builtin_prefetch(&slots_[home(place.hash)]);
    ++n_staged_;
  }
}

void edge_index::add_rest() {
  const std::size_t first = n_staged_ - std::min(n_staged_, staged_.size());
  for (std::size_t i = first; i < n_staged_; ++i) {
    const staged_edge& staged = staged_[i % staged_.size()];
    add_hashed(staged.at, staged.hash);
  }
  n_staged_ = 0;
}

bool edge_index::lie_alike(edge a, edge b) const {
  const ps_point& a0 = store_.points[a];
  const ps_point& a1 = store_.points[a0.next];
  const ps_point& b0 = store_.points[b];
  const ps_point& b1 = store_.points[b0.next];
  return (a0.same_place(b0) && a1.same_place(b1)) || (a0.same_place(b1) && a1.same_place(b0));
}

/// The same for both directions of an edge.
std::uint64_t edge_index::hash(edge e) const {
  const ps_point& p = store_.points[e];
  const std::uint64_t a = packed(p);
  const std::uint64_t b = packed(store_.points[p.next]);
  const std::uint64_t h = std::min(a, b) * 0x9e3779b97f4a7c15 + std::max(a, b) * 0xc2b2ae3d27d4eb4f;
  return (h ^ h >> 32) * 0xd6e8feb86659fd93;
}

void edge_index::add(edge e) { add_hashed(e, hash(e)); }

void edge_index::prefetch(edge e) const { __builtin_prefetch(&slots_[home(hash(e))]); }

void edge_index::add_hashed(edge e, std::uint64_t hash) {
  const std::size_t mask = slots_.size() - 1;
  const slot wanted = slot_for(0, hash);
  std::size_t free_slot = slots_.size();
  std::size_t i = home(hash);
  for (; slots_[i] != empty_slot; i = (i + 1) & mask) {
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
  links_[e] = {e, links_[e].owner, true, true, false};
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
  link& old = links_[head];
  old.head = false;
  links_[e] = {old.next_alike, links_[e].owner, true, true, old.crowded};
  if (old.crowded) {
    crowd_of_[e] = crowd_of_.at(head);
    announce_to_crowd(e);
  } else {
    old.next_alike = e;
  }
}

void edge_index::remove(edge e) {
  if (links_[e].crowded) {
    remove_from_crowd(e);
    return;
  }
  const edge next = links_[e].next_alike;
  if (next != e) {
    edge before = next;
    for (std::uint32_t n = 1; links_[before].next_alike != e; before = links_[before].next_alike) {
      if (++n <= crowd_size_) continue;
      make_crowd(e);
      remove_from_crowd(e);
      return;
    }
    links_[before].next_alike = next;
    if (links_[e].head) replace_head(e, next);
  }
  links_[e].indexed = false;
}

void edge_index::remove_pair(edge a, edge b) {
  const bool whole_bundle =
      !links_[a].crowded && links_[a].next_alike == b && links_[b].next_alike == a;
  if (whole_bundle) {
    links_[a].indexed = false;
    links_[b].indexed = false;
  } else {
    remove(a);
    remove(b);
  }
}

void edge_index::replace_head(edge old_head, edge new_head) {
  const std::size_t mask = slots_.size() - 1;
  const std::uint64_t h = hash(old_head);
  std::size_t i = home(h);
  while (slots_[i] != slot_for(old_head, h)) i = (i + 1) & mask;
  slots_[i] = slot_for(new_head, h);
  links_[old_head].head = false;
  links_[new_head].head = true;
}

/// Makes a table of at least so many slots and puts the heads of the old one into it.
void edge_index::resize_table(std::size_t least_slots) {
  const std::size_t size = std::bit_ceil(std::max<std::size_t>(least_slots, 16));
  const std::vector<slot> old_slots = std::exchange(slots_, std::vector<slot>(size, empty_slot));
  slot_bits_ = std::countr_zero(size);
  used_slots_ = 0;
  for (const slot s : old_slots) {
    if (s == empty_slot || !is_live_head(edge_in(s))) continue;
    const std::uint64_t h = hash(edge_in(s));
    if (s != slot_for(edge_in(s), h)) continue;  // left behind by the edge when it lay elsewhere
    std::size_t i = home(h);
    while (slots_[i] != empty_slot && slots_[i] != s) i = (i + 1) & (size - 1);
    if (slots_[i] == empty_slot) ++used_slots_;
    slots_[i] = s;
  }
}

ranked_edge edge_index::first_neighbour_in_bundle(edge e) {
  if (links_[e].crowded) return first_neighbour_in_crowd(e);
  ranked_edge first = nobody;
  std::uint32_t bundle_size = 1;
  const path_index own = owner(e);
  for (edge other = links_[e].next_alike; other != e; other = links_[other].next_alike) {
    if (++bundle_size > crowd_size_) {
      make_crowd(e);
      return first_neighbour_in_crowd(e);
    }
    if (owner(other) == own) continue;
    const rank order = ranks_[owner(other)];
    if (order < first.order) first = {order, other};
  }
  return first;
}

void edge_index::make_crowd(edge member) {
  lazy_heap& crowd = crowds_.emplace_back();
  const auto admit = [&](edge e) {
    links_[e].crowded = true;
    crowd_of_[e] = crowds_.size() - 1;
    crowd.push({ranks_[owner(e)], e});
    newly_crowded_.push_back(e);
  };
  for_each_alike(member, admit);
  admit(member);
}

void edge_index::announce_to_crowd(edge e) { crowds_[crowd_of_.at(e)].push({ranks_[owner(e)], e}); }

bool edge_index::is_member(edge e, std::size_t crowd) const {
  const auto found = crowd_of_.find(e);
  return found != crowd_of_.end() && found->second == crowd;
}

/// The member's entries stay in the heap; they are dropped when they come to the top.
void edge_index::remove_from_crowd(edge e) {
  const std::size_t id = crowd_of_.at(e);
  lazy_heap& crowd = crowds_[id];
  crowd_of_.erase(e);
  links_[e].crowded = false;
  links_[e].indexed = false;
  if (!links_[e].head) return;
  while (!crowd.empty() && !is_member(crowd.top().at, id)) crowd.pop();
  if (!crowd.empty()) replace_head(e, crowd.top().at);
}

/// An edge of the same path comes to the top only when no other path of the crowd has a smaller
/// rank than the path will have when it is filed: then there is nobody to join.
ranked_edge edge_index::first_neighbour_in_crowd(edge e) {
  const std::size_t id = crowd_of_.at(e);
  lazy_heap& crowd = crowds_[id];
  while (!crowd.empty()) {
    const ranked_edge top = crowd.top();
    const rank order = ranks_[owner(top.at)];
    if (!is_member(top.at, id)) {
      crowd.pop();
    } else if (order != top.order) {
      crowd.change_top(order);
    } else {
      return owner(top.at) == owner(e) ? nobody : top;
    }
  }
  return nobody;
}

}  // namespace trellion
