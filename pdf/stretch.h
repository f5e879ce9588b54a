#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "pdf/content_repair.h"
#include "pdf/graphics_state.h"
#include "pdf/run.h"
#include "pdf/texts.h"

namespace trellion::pdf {

/// A part of a content stream that does nothing but paint a mesh, and set states that can be set
/// again.
struct stretch {
  std::string_view content;  ///< all of it, which the raw polygons point into
  std::size_t begin = 0;
  std::size_t end = 0;
  graphics_state before;
  graphics_state after;
  bool after_matters = true;  ///< something depends on the state that it leaves
};

/// What is to be written in place of a stretch.
struct stretch_text {
  std::string text;
  std::int64_t polygons = 0;
};

/// The shortest text that paints the same; with closing, one without hairlines. Nothing when that
/// is not shorter, and nothing is to be closed. `scale`: points on the page per unit outside of the
/// matrix.
std::optional<stretch_text> repair_stretch(const painted_mesh& painted, const stretch& where,
                                           const content_settings& settings, double scale,
                                           text_table& texts);

}  // namespace trellion::pdf
