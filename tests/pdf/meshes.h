#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

#include "pdf/batches.h"
#include "pdf/mesh.h"
#include "pdf/outlines.h"

namespace trellion::pdf::testing {

inline void add(mesh& to, std::uint32_t paint, const std::vector<place>& outline) {
  to.add(paint, traits_of(outline), outline);
}

inline void add_square(mesh& to, std::uint32_t paint, std::int64_t x, std::int64_t y,
                       std::int64_t size = 1) {
  add(to, paint, {{x, y}, {x + size, y}, {x + size, y + size}, {x, y + size}});
}

inline std::vector<place> places_of(const mesh& of, std::span<const label> outline) {
  std::vector<place> result;
  for (const label corner : outline) result.push_back(of.points[corner]);
  return result;
}

/// How often an outline winds round a point. Sides that run to and fro cancel, also on them.
inline int winding(const std::vector<place>& outline, const place& point) {
  int result = 0;
  for (std::size_t i = 0; i < outline.size(); ++i) {
    const place& a = outline[i];
    const place& b = outline[(i + 1) % outline.size()];
    if ((a.y > point.y) == (b.y > point.y)) continue;
    const bool is_up = b.y > a.y;
    if (is_up ? turn(a, b, point) > 0 : turn(b, a, point) > 0) result += is_up ? 1 : -1;
  }
  return result;
}

/// What is seen of a picture: a paint for each place of a raster, or nothing.
class picture {
 public:
  static constexpr std::uint32_t nothing = UINT32_MAX;

  /// A raster of places (x, y) * step + offset, `size` each way.
  picture(std::int64_t size, std::int64_t step, place offset)
      : size_(size), step_(step), offset_(offset) {
    seen_.resize(static_cast<std::size_t>(size * size), nothing);
  }

  /// Paints where windings are not zero.
  void fill(std::uint32_t paint, const std::vector<std::vector<place>>& outlines) {
    for (std::size_t i = 0; i < seen_.size(); ++i) {
      const auto n = static_cast<std::int64_t>(i);
      const place at = {n % size_ * step_ + offset_.x, n / size_ * step_ + offset_.y};
      int sum = 0;
      for (const std::vector<place>& outline : outlines) sum += winding(outline, at);
      if (sum != 0) seen_[i] = paint;
    }
  }

  bool operator==(const picture&) const = default;

 private:
  std::int64_t size_;
  std::int64_t step_;
  place offset_;
  std::vector<std::uint32_t> seen_;
};

}  // namespace trellion::pdf::testing
