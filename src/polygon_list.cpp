#include "polygon_list.h"

#include <algorithm>

namespace trellion {

void polygon_list::clear() {
  vertices.clear();
  n_vertices.clear();
  first_fault = SIZE_MAX;
}

/// Once for most groups. For a large one there is room for about all that the text holds: growing
/// would be copying, and where memory is real only once it is used, more than is needed costs
/// nothing.
void polygon_list::grow(std::size_t text_left) {
  constexpr std::size_t usual = std::size_t{1} << 16;
  constexpr std::size_t short_vertex = 12;  // bytes of its text
  const std::size_t most = vertices.size() + text_left / short_vertex + 1;
  vertices.reserve(vertices.capacity() < usual ? std::min(usual, most) : most);
}

}  // namespace trellion
