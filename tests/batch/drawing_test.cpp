#include "batch/drawing.h"

#include <gtest/gtest.h>

#include "batch/figure.h"
#include "letters.h"
#include "tools.h"

namespace trellion::testing {
namespace {

using namespace batch;

TEST(resolutions, suit_pages_of_all_sizes) {
  const auto pixels = [](const page_frame& frame, double dpi) {
    return static_cast<double>(frame.width * frame.height) * dpi * dpi / (72 * 72);
  };
  for (const page_frame& frame : {page_frame{0, 0, 1, 1},
                                  {0, 0, 20, 600},
                                  {0, 0, 600, 10'000},
                                  {0, 0, 10'000, 1},
                                  {0, 0, 10'000, 10'000}}) {
    const resolutions dpi = resolutions_for(frame);
    EXPECT_LE(pixels(frame, dpi.coarse), 4.001e6);
    EXPECT_LE(pixels(frame, dpi.fine), 4.001e7);
    EXPECT_LT(dpi.coarse, dpi.fine);
  }
  // Print shows lines of a fifth of a point on a sheet of paper.
  EXPECT_GT(resolutions_for({0, 0, 595, 842}).fine, 5 * 72);
  EXPECT_GT(resolutions_for({0, 0, 20, 20}).fine, resolutions_for({0, 0, 595, 842}).fine);
  EXPECT_THROW(resolutions_for({0, 0, 60'000, 60'000}), dead_end);
}

class drawings : public ::testing::Test {
 protected:
  /// Draws a figure, a point for every pixel; says why when that fails.
  std::string drawn(const std::string& text, const page_frame& frame) {
    directory.write("a.eps", framing_head(frame) + text);
    try {
      picture = with.programs.draw(directory.path() / "a.eps", {frame}, 72, antialiasing::off);
      return "drawn";
    } catch (const dead_end& end) {
      return end.reason;
    }
  }

  scratch_directory directory;
  drawing_tools with{directory.path()};
  pixmap picture;
};

TEST_F(drawings, show_the_frame_wherever_it_is) {
  const page_frame frame{-7, 90, 5, 3};
  const std::string square = "0 setgray -6 91 2 1 rectfill ";
  ASSERT_EQ(drawn("%!PS\n" + square + "showpage\n", frame), "drawn");
  const pixmap expected = drawing({".....", ".kk..", "....."});
  EXPECT_EQ(picture.width, expected.width);
  EXPECT_EQ(picture.rgb, expected.rgb);
  // A figure need not say showpage.
  ASSERT_EQ(drawn("%!PS\n" + square, frame), "drawn");
  EXPECT_EQ(picture.rgb, expected.rgb);

  const std::filesystem::path pdf = directory.path() / "a.pdf";
  EXPECT_TRUE(with.programs.to_pdf(directory.path() / "a.eps", frame, pdf));
  if (with.programs.can_draw_pdf()) {
    EXPECT_EQ(with.programs.draw_pdf(pdf, 1, 72, antialiasing::off).rgb, picture.rgb);
  }
  directory.write("b.eps", "%!PS\n" + square + "13 0 translate " + square + "showpage\n");
  const eps_page page = read_page(with.programs.box_comments_of(directory.path() / "b.eps"));
  EXPECT_NEAR(page.box->right, 9, 1);
  EXPECT_NEAR(page.box->top, 92, 1);
}

TEST_F(drawings, are_the_same_together) {
  const page_frame frame{0, 0, 60, 40};
  const std::vector<drawing_style> styles = {
      {144, antialiasing::off}, {600, antialiasing::off}, {144, antialiasing::on}};
  const std::filesystem::path file = directory.path() / "a.eps";
  const std::filesystem::path pdf = directory.path() / "a.pdf";
  const auto together = [&](const std::string& text) {
    directory.write("a.eps", framing_head(frame) + "%!PS\n" + text);
    return with.programs.draw_together(file, frame, styles, pdf);
  };
  // Lines and rims that depend on the resolution, letters, places by chance, and what is left
  // behind: on the stacks, in local and global memory, and under the names of what is to take it
  // away.
  const auto pictures = together(
      "/seen where { pop 0 0 60 40 rectfill } if globaldict /seen true put "
      "/restore { } def /clear { quit } def /trellion-kept 7 def "
      ".7 setlinewidth 30 20 9 0 360 arc stroke .3 setlinewidth 4.13 3 moveto 4.13 20.3 lineto "
      "stroke 7.3 20.1 11.7 9.9 rectfill rand 50 mod rand 30 mod 2 2 rectfill "
      "/Helvetica findfont 9 scalefont setfont 25 25 moveto (mesh) show "
      "1 2 [3] 10 dict begin gsave showpage\n");
  ASSERT_TRUE(pictures);
  for (std::size_t n = 0; n < styles.size(); ++n) {
    const pixmap alone = with.programs.draw(file, {frame}, styles[n].dpi, styles[n].smooth);
    EXPECT_EQ(pictures->at(n).width, alone.width);
    EXPECT_TRUE(pictures->at(n).rgb == alone.rgb) << styles[n].dpi;
  }
  const auto drawn_pdf = [&] {
    return with.programs.draw(pdf, {frame, 1}, 144, antialiasing::on).rgb;
  };
  const std::vector<std::uint8_t> pdf_together = drawn_pdf();
  EXPECT_TRUE(with.programs.to_pdf(file, frame, pdf));
  EXPECT_TRUE(pdf_together == drawn_pdf());
  // Two pages and then none, an early end, and what goes wrong.
  EXPECT_FALSE(
      together("showpage currentpagedevice /HWResolution get 0 get 200 lt "
               "{ showpage } { quit } ifelse\n"));
  EXPECT_FALSE(together("showpage quit\n"));
  EXPECT_FALSE(together("showpage nonsense\n"));
  // What does not come to its first page is not waited for once more.
  directory.write("a.eps", framing_head(frame) + "%!PS\n{ } loop\n");
  const drawing_tools hasty(directory.path(), std::chrono::milliseconds(500));
  EXPECT_THROW(static_cast<void>(hasty.programs.draw_together(file, frame, styles)), dead_end);
}

TEST_F(drawings, tell_why_there_are_none) {
  const page_frame frame{0, 0, 50, 50};
  EXPECT_EQ(drawn("%!PS\n0 0 moveto (a) nonsense\n", frame), "gs: Error: /undefined in nonsense");
  EXPECT_EQ(drawn("%!PS\nshowpage showpage\n", frame), "it draws more than one page");
  // On the way to PDF, too, they are told from those that draw a page.
  const auto drew_page = [&](const std::string& text) {
    directory.write("a.eps", framing_head(frame) + "%!PS\n" + text);
    return with.programs.to_pdf(directory.path() / "a.eps", frame, directory.path() / "a.pdf");
  };
  EXPECT_FALSE(drew_page("0 0 9 9 rectfill quit\n"));
  EXPECT_FALSE(drew_page("nulldevice showpage\n"));
  EXPECT_THROW(static_cast<void>(drew_page("{ showpage } loop\n")), dead_end);
  with.tools.gs = write_script(directory, "tool", "echo 'tool: broken' >&2; exit 1");
  EXPECT_EQ(drawn("%!PS\nshowpage\n", frame), "tool: broken");
  with.tools.gs = write_script(directory, "tool", "exec yes");
  EXPECT_EQ(drawn("%!PS\nshowpage\n", frame), "it draws more than one page");
}

}  // namespace
}  // namespace trellion::testing
