#include "batch/pixmap.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <new>
#include <utility>

namespace trellion::batch {
namespace {

constexpr std::size_t max_extent = std::size_t{1} << 20;
constexpr std::string_view ppm_magic = "P6";
constexpr const char* cut_short = "the picture is cut short";

void check_size(std::size_t width, std::size_t height, std::size_t max_pixels) {
  if (width == 0 || height == 0) throw run_error("the picture has no pixels");
  if (width > max_extent || height > max_extent || width > max_pixels / height) {
    throw run_error("the picture is too large");
  }
}

/// The head of a pixmap, word by word. It is short: what goes on and on is none.
class ppm_head {
 public:
  static constexpr std::size_t max_size = 4096;

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

/// A file that libtiff reads. What is wrong with it is kept rather than told on the console.
class tiff_file {
 public:
  explicit tiff_file(const std::filesystem::path& path) {
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
        TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
    if (!options) throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep_error, &error_);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), drop_warning, nullptr);
    file_.reset(TIFFOpenExt(path.c_str(), "r", options.get()));
    if (!file_) throw failure();
  }
  tiff_file(const tiff_file&) = delete;
  tiff_file& operator=(const tiff_file&) = delete;

  /// The number of a field, or what stands for it where it is not there.
  template <class Number>
  [[nodiscard]] Number field(std::uint32_t tag) const {
    Number value = 0;
    TIFFGetFieldDefaulted(file_.get(), tag, &value);
    return value;
  }
  /// Whether the pixels come row by row, in three bytes each.
  [[nodiscard]] bool is_plain() const {
    return TIFFIsTiled(file_.get()) == 0 &&
           field<std::uint16_t>(TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_RGB &&
           field<std::uint16_t>(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_CONTIG &&
           field<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL) == 3 &&
           field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE) == 8;
  }
  /// Appends what the pixels of a strip are; `strip` is where they pass through.
  void append_strip(std::uint32_t number, std::vector<std::uint8_t>& strip,
                    std::vector<std::uint8_t>& rgb) {
    const tmsize_t n_bytes = TIFFReadEncodedStrip(file_.get(), number, strip.data(),
                                                  static_cast<tmsize_t>(strip.size()));
    if (n_bytes < 0) throw failure();
    rgb.insert(rgb.end(), strip.begin(), strip.begin() + n_bytes);
  }
  [[nodiscard]] std::uint32_t n_strips() const { return TIFFNumberOfStrips(file_.get()); }
  [[nodiscard]] std::size_t strip_size() const {
    return static_cast<std::size_t>(TIFFStripSize(file_.get()));
  }

 private:
  static int keep_error(TIFF* /*file*/, void* kept, const char* /*part*/, const char* format,
                        std::va_list values) {
    std::array<char, 256> text{};
    std::vsnprintf(text.data(), text.size(), format, values);
    *static_cast<std::string*>(kept) = text.data();
    return 1;
  }
  static int drop_warning(TIFF* /*file*/, void* /*kept*/, const char* /*part*/,
                          const char* /*format*/, std::va_list /*values*/) {
    return 1;
  }
  [[nodiscard]] run_error failure() const { return run_error("no whole picture: " + error_); }

  std::string error_;
  std::unique_ptr<TIFF, decltype(&TIFFClose)> file_{nullptr, TIFFClose};
};

void append(std::string_view bytes, std::vector<std::uint8_t>& rgb) {
  const auto* const begin = reinterpret_cast<const std::uint8_t*>(bytes.data());
  rgb.insert(rgb.end(), begin, begin + bytes.size());
}

}  // namespace

void ppm_reader::take(std::string_view bytes) {
  take_pixels(bytes);
  if (failure_) return;
  pending_ += bytes;
  while (missing_ == 0 && pages_.size() < n_pages_ && pending_.size() >= ppm_head::max_size) {
    begin_page();
    if (failure_) return;
  }
  // Of a page that nobody has asked for the head is enough.
  if (pages_.size() == n_pages_) pending_.resize(std::min(pending_.size(), ppm_head::max_size));
}

void ppm_reader::take_pixels(std::string_view& bytes) {
  const std::string_view pixels = bytes.substr(0, missing_);
  if (pixels.empty()) return;
  append(pixels, pages_.back().rgb);
  missing_ -= pixels.size();
  bytes.remove_prefix(pixels.size());
}

void ppm_reader::begin_page() try {
  ppm_head head(pending_);
  if (head.word() != ppm_magic) throw run_error("no portable pixmap");
  pixmap page;
  page.width = head.number();
  page.height = head.number();
  if (head.number() != 255) throw run_error("no portable pixmap of 255 levels");
  check_size(page.width, page.height, max_pixels_);
  missing_ = 3 * page.width * page.height;
  page.rgb.reserve(missing_);  // the system gives what is written to
  pages_.push_back(std::move(page));
  // A single blank ends the head.
  std::string_view rest =
      std::string_view(pending_).substr(std::min(head.n_read() + 1, pending_.size()));
  take_pixels(rest);
  pending_ = std::string(rest);
} catch (const run_error& error) {
  failure_ = error;
}

std::vector<pixmap> ppm_reader::pages() {
  while (!failure_ && missing_ == 0 && pages_.size() < n_pages_) begin_page();
  if (failure_) throw run_error(*failure_);
  if (missing_ > 0) throw run_error(cut_short);
  if (pending_.starts_with(ppm_magic)) throw second_page("more than one page");
  if (!pending_.empty()) throw run_error("there is more than a picture");
  return std::move(pages_);
}

pixmap read_ppm(std::string_view bytes, std::size_t max_pixels) {
  ppm_reader reader(1, max_pixels);
  reader.take(bytes);
  return std::move(reader.pages().front());
}

pixmap read_tiff(const std::filesystem::path& path, std::size_t max_pixels) {
  tiff_file file(path);
  pixmap result;
  result.width = file.field<std::uint32_t>(TIFFTAG_IMAGEWIDTH);
  result.height = file.field<std::uint32_t>(TIFFTAG_IMAGELENGTH);
  check_size(result.width, result.height, max_pixels);
  if (!file.is_plain()) throw run_error("no TIFF file of three bytes a pixel");

  const std::size_t size = 3 * result.width * result.height;
  std::vector<std::uint8_t> strip(std::min(file.strip_size(), size));
  result.rgb.reserve(size);
  for (std::uint32_t n = 0; n < file.n_strips(); ++n) file.append_strip(n, strip, result.rgb);
  if (result.rgb.size() != size) throw run_error(cut_short);
  return result;
}

}  // namespace trellion::batch
