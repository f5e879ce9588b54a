#include "batch/figure.h"

#include <gtest/gtest.h>

#include "batch/picture.h"
#include "tools.h"

namespace trellion::testing {
namespace {

namespace fs = std::filesystem;
using namespace batch;

/// A drawing of 60 by 40 points with its lower left corner at a point.
std::string drawing_at(int x, int y) {
  return std::to_string(x) + ' ' + std::to_string(y) +
         " translate 0 0 1 setrgbcolor 2 2 30.3 20 rectfill 1 0 0 setrgbcolor 0.3 setlinewidth\n"
         "4 35 moveto 55 38.5 lineto stroke 40 5 moveto 50 8.25 lineto 45 20 lineto fill\n";
}

const std::string header = "%!PS-Adobe-3.0 EPSF-3.0\n%%Title: as it was\n";

std::string dos_eps(const std::string& text) {
  const std::string preview = "II*";
  std::string head = "\xC5\xD0\xD3\xC6";
  for (std::size_t number : {std::size_t{30}, text.size(), std::size_t{0}, std::size_t{0},
                             30 + text.size(), preview.size()}) {
    for (int i = 0; i < 4; ++i, number /= 256) head += static_cast<char>(number % 256);
  }
  return head + "\xFF\xFF" + text + preview;
}

class figures : public ::testing::Test {
 protected:
  figure figure_of(const std::string& text) const {
    directory.write("a.eps", text);
    return look_at(directory.path() / "a.eps");
  }
  pixmap drawn(const std::string& name, const page_frame& frame) const {
    write_framed(directory.path() / name, frame, directory.path() / "drawn.eps");
    return with.programs.draw(directory.path() / "drawn.eps", {frame}, 288, antialiasing::off);
  }
  /// Where a file puts its marks on a page far larger than itself.
  std::optional<bounding_box> marks_of(const std::string& name) const {
    directory.write("moved.eps",
                    "1500 1500 translate\n" + std::string(postscript(directory.read(name))));
    const std::string comments = with.programs.box_comments_of(directory.path() / "moved.eps");
    return read_page(comments).box;
  }
  void take_detour_to(const std::string& name, const figure& original) const {
    fs::remove_all(directory.path() / "way");
    fs::create_directory(directory.path() / "way");
    take_detour(original, with.programs, directory.path() / "way/figure.pdf",
                directory.path() / name);
  }

