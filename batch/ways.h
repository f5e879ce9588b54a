#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "batch/eps_page.h"
#include "batch/options.h"

namespace trellion::batch {

/// A way to a repaired file.
struct repair_way {
  std::int32_t min_separators = 2;  ///< of no meaning in PDF
  bool detour = false;
  bool remove_mesh = false;
  bool pdf = false;      ///< the polygons are joined in PDF, be it that of a detour
  bool careful = false;  ///< in PDF: polygons keep their order, and numbers all their digits

  /// As the table shows it: the options of trellion, or "pdf" and those of trellion-pdf; "detour"
  /// before them if there is one.
  [[nodiscard]] std::string name() const;
  /// The same in PDF with care: renderers can decide otherwise about thin polygons that change
  /// places or move by next to nothing. Nothing where it is that already.
  [[nodiscard]] std::optional<repair_way> more_careful() const;
};

/// The ways that the options ask for. A file with a DOS preview header is not repaired as it stands
/// where there is a detour. Where the mesh is to be closed each of them comes without
/// closing, too: joining alone can leave fewer hairlines than closing makes. A PDF file has its own
/// ways, whatever the options say of others.
std::vector<repair_way> ways_to_try(const batch_options& options, file_kind kind);

}  // namespace trellion::batch
