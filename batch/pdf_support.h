#pragma once

namespace trellion::batch {

/// Whether this program was built with what repairs PDF.
#ifdef TRELLION_HAS_PDF
inline constexpr bool has_pdf = true;
#else
inline constexpr bool has_pdf = false;
#endif

}  // namespace trellion::batch
