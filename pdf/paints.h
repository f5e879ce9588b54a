#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "pdf/graphics_state.h"
#include "pdf/texts.h"

namespace trellion::pdf {

/// How a polygon is painted: filled, and perhaps drawn round with a pen of the same colour; or a
/// line, by the pen alone.
struct paint {
  colour ink;
  bool fills = true;
  bool has_corners = true;  ///< not so of a line with a single side
  bool is_thin = false;  ///< what it paints has no area, and viewers show some of it all the same
  bool has_pen = false;
  line_style pen;

  bool operator==(const paint&) const = default;
};

/// Gives each paint one number, from 0 on.
class paint_table {
 public:
  std::uint32_t index_of(const paint& which);
  paint operator[](std::uint32_t index) const;
  [[nodiscard]] std::size_t size() const { return paints_.size(); }

 private:
  /// Many colours and few pens are common.
  struct entry {
    colour ink;
    std::uint32_t manner = 0;

    bool operator==(const entry&) const = default;
  };
  static constexpr std::uint32_t plain_manner = 0;
  static constexpr std::uint32_t thin_manner = 1;
  static constexpr std::uint32_t first_pen =
      2;  // from here on three of each: filled, lines, single sides

  std::uint32_t manner_of(const paint& which);

  std::vector<entry> paints_;
  std::vector<line_style> pens_;
  text_table keys_;
  text_table pen_keys_;
};

/// What is known of a pen.
struct pen_traits {
  double reach = 0;        ///< beyond the outline, in units of user space
  double side_reach = 0;   ///< beyond a single side
  bool may_join = false;   ///< the corners that joining removes, and makes, hardly show
  bool may_close = false;  ///< nor does a corner where an outline only returned to its start
  bool shows_ends = true;  ///< where it did, its ends make no such corner as other sides do
};
/// Nothing when part of it is not known, or it is no pen.
/// `matrix` leads to the page, in points.
std::optional<pen_traits> traits_of_pen(const line_style& pen, const linear_map& matrix,
                                        const text_table& texts);

}  // namespace trellion::pdf
