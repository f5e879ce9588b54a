#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "pdf/content_reader.h"
#include "pdf/graphics_state.h"
#include "pdf/mesh.h"
#include "pdf/paints.h"
#include "pdf/path.h"

namespace trellion::pdf {

/// The source of a polygon. One that is not understood further, or is not to be joined, is painted
/// with the same path again.
struct raw_polygon {
  /// The corner of the polygon where a pen draws none, as the path returns to its start without
  /// being closed.
  enum class opening : std::uint8_t { none, first, last };

  std::uint32_t polygon = 0;
  std::size_t begin = 0;  ///< of the path in the content
  std::size_t end = 0;
  std::string_view painter;  ///< the operator
  opening open_corner = opening::none;
};

/// Polygons that follow one another, with nothing between them but what can be written again.
struct painted_mesh {
  mesh polygons;
  paint_table paints;
  /// Of each polygon of shape `other`, and of those others that are better painted as they stand
  /// when nothing joins them; in their order.
  std::vector<raw_polygon> raws;
  int digits = 0;  ///< decimals of the places
};
/// The source of a polygon; nothing when it is not kept.
const raw_polygon* raw_of(const painted_mesh& painted, std::uint32_t polygon);
/// How many of the polygons from `begin` to `end` are no lines.
std::int64_t count_filled(const painted_mesh& painted, std::uint32_t begin, std::uint32_t end);
/// The polygons from `begin` to `end` alone.
painted_mesh part_of(const painted_mesh& whole, std::uint32_t begin, std::uint32_t end);

/// Gathers painted paths as long as they are polygons, or lines between them.
class run {
 public:
  /// The texts must outlive it. `scale`: points on the page per unit outside of the matrix.
  run(double scale, const text_table& texts) : scale_(scale), texts_(texts) {}

  /// Forgets all. Places get that many decimals from here on. It takes nothing when what is painted
  /// cannot be written exactly enough, or is not opaque.
  void begin(int digits, bool takes_any);
  /// Takes the path when it is made of polygons only, or is a plain line, with the state that
  /// paints it. Else says no and stays as it is. The path may be exchanged for another.
  bool take(path& painted, op painter, const graphics_state& state);
  /// What is taken from here on can be split off: nothing that comes changes what was taken.
  void separate() { fixed_ = size(); }

  [[nodiscard]] std::uint32_t size() const {
    return static_cast<std::uint32_t>(gathered_.polygons.polygons.size());
  }
  [[nodiscard]] const painted_mesh& gathered() const { return gathered_; }

 private:
  struct pen_use {
    std::int64_t reach;
    std::int64_t side_reach;
    bool may_join;
    bool may_close;
    bool shows_ends;
  };

  bool take_stroke(path& painted, op painter, const graphics_state& state);
  bool take_line(const path& painted, op painter, const graphics_state& state);
  bool add_parts(const path& painted, bool is_even_odd, std::uint32_t paint_index);
  [[nodiscard]] bool are_pairwise_apart(std::uint32_t begin) const;
  void keep_source(const path& painted, op painter, std::uint32_t polygon);
  void shrink(std::uint32_t size);
  std::uint32_t index_of(const paint& which, std::int64_t reach);
  [[nodiscard]] std::optional<pen_use> pen_of(const line_style& style,
                                              const linear_map& matrix) const;
  [[nodiscard]] std::optional<std::int64_t> scaled_reach(double units) const;

  double scale_;
  bool takes_any_ = true;
  const text_table& texts_;
  painted_mesh gathered_;
  std::uint32_t fixed_ = 0;

  // The last fill: a stroke of the same path can follow.
  path filled_;
  bool has_filled_ = false;
  bool was_even_odd_ = false;
  colour filled_ink_;
  std::uint32_t filled_from_ = 0;
};

}  // namespace trellion::pdf
