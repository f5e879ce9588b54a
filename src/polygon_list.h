#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "coordinates.h"
#include "large_array.h"
#include "tokens.h"

namespace trellion {

/// Polygons as they are read.
struct polygon_list {
  large_array<ps_point> vertices;         ///< of all polygons, one after the other
  large_array<std::uint32_t> n_vertices;  ///< of each polygon; at least one
  /// The first vertex with a number that is no coordinate, if it is one of these.
  std::size_t first_fault = SIZE_MAX;

  void clear();
  /// Adds a vertex to the polygon that is being read, given where its numbers stand, in a text that
  /// ends at `end`.
  void add_vertex(const char* x, const char* y, const char* end) {
    add_vertex(x, coordinate_at(x, end), coordinate_at(y, end), end);
  }
  void add_vertex(number_text x, number_text y, const char* end) {
    add_vertex(x.begin, coordinate_of(x, end), coordinate_of(y, end), end);
  }

 private:
  void add_vertex(const char* text, coordinate x, coordinate y, const char* end);
  void grow(std::size_t text_left);
};

/// Takes plain polygons into a list, up to one that has fewer vertices than it may have, or whose
/// first vertex stands at `stop`.
struct polygon_sink {
  polygon_list& list;
  const char* text_end;
  std::uint32_t least_vertices;
  const char* stop;
  std::size_t n_vertices = list.vertices.size();  ///< of the polygons that have ended

  void vertex(number_text x, number_text y) const { list.add_vertex(x, y, text_end); }
  bool end_polygon(std::uint32_t n) {
    if (n < least_vertices || list.vertices[n_vertices].text == stop) return false;
    list.n_vertices.push_back(n);
    n_vertices = list.vertices.size();
    return true;
  }
  void drop_unended() const { list.vertices.resize(n_vertices); }
};

/// A first stretch of plain polygons in a run, which the scan for operators has kept so that the
/// walk need not read them again. In their list there is room before them for those that the run
/// begins with.
struct kept_polygons {
  token_list begin;       ///< the list that they are the beginning of
  token_list last_token;  ///< the list that begins with their last token
  std::int64_t n_tokens = 0;
  std::int64_t n_polygons = 0;  ///< 0 when there are none
  std::size_t n_polygons_before = 0;
  std::size_t n_vertices_before = 0;
  polygon_list list;

  /// Where the numbers of their first vertex stand; nullptr when there are none.
  [[nodiscard]] const char* first_vertex() const {
    return n_polygons > 0 ? list.vertices[n_vertices_before].text : nullptr;
  }
};

inline void polygon_list::add_vertex(const char* text, coordinate x, coordinate y,
                                     const char* end) {
  if (x.fault != coordinate_fault::none || y.fault != coordinate_fault::none) {
    first_fault = std::min(first_fault, vertices.size());
  }
  if (vertices.size() == vertices.capacity()) grow(static_cast<std::size_t>(end - text));
  // Written member by member where it is to be: a copy of a vertex just put together is one wide
  // load, which would have to wait for the narrow stores before it.
  ps_point& vertex = vertices.emplace_back();
  vertex.coords = {x.thousandths, y.thousandths};
  vertex.text = text;
}

}  // namespace trellion
