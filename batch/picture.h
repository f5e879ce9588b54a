#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "batch/pixmap.h"

namespace trellion::batch {

/// A part of a picture; right and bottom are one past the last column and row.
struct pixel_box {
  std::size_t left = 0;
  std::size_t top = 0;
  std::size_t right = 0;
  std::size_t bottom = 0;

  bool operator==(const pixel_box&) const = default;
};

struct pixel_place {
  std::size_t x = 0;
  std::size_t y = 0;

  bool operator==(const pixel_place&) const = default;
};

/// Where two pictures differ.
struct picture_difference {
  std::int64_t pixels = 0;          ///< of one picture
  std::int64_t differing = 0;       ///< those whose colours differ
  std::int64_t wrong = 0;           ///< those of either one whose colour the other has nowhere near
  std::int64_t wrong_together = 0;  ///< places of the largest group of wrong ones that touch
  pixel_box wrong_within;           ///< around the wrong ones
  std::vector<pixel_place> places;  ///< the wrong ones, row by row, unless they are too many
  bool blank = false;               ///< one of the pictures has a single colour: it shows nothing
};

/// Compares two pictures. Colours differ when one of their three parts does by more than the
/// tolerance. A pixel is wrong when its colour differs from those of the same pixel and its eight
/// neighbours in the other picture: a line that moved by a pixel is not, one that vanished is.
/// Where a renderer decides otherwise about the tip of a corner a few are wrong, however large the
/// picture; what was lost grows with it, and so does its group.
/// Returns nothing when the pictures differ in their sizes.
std::optional<picture_difference> compare(const pixmap& a, const pixmap& b, int tolerance);

/// More wrong pixels than these are not told one by one.
inline constexpr std::int64_t most_places = 100'000;

/// Of the wrong pixels, where they are told, only those still count that are wrong in two other
/// pictures of the same size, too, there or beside it.
void keep_wrong_in(const pixmap& a, const pixmap& b, int tolerance, picture_difference& found);

/// Of the wrong pixels, where they are told, only those still count that stand in a row of so many.
void keep_wrong_in_rows(std::size_t least, picture_difference& found);

}  // namespace trellion::batch
