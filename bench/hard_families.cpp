// The families that are hard on a program that joins polygons: outlines that are joined with
// triangle after triangle, and an edge that belongs to all polygons.

#include <algorithm>
#include <vector>

#include "families.h"
#include "meshes.h"

namespace bench {
namespace {

constexpr int strip_height = extent / 10;
constexpr int base_height = strip_height / 4;
constexpr int tooth_height = strip_height / 2;
constexpr int rise = strip_height / 12;

/// A row of teeth from left to right, on a strip of the picture.
struct tooth_row {
  std::vector<point> peaks;
  std::vector<point> valleys;  ///< valleys[i] lies between peaks[i] and peaks[i + 1]
};

/// No three neighbouring peaks lie on a straight line: every other one is higher.
tooth_row make_tooth_row(std::size_t notches, int pitch, int bottom, random_source& random) {
  tooth_row row;
  row.peaks.reserve(notches + 1);
  row.valleys.reserve(notches);
  for (std::size_t i = 0; i <= notches; ++i) {
    const int x = margin + static_cast<int>(i) * pitch;
    const int peak = bottom + base_height + tooth_height + random.between(0, rise - 1);
    row.peaks.push_back({x, peak + (i % 2 == 0 ? 0 : rise)});
    if (i < notches) row.valleys.push_back({x + pitch / 2, bottom + base_height});
  }
  return row;
}

/// The strip's bottom edge, then the teeth from right to left.
std::vector<point> outline(const tooth_row& row, int bottom) {
  std::vector<point> ring{{row.peaks.front().x, bottom}, {row.peaks.back().x, bottom}};
  ring.push_back(row.peaks.back());
  for (std::size_t i = row.valleys.size(); i > 0; --i) {
    ring.push_back(row.valleys[i - 1]);
    ring.push_back(row.peaks[i - 1]);
  }
  return ring;
}

/// The distance between `count` things side by side: a multiple of four, so that it can be halved
/// twice.
int pitch_for(std::size_t count) {
  const int pitch = extent / static_cast<int>(std::min<std::size_t>(count, extent));
  return std::max(4, pitch / 4 * 4);
}

/// The point outside an edge of a zigzag line, so close that the triangle there touches no other.
point bump_on(point left, point right) {
  const int middle = (left.x + right.x) / 2;
  const int offset = (right.x - left.x) / 4;
  const bool rising = left.y < right.y;
  return {rising ? middle - offset : middle + offset, (left.y + right.y) / 2};
}

}  // namespace

/// One outline for a thousand polygons, ten at most. A notch's triangle shares two edges with the
/// outline, so that the notch's deepest point goes when they are joined.
void write_gear(eps_writer& out, const request& what) {
  const std::size_t outlines = std::clamp<std::size_t>(what.polygons / 1000, 1, 10);
  const std::size_t notches = what.polygons / outlines - 1;
  const int pitch = pitch_for(notches);
  random_source random(what.seed);

  out.begin(what.title, {2 * margin + static_cast<int>(notches) * pitch,
                         2 * margin + static_cast<int>(outlines) * strip_height});
  out.colour(only_level);
  for (std::size_t k = 0; k < outlines; ++k) {
    const int bottom = margin + static_cast<int>(k) * strip_height;
    const tooth_row row = make_tooth_row(notches, pitch, bottom, random);
    out.polygon(outline(row, bottom));
    for (std::size_t i = 0; i < notches; ++i) {
      out.polygon(triangle{row.valleys[i], row.peaks[i + 1], row.peaks[i]});
    }
  }
  out.end();
}

/// The edges at the bottom and at both sides of the outline carry nothing.
void write_bumps(eps_writer& out, const request& what) {
  const std::size_t notches = (what.polygons - 1) / 2;
  const int pitch = 2 * pitch_for(2 * notches);
  random_source random(what.seed);

  out.begin(what.title,
            {2 * margin + static_cast<int>(notches) * pitch, 2 * margin + strip_height});
  out.colour(only_level);
  const tooth_row row = make_tooth_row(notches, pitch, margin, random);
  out.polygon(outline(row, margin));
  for (std::size_t i = 0; i < notches; ++i) {
    const point peak = row.peaks[i];
    const point valley = row.valleys[i];
    const point next_peak = row.peaks[i + 1];
    out.polygon(triangle{peak, valley, bump_on(peak, valley)});
    out.polygon(triangle{valley, next_peak, bump_on(valley, next_peak)});
  }
  out.end();
}

/// The edge stands upright in the middle; the third points stand to its left and right, all at
/// different heights between its ends, in random order.
void write_book(eps_writer& out, const request& what) {
  const std::size_t pages = what.polygons;
  const auto half = static_cast<int>((pages + 1) / 2);
  const int step = std::max(1, extent / (half + 1));
  const int middle = margin + extent / 2;
  const point low{middle, margin};
  const point high{middle, margin + (half + 1) * step};

  std::vector<triangle> triangles;
  triangles.reserve(pages);
  for (std::size_t i = 0; i < pages; ++i) {
    const int y = margin + (1 + static_cast<int>(i / 2)) * step;
    if (i % 2 == 0) triangles.push_back({low, high, {margin, y}});
    if (i % 2 == 1) triangles.push_back({high, low, {margin + extent, y}});
  }
  random_source random(what.seed);
  shuffle(triangles, random);

  out.begin(what.title, {2 * margin + extent, high.y + margin});
  out.colour(only_level);
  for (const triangle& t : triangles) out.polygon(t);
  out.end();
}

}  // namespace bench
