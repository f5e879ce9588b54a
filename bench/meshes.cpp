#include "meshes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace bench {
namespace {

/// The pitch must leave room to move the points of a grid by a fifth of it.
constexpr int smallest_pitch = 10;

double unit_interval(random_source& random) {
  return static_cast<double>(random.next() >> 11) / static_cast<double>(std::uint64_t{1} << 53);
}

}  // namespace

std::uint64_t random_source::next() {
  state_ += 0x9e3779b97f4a7c15U;
  std::uint64_t z = state_;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
  return z ^ (z >> 31);
}

cell_grid::cell_grid(std::size_t cells)
    : columns_(static_cast<std::size_t>(std::lround(std::sqrt(static_cast<double>(cells))))),
      rows_(std::max<std::size_t>(1, (cells + columns_ / 2) / columns_)),
      pitch_(std::max(smallest_pitch, extent / static_cast<int>(columns_))) {}

point cell_grid::corner(std::size_t column, std::size_t row) const {
  return {margin + static_cast<int>(column) * pitch_, margin + static_cast<int>(row) * pitch_};
}

point cell_grid::top_right() const {
  const point last = corner(columns_, rows_);
  return {last.x + margin, last.y + margin};
}

quad quad_mesh::polygon(std::size_t index) const {
  const std::size_t column = index % grid_.columns();
  const std::size_t row = index / grid_.columns();
  return {grid_.corner(column, row), grid_.corner(column + 1, row),
          grid_.corner(column + 1, row + 1), grid_.corner(column, row + 1)};
}

triangle_mesh::triangle_mesh(std::size_t polygons, std::uint64_t seed)
    : grid_(polygons / 2), seed_(seed) {}

triangle triangle_mesh::polygon(std::size_t index) const {
  const std::size_t column = index / 2 % grid_.columns();
  const std::size_t row = index / 2 / grid_.columns();
  const point low = moved_corner(column, row);
  const point high = moved_corner(column + 1, row + 1);
  if (index % 2 == 0) return {low, moved_corner(column + 1, row), high};
  return {low, high, moved_corner(column, row + 1)};
}

/// Moved by less than a quarter of the pitch either way, no corner crosses the diagonal of its
/// cell, so the triangles do not overlap.
point triangle_mesh::moved_corner(std::size_t column, std::size_t row) const {
  random_source random(seed_ ^ (column << 32) ^ row);
  const int reach = grid_.pitch() / 5;
  const point p = grid_.corner(column, row);
  const int x = p.x + random.between(-reach, reach);
  return {x, p.y + random.between(-reach, reach)};
}

smooth_field::smooth_field(std::uint64_t seed) {
  random_source random(seed);
  for (wave& w : waves_) {
    w.along_u = (2 * unit_interval(random) - 1) * 12;
    w.along_v = (2 * unit_interval(random) - 1) * 12;
    w.phase = unit_interval(random) * 2 * std::numbers::pi;
    w.height = 0.5 + unit_interval(random);
  }
}

double smooth_field::at(double u, double v) const {
  double sum = 0;
  for (const wave& w : waves_) sum += w.height * std::sin(w.along_u * u + w.along_v * v + w.phase);
  return sum;
}

std::vector<std::uint8_t> levels_of(const std::vector<double>& heights) {
  const auto [low, high] = std::minmax_element(heights.begin(), heights.end());
  const double step = (*high - *low) / level_count;
  std::vector<std::uint8_t> levels;
  levels.reserve(heights.size());
  for (const double height : heights) {
    const int level = static_cast<int>((height - *low) / step);
    levels.push_back(static_cast<std::uint8_t>(std::min(level, level_count - 1)));
  }
  return levels;
}

}  // namespace bench
