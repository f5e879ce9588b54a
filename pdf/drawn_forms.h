#pragma once

#include <vector>

#include "pdf/page_content.h"

namespace trellion::pdf {

/// A form that is drawn, and nowhere so that its content could not be repaired.
struct drawn_form {
  QPDFObjectHandle stream;
  double scale = 1;  ///< points on the page per unit of its space, at most
};

/// The forms of which every use is known, and is opaque. What is drawn by anything but the contents
/// of pages and such forms is left out: appearances of annotations, patterns, glyphs, masks, and
/// what malformed contents may draw.
std::vector<drawn_form> forms_drawn(QPDF& document, std::vector<page_content>& pages);

}  // namespace trellion::pdf
