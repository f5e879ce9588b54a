#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "batch/drawing.h"
#include "batch/eps_page.h"

namespace trellion::batch {

/// A figure to repair.
struct figure {
  std::filesystem::path file;
  std::uint64_t n_bytes = 0;
  mode_t mode = 0;
  std::filesystem::file_time_type written;
  file_kind kind{};
  eps_page page;
  bool is_one_bitmap = false;  ///< by pdftops, of a page with something transparent
  bool is_marked = false;      ///< as a result of ours
};

/// Looks at a file. Throws run_error when it is no regular file that can be read.
figure look_at(const std::filesystem::path& file);

/// Whether the file is still the one that was looked at.
bool is_unchanged(const figure& looked_at);

/// Writes the PostScript of a file, after the head that makes its page the frame, to another.
/// Throws run_error.
void write_framed(const std::filesystem::path& source, const page_frame& frame,
                  const std::filesystem::path& framed);

/// Writes the figure, which has a box, by way of PDF to `eps`: it draws the same with other
/// operators. The PDF file stays, and what is made on the way stays beside it. Returns whether the
/// figure is known to draw a page. Throws dead_end when it cannot be done or what came of it is not
/// whole, and run_error.
bool take_detour(const figure& original, const drawing_programs& programs,
                 const std::filesystem::path& pdf, const std::filesystem::path& eps);

/// The way back alone, from a repaired PDF file of the detour, with the comment of a result. Throws
/// as above.
void return_from_detour(const figure& original, const drawing_programs& programs,
                        const std::filesystem::path& pdf, const std::filesystem::path& eps);

}  // namespace trellion::batch
