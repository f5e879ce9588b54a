#pragma once

#include <string>
#include <string_view>

#include "batch/eps_page.h"

namespace trellion::batch {

/// Whether a file that pdftops has written goes on to its last line. Its exit status does not say:
/// it is 0 on a full disk, too.
bool is_whole(std::string_view eps);

/// Whether pdftops has drawn the whole page itself and written the bitmap, which it does where
/// something on the page is transparent.
bool is_one_bitmap(std::string_view eps);

/// Whether a file that pdftops has written spells out calibrated colours, which it does with tables
/// of 200 kB each, and none for print, which must stay what they are.
bool has_calibrated_colours_only(std::string_view eps);

/// Gives a file that pdftops has written the title, the boxes and the origin of the file that it
/// was made from by way of a PDF with a page of just the frame. What lay outside of the frame is
/// lost, which a document shows that does not cut its figures: a margin saves it. `original` has a
/// box. Throws run_error when the page has another size or is not to be found.
std::string with_page_of(std::string_view detoured, const eps_page& original,
                         const page_frame& frame);

}  // namespace trellion::batch
