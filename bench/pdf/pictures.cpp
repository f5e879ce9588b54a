// pictures hairlines SMOOTH SHARP: prints how many pixels of a drawing with anti-aliasing are
// hairlines, judged as trellion-batch does by the same page without.
// pictures surrounded A B: prints how many pixels differ together with all eight around them.
// The drawings are TIFF or raw PPM.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "batch/hairlines.h"
#include "batch/pixmap.h"

namespace {

using trellion::run_error;
using trellion::batch::pixmap;

constexpr std::size_t max_pixels = 200'000'000;

pixmap read(const char* name) {
  std::ifstream file(name, std::ios::binary);
  if (!file) throw run_error(std::string("cannot open ") + name);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  return bytes.starts_with("P6") ? trellion::batch::read_ppm(bytes, max_pixels)
                                 : trellion::batch::read_tiff(name, max_pixels);
}

/// Of every pixel whether it differs. Throws run_error when the sizes do.
std::vector<bool> differing(const pixmap& a, const pixmap& b) {
  if (a.width != b.width || a.height != b.height) {
    throw run_error("the pictures differ in their sizes");
  }
  std::vector<bool> result(a.width * a.height);
  for (std::size_t i = 0; i < result.size(); ++i) {
    result[i] = !std::equal(&a.rgb[3 * i], &a.rgb[3 * i] + 3, &b.rgb[3 * i]);
  }
  return result;
}

std::int64_t surrounded_pixels(const pixmap& a, const pixmap& b) {
  const std::vector<bool> differs = differing(a, b);
  std::int64_t count = 0;
  for (std::size_t y = 1; y + 1 < a.height; ++y) {
    std::size_t run = 0;  // columns up to here that differ in all three rows
    for (std::size_t x = 0; x < a.width; ++x) {
      const std::size_t i = y * a.width + x;
      run = differs[i - a.width] && differs[i] && differs[i + a.width] ? run + 1 : 0;
      count += run >= 3 ? 1 : 0;
    }
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view what = argc == 4 ? argv[1] : "";
  if (what != "hairlines" && what != "surrounded") {
    std::fputs("usage: pictures hairlines|surrounded A B\n", stderr);
    return 2;
  }
  try {
    const pixmap a = read(argv[2]);
    const pixmap b = read(argv[3]);
    const std::int64_t count =
        what == "hairlines" ? trellion::batch::hairline_pixels(a, b) : surrounded_pixels(a, b);
    std::printf("%lld\n", static_cast<long long>(count));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "pictures: %s\n", error.what());
    return 1;
  }
}
