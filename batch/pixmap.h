#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "files.h"

namespace trellion::batch {

/// A picture in memory: rows from top to bottom, three bytes (red, green, blue) for every pixel.
struct pixmap {
  std::size_t width = 0;
  std::size_t height = 0;
  std::vector<std::uint8_t> rgb;  ///< 3 * width * height

  [[nodiscard]] const std::uint8_t* row(std::size_t y) const { return rgb.data() + 3 * width * y; }
};

/// The drawing has a second page.
class second_page : public run_error {
 public:
  using run_error::run_error;
};

/// Reads the one page of a raw portable pixmap with parts from 0 to 255. Throws second_page when
/// another one follows, and run_error when the bytes are anything else, are cut short, or promise
/// more than `max_pixels`; memory is taken only for what is there.
pixmap read_ppm(std::string_view bytes, std::size_t max_pixels);

/// Reads a TIFF file whose pixels have three bytes. Throws run_error as above.
pixmap read_tiff(const std::filesystem::path& path, std::size_t max_pixels);

}  // namespace trellion::batch
