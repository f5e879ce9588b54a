#include "batch/judge.h"

#include <gtest/gtest.h>

#include "letters.h"
#include "tools.h"

namespace trellion::testing {
namespace {

using namespace batch;
using rows = std::vector<std::string>;

const rows plain(20, std::string(20, 'r') + "....");

rows with(rows picture, std::size_t x, std::size_t y, char letter) {
  picture[y][x] = letter;
  return picture;
}

/// Ghostscript is a program here that shows pictures made beforehand, one for each kind of drawing.
class judging : public ::testing::Test {
 protected:
  judging() {
    const std::string script =
        "kind=coarse\nfor last; do case $last in -dGraphicsAlphaBits=4) kind=smooth;; "
        "-r2400) kind=fine;; esac; done\nexec cat \"$last.$kind\"";
    with_.tools = {write_script(directory, "gs", script), std::nullopt, std::nullopt};
    look("input", plain, plain, plain);
  }
  /// Sets what a file looks like.
  void look(const std::string& name, const rows& coarse, const rows& fine, const rows& smooth) {
    const auto show = [&](const std::string& kind, const rows& picture) {
      const pixmap pixels = drawing(picture);
      directory.write(name + '.' + kind, "P6 " + std::to_string(pixels.width) + ' ' +
                                             std::to_string(pixels.height) + " 255\n" +
                                             std::string(pixels.rgb.begin(), pixels.rgb.end()));
    };
    show("coarse", coarse);
    show("fine", fine);
    show("smooth", smooth);
  }
  /// What is said of a result: the words of the table, or why it is a dead end, "few" before it
  /// where that holds at few places.
  std::string judged(const rows& coarse, const rows& fine, const rows& smooth,
                     const judging_rule& rule = {}) {
    look("result", coarse, fine, smooth);
    appearance input = appearance_of("input");
    appearance result = appearance_of("result");
    try {
      const std::string words = in_words(judge(input, result, rule));
      EXPECT_TRUE(shows_the_same(input, result, rule));
      return words;
    } catch (const dead_end& end) {
      EXPECT_EQ(end.result, verdict::withheld);
      return (end.place ? "few: " : "") + end.reason;
    }
  }

  [[nodiscard]] appearance appearance_of(const std::string& name) const {
    const page_frame frame{0, 0, 20, 20};  // drawn fine at 2400 dpi
    return {with_.programs, directory.path() / name, {frame}, resolutions_for(frame)};
  }

  scratch_directory directory;

