#pragma once

#include <filesystem>
#include <string>

#include "batch/pixmap.h"
#include "batch/process.h"

namespace trellion::pdf {

/// Whether two pictures of one size differ in a pixel and in all that touch it. Where an edge is
/// rounded to the next pixel they do not: it shows in a line of single pixels.
bool differ_beyond_edges(const trellion::batch::pixmap& a, const trellion::batch::pixmap& b);

/// Has poppler draw the pages of two documents that may differ, each pixel as what is at its
/// centre, and compares them. Throws run_error, which names the page, when one looks different or
/// cannot be drawn, and when no page can tell two documents apart. `directory` is where the program
/// works.
void check_pages(const std::filesystem::path& before, const std::filesystem::path& after,
                 const std::string& pdftocairo, const std::filesystem::path& directory,
                 const trellion::batch::process_runner& runner);

}  // namespace trellion::pdf
