#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include "edge_hash.h"
#include "postscript_path.h"

namespace trellion {

/// An edge is named by the point that it starts at.
using edge = point_index;

/// The place of a path in the order in which partners are looked for: the number of points that it
/// was filed under, then a running number. Smaller comes first.
using rank = std::uint64_t;

/// A number of its own for each crowd of edges that has ever been.
using crowd_id = std::uint32_t;

/// A path with its rank, or something else that stands where a path does.
struct ranked {
  rank order;
  std::uint32_t what;
};

/// What stands for no path: it comes after all others.
inline constexpr ranked nobody = {UINT64_MAX, no_path};

/// A queue, the smallest rank on top, whose ranks may have become too small since they were pushed.
/// Whoever looks at the top brings it up to date. What it begins with is sorted at once and taken
/// from the end of an array; only what comes later goes through a heap.
class lazy_queue {
 public:
  lazy_queue() = default;
  explicit lazy_queue(large_array<ranked> entries);

  void push(ranked entry);
  void pop();
  /// Gives the top entry another rank.
  void change_top(rank order);
  [[nodiscard]] bool empty() const { return sorted_.empty() && heap_.empty(); }
  [[nodiscard]] ranked top() const { return top_is_sorted() ? sorted_.back() : heap_.front(); }
  /// Of those it began with the one after `n` others; nobody when there is none.
  [[nodiscard]] ranked upcoming(std::size_t n) const {
    return n < sorted_.size() ? sorted_[sorted_.size() - 1 - n] : nobody;
  }

 private:
  [[nodiscard]] bool top_is_sorted() const {
    return heap_.empty() || (!sorted_.empty() && sorted_.back().order <= heap_.front().order);
  }

  large_array<ranked> sorted_;  // the smallest last
  std::vector<ranked> heap_;
};

/// Knows which edges of different paths lie between the same two points, whatever their directions.
///
/// Edges that lie alike form a bundle: a ring of links through the edges themselves, so that the
/// partners of an edge are found without a look-up. A hash table leads from two points to one edge
/// of the bundle, its head; only adding an edge, and removing the head of a bundle that lives on,
/// touch it. A bundle of many edges becomes a crowd, which keeps the paths of its edges in a queue
/// by rank instead, each path once, however many of the edges it has.
///
/// A slot holds an edge and, in the bits that edges of this index do not need, a part of its hash,
/// so that most slots of other bundles are told apart without a look at their edges.
///
/// 1. Every bundle that is not empty, but for those of 4, has one head, and a slot of the table,
///    reachable from the hash of its two points, that holds the head.
/// 2. Slots of removed edges stay. They are no heads, so they match nothing, and are used
///    again or left out when the table is rebuilt. A slot whose edge has become the head of another
///    bundle in the meantime does no harm: what it holds is compared with what is looked for. So an
///    edge can stand in two slots, and whichever is met first serves.
/// 3. The edges that one path has in a crowd are its share, whose number stands in each of them
///    where the link to the next edge of a bundle is. The crowd's queue has an entry for every
///    share that is not empty, of the path's rank or less; the share tells the rank of that entry.
///    An entry of another rank, or of an empty share, is left from before. A crowd stays one when
///    it shrinks.
/// 4. While one path is worked on its edges change again and again, and most of them lie like none
///    that there is. What lies like no edge that the table has had is put off: a bundle of its own
///    without a head or a slot, until the path is done. Only edges of the same path can lie like it
///    meanwhile, and as nothing new comes into the table these are put off, too.
class edge_index {
 public:
  /// Makes room for the edges of the store, which must outlive the index, and indexes none. What it
  /// keeps about an edge it keeps in the store. Bundles of more than `crowd_size` edges become
  /// crowds.
  edge_index(path_store& store, std::uint32_t crowd_size);

  /// Indexes all edges of the store that have an owner. It is quickest in the order of memory.
  void add_all();
  /// Gives a path its rank: all before the first look, then those that are filed again.
  void set_rank(path_index path, rank order) { ranks_[path] = order; }
  /// Fetches what a look at an edge needs, in three steps of which each tells where the next one
  /// leads: the edge, one that lies alike, and the path that this belongs to.
  void fetch(edge e) const;
  void fetch_alike(edge e) const;
  void fetch_neighbour(edge e) const;
  /// Fetches what the removal of an edge needs that others lie like.
  void fetch_slot(edge e) const;
  /// Makes an edge belong to another path.
  void set_owner(edge e, path_index path) {
    if (record(e).crowded) move_to_share_of(path, e);
    record(e).owner = path & edge_record::no_owner;
  }

  /// Indexes edges of the path that is being worked on, where their points are now. They must not
  /// be indexed. Some may be put off.
  void add_changed(const std::vector<edge>& edges);
  /// Indexes what has been put off: before another path looks, or changes its edges.
  void add_put_off() {
    if (!put_off_.empty()) add_all_put_off();
  }
  /// Removes an edge from the index; its points must be where they were when it was added.
  void remove(edge e);
  /// Removes two edges that lie alike.
  void remove_pair(edge a, edge b);

  [[nodiscard]] bool contains(edge e) const { return record(e).indexed; }
  [[nodiscard]] bool is_crowded(edge e) const { return record(e).crowded; }
  [[nodiscard]] path_index owner(edge e) const { return record(e).owner; }
  [[nodiscard]] rank rank_of(path_index path) const { return ranks_[path]; }
  [[nodiscard]] bool lie_alike(edge a, edge b) const;

  /// The only other edge that lies like e; no_point when there is none, or there are more.
  [[nodiscard]] edge only_partner(edge e) const {
    const edge other = record(e).next_alike;
    const bool pair = !record(e).crowded && other != e && record(other).next_alike == e;
    return pair ? other : no_point;
  }

