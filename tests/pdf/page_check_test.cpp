#include "pdf/page_check.h"

#include <gtest/gtest.h>

#include <string_view>

namespace trellion::pdf {
namespace {

/// A picture of 7 by 5 pixels, all of one colour but those of a box.
trellion::batch::pixmap with_box(std::size_t left, std::size_t top, std::size_t right,
                                 std::size_t bottom) {
  trellion::batch::pixmap picture{7, 5, std::vector<std::uint8_t>(std::size_t{3} * 7 * 5, 200)};
  for (std::size_t y = top; y < bottom; ++y) {
    for (std::size_t x = left; x < right; ++x) picture.rgb[3 * (7 * y + x) + 2] = 199;
  }
  return picture;
}

TEST(page_check, only_what_is_wider_than_an_edge_differs) {
  const trellion::batch::pixmap plain = with_box(0, 0, 0, 0);
  EXPECT_FALSE(differ_beyond_edges(plain, plain));
  EXPECT_FALSE(differ_beyond_edges(plain, with_box(0, 2, 7, 4))) << "a line";
  EXPECT_FALSE(differ_beyond_edges(plain, with_box(1, 1, 3, 4))) << "two wide";
  EXPECT_TRUE(differ_beyond_edges(plain, with_box(3, 1, 6, 4)));
  EXPECT_TRUE(differ_beyond_edges(with_box(5, 3, 7, 5), plain)) << "in a corner nothing is beyond";
  EXPECT_FALSE(differ_beyond_edges(plain, with_box(0, 0, 1, 5))) << "along the border";
  EXPECT_TRUE(differ_beyond_edges(plain, with_box(0, 1, 2, 4)));
}

}  // namespace
}  // namespace trellion::pdf
