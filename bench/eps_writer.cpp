#include "eps_writer.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <stdexcept>
#include <system_error>

namespace bench {
namespace {

constexpr std::size_t buffer_capacity = std::size_t{1} << 18;
constexpr int largest_number = 9'999'999;  // 99999.99, eight characters
constexpr int hundred = 100;

int rounded_up(int hundredths) { return (hundredths + hundred - 1) / hundred; }

void define(std::string_view name, std::string_view meaning, eps_writer& out) {
  if (name == meaning) return;
  out.put('/').put(name).put(" {").put(meaning).put("} bind def\n");
}

}  // namespace

void eps_writer::begin(std::string_view title, point top_right) {
  if (top_right.x > largest_number || top_right.y > largest_number) {
    throw std::range_error("the picture gets too large for coordinates of eight characters");
  }
  put("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 ");
  count(static_cast<std::size_t>(rounded_up(top_right.x))).put(' ');
  count(static_cast<std::size_t>(rounded_up(top_right.y))).put('\n');
  put("%%Title: ").put(title).put("\n%%EndComments\n");
  define(names_.moveto, long_names.moveto, *this);
  define(names_.lineto, long_names.lineto, *this);
  define(names_.closepath, long_names.closepath, *this);
  define(names_.fill, long_names.fill, *this);
}

void eps_writer::colour(int level) {
  // From dark blue to light yellow.
  number(10 + level * 80 / level_count).put(' ');
  number(15 + level * 72 / level_count).put(' ');
  number(55 - level * 20 / level_count).put(" setrgbcolor\n");
}

void eps_writer::polygon(std::span<const point> vertices, std::string_view moveto) {
  vertex(vertices.front(), moveto);
  for (const point p : vertices.subspan(1)) vertex(p, names_.lineto);
  put(names_.closepath).put(' ').put(names_.fill).put('\n');
}

void eps_writer::end() {
  put("showpage\n%%EOF\n");
  flush();
}

eps_writer& eps_writer::put(std::string_view text) {
  buffer_ += text;
  if (buffer_.size() >= buffer_capacity) flush();
  return *this;
}

eps_writer& eps_writer::put(char c) { return put(std::string_view(&c, 1)); }

eps_writer& eps_writer::number(int hundredths) {
  std::array<char, 16> text{};
  char* begin = text.data();
  if (hundredths < 0) {
    *begin++ = '-';
    hundredths = -hundredths;
  }
  char* end = std::to_chars(begin, text.data() + text.size(), hundredths / hundred).ptr;
  *end++ = '.';
  *end++ = static_cast<char>('0' + hundredths % hundred / 10);
  *end++ = static_cast<char>('0' + hundredths % 10);
  return put(std::string_view(text.data(), static_cast<std::size_t>(end - text.data())));
}

eps_writer& eps_writer::count(std::size_t value) {
  std::array<char, 24> text{};
  const char* const end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  return put(std::string_view(text.data(), static_cast<std::size_t>(end - text.data())));
}

void eps_writer::vertex(point p, std::string_view name) {
  number(p.x).put(' ').number(p.y).put(' ').put(name).put(' ');
}

void eps_writer::flush() {
  if (file_ != nullptr && std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size()) {
    throw std::system_error(errno, std::generic_category(), "cannot write");
  }
  flushed_ += buffer_.size();
  buffer_.clear();
}

}  // namespace bench
