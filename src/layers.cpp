#include "layers.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <span>

namespace trellion {
namespace {

/// An edge of a path turned counter-clockwise.
struct directed_edge {
  std::array<std::int32_t, 2> from;
  std::array<std::int32_t, 2> to;
  std::uint32_t path;  ///< its place in the queue

  [[nodiscard]] std::int64_t extent(std::size_t axis) const {
    return std::int64_t{to[axis]} - from[axis];
  }
  [[nodiscard]] bool points_left() const {
    return extent(0) < 0 || (extent(0) == 0 && extent(1) < 0);
  }
  /// How far along its line a place of it is: increasing from `from` to `to`.
  [[nodiscard]] std::int64_t along(const std::array<std::int32_t, 2>& place) const {
    const std::size_t axis = extent(0) != 0 ? 0 : 1;
    return points_left() ? -std::int64_t{place[axis]} : std::int64_t{place[axis]};
  }
  [[nodiscard]] std::int64_t begin() const { return along(from); }
  [[nodiscard]] std::int64_t end() const { return along(to); }
};

/// Orders edges by direction, then by line; 0 for two that run along the same line the same way.
int compare_lines(const directed_edge& a, const directed_edge& b) {
  if (a.points_left() != b.points_left()) return a.points_left() ? 1 : -1;
  const area turn = area{a.extent(0)} * b.extent(1) - area{a.extent(1)} * b.extent(0);
  if (turn != 0) return turn > 0 ? -1 : 1;
  const std::int64_t x = std::int64_t{b.from[0]} - a.from[0];
  const std::int64_t y = std::int64_t{b.from[1]} - a.from[1];
  const area side = area{a.extent(0)} * y - area{a.extent(1)} * x;
  return side == 0 ? 0 : (side > 0 ? -1 : 1);
}

/// All edges of the queue's paths, those along the same line the same way side by side, in the
/// order in which they begin.
std::vector<directed_edge> sorted_edges(const path_store& store, const ps_path_queue& queue) {
  std::vector<directed_edge> edges;
  edges.reserve(static_cast<std::size_t>(queue.total_points()));
  std::uint32_t place = 0;
  for (path_index p = queue.first(); p != no_path; p = store.paths[p].next_path, ++place) {
    const bool clockwise = doubled_area(store, p) < 0;
    point_index at = store.paths[p].cursor;
    for (std::uint32_t i = 0; i < store.paths[p].n_points; ++i) {
      const point_index next = store.next(at);
      const ps_point& a = store.points[at];
      const ps_point& b = store.points[next];
      edges.push_back(clockwise ? directed_edge{b.coords, a.coords, place}
                                : directed_edge{a.coords, b.coords, place});
      at = next;
    }
  }
  std::ranges::sort(edges, [](const directed_edge& a, const directed_edge& b) {
    const int lines = compare_lines(a, b);
    return lines != 0 ? lines < 0 : a.begin() < b.begin();
  });
  return edges;
}

/// The pieces that an edge consists of, of a line where edges overlap.
struct piece_range {
  std::uint32_t path;    ///< the edge's path, by its place in the queue
  std::size_t tree;      ///< where the line's tree begins
  std::size_t n_pieces;  ///< of the line: a power of two
  std::size_t first;     ///< the edge's first piece
  std::size_t after;     ///< the one after its last
};

/// For the pieces of lines how many layers are closed there to further paths. Of each line a tree
/// in an array: node 1 stands for all pieces, nodes 2 n and 2 n + 1 for the halves of node n.
class closed_layers {
 public:
  /// Makes a tree and returns where it begins.
  std::size_t add_line(std::size_t n_pieces) {
    const std::size_t tree = nodes_.size();
    nodes_.resize(tree + 2 * n_pieces);
    return tree;
  }
  /// The most layers that are closed on any of the pieces.
  [[nodiscard]] std::uint32_t most(const piece_range& range) const;
  /// Closes the first `count` layers on all of the pieces.
  void close(const piece_range& range, std::uint32_t count);

 private:
  struct node {
    std::uint32_t everywhere = 0;  // closed on every piece of the node
    std::uint32_t somewhere = 0;   // the most closed on any
  };

