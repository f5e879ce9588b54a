#include "polygon_list.h"

#include <algorithm>

namespace trellion {

void polygon_list::clear() {
  vertices.clear();
  n_vertices.clear();
  first_fault = SIZE_MAX;
}

void polygon_list::add_vertex(const char* x, const char* y, const char* end) {
  const coordinate at_x = coordinate_at(x, end);
  const coordinate at_y = coordinate_at(y, end);
  if (at_x.fault != coordinate_fault::none || at_y.fault != coordinate_fault::none) {
    first_fault = std::min(first_fault, vertices.size());
  }
  if (vertices.size() == vertices.capacity()) {
    // Once for most groups. For a large one room for about all that the text holds: growing would
    // be copying, and where memory is real only once it is used, more than is needed costs nothing.
    constexpr std::size_t usual = std::size_t{1} << 16;
    constexpr std::size_t short_vertex = 12;  // bytes of its text
    const auto left = static_cast<std::size_t>(end - x);
    const std::size_t most = vertices.size() + left / short_vertex + 1;
    vertices.reserve(vertices.capacity() < usual ? std::min(usual, most) : most);
  }
  // Written member by member where it is to be: a copy of a vertex just put together is one wide
  // load, which would have to wait for the narrow stores before it.
  ps_point& vertex = vertices.emplace_back();
  vertex.coords = {at_x.thousandths, at_y.thousandths};
  vertex.text = x;
}

}  // namespace trellion
