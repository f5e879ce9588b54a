#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "batch/eps_page.h"
#include "batch/options.h"

namespace trellion::batch {

/// A way to a repaired file.
struct repair_way {
  std::int32_t min_separators = 2;
  bool detour = false;
  bool remove_mesh = false;

  /// As the table shows it: the options of trellion, "detour" before them if there is one.
  [[nodiscard]] std::string name() const;
};

/// The ways that the options ask for. A file with a DOS preview header is not repaired as it stands
/// where there is a detour. Where the mesh is to be closed each of them comes without
/// closing, too: joining alone can leave fewer hairlines than closing makes.
std::vector<repair_way> ways_to_try(const batch_options& options, file_kind kind);

}  // namespace trellion::batch