 private:
  drawing_tools with_{directory.path()};
};

TEST_F(judging, lets_rims_move_but_nothing_vanish) {
  EXPECT_EQ(judged(plain, plain, plain), "same");
  const rows moved = with(plain, 20, 7, 'r');
  EXPECT_EQ(judged(moved, plain, plain), "same but 0.10 %");
  EXPECT_EQ(judged(moved, moved, moved), "same but 0.20 %");

  // A black dot at either resolution, and one that was there.
  const std::string one = "few: the picture changed: the colour of 1 pixel ";
  const rows dot = with(plain, 5, 5, 'k');
  EXPECT_TRUE(judged(dot, plain, plain).starts_with(one));
  EXPECT_TRUE(judged(plain, dot, plain).starts_with(one));
  look("input", plain, dot, plain);
  EXPECT_TRUE(judged(plain, plain, plain).starts_with(one));
  EXPECT_EQ(judged(plain, dot, plain), "same");
}

TEST_F(judging, counts_what_a_small_move_leaves_wrong) {
  const judging_rule steady{0, false, true};
  const rows dot = with(plain, 5, 5, 'k');
  rows line = plain;
  for (rows::size_type y = 0; y < line.size(); ++y) line[y][9] = 'k';
  const auto look_moved = [this](const std::string& name, const rows& once, const rows& twice) {
    // As the programs would have moved them.
    directory.write(name + ".0.01_0.007.pdf", "");
    directory.write(name + ".-0.007_0.01.pdf", "");
    look(name + ".0.01_0.007.pdf", once, once, once);
    look(name + ".-0.007_0.01.pdf", twice, twice, twice);
  };
  look_moved("input", plain, plain);
  look_moved("result", dot, plain);
  EXPECT_EQ(judged(dot, plain, plain, steady), "same but 0.10 %");
  EXPECT_EQ(judged(plain, with(dot, 7, 7, 'k'), plain, steady), "same but 0.20 %");
  EXPECT_TRUE(judged(dot, plain, plain).starts_with("few: "));
  // Moved, it is seen beside its place.
  look_moved("result", dot, with(plain, 6, 4, 'k'));
  const std::string one = "few: the picture changed: the colour of 1 pixel ";
  EXPECT_TRUE(judged(with(dot, 15, 15, 'k'), plain, plain, steady).starts_with(one));
  // A line of one pixel is there in all of them; where it vanishes it is missed.
  look("input", line, line, plain);
  look_moved("input", line, line);
  look_moved("result", plain, plain);
  EXPECT_TRUE(judged(plain, line, plain, steady).starts_with("few: the picture changed"));
  EXPECT_TRUE(judged(line, plain, plain, steady).starts_with("few: the picture changed"));
  // What is moved to another size tells nothing.
  look_moved("input", {"r.", ".."}, {"r.", ".."});
  look_moved("result", {"r.", ".."}, {"r.", ".."});
  EXPECT_TRUE(judged(plain, line, plain, steady).starts_with("few: the picture changed"));
}

TEST_F(judging, tells_few_places_from_many) {
  const rows page(64, std::string(70, 'r') + "..");
  look("input", plain, page, plain);
  const auto with_spot = [&page](std::size_t size) {
    rows picture = page;
    for (std::size_t y = 4; y < 4 + size; ++y) picture[y].replace(4, size, size, 'k');
    return picture;
  };
  EXPECT_TRUE(judged(plain, with_spot(31), plain).starts_with("few: the picture changed"));
  EXPECT_TRUE(judged(plain, with_spot(32), plain).starts_with("the picture changed"));
  rows scattered = page;
  for (std::size_t y = 0; y < page.size(); y += 4) {
    for (std::size_t x = 0; x < page[y].size(); x += 4) scattered[y][x] = 'k';
  }
  EXPECT_TRUE(judged(plain, scattered, plain).starts_with("few: the picture changed"));
}

TEST_F(judging, allows_for_what_the_way_does_to_colours_and_pixels) {
  const rows hue(20, std::string(20, 'g') + "....");
  const rows near(20, std::string(20, 'h') + "....");
  look("input", hue, hue, hue);
  EXPECT_EQ(judged(near, near, near, {4, false}), "same");
  EXPECT_TRUE(judged(near, near, near, {3, false})
                  .starts_with("few: the picture changed: the colour of 800 pixels "));

  // Two interleaved colours, each within a pixel of its place: so may a stroked mesh differ, but
  // not all over.
  rows even = plain;
  rows odd = plain;
  for (std::size_t y = 0; y < 20; ++y) {
    for (std::size_t x = 0; x < 20; ++x) {
      even[y][x] = (x + y) % 2 == 0 ? 'r' : 'b';
      odd[y][x] = (x + y) % 2 == 0 ? 'b' : 'r';
    }
  }
  look("input", even, even, even);
  EXPECT_EQ(judged(odd, odd, odd), "same but 83.33 %");
  EXPECT_EQ(judged(odd, odd, odd, {0, true}), "the picture changed: 83.33 % of the pixels differ");
}

TEST_F(judging, sees_hairlines_appear_and_grow) {
  rows line = plain;
  for (std::size_t y = 0; y < 20; ++y) line[y][10] = 'p';
  rows elsewhere = plain;
  for (std::size_t y = 0; y < 20; ++y) elsewhere[y][4] = 'p';
  EXPECT_EQ(judged(plain, plain, line), "there are more hairlines than before");
  look("input", plain, plain, line);
  EXPECT_EQ(judged(plain, plain, plain), "same");
  EXPECT_EQ(judged(plain, plain, line), "same");
  EXPECT_EQ(judged(plain, plain, elsewhere), "20 pixels of hairlines appear where none were");
}

TEST_F(judging, knows_nothing_of_what_shows_nothing) {
  const rows nothing(20, std::string(24, '.'));
  EXPECT_TRUE(judged(nothing, plain, plain).starts_with("the page shows nothing"));
  look("input", nothing, nothing, nothing);
  EXPECT_TRUE(judged(nothing, nothing, nothing).starts_with("the page shows nothing"));
  // A part of a page may well be of one colour.
  look("dot", with(nothing, 5, 5, 'k'), nothing, nothing);
  appearance input = appearance_of("input");
  appearance same = appearance_of("result");
  appearance dot = appearance_of("dot");
  EXPECT_TRUE(shows_the_same(input, same, {}));
  EXPECT_FALSE(shows_the_same(input, dot, {}));
  look("input", plain, plain, plain);
  EXPECT_EQ(judged({"r.", ".."}, plain, plain), "the picture has another size");
  directory.write("gs", "#!/bin/sh\n");
  EXPECT_TRUE(judged(plain, plain, plain).starts_with("it draws no picture"));
}

}  // namespace
}  // namespace trellion::testing
