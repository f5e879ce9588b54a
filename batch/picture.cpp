#include "picture.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <istream>
#include <limits>
#include <string>
#include <vector>

#include "files.h"

namespace trellion::batch {
namespace {

struct page_size {
  std::int64_t width;
  std::int64_t height;

  bool operator==(const page_size&) const = default;
};

class pixmap_reader {
 public:
  explicit pixmap_reader(const std::filesystem::path& path)
      : name_(path.filename()), file_(path, std::ios::binary) {
    if (!file_) throw run_error("cannot open '" + name_ + "'");
  }

  /// Reads the head of the next page; nothing at the end of the file.
  std::optional<page_size> next_page() {
    if (file_.peek() == std::istream::traits_type::eof()) return std::nullopt;
    std::string magic;
    file_ >> magic;
    const page_size size{number(), number()};
    const std::int64_t maximum = number();
    file_.get();
    constexpr std::int64_t max_extent = 1'000'000;
    const bool sound = file_ && magic == "P6" && maximum == 255 && size.width > 0 &&
                       size.width <= max_extent && size.height > 0 && size.height <= max_extent;
    if (!sound) fail();
    return size;
  }

  /// Reads a row into the buffer, which has its length.
  void read_row(std::vector<char>& row) {
    if (!file_.read(row.data(), static_cast<std::streamsize>(row.size()))) fail();
  }

 private:
  /// The next number of the head, comments left out.
  std::int64_t number() {
    while ((file_ >> std::ws).peek() == '#') {
      file_.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    std::int64_t value = 0;
    file_ >> value;
    return value;
  }
  [[noreturn]] void fail() const { throw run_error("'" + name_ + "' is no whole picture"); }

  std::string name_;
  std::ifstream file_;
};

/// For every pixel of a row whether it differs.
using row_marks = std::vector<bool>;

row_marks mark_differences(const std::vector<char>& a, const std::vector<char>& b, int tolerance) {
  row_marks marks(a.size() / 3);
  if (a == b) return marks;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const int distance = static_cast<unsigned char>(a[i]) - static_cast<unsigned char>(b[i]);
    if (std::abs(distance) > tolerance) marks[i / 3] = true;
  }
  return marks;
}

std::int64_t count_surrounded(const row_marks& above, const row_marks& row,
                              const row_marks& below) {
  std::int64_t count = 0;
  for (std::size_t x = 1; x + 1 < row.size(); ++x) {
    count += row[x] && row[x - 1] && row[x + 1] && above[x] && below[x] ? 1 : 0;
  }
  return count;
}

void compare_pages(pixmap_reader& a, pixmap_reader& b, const page_size& size, int tolerance,
                   picture_difference& sum) {
  const auto width = static_cast<std::size_t>(size.width);
  std::vector<char> row_of_a(3 * width);
  std::vector<char> row_of_b(3 * width);
  row_marks above(width);
  row_marks row(width);
  for (std::int64_t y = 0; y < size.height; ++y) {
    a.read_row(row_of_a);
    b.read_row(row_of_b);
    row_marks below = mark_differences(row_of_a, row_of_b, tolerance);
    sum.differing += std::count(below.begin(), below.end(), true);
    sum.surrounded += count_surrounded(above, row, below);
    above.swap(row);
    row.swap(below);
  }
  sum.pixels += size.width * size.height;
}

}  // namespace

std::optional<picture_difference> compare_pictures(const std::filesystem::path& a,
                                                   const std::filesystem::path& b, int tolerance) {
  pixmap_reader pages_of_a(a);
  pixmap_reader pages_of_b(b);
  picture_difference sum;
  while (true) {
    const std::optional<page_size> size = pages_of_a.next_page();
    if (pages_of_b.next_page() != size) return std::nullopt;
    if (!size) return sum;
    compare_pages(pages_of_a, pages_of_b, *size, tolerance, sum);
  }
}

}  // namespace trellion::batch
