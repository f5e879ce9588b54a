#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
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

/// Reads raw portable pixmaps with parts from 0 to 255, one after the other, while they come in.
class ppm_reader {
 public:
  /// No picture may promise more than `max_pixels`; memory is taken only for what is there.
  ppm_reader(std::size_t n_pages, std::size_t max_pixels)
      : n_pages_(n_pages), max_pixels_(max_pixels) {}

  /// Takes the bytes that come next.
  void take(std::string_view bytes);
  /// All pages, when all bytes have been taken. Throws second_page when another one follows, and
  /// run_error when the bytes are anything else, or are cut short.
  std::vector<pixmap> pages();
  /// Whether a page has come in whole.
  [[nodiscard]] bool has_page() const { return pages_.size() > (missing_ > 0 ? 1U : 0U); }

 private:
  void take_pixels(std::string_view& bytes);
  void begin_page();

  std::size_t n_pages_;
  std::size_t max_pixels_;
  std::vector<pixmap> pages_;
  std::size_t missing_ = 0;           ///< bytes of the last page
  std::string pending_;               ///< the head of the next one
  std::optional<run_error> failure_;  ///< what comes after it is lost
};

/// Reads the one page of a pixmap. Throws as above.
pixmap read_ppm(std::string_view bytes, std::size_t max_pixels);

/// Reads a TIFF file whose pixels have three bytes. Throws run_error as above.
pixmap read_tiff(const std::filesystem::path& path, std::size_t max_pixels);

}  // namespace trellion::batch
