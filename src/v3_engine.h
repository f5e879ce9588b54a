#pragma once

#include <cstdint>

#include "bytes.h"
#include "postscript_path_queue.h"

namespace trellion {

/// From which sizes on the engine keeps what it knows instead of looking again. They change the
/// time it takes, never the result.
struct engine_sizes {
  std::uint32_t large_path = 256;  ///< points of a path whose neighbours can be kept in order
  std::uint32_t crowd = 64;        ///< edges between the same two points that are kept in order
  std::uint32_t patience = 64;     ///< steps along a large path until its points are kept in order
  std::uint32_t much_smaller = 8;  ///< they are once it joins one so many times smaller; 0: any
};

/// Joins the paths of a group that share an edge and files the results in the strata by their new
/// numbers of points. Paths are taken up the smallest first, each looks for partners among the
/// paths of as many points or fewer, and it ends when no path is left to take up. A limit of 1 or
/// more ends it before the strata of more points than that; those of 3 points are worked in any
/// case. The console gets a progress line for every hundred mergers. When two paths cancel each
/// other out it gets a fatal line, and the run ends early. The time grows with the number of
/// points, times its logarithm.
void v3_process(path_store& store, strata& strata, std::int32_t merge_limit, text_writer& console,
                const engine_sizes& sizes = {});

}  // namespace trellion
