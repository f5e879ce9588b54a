#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace trellion::pdf {

/// A page of a document: its number, from 1 on, and the size of its media box in points.
struct numbered_page {
  std::int64_t number = 0;
  double width = 0;
  double height = 0;

  bool operator==(const numbered_page& other) const {
    return number == other.number && width == other.width && height == other.height;
  }
};

/// The pages that may look different in two versions of a document: those where anything that they
/// are drawn with, be it a font, is not the same byte for byte. Throws run_error when one of them
/// cannot be read or they differ in their pages.
std::vector<numbered_page> changed_pages(const std::filesystem::path& before,
                                         const std::filesystem::path& after);

}  // namespace trellion::pdf
