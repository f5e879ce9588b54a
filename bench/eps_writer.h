#pragma once

#include <cstddef>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

namespace bench {

/// A place in the picture, in hundredths of a PostScript unit. Neighbours that are computed from
/// the same integers get the same texts.
struct point {
  int x = 0;
  int y = 0;
};

/// The names that draw a polygon.
struct operator_names {
  std::string_view moveto;
  std::string_view lineto;
  std::string_view closepath;
  std::string_view fill;
};
inline constexpr operator_names short_names{"m", "l", "h", "f"};
inline constexpr operator_names long_names{"moveto", "lineto", "closepath", "fill"};

/// Writes an EPS file, or only counts its bytes when there is no file. A failure to write is
/// thrown as std::system_error.
class eps_writer {
 public:
  eps_writer(std::FILE* file, const operator_names& names) : file_(file), names_(names) {}

  /// The header and the operators' definitions, for a picture from the origin to `top_right`.
  /// Throws std::range_error when a coordinate of it would need more than eight characters.
  void begin(std::string_view title, point top_right);
  /// The colour of one of `level_count` levels, which the next polygons have.
  void colour(int level);
  /// A polygon on a line of its own.
  void polygon(std::span<const point> vertices) { polygon(vertices, names_.moveto); }
  /// The same with another name for moveto.
  void polygon(std::span<const point> vertices, std::string_view moveto);
  /// The end of the file; hands everything over.
  void end();

  eps_writer& put(std::string_view text);
  eps_writer& put(char c);
  /// The number with its two decimals.
  eps_writer& number(int hundredths);
  /// The number of a count, without decimals.
  eps_writer& count(std::size_t value);

  [[nodiscard]] const operator_names& names() const { return names_; }
  [[nodiscard]] std::size_t bytes_written() const { return flushed_ + buffer_.size(); }

 private:
  void vertex(point p, std::string_view name);
  void flush();

  std::FILE* file_;
  operator_names names_;
  std::string buffer_;
  std::size_t flushed_ = 0;
};

inline constexpr int level_count = 12;

}  // namespace bench
