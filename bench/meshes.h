#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "eps_writer.h"

namespace bench {

/// The same numbers for the same seed on every machine.
class random_source {
 public:
  explicit random_source(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next();
  /// A number from 0 to `end` - 1.
  std::size_t below(std::size_t end) { return static_cast<std::size_t>(next() % end); }
  /// A number from `first` to `last`, both included.
  int between(int first, int last) {
    return first + static_cast<int>(below(static_cast<std::size_t>(last - first) + 1));
  }

 private:
  std::uint64_t state_;
};

/// Puts values in random order.
template <class Value>
void shuffle(std::vector<Value>& values, random_source& random) {
  for (std::size_t i = values.size(); i > 1; --i) std::swap(values[i - 1], values[random.below(i)]);
}

/// The frame that is left free around every picture.
inline constexpr int margin = 1000;
/// How wide and high a picture is drawn when it can be: that of a figure on a page.
inline constexpr int extent = 60'000;
/// The colour of pictures that have one.
inline constexpr int only_level = 5;

/// A grid of about `cells` cells, as many columns as rows.
class cell_grid {
 public:
  explicit cell_grid(std::size_t cells);

  [[nodiscard]] std::size_t columns() const { return columns_; }
  [[nodiscard]] std::size_t cells() const { return columns_ * rows_; }
  [[nodiscard]] int pitch() const { return pitch_; }
  [[nodiscard]] point corner(std::size_t column, std::size_t row) const;
  /// The corner of the picture, margin included.
  [[nodiscard]] point top_right() const;

 private:
  std::size_t columns_;
  std::size_t rows_;
  int pitch_;
};

using quad = std::array<point, 4>;
using triangle = std::array<point, 3>;

/// The cells of a grid, row by row.
class quad_mesh {
 public:
  explicit quad_mesh(std::size_t polygons) : grid_(polygons) {}

  [[nodiscard]] std::size_t size() const { return grid_.cells(); }
  [[nodiscard]] quad polygon(std::size_t index) const;
  [[nodiscard]] const cell_grid& grid() const { return grid_; }

 private:
  cell_grid grid_;
};

/// Two triangles in each cell of a grid whose points have been moved a little.
class triangle_mesh {
 public:
  triangle_mesh(std::size_t polygons, std::uint64_t seed);

  [[nodiscard]] std::size_t size() const { return 2 * grid_.cells(); }
  [[nodiscard]] triangle polygon(std::size_t index) const;
  [[nodiscard]] const cell_grid& grid() const { return grid_; }

 private:
  [[nodiscard]] point moved_corner(std::size_t column, std::size_t row) const;

  cell_grid grid_;
  std::uint64_t seed_;
};

/// A smooth field over the picture.
class smooth_field {
 public:
  explicit smooth_field(std::uint64_t seed);
  /// The height at a place; u and v run from 0 to 1.
  [[nodiscard]] double at(double u, double v) const;

 private:
  struct wave {
    double along_u;
    double along_v;
    double phase;
    double height;
  };
  std::array<wave, 6> waves_{};
};

/// The levels, from 0 to level_count - 1, of heights: equal steps from the lowest to the highest.
std::vector<std::uint8_t> levels_of(const std::vector<double>& heights);

/// The level of each polygon of a mesh, taken at the mean of its vertices.
template <class Mesh>
std::vector<std::uint8_t> field_levels(const Mesh& mesh, std::uint64_t seed) {
  const smooth_field field(seed);
  const point end = mesh.grid().top_right();
  std::vector<double> heights;
  heights.reserve(mesh.size());
  for (std::size_t i = 0; i < mesh.size(); ++i) {
    const auto vertices = mesh.polygon(i);
    double x = 0;
    double y = 0;
    for (const point p : vertices) {
      x += p.x;
      y += p.y;
    }
    const auto n = static_cast<double>(vertices.size());
    heights.push_back(field.at(x / n / end.x, y / n / end.y));
  }
  return levels_of(heights);
}

}  // namespace bench