  /// The first in rank of the other paths that have an edge that lies like e; nobody when there is
  /// none.
  [[nodiscard]] ranked first_neighbour(edge e) {
    const edge_record& l = record(e);
    const edge other = l.next_alike;
    const bool few = !l.crowded && record(other).next_alike == e;  // alone, or one of a pair
    if (!few) return first_neighbour_in_bundle(e);
    const path_index owner = record(other).owner;
    return owner == l.owner ? nobody : ranked{ranks_[owner], owner};
  }

  /// Calls f with every other edge that lies like e, which must not be crowded.
  template <class F>
  void for_each_alike(edge e, F f) const {
    for (edge other = record(e).next_alike; other != e; other = record(other).next_alike) f(other);
  }

  /// The crowd of an edge that is crowded.
  [[nodiscard]] crowd_id crowd_of(edge e) const { return shares_[record(e).next_alike].crowd; }
  [[nodiscard]] bool is_member(edge e, crowd_id id) const {
    return record(e).crowded && crowd_of(e) == id;
  }
  /// Makes the bundle of an edge a crowd when it has become large enough. Whether e is crowded.
  bool gather_crowd(edge e) {
    const edge_record& l = record(e);
    return l.crowded || (l.next_alike != e && gather_from_bundle(e));
  }
  /// The first in rank of the paths of a crowd other than the given one, or nobody.
  ranked first_in_crowd(crowd_id id, path_index other_than);
  /// Tells the crowd of an edge that the rank of the edge's path has become smaller.
  void announce_to_crowd(edge e);

  /// An edge that has come into a crowd as this was made, or has left it.
  struct crowd_change {
    edge at;
    crowd_id id;
  };
  /// The changes since they were last forgotten, the earliest first.
  [[nodiscard]] const std::vector<crowd_change>& crowd_changes() const { return crowd_changes_; }
  void forget_crowd_changes() { crowd_changes_.clear(); }

 private:
  __extension__ using product = unsigned __int128;
  using slot = std::uint32_t;
  static constexpr slot empty_slot = UINT32_MAX;

  struct crowd {
    lazy_queue by_rank;       // of shares
    std::vector<edge> edges;  // also some that have left
  };

  using share_number = std::uint32_t;
  static constexpr share_number no_share = UINT32_MAX;

  struct share {
    rank listed;  // in the crowd's queue
    path_index path;
    crowd_id crowd;
    std::uint32_t n_edges = 0;
    share_number next_of_path = no_share;
  };

  /// Keeps paths that follow each other together, as they are mostly looked up.
  struct share_hash {
    std::uint64_t factor;
    std::size_t operator()(std::uint64_t key) const noexcept {
      const std::uint64_t h = (key >> 5) * factor;
      return (h ^ h >> 32) << 5 | (key & 31);
    }
  };

  /// An edge on its way into the index: its home slot is being fetched.
  struct staged_edge {
    edge at;
    std::uint64_t hash;
  };

  [[nodiscard]] std::uint64_t hash(edge e) const;
  staged_edge stage(edge e);
  [[nodiscard]] std::size_t home(std::uint64_t hash) const {
    return static_cast<std::size_t>((product{hash} * slots_.size()) >> 64);
  }
  [[nodiscard]] std::size_t after(std::size_t i) const {
    return i + 1 == slots_.size() ? 0 : i + 1;
  }
  [[nodiscard]] slot slot_for(edge e, std::uint64_t hash) const {
    return e | static_cast<slot>((hash & UINT32_MAX) << edge_bits_);
  }
  [[nodiscard]] edge edge_in(slot s) const {
    return static_cast<edge>(s & ((std::uint64_t{1} << edge_bits_) - 1));
  }
  [[nodiscard]] edge_record& record(edge e) { return store_.links[e].record; }
  [[nodiscard]] const edge_record& record(edge e) const { return store_.links[e].record; }
  [[nodiscard]] bool is_live_head(edge e) const { return record(e).indexed && record(e).head; }
  void add_staged(const staged_edge& staged);
  void add_all_put_off();
  [[nodiscard]] bool is_put_off(edge e) const {
    const edge_record& r = record(e);
    return r.indexed && !r.head && !r.crowded && r.next_alike == e;
  }
  void join(edge e, edge head);
  void replace_head(edge old_head, edge new_head);
  void resize_table(std::size_t least_slots);
  bool gather_from_bundle(edge e);
  void make_crowd(edge member);
  void enter_crowd(edge e, crowd_id id);
  void remove_from_crowd(edge e);
  void enter_share(edge e, crowd_id id, path_index path);
  share_number share_of(crowd_id id, path_index path);
  void move_to_share_of(path_index path, edge e);
  ranked updated_top(crowd_id id);
  ranked first_neighbour_in_bundle(edge e);

  path_store& store_;
  hash_keys keys_;
  std::uint32_t crowd_size_;
  large_array<rank> ranks_;  // by path; of those that are not to be joined they have no value
  large_array<slot> slots_;
  std::size_t used_slots_ = 0;
  edge_filter known_;                // all edges that have been in the table
  std::vector<edge> put_off_;        // also some that have changed again
  std::vector<staged_edge> staged_;  // for the time of a call
  int edge_bits_ = 0;  // an edge is less than 2 to this power less 1, so no slot looks empty
  std::vector<crowd> crowds_;
  std::vector<share> shares_;              // all that have ever been
  std::vector<share_number> first_share_;  // by path; a few more are linked to it
  std::unordered_map<std::uint64_t, share_number, share_hash> more_shares_;  // by crowd and path
  std::vector<crowd_change> crowd_changes_;
};

}  // namespace trellion