  /// Calls f with the nodes that the range consists of.
  template <class F>
  static void for_each_part(const piece_range& range, F f) {
    std::size_t first = range.n_pieces + range.first;
    std::size_t after = range.n_pieces + range.after;
    for (; first < after; first /= 2, after /= 2) {
      if (first % 2 == 1) f(range.tree + first++);
      if (after % 2 == 1) f(range.tree + --after);
    }
  }
  /// Calls f with all nodes above those, and perhaps some of those, more than once.
  template <class F>
  static void for_each_above(const piece_range& range, F f) {
    for (std::size_t n = (range.n_pieces + range.first) / 2; n > 0; n /= 2) f(range.tree + n);
    for (std::size_t n = (range.n_pieces + range.after - 1) / 2; n > 0; n /= 2) f(range.tree + n);
  }

  std::vector<node> nodes_;
};

std::uint32_t closed_layers::most(const piece_range& range) const {
  std::uint32_t result = 0;
  for_each_part(range, [&](std::size_t n) { result = std::max(result, nodes_[n].somewhere); });
  for_each_above(range, [&](std::size_t n) { result = std::max(result, nodes_[n].everywhere); });
  return result;
}

void closed_layers::close(const piece_range& range, std::uint32_t count) {
  for_each_above(
      range, [&](std::size_t n) { nodes_[n].somewhere = std::max(nodes_[n].somewhere, count); });
  for_each_part(range, [&](std::size_t n) {
    nodes_[n].everywhere = std::max(nodes_[n].everywhere, count);
    nodes_[n].somewhere = std::max(nodes_[n].somewhere, count);
  });
}

/// Adds the pieces of edges of one line that overlap.
void add_pieces(std::span<const directed_edge> edges, closed_layers& closed,
                std::vector<piece_range>& ranges) {
  std::vector<std::int64_t> ends;
  for (const directed_edge& e : edges) ends.insert(ends.end(), {e.begin(), e.end()});
  std::ranges::sort(ends);
  ends.erase(std::unique(ends.begin(), ends.end()), ends.end());
  const auto place = [&ends](std::int64_t end) {
    return static_cast<std::size_t>(std::ranges::lower_bound(ends, end) - ends.begin());
  };
  const std::size_t n_pieces = std::bit_ceil(ends.size() - 1);
  const std::size_t tree = closed.add_line(n_pieces);
  for (const directed_edge& e : edges) {
    ranges.push_back({e.path, tree, n_pieces, place(e.begin()), place(e.end())});
  }
}

/// The pieces of all edges that overlap with others that run the same way, by path.
std::vector<piece_range> overlapping_edges(const std::vector<directed_edge>& edges,
                                           closed_layers& closed) {
  std::vector<piece_range> ranges;
  for (std::size_t i = 0; i < edges.size();) {
    const std::size_t first = i;
    std::int64_t end = edges[first].end();
    for (++i;
         i < edges.size() && edges[i].begin() < end && compare_lines(edges[first], edges[i]) == 0;
         ++i) {
      end = std::max(end, edges[i].end());
    }
    if (i - first > 1) add_pieces(std::span(edges).subspan(first, i - first), closed, ranges);
  }
  std::ranges::stable_sort(ranges, {}, &piece_range::path);
  return ranges;
}

}  // namespace

std::vector<std::vector<path_index>> split_into_layers(const path_store& store,
                                                       const ps_path_queue& queue) {
  closed_layers closed;
  const std::vector<piece_range> ranges = overlapping_edges(sorted_edges(store, queue), closed);
  std::vector<std::vector<path_index>> layers(1);
  auto next = ranges.begin();
  std::uint32_t place = 0;
  for (path_index p = queue.first(); p != no_path; p = store.paths[p].next_path, ++place) {
    const auto first = next;
    std::uint32_t layer = 0;
    for (; next != ranges.end() && next->path == place; ++next) {
      layer = std::max(layer, closed.most(*next));
    }
    std::for_each(first, next, [&](const piece_range& r) { closed.close(r, layer + 1); });
    if (layer == layers.size()) layers.emplace_back();
    layers[layer].push_back(p);
  }
  return layers;
}

}  // namespace trellion
