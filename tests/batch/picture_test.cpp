#include "batch/picture.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <memory>
#include <type_traits>

#include "letters.h"
#include "support.h"

namespace trellion::testing {
namespace {

using batch::compare;
using batch::pixel_box;
using batch::pixmap;
using batch::read_ppm;
using batch::read_tiff;

const pixmap six_pixels = drawing({"rgb", "k.y"});

/// A TIFF file with a strip for every row. A picture of another kind has one byte a pixel.
void write_tiff(const pixmap& picture, const std::filesystem::path& path, bool is_rgb = true,
                std::uint16_t packing = COMPRESSION_NONE) {
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> file(TIFFOpen(path.c_str(), "w"), TIFFClose);
  ASSERT_TRUE(file);
  TIFFSetField(file.get(), TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(picture.width));
  TIFFSetField(file.get(), TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(picture.height));
  TIFFSetField(file.get(), TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(file.get(), TIFFTAG_SAMPLESPERPIXEL, is_rgb ? 3 : 1);
  TIFFSetField(file.get(), TIFFTAG_PHOTOMETRIC, is_rgb ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
  TIFFSetField(file.get(), TIFFTAG_COMPRESSION, packing);
  TIFFSetField(file.get(), TIFFTAG_ROWSPERSTRIP, 1);
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    std::vector<std::uint8_t> row(picture.row(y), picture.row(y) + 3 * picture.width);
    EXPECT_EQ(TIFFWriteScanline(file.get(), row.data(), y), 1);
  }
}

TEST(picture, that_lost_a_line_is_wrong) {
  const pixmap line = drawing({"..k....", "..k....", "..k...."});
  const pixmap moved = drawing({"...k...", "...k...", "...k..."});
  const pixmap moved_far = drawing({"....k..", "....k..", "....k.."});
  const pixmap none = drawing({".......", ".......", "......."});
  const pixmap slanting = drawing({"......k", ".......", "k......"});
  EXPECT_EQ(compare(line, line, 0)->differing, 0);
  const auto small = compare(line, moved, 0);
  EXPECT_EQ(small->differing, 6);
  EXPECT_TRUE(small->wrong == 0 && !small->blank);
  // The lines have no match; the white on their places has.
  EXPECT_EQ(compare(line, moved_far, 0)->wrong, 6);
  EXPECT_EQ(compare(line, moved_far, 0)->wrong_within, (pixel_box{2, 0, 5, 3}));
  EXPECT_EQ(compare(slanting, none, 0)->wrong_within, (pixel_box{0, 0, 7, 3}));
  for (const auto& difference : {compare(line, none, 0), compare(none, line, 0)}) {
    EXPECT_EQ(difference->pixels, 21);
    EXPECT_EQ(difference->wrong, 3);
    EXPECT_EQ(difference->wrong_within, (pixel_box{2, 0, 3, 3}));
    EXPECT_TRUE(difference->blank);
  }
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

TEST(picture, forgets_what_is_wrong_nowhere_else_or_in_too_short_a_row) {
  const std::vector<std::string> none(5, ".........");
  const pixmap before = drawing(none);
  auto found = *compare(
      before, drawing({"k.......k", ".k.......", "...kk....", ".k.......", "....k...."}), 0);
  EXPECT_EQ(found.wrong, 7);
  // All but the one in the corner are wrong beside these, and the two that touch become two groups.
  keep_wrong_in(before, drawing({".........", "k........", "....k....", "k........", "........."}),
                0, found);
  const std::vector<batch::pixel_place> kept = {{0, 0}, {1, 1}, {3, 2}, {4, 2}, {1, 3}};
  EXPECT_EQ(found.places, kept);
  EXPECT_EQ(found.wrong, 5);
  EXPECT_EQ(found.wrong_together, 2);
  EXPECT_EQ(found.wrong_within, (pixel_box{0, 0, 5, 4}));
  batch::picture_difference shorter = found;
  keep_wrong_in_rows(3, shorter);
  EXPECT_EQ(shorter.wrong, 0);
  keep_wrong_in_rows(2, found);
  EXPECT_EQ(found.wrong, 2);
  EXPECT_EQ(found.wrong_within, (pixel_box{3, 2, 5, 3}));
  keep_wrong_in(before, before, 0, found);
  EXPECT_EQ(found.wrong, 0);
  EXPECT_EQ(found.wrong_together, 0);
  // Too many are not gone into.
  const std::vector<std::string> page(400, std::string(400, '.'));
  found = *compare(drawing(page), drawing(std::vector<std::string>(400, std::string(400, 'k'))), 0);
  keep_wrong_in(drawing(page), drawing(page), 0, found);
  EXPECT_EQ(found.wrong, 2 * 400 * 400);
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

/// Expects a reader to make the picture of a file of six pixels, and to refuse it as too large.
template <class File>
void expect_read(pixmap (*read)(File, std::size_t), const std::type_identity_t<File>& file) {
  const pixmap picture = read(file, 6);
  EXPECT_EQ(picture.width, 3);
  EXPECT_EQ(picture.height, 2);
  EXPECT_EQ(picture.rgb, six_pixels.rgb);
  EXPECT_THROW(read(file, 5), run_error);
}

TEST(picture, is_read_from_a_pixmap) {
  const std::string pixels(six_pixels.rgb.begin(), six_pixels.rgb.end());
  const std::string file = "P6\n# by hand\n3 2\n255\n" + pixels;
  expect_read(read_ppm, file);
  EXPECT_THROW(read_ppm(file + file, 6), batch::second_page);
  const std::string long_comment = '#' + std::string(5000, '.') + '\n';
  for (const std::string& refused :
       {std::string(), std::string("P6"), file + '.', file.substr(0, file.size() - 1),
        "P5 3 2 255\n" + pixels, "P6 3 2 254\n" + pixels, "P6 0 2 255\n" + pixels,
        "P6 -3 -2 255\n" + pixels, "P6 3 2x 255\n" + pixels, "P6 00000000003 2 255\n" + pixels,
        "P6 " + long_comment + file.substr(3), "P6 1048577 1 255\n" + pixels,
        "P6 1048576 1048576 255\n" + pixels}) {
    try {
      read_ppm(refused, std::size_t{1} << 20);
      ADD_FAILURE() << refused.substr(0, 40);
    } catch (const run_error& error) {
      EXPECT_EQ(dynamic_cast<const batch::second_page*>(&error), nullptr) << refused.substr(0, 40);
    }
  }
}

TEST(picture, comes_page_by_page_and_in_pieces) {
  const pixmap large{60, 70, std::vector<std::uint8_t>(std::size_t{3} * 60 * 70, 7)};
  const auto file_of = [](const pixmap& picture) {
    return "P6 " + std::to_string(picture.width) + ' ' + std::to_string(picture.height) + " 255\n" +
           std::string(picture.rgb.begin(), picture.rgb.end());
  };
  const std::string file = file_of(six_pixels) + file_of(large) + file_of(six_pixels);
  for (const std::size_t piece : {std::size_t{1}, std::size_t{1000}, file.size()}) {
    const auto read = [&](std::size_t n_pages, std::string_view rest) {
      batch::ppm_reader reader(n_pages, large.width * large.height);
      for (; !rest.empty(); rest.remove_prefix(std::min(piece, rest.size()))) {
        reader.take(rest.substr(0, piece));
      }
      return reader.pages();
    };
    const std::vector<pixmap> pages = read(3, file);
    ASSERT_EQ(pages.size(), 3);
    EXPECT_EQ(pages[0].rgb, six_pixels.rgb);
    EXPECT_EQ(pages[1].rgb, large.rgb);
    EXPECT_EQ(pages[2].rgb, six_pixels.rgb);
    EXPECT_THROW(read(2, file), batch::second_page);
    EXPECT_THROW(read(4, file), run_error);
    EXPECT_THROW(read(3, std::string_view(file).substr(0, file.size() - 1)), run_error);
    EXPECT_THROW(read(3, file + '.'), run_error);
  }
}

TEST(picture, is_read_from_tiff) {
  const scratch_directory directory;
  const std::filesystem::path path = directory.path() / "a.tif";
  constexpr std::uint16_t packings[] = {COMPRESSION_NONE, COMPRESSION_PACKBITS};
  for (const std::uint16_t packing : packings) {
    write_tiff(six_pixels, path, true, packing);
    expect_read(read_tiff, path);
  }
  write_tiff(six_pixels, path, false);
  EXPECT_THROW(read_tiff(path, 6), run_error);
  EXPECT_THROW(read_tiff(directory.path() / "b.tif", 6), run_error);
  // Cut anywhere, without a word on the console.
  write_tiff(six_pixels, path);
  const std::string file = directory.read("a.tif");
  ::testing::internal::CaptureStderr();
  for (std::size_t size = 0; size < file.size(); ++size) {
    directory.write("a.tif", std::string_view(file).substr(0, size));
    EXPECT_THROW(read_tiff(path, 6), run_error) << size;
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace trellion::testing
