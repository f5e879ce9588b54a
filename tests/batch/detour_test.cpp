#include "batch/detour.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "batch/prolog.h"
#include "files.h"

namespace trellion::testing {
namespace {

using batch::eps_page;
using batch::read_page;
using batch::with_page_of;

TEST(detour, drops_what_no_one_names) {
  const std::string kept_1 = "/used { other 1 } def\n";
  const std::string dropped_1 = "/unused {\n  used { 2 } if\n} def\n";
  const std::string kept_2 = "/other 3 def\n/odd { (}) def\n} def\n";
  const std::string dropped_2 =
      "/xyshow where {\n  /show2 { 1 } def\n}{\n  /show2 { 2 } def\n} ifelse\n";
  const std::string head = "%!PS\n%%BeginProlog\n";
  const std::string tail = "%%EndProlog\nused(a)show\n";
  EXPECT_EQ(batch::without_unused_definitions(head + kept_1 + "% why\n" + dropped_1 + kept_2 +
                                              dropped_2 + tail),
            head + kept_1 + kept_2 + tail);
  const std::string maps = "/CIDInit /ProcSet findresource begin\n /CMapName /Wide-H def\nend\n";
  EXPECT_EQ(batch::without_unused_definitions(head + maps + tail), head + tail);
  EXPECT_EQ(batch::without_unused_definitions(head + maps + tail + "/Wide-H\n"),
            head + maps + tail + "/Wide-H\n");
  const std::string named = tail + "/show2 load\n";
  EXPECT_EQ(batch::without_unused_definitions(head + dropped_2 + named), head + dropped_2 + named);
}

// What pdftops writes, from the box to the page.
const std::string begin = "%!PS-Adobe-3.0 EPSF-3.0\n%Produced\n";
const std::string box = "%%BoundingBox: 0 0 5 2\n%%HiResBoundingBox: 0 0 5 2\n";
const std::string prolog = "%%EndComments\n%%BeginProlog\n/q {gsave} def\n%%EndProlog\n";
const std::string page = "pdfStartPage\n%%EndPageSetup\n";
const std::string content = "[] 0 d\n0 0 m\n";
const std::string end = "pdfEndPage\n%%Trailer\n%%EOF\n";

TEST(detour, gets_the_boxes_and_the_origin_of_its_input) {
  const std::string lines =
      "%%Title: t\n%%BoundingBox: 0 3 3 4\n%%HiResBoundingBox: 0.5 3 2.25 4\n";
  const std::string detoured = begin + box + prolog + page + content + end;
  EXPECT_EQ(with_page_of(detoured, read_page("%!PS\n" + lines), {0, 2, 5, 2}),
            "%!PS-Adobe-3.0 EPSF-3.0\n" + lines + "%Produced\n" + prolog + page +
                "0 2 translate\n" + content + end);

  // A file must have a box in whole points, and one at the origin needs nothing else.
  const std::string fine = "%%HiResBoundingBox: 0 0 4.5 2\n";
  EXPECT_EQ(with_page_of(detoured, read_page("%!PS\n" + fine), {0, 0, 5, 2}),
            "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 5 2\n" + fine + "%Produced\n" + prolog +
                page + content + end);
}

TEST(detour, is_refused_with_another_page_or_none) {
  const eps_page original = read_page("%!PS\n%%BoundingBox: -1 2 4 4\n");
  const std::string turned = "%%BoundingBox: 0 0 2 5\n";
  const std::vector<std::string> others = {
      "", begin + prolog + page + content, begin + turned + prolog + page + content,
      begin + box + prolog + content + end, begin + box + page + prolog + content};
  for (const std::string& detoured : others) {
    EXPECT_THROW(with_page_of(detoured, original, {-1, 2, 5, 2}), run_error) << detoured;
  }
}

TEST(detour, tells_what_pdftops_made_of_a_page) {
  const std::string bitmap = "gsave\n[9 0 0 9 0 0] concat\n";
  EXPECT_TRUE(batch::is_whole(page + content + end));
  EXPECT_FALSE(batch::is_whole(page + content + "%%EOF\nshowpage\n"));
  EXPECT_TRUE(batch::is_one_bitmap(prolog + page + bitmap));
  EXPECT_FALSE(batch::is_one_bitmap(prolog + page + content + bitmap));
  EXPECT_TRUE(batch::has_calibrated_colours_only(prolog + page + "/CIEBasedABC\n"));
  EXPECT_FALSE(batch::has_calibrated_colours_only("/CIEBasedABC\n" + prolog + page));
  EXPECT_FALSE(batch::has_calibrated_colours_only(prolog + page + "/CIEBasedABC /DeviceCMYK\n"));
}

}  // namespace
}  // namespace trellion::testing
