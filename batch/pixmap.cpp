#include "batch/pixmap.h"

#include <png.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string>

namespace trellion::batch {
namespace {

constexpr std::size_t max_extent = std::size_t{1} << 20;

void check_size(std::size_t width, std::size_t height, std::size_t max_pixels) {
  if (width == 0 || height == 0) throw run_error("the picture has no pixels");
  if (width > max_extent || height > max_extent || width > max_pixels / height) {
    throw run_error("the picture is too large");
  }
}

/// The head of a pixmap, word by word. It is short: what goes on and on is none.
class ppm_head {
 public:
  explicit ppm_head(std::string_view bytes) : rest_(bytes.substr(0, max_size)) {}

  /// The next word, comments left out; empty at the end.
  std::string_view word() {
    skip_blanks();
    while (rest_.starts_with('#')) {
      drop(rest_.find('\n'));
      skip_blanks();
    }
    const std::string_view result = rest_.substr(0, rest_.find_first_of(blanks));
    drop(result.size());
    return result.size() <= max_word ? result : "";
  }
  /// The number that comes next; 0 when it is none.
  std::size_t number() {
    const std::string_view digits = word();
    std::size_t value = 0;
    const char* const end = digits.data() + digits.size();
    const std::from_chars_result result = std::from_chars(digits.data(), end, value);
    return result.ec == std::errc() && result.ptr == end ? value : 0;
  }
  [[nodiscard]] std::size_t n_read() const { return n_read_; }

 private:
  static constexpr std::size_t max_size = 4096;
  static constexpr std::size_t max_word = 10;
  static constexpr std::string_view blanks = " \t\n\v\f\r";

  void skip_blanks() { drop(rest_.find_first_not_of(blanks)); }
  void drop(std::size_t count) {
    count = std::min(count, rest_.size());
    rest_.remove_prefix(count);
    n_read_ += count;
  }

  std::string_view rest_;
  std::size_t n_read_ = 0;
};

/// What libpng holds on to while it reads.
struct png_reader {
  png_reader() { image.version = PNG_IMAGE_VERSION; }
  ~png_reader() { png_image_free(&image); }
  png_reader(const png_reader&) = delete;
  png_reader& operator=(const png_reader&) = delete;

  [[nodiscard]] run_error failure() const {
    return run_error(std::string("no whole picture: ") + std::data(image.message));
  }

  png_image image{};
};

}  // namespace

pixmap read_ppm(std::string_view bytes, std::size_t max_pixels) {
  constexpr std::string_view magic = "P6";
  ppm_head head(bytes);
  if (head.word() != magic) throw run_error("no portable pixmap");
  pixmap result;
  result.width = head.number();
  result.height = head.number();
  if (head.number() != 255) throw run_error("no portable pixmap of 255 levels");
  check_size(result.width, result.height, max_pixels);

  const std::size_t size = 3 * result.width * result.height;
  const std::size_t start = head.n_read() + 1;  // a single blank ends the head
  if (bytes.size() < start || bytes.size() - start < size) {
    throw run_error("the picture is cut short");
  }
  const std::string_view rest = bytes.substr(start + size);
  if (rest.starts_with(magic)) throw second_page("more than one page");
  if (!rest.empty()) throw run_error("there is more than a picture");
  const std::string_view pixels = bytes.substr(start, size);
  result.rgb.assign(pixels.begin(), pixels.end());
  return result;
}

pixmap read_png(std::string_view bytes, std::size_t max_pixels) {
  png_reader reader;
  if (png_image_begin_read_from_memory(&reader.image, bytes.data(), bytes.size()) == 0) {
    throw reader.failure();
  }
  check_size(reader.image.width, reader.image.height, max_pixels);
  reader.image.format = PNG_FORMAT_RGB;
  pixmap result{reader.image.width, reader.image.height, {}};
  result.rgb.resize(3 * result.width * result.height);
  const png_color white{255, 255, 255};
  if (png_image_finish_read(&reader.image, &white, result.rgb.data(), 0, nullptr) == 0) {
    throw reader.failure();
  }
  return result;
}

}  // namespace trellion::batch
