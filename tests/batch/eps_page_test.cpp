#include "batch/eps_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace trellion::testing {
namespace {

using batch::bounding_box;
using batch::eps_page;
using batch::file_kind;
using batch::read_page;

const std::string first = "%!PS-Adobe-3.0 EPSF-3.0\n";

TEST(eps_page, takes_the_last_sound_box_of_the_header_with_any_line_ends) {
  const std::string plain = "%%BoundingBox:-1 2\t3.5 4 (mm)";
  const std::string fine = "%%HiResBoundingBox: -0.5 2.25 3.5 4";
  const std::string text = "\x04" + first + "%%BoundingBox: 0 0 9 9\n" + plain +
                           "\n%%Title: a (b)\n" + fine +
                           "\n%%EndComments\n%%Title: c\n%%BoundingBox: 5 5 6 6\n";
  for (const std::string end : {"\n", "\r", "\r\n"}) {
    std::string file;
    for (const char c : text) file += c == '\n' ? end : std::string(1, c);
    const eps_page page = read_page(file);
    EXPECT_EQ(page.box, (bounding_box{-1, 2, 3.5, 4}));
    EXPECT_EQ(page.box_lines, (std::vector{plain, fine}));
    EXPECT_EQ(page.title_line, "%%Title: a (b)");
  }
}

TEST(eps_page, takes_the_last_box_of_the_file_when_the_header_has_none) {
  const std::string embedded =
      "\n%%BeginDocument: a\n%%BeginDocument: b\n%%EndDocument\n%%BoundingBox: 0 0 7 7\n"
      "%%EndDocument\n%%BeginData: 3 Hex Lines\n%%BoundingBox: 0 0 7 7\n%%EndBinary\n%%EndData\n"
      "%%BeginBinary: 30\n%%BeginDocument\n%%BoundingBox: 0 0 7 7\n%%EndBinary\n";
  const std::string trailer = "\n%%EndComments" + embedded +
                              "%%BoundingBox: 0 0 2 2\n x %%BoundingBox: 0 0 7 7\n" + embedded;
  for (const std::string head : {"%%BoundingBox: (atend)", "%%BoundingBox:", "%%BoundingBox: 0 0 7",
                                 "%%BoundingBox: 0 0 7 nan", "%%BoundingBox: 0 0 7 1e8",
                                 "%%BoundingBox: 0 0 7x 7", "%%BoundingBox: 7 0 7 7", "x"}) {
    EXPECT_EQ(read_page(head + trailer).box, (bounding_box{0, 0, 2, 2})) << head;
    EXPECT_FALSE(read_page(head + embedded).box) << head;
  }
  // Whoever gives the finer box alone gives one all the same.
  const eps_page page = read_page(first + "%%HiResBoundingBox: 0 0 1.5 1.5");
  EXPECT_EQ(page.box, (bounding_box{0, 0, 1.5, 1.5}));
  EXPECT_EQ(page.box_lines.size(), 1U);
}

TEST(eps_page, bears_with_endless_lines) {
  const std::string box = "%%BoundingBox: 0 0 1 1\n";
  const std::string endless = "%%BoundingBox: 0 0 7 7 " + std::string(5000, '%') + "\n";
  EXPECT_EQ(read_page(endless + box + endless).box, (bounding_box{0, 0, 1, 1}));
  EXPECT_EQ(read_page(first + "x\n" + box + endless).box, (bounding_box{0, 0, 1, 1}));
  EXPECT_EQ(read_page(first + "x\r" + box).box, (bounding_box{0, 0, 1, 1}));
  EXPECT_FALSE(read_page("").box);
}

TEST(eps_page, finds_postscript_by_its_first_bytes) {
  const std::string head("\xC5\xD0\xD3\xC6\x1E\0\0\0\x04\0\0\0", 12);
  const std::string dos = head + std::string(18, '\0') + "%!PSpreview";
  EXPECT_EQ(batch::kind_of(dos), file_kind::dos_eps);
  EXPECT_EQ(batch::postscript(dos), "%!PS");
  for (const std::size_t size : {4U, 29U, 30U, 33U}) {
    EXPECT_EQ(batch::postscript(std::string_view(dos).substr(0, size)), "") << size;
  }
  std::string broken = dos;
  broken[4] = '\x1D';  // the section begins within the head
  EXPECT_EQ(batch::postscript(broken), "");
  broken[7] = broken[11] = '\xFF';
  EXPECT_EQ(batch::postscript(broken), "");

  const std::map<std::string, file_kind> kinds = {
      {"%!", file_kind::eps},       {"\x04%!PS", file_kind::eps},
      {"%PDF-1.4", file_kind::pdf}, {std::string(257, 'x') + "ustar", file_kind::packed},
      {"\n%PDF-", file_kind::pdf},  {"\x1F\x8B\b", file_kind::gzip},
      {"", file_kind::empty},       {"x %!", file_kind::other}};
  for (const auto& [text, kind] : kinds) EXPECT_EQ(batch::kind_of(text), kind) << text;
  EXPECT_EQ(batch::postscript("x"), "x");
}

TEST(eps_page, frames_the_points_that_a_box_touches) {
  const batch::page_frame frame = batch::frame_of({-0.5, 2, 3.25, 4});
  EXPECT_EQ(frame, (batch::page_frame{-1, 2, 5, 2}));
  EXPECT_EQ(batch::frame_of({-0.5, 2, 3.25, 4}, 3), (batch::page_frame{-4, -1, 11, 8}));
  const std::string head = batch::framing_head(frame);
  EXPECT_EQ(read_page(head).box, (bounding_box{-1, 2, 4, 4}));
  EXPECT_NE(head.find("{ 1 -2 translate }"), std::string::npos);
}

}  // namespace
}  // namespace trellion::testing
