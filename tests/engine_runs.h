#pragma once

#include <cstdint>
#include <string>

#include "v3_engine.h"

namespace trellion::testing {

/// What an engine said and the paths that it left.
struct engine_result {
  std::string console;
  std::string paths;

  bool operator==(const engine_result&) const = default;
};

/// What the engine makes of the groups of a text, drawn with the operators of mlhf().
engine_result merged(const std::string& text, std::int32_t merge_limit = 0,
                     engine_sizes sizes = {});

/// The same by the plain engine.
engine_result plainly_merged(const std::string& text, std::int32_t merge_limit = 0);

}  // namespace trellion::testing
