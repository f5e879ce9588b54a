#pragma once

#include <cstdint>

#include "files.h"
#include "postscript_path_queue.h"

namespace trellion {

/// From which sizes on the engine keeps what it knows instead of looking again. They change the
/// time it takes, never the result.
struct engine_sizes {
  std::uint32_t large_path = 256;  ///< points of a path whose neighbours are kept in order
  std::uint32_t crowd = 64;       ///< edges between the same two points that are kept in order
};

/// Joins the paths of a group that share an edge until no two are left that do, and files the
/// results in the strata by their new numbers of points. Paths are taken up the smallest first,
/// and each looks for partners among the paths of as many points or fewer. A path of more than
/// `merge_limit` points is not taken up; a limit of 0 or less is none. The console gets a progress
/// line for every hundred mergers. When two paths cancel each other out it gets a fatal line, and
/// the run ends early. The time grows with the number of points, times its logarithm.
void v3_process(path_store& store, strata& strata, std::int32_t merge_limit, text_writer& console,
                const engine_sizes& sizes = {});

}  // namespace trellion
