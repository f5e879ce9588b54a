#include "batch/table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "batch/text.h"
#include "support.h"

namespace trellion::testing {
namespace {

using namespace batch;

std::vector<std::string> fields(const std::string& line) {
  std::vector<std::string> result;
  std::istringstream stream(line);
  for (std::string field; std::getline(stream, field, '\t');) result.push_back(field);
  return result;
}

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) result.push_back(line);
  return result;
}

file_report written(const std::string& file) {
  file_report report;
  report.file = file;
  report.result = verdict::written;
  report.way = "-s2";
  report.polygons_before = 10;
  report.polygons_after = 2;
  report.bytes_before = 1000;
  report.bytes_after = 300;
  report.picture = "same";
  report.hairlines_before = {500, 40};
  report.hairlines_after = {0, 3};
  report.seconds = 1.25;
  return report;
}

TEST(table, lines_up_and_sums_up_what_was_written) {
  file_report failed;
  failed.file = "a figure with a long name\x1b[2J.eps";
  failed.result = verdict::failed;
  failed.reason = "gs:\rno\nfont\xc2\x9b!";
  failed.bytes_before = 77;
  captured_text out;
  write_table({written("\xc3\xa4.eps"), failed, written("c.eps")}, true, out);
  const std::vector<std::string> lines = lines_of(out.text());
  ASSERT_EQ(lines.size(), 5U);
  // A letter of two bytes takes one column.
  EXPECT_EQ(lines[1].find("-s2"), lines[3].find("-s2") + 1);
  // Numbers end in the same column.
  EXPECT_EQ(lines[2].find(" 77 ") + 4, lines[3].find(" 1000 ") + 6);
  EXPECT_NE(lines[1].find("500/40"), std::string::npos);
  EXPECT_NE(lines[2].find("name?[2J.eps"), std::string::npos);
  EXPECT_NE(lines[2].find("FAILED: gs:?no?font?"
                          "?!"),
            std::string::npos);
  EXPECT_NE(lines[4].find("written: 2 of 3"), std::string::npos);
  for (const auto* total : {" 20 ", " 4 ", " 2000 ", " 600 "}) {
    EXPECT_NE(lines[4].find(total), std::string::npos) << total;
  }
  captured_text plain;
  write_table({written("c.eps")}, false, plain);
  EXPECT_EQ(plain.text().find("500"), std::string::npos);
}

TEST(table, shows_no_character_that_is_cut) {
  EXPECT_EQ(printable("\xe2\x82\xac"), "\xe2\x82\xac");
  EXPECT_EQ(printable(std::string_view("\xe2\x82\xac", 2)), "??");
}

TEST(table, as_tab_separated_values_keeps_every_byte_apart) {
  file_report odd = written("a\tb\nc\\d\x1b.eps");
  odd.reason = "\x7f \xc3\xa4 \xe4 \xc2\x9b";
  odd.hairlines_after.cairo.reset();
  captured_text out;
  write_tsv({odd}, out);
  EXPECT_TRUE(out.text().starts_with(report_begin));
  const std::vector<std::string> lines = lines_of(out.text());
  ASSERT_EQ(lines.size(), 2U);
  const std::vector<std::string> headings = fields(lines[0]);
  const std::vector<std::string> values = fields(lines[1] + "\t");
  ASSERT_EQ(headings.size(), values.size());
  const auto value = [&](const std::string& heading) {
    return values[static_cast<std::size_t>(std::ranges::find(headings, heading) -
                                           headings.begin())];
  };
  EXPECT_EQ(value("file"), "a\\tb\\nc\\\\d\\x1b.eps");
  EXPECT_EQ(value("result"), "written");
  EXPECT_EQ(value("polygons_after"), "2");
  EXPECT_EQ(value("reason"), "\\x7f \xc3\xa4 \\xe4 \\xc2\\x9b");
  EXPECT_EQ(value("hairlines_gs_before"), "500");
  EXPECT_EQ(value("hairlines_cairo_before"), "40");
  EXPECT_EQ(value("hairlines_cairo_after"), "");
}

TEST(verdicts, have_an_order_and_a_status) {
  const std::vector<verdict> by_gravity = {
      verdict::written,  verdict::exists, verdict::nothing_to_join, verdict::not_kept,
      verdict::withheld, verdict::failed, verdict::interrupted};
  for (std::size_t i = 0; i < by_gravity.size(); ++i) {
    EXPECT_EQ(is_good(by_gravity[i]), i < 4);
    for (std::size_t j = 0; j < by_gravity.size(); ++j) {
      EXPECT_EQ(is_graver(by_gravity[i], by_gravity[j]), i > j);
    }
  }
  EXPECT_EQ(sum(written("").hairlines_before), 540);
}

}  // namespace
}  // namespace trellion::testing
