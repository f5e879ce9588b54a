#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "large_array.h"
#include "polygon_list.h"
#include "setup.h"
#include "tokens.h"

namespace trellion {

/// A run of two or more consecutive polygons. In one case, named in walk.cpp, it lacks the last of
/// them.
struct polygon_group : polygon_list {
  token_list begin;            ///< the list that it is the beginning of
  token_list end;              ///< what follows it
  std::int64_t last_line = 0;  ///< input line of its last token
  /// The polygons in the order in which their points lie in the store, unless it is this one.
  large_array<std::uint32_t> order;
};

/// May take what it likes out of the group. The memory of the arrays it leaves there is used again.
using group_handler = std::function<void(polygon_group& group)>;

/// Goes through the list once. Every run of two or more polygons that are drawn with exactly the
/// given operators goes to the handler, which writes what takes its place; everything else is
/// written to `out` as it stands, in order. Takes over what drawing_token_scan has kept of the list
/// when it found these operators, if anything.
void walk(token_list list, const drawing_token_set& operators, text_writer& out,
          const group_handler& handle_group, kept_polygons* kept = nullptr);

}  // namespace trellion
