#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "coordinates.h"
#include "large_array.h"
#include "setup.h"
#include "tokens.h"

namespace trellion {

/// A run of two or more consecutive polygons. In one case, named in walk.cpp, it lacks the last of
/// them.
struct polygon_group {
  token_list begin;                       ///< the list that it is the beginning of
  token_list end;                         ///< what follows it
  std::int64_t last_line = 0;             ///< input line of its last token
  large_array<ps_point> vertices;         ///< of all polygons, one after the other
  large_array<std::uint32_t> n_vertices;  ///< of each polygon; at least one
  /// The polygons in the order in which their points lie in the store, unless it is this one.
  large_array<std::uint32_t> order;
  /// The first vertex with a number that is no coordinate, if it is one of these.
  std::size_t first_fault = SIZE_MAX;
};

/// May take what it likes out of the group. The memory of the arrays it leaves there is used again.
using group_handler = std::function<void(polygon_group& group)>;

/// Goes through the list once. Every run of two or more polygons that are drawn with exactly the
/// given operators goes to the handler, which writes what takes its place; everything else is
/// written to `out` as it stands, in order.
void walk(token_list list, const drawing_token_set& operators, text_writer& out,
          const group_handler& handle_group);

}  // namespace trellion
