#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace trellion::batch {

/// Where two pictures differ.
struct picture_difference {
  std::int64_t pixels = 0;      ///< of one picture
  std::int64_t differing = 0;   ///< those whose colours differ
  std::int64_t surrounded = 0;  ///< those of them whose four neighbours all differ, too
};

/// Compares two raw portable pixmaps (of one page or more each), a few rows at a time. Colours
/// differ when one of their three parts, from 0 to 255, does by more than the tolerance. Returns
/// nothing when the pictures differ in their sizes or numbers. Throws run_error when a file cannot
/// be read or holds something else.
std::optional<picture_difference> compare_pictures(const std::filesystem::path& a,
                                                   const std::filesystem::path& b, int tolerance);

}  // namespace trellion::batch
