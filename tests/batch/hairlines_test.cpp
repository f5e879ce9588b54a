#include "batch/hairlines.h"

#include <gtest/gtest.h>

#include "letters.h"

namespace trellion::testing {
namespace {

using batch::hairline_pixels;
using batch::new_hairlines;
using batch::pixmap;

TEST(hairlines, are_brighter_than_all_colours_around) {
  // p is r with white shining through, as is l for y.
  EXPECT_EQ(hairline_pixels(drawing({"rrpr", "rprr", "prrr"}), drawing({"rrrr", "rrrr", "rrrr"})),
            3);
  EXPECT_EQ(hairline_pixels(drawing({"yyl"}), drawing({"yyy"})), 1);
  EXPECT_EQ(hairline_pixels(drawing({"y"}), drawing({"l"})), 1) << "darker";
  // Edges of two colours, and the rim of a figure: v lies between r and b, p between r and white.
  EXPECT_EQ(hairline_pixels(drawing({"rvbb"}), drawing({"rrbb"})), 0);
  EXPECT_EQ(hairline_pixels(drawing({"rrpp.."}), drawing({"rrr..."})), 0);
  EXPECT_EQ(hairline_pixels(drawing({"rpp..."}), drawing({"rrr..."})), 1) << "not at the rim";
  // Steps of 8 levels do not show.
  EXPECT_EQ(hairline_pixels(drawing({"gi", "ih"}), drawing({"gg", "gg"})), 0);
  EXPECT_EQ(hairline_pixels(drawing({"gj", "hg"}), drawing({"gg", "gg"})), 1);
}

TEST(hairlines, look_at_eight_neighbours) {
  // White in a corner of the true colours explains p as far as one pixel from it.
  const pixmap sharp = drawing({".rrr", "rrrr", "rrrr"});
  EXPECT_EQ(hairline_pixels(drawing({"pprr", "pprr", "rrrr"}), sharp), 0);
  EXPECT_EQ(hairline_pixels(drawing({"rrpr", "rrpr", "pppp"}), sharp), 6);
  EXPECT_EQ(hairline_pixels(drawing({"prr", "rpp", "rpp"}), drawing({"rrr", "rrr", "rr."})), 1);
  EXPECT_THROW(hairline_pixels(drawing({"rr"}), sharp), run_error);
}

TEST(hairlines, are_new_unless_the_input_shows_them) {
  const pixmap smooth = drawing({"rrprrrr"});
  const pixmap sharp = drawing({"rrrrrrb"});
  EXPECT_EQ(new_hairlines(smooth, sharp, smooth, 0), 0);
  EXPECT_EQ(new_hairlines(smooth, sharp, drawing({"rrrrrrr"}), 0), 0) << "closed";
  EXPECT_EQ(new_hairlines(smooth, sharp, drawing({"rprrrvb"}), 0), 0) << "moved by a pixel";
  EXPECT_EQ(new_hairlines(smooth, sharp, drawing({"prrrprr"}), 0), 2);
  EXPECT_EQ(new_hairlines(drawing({"gg"}), drawing({"gg"}), drawing({"jg"}), 0), 1);
  EXPECT_EQ(new_hairlines(drawing({"gg"}), drawing({"gg"}), drawing({"jg"}), 1), 0);
  EXPECT_THROW(new_hairlines(smooth, drawing({"r"}), smooth, 0), run_error);
}

}  // namespace
}  // namespace trellion::testing
