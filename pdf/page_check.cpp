#include "pdf/page_check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

#include "files.h"
#include "pdf/changed_pages.h"
#include "pdf/document.h"

namespace trellion::pdf {
namespace {

namespace fs = std::filesystem;

/// A page of A0 at the usual resolution is less than half as large again.
constexpr std::size_t max_pixels = 100'000'000;

double resolution_for(const page_size& size) {
  constexpr double usual = 288;
  constexpr double points_per_inch = 72;
  // Sides are rounded up.
  constexpr double most = 0.98 * static_cast<double>(max_pixels);
  const double square_inches =
      std::max(1.0, size.width) * std::max(1.0, size.height) / (points_per_inch * points_per_inch);
  return std::min(usual, std::sqrt(most / square_inches));
}

/// Which pixels of a row differ, with a column before and one after it, in which all do.
std::vector<std::uint8_t> differing(const batch::pixmap& a, const batch::pixmap& b, std::size_t y) {
  std::vector<std::uint8_t> result(a.width + 2, 1);
  for (std::size_t x = 0; x < a.width; ++x) {
    result[x + 1] = std::memcmp(a.row(y) + 3 * x, b.row(y) + 3 * x, 3) != 0 ? 1 : 0;
  }
  return result;
}

class page_drawing {
 public:
  page_drawing(const std::string& pdftocairo, const fs::path& directory,
               const batch::process_runner& runner)
      : pdftocairo_(pdftocairo), directory_(directory), runner_(runner) {}

  [[nodiscard]] batch::pixmap draw(const fs::path& document, std::size_t page, double dpi) const;

 private:
  const std::string& pdftocairo_;
  const fs::path& directory_;
  const batch::process_runner& runner_;
};

batch::pixmap page_drawing::draw(const fs::path& document, std::size_t page, double dpi) const {
  std::array<char, 32> resolution{};
  std::snprintf(resolution.data(), resolution.size(), "%.6g", dpi);
  const std::string number = std::to_string(page);
  const fs::path root = directory_ / "drawn";
  // To pack a drawing would take most of the time.
  const batch::child_result result =
      runner_.run({pdftocairo_, "-tiff", "-tiffcompression", "none", "-singlefile", "-f", number,
                   "-l", number, "-r", resolution.data(), "-antialias", "none",
                   fs::absolute(document).string(), root.string()},
                  directory_, [](std::string_view /*output*/) { return true; });
  const std::string which = "page " + number + " cannot be drawn: ";
  if (!result.succeeded()) throw run_error(which + result.reason());
  try {
    const fs::path drawing = root.string() + ".tif";
    batch::pixmap picture = batch::read_tiff(drawing, max_pixels);
    fs::remove(drawing);
    return picture;
  } catch (const run_error& error) {
    throw run_error(which + error.what());
  }
}

}  // namespace

bool differ_beyond_edges(const batch::pixmap& a, const batch::pixmap& b) {
  // Beyond the border there is nothing that could be the same.
  const std::vector<std::uint8_t> outside(a.width + 2, 1);
  std::array<std::vector<std::uint8_t>, 3> rows = {outside, outside, outside};
  if (a.height > 0) rows[2] = differing(a, b, 0);
  for (std::size_t y = 0; y < a.height; ++y) {
    std::rotate(rows.begin(), rows.begin() + 1, rows.end());
    rows[2] = y + 1 < a.height ? differing(a, b, y + 1) : outside;
    std::uint8_t left = 0;
    std::uint8_t middle = rows[0][0] & rows[1][0] & rows[2][0];
    for (std::size_t x = 1; x < a.width + 2; ++x) {
      const std::uint8_t right = rows[0][x] & rows[1][x] & rows[2][x];
      if ((left & middle & right) != 0) return true;
      left = middle;
      middle = right;
    }
  }
  return false;
}

void check_pages(const fs::path& before, const fs::path& after, const std::string& pdftocairo,
                 const fs::path& directory, const batch::process_runner& runner) {
  const page_drawing drawing(pdftocairo, directory, runner);
  const std::vector<page_size> sizes = page_sizes(before);
  const std::vector<numbered_page> changed = changed_pages(before, after);
  if (changed.empty()) throw run_error("what changed cannot be found");
  for (const numbered_page& page : changed) {
    const auto number = static_cast<std::size_t>(page.number);
    const double dpi = resolution_for(sizes.at(number - 1));
    const batch::pixmap old_page = drawing.draw(before, number, dpi);
    const batch::pixmap new_page = drawing.draw(after, number, dpi);
    const bool fits = old_page.width == new_page.width && old_page.height == new_page.height;
    if (!fits || differ_beyond_edges(old_page, new_page)) {
      throw run_error("page " + std::to_string(number) + " would look different");
    }
  }
}

}  // namespace trellion::pdf
