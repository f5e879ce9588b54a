#pragma once

#include <filesystem>

namespace trellion::batch {

/// How far a drawing is moved, in points to the right and up.
struct shift {
  double right = 0;
  double up = 0;

  bool operator==(const shift& other) const { return right == other.right && up == other.up; }
};

/// Writes a PDF file whose pages draw what those of another one do, moved. Throws run_error, also
/// when the program was built without PDF.
void write_moved(const std::filesystem::path& source, const std::filesystem::path& moved,
                 const shift& by);

}  // namespace trellion::batch
