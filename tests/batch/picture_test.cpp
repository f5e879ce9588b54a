#include "batch/picture.h"

#include <gtest/gtest.h>
#include <png.h>

#include "letters.h"

namespace trellion::testing {
namespace {

using batch::compare;
using batch::pixel_box;
using batch::pixmap;
using batch::read_png;
using batch::read_ppm;

std::string bytes_of(const pixmap& picture) { return {picture.rgb.begin(), picture.rgb.end()}; }

std::string png_of(const pixmap& picture) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.width);
  image.height = static_cast<png_uint_32>(picture.height);
  image.format = PNG_FORMAT_RGB;
  std::string file(10'000, '\0');
  png_alloc_size_t size = file.size();
  EXPECT_NE(
      png_image_write_to_memory(&image, file.data(), &size, 0, picture.rgb.data(), 0, nullptr), 0);
  file.resize(size);
  return file;
}

TEST(picture, that_lost_a_line_is_wrong) {
  const pixmap line = drawing({"..k....", "..k....", "..k...."});
  const pixmap moved = drawing({"...k...", "...k...", "...k..."});
  const pixmap moved_far = drawing({"....k..", "....k..", "....k.."});
  const pixmap none = drawing({".......", ".......", "......."});
  EXPECT_EQ(compare(line, line, 0)->differing, 0);
  EXPECT_EQ(compare(line, moved, 0)->differing, 6);
  EXPECT_EQ(compare(line, moved, 0)->wrong, 0);
  // The lines have no match; the white on their places has.
  EXPECT_EQ(compare(line, moved_far, 0)->wrong, 6);
  EXPECT_EQ(compare(line, moved_far, 0)->wrong_within, (pixel_box{2, 0, 5, 3}));
  const auto lost = compare(line, none, 0);
  const auto gained = compare(none, line, 0);
  const pixmap slanting = drawing({"......k", ".......", "k......"});
  EXPECT_EQ(compare(slanting, none, 0)->wrong_within, (pixel_box{0, 0, 7, 3}));
  EXPECT_EQ(lost->pixels, 21);
  EXPECT_EQ(lost->wrong, 3);
  EXPECT_EQ(gained->wrong, 3);
  EXPECT_EQ(gained->wrong_within, (pixel_box{2, 0, 3, 3}));
  EXPECT_FALSE(compare(line, moved, 0)->blank);
  EXPECT_TRUE(lost->blank && gained->blank && compare(none, none, 0)->blank);
  EXPECT_FALSE(compare(line, drawing({"..k....", "..k...."}), 0));
}

TEST(picture, knows_how_many_wrong_pixels_touch) {
  const std::vector<std::string> none(5, ".........");
  const auto together = [&](const std::vector<std::string>& rows) {
    const auto difference = compare(drawing(rows), drawing(none), 0);
    EXPECT_EQ(difference->wrong_together, compare(drawing(none), drawing(rows), 0)->wrong_together);
    return difference->wrong_together;
  };
  EXPECT_EQ(together(none), 0);
  EXPECT_EQ(together({"k.......k", ".........", "k.......k", ".........", "k.......k"}), 1);
  EXPECT_EQ(together({"k........", ".........", ".........", "k........", "........."}), 1);
  // Seven that start as three groups, beside two and three.
  EXPECT_EQ(together({"k.k...k..", "k.k.k.k..", ".k.k....k", "........k", "........k"}), 7);
}

TEST(picture, is_compared_within_the_tolerance_and_up_to_its_borders) {
  const pixmap g = drawing({"gg", "gg"});
  EXPECT_EQ(compare(g, drawing({"gh", "gg"}), 3)->wrong, 1);
  EXPECT_EQ(compare(g, drawing({"gh", "gg"}), 4)->differing, 0);
  EXPECT_EQ(compare(drawing({"y"}), drawing({"l"}), 59)->wrong, 2) << "in their blue alone";
  // In the corners, each of which is seen from the others.
  EXPECT_EQ(compare(drawing({"k.", ".."}), drawing({"..", ".k"}), 0)->wrong, 0);
  EXPECT_EQ(compare(drawing({"k..", "..."}), drawing({"...", "..k"}), 0)->wrong_within,
            (pixel_box{0, 0, 3, 2}));
  // In a row longer than a stretch, at its end.
  std::string row(100, '.');
  row[40] = 'r';
  const pixmap before = drawing({row});
  row[99] = 'k';
  EXPECT_EQ(compare(before, drawing({row}), 0)->wrong_within, (pixel_box{99, 0, 100, 1}));
}

TEST(picture, is_read_from_a_pixmap) {
  const pixmap picture = drawing({"rgb", "k.y"});
  const std::string pixels = bytes_of(picture);
  const std::string file = "P6\n# by hand\n3 2\n255\n" + pixels;
  const pixmap read = read_ppm(file, 6);
  EXPECT_EQ(read.width, 3);
  EXPECT_EQ(read.height, 2);
  EXPECT_EQ(read.rgb, picture.rgb);
  EXPECT_THROW(read_ppm(file, 5), run_error);
  EXPECT_THROW(read_ppm(file + file, 6), batch::second_page);
  const std::string long_comment = '#' + std::string(5000, '.') + '\n';
  for (const std::string& refused :
       {std::string(), std::string("P6"), std::string("P6 3 2 255"), file + '.',
        file.substr(0, file.size() - 1), "P5 3 2 255\n" + pixels, "P6 3 2 254\n" + pixels,
        "P6 0 2 255\n" + pixels, "P6 -3 -2 255\n" + pixels, "P6 3 2x 255\n" + pixels,
        "P6 00000000003 2 255\n" + pixels, "P6 " + long_comment + file.substr(3),
        "P6 1048577 1 255\n" + pixels, "P6 1048576 1048576 255\n" + pixels}) {
    try {
      read_ppm(refused, std::size_t{1} << 20);
      ADD_FAILURE() << refused.substr(0, 40);
    } catch (const batch::second_page&) {
      ADD_FAILURE() << refused.substr(0, 40);
    } catch (const run_error&) {
      continue;
    }
  }
}

TEST(picture, is_read_from_png) {
  const pixmap picture = drawing({"rgb", "k.y"});
  const std::string file = png_of(picture);
  const pixmap read = read_png(file, 6);
  EXPECT_EQ(read.width, 3);
  EXPECT_EQ(read.height, 2);
  EXPECT_EQ(read.rgb, picture.rgb);
  EXPECT_THROW(read_png(file, 5), run_error);
  EXPECT_THROW(read_png(file.substr(0, file.size() / 2), 6), run_error);
  EXPECT_THROW(read_png("", 6), run_error);
}

}  // namespace
}  // namespace trellion::testing