  scratch_directory directory;
  drawing_tools with{directory.path()};
};

TEST_F(figures, are_looked_at_as_they_are) {
  const std::string text = header + "%%BoundingBox: 0 0 60 40\n";
  figure plain = figure_of(text);
  EXPECT_EQ(plain.n_bytes, text.size());
  EXPECT_EQ(plain.kind, file_kind::eps);
  EXPECT_EQ(plain.page.box, (bounding_box{0, 0, 60, 40}));
  fs::permissions(plain.file, fs::perms(0440));
  EXPECT_EQ(look_at(plain.file).mode, 0440U);
  EXPECT_EQ(figure_of(dos_eps(text)).kind, file_kind::dos_eps);
  EXPECT_EQ(figure_of(dos_eps(text)).page.box, plain.page.box);
  for (const fs::path& no_file :
       {directory.path(), directory.path() / "absent", fs::path("/dev/null")}) {
    EXPECT_THROW(look_at(no_file), run_error) << no_file;
  }
}

TEST_F(figures, keep_box_and_place_on_a_detour) {
  struct page {
    page_frame frame;
    std::string text;
  };
  const std::string far = drawing_at(1000, 900) + "showpage\n";
  const std::string far_box = "%%BoundingBox: 1000 900 1060 940\n";
  const std::vector<page> pages = {
      // The first line is without EPSF.
      {{1000, 900, 60, 40}, "%!PS-Adobe-3.0\n" + far_box + far},
      {{1000, 900, 60, 40},
       header + "%%BoundingBox: (atend)\n%%EndComments\n" + far + "%%Trailer\n" + far_box},
      {{-499, -39, 57, 38},
       header +
           "%%BoundingBox: -499 -39 -442 -1\n"
           "%%HiResBoundingBox: -498.75 -38.5 -442.25 -1.125\n%%EndComments\n" +
           drawing_at(-500, -40) + "showpage\n"},
      {{1000, 900, 60, 40}, dos_eps(header + far_box + "%%EndComments\n" + far)},
      // The drawing is larger than the box.
      {{1020, 910, 30, 10}, header + "%%BoundingBox: 1020 910 1050 920\n" + far}};
  for (const page& tried : pages) {
    SCOPED_TRACE(tried.text);
    const figure original = figure_of(tried.text);
    ASSERT_EQ(frame_of(original.page.box.value()), tried.frame);
    take_detour_to("b.eps", original);
    const figure result = look_at(directory.path() / "b.eps");
    EXPECT_EQ(result.kind, file_kind::eps);
    EXPECT_EQ(result.page.box_lines, original.page.box_lines);
    EXPECT_EQ(result.page.title_line, original.page.title_line);
    const auto difference = compare(drawn("a.eps", tried.frame), drawn("b.eps", tried.frame), 4);
    EXPECT_EQ(difference->wrong, 0);
    EXPECT_FALSE(difference->blank);
    EXPECT_EQ(marks_of("b.eps"), marks_of("a.eps"));
  }
}

TEST_F(figures, come_whole_from_a_detour_or_not_at_all) {
  const figure original =
      figure_of(header + "%%BoundingBox: 0 0 60 40\n" + drawing_at(0, 0) + "showpage\n");
  const std::string whole = *with.tools.pdftops;
  const auto failure_after = [&](const std::string& script) {
    with.tools.pdftops =
        write_script(directory, "pdftops", "for last; do :; done\n" + whole + " \"$@\"\n" + script);
    try {
      take_detour_to("b.eps", original);
      return std::string("none");
    } catch (const dead_end& end) {
      EXPECT_EQ(end.result, verdict::failed);
      return end.reason;
    } catch (const run_error& error) {
      return std::string(error.what());
    }
  };
  EXPECT_EQ(failure_after("true"), "none");
  fs::remove(directory.path() / "b.eps");
  for (const auto* end : {"-c 0", "-c 3000", "-n -20", "-n -1"}) {
    EXPECT_EQ(failure_after(std::string("head ") + end + " \"$last\" >cut; mv cut \"$last\""),
              "pdftops: what it wrote is not whole");
  }
  EXPECT_NE(failure_after("rm \"$last\""), "none");
  EXPECT_EQ(failure_after("echo 'Error: why' >&2; exit 3"), "pdftops: Error: why");
  with.tools.gs =
      write_script(directory, "gs", "for a; do case $a in -sOutputFile=*) : >${a#*=};; esac; done");
  EXPECT_NE(failure_after("true"), "none");
  EXPECT_FALSE(fs::exists(directory.path() / "b.eps"));
}

TEST_F(figures, with_something_transparent_come_as_bitmaps_from_a_detour) {
  const figure original =
      figure_of(header + "%%BoundingBox: 0 0 60 40\n" +
                "{0.5 .setfillconstantalpha} stopped pop\n" + drawing_at(0, 0) + "showpage\n");
  take_detour_to("b.eps", original);
  fs::remove(directory.path() / "b.eps");
  // By itself Ghostscript knows no such thing in PostScript.
  with.tools.gs =
      write_script(directory, "gs", "exec " + *with.tools.gs + " -dALLOWPSTRANSPARENCY \"$@\"");
  try {
    take_detour_to("b.eps", original);
    ADD_FAILURE() << "it was not noticed";
  } catch (const dead_end& end) {
    EXPECT_EQ(end.result, verdict::not_kept);
    EXPECT_TRUE(end.reason.starts_with("the detour makes one bitmap")) << end.reason;
  }
  EXPECT_FALSE(fs::exists(directory.path() / "b.eps"));
}

}  // namespace
}  // namespace trellion::testing
