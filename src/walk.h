#pragma once

#include <functional>

#include "setup.h"
#include "tokens.h"

namespace trellion {

/// Takes a run of two or more consecutive polygons, from its first token to the last one that
/// belongs to a polygon.
using group_handler = std::function<void(token_range group)>;

/// Goes through the list once. Every run of two or more polygons that are drawn with exactly the
/// given operators goes to the handler, which writes what takes its place; everything else is
/// written to `out` as it stands, in order.
void walk(token_list list, const drawing_token_set& operators, text_writer& out,
          const group_handler& handle_group);

}  // namespace trellion
