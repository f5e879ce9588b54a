#include "batch/table.h"

#include <gtest/gtest.h>

#include <map>

#include "batch/text.h"
#include "support.h"

namespace trellion::testing {
namespace {

using namespace batch;

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
  failed.file = "name\x1b[2J.eps";
  failed.result = verdict::failed;
  failed.reason = "gs:\rno\nfont\xc2\x9b!";
  failed.bytes_before = 77;
  file_report existing = written("c.eps");
  existing.result = verdict::exists;
  existing.reason = "older than the figure; -f replaces it";
  captured_text out;
  write_table({written("\xc3\xa4.eps"), failed, existing}, false, out);
  const std::vector<std::string> lines = split(out.text(), '\n');
  ASSERT_EQ(lines.size(), 6U);
  // A letter of two bytes takes one column.
  EXPECT_EQ(lines[1].find("-s2"), lines[3].find("-s2") + 1);
  // Numbers end in the same column, and what is wide comes last.
  EXPECT_EQ(lines[3].find(" 1000 "), lines[4].find(" 2000 "));
  EXPECT_EQ(lines[1].find("written  70.0%"), lines[3].find("exists   70.0%") + 1);
  EXPECT_TRUE(lines[3].ends_with("-s2  older than the figure; -f replaces it")) << lines[3];
  // Where there is no result there are no numbers.
  EXPECT_TRUE(
      lines[2].ends_with("name?[2J.eps  FAILED: gs:?no?font?"
                         "?!"))
      << lines[2];
  for (const auto* total : {" 70.0% ", " 20 ", " 4 ", " 2000 ", " 600 ", " 2.5"}) {
    EXPECT_NE(lines[4].find(total), std::string::npos) << total;
  }
  EXPECT_EQ(lines[5], "3 files: 1 written, 1 FAILED, 1 exists");
  EXPECT_EQ(printable("\xe2\x82\xac"), "\xe2\x82\xac");
  EXPECT_EQ(printable(std::string_view("\xe2\x82\xac", 2)), "??") << "a character that is cut";
}

TEST(table, leaves_out_what_would_make_it_wider_than_a_terminal) {
  const auto headings = [](const std::vector<file_report>& reports, bool with_hairlines) {
    captured_text out;
    write_table(reports, with_hairlines, out);
    const std::vector<std::string> lines = split(out.text(), '\n');
    for (std::size_t n = 0; n + 1 < lines.size(); ++n) EXPECT_LE(lines[n].size(), 80U) << lines[n];
    return lines.front().substr(lines.front().find("result"));
  };
  EXPECT_EQ(headings({written("c.eps")}, false),
            "result   saved  bytes  after  polygons  after  seconds  way");
  file_report large = written("thirty_letters_are_no_long.eps");
  large.bytes_before = 66'800'000;
  large.bytes_after = 60'000'000;
  large.way = "detour pdf";
  EXPECT_EQ(headings({large}, false), "result   saved     bytes     after  way");
  large.hairlines_before = {6429, 6429};
  EXPECT_EQ(headings({large}, true), "result   saved  hairlines  after  way");
  large.result = verdict::possible;
  EXPECT_EQ(headings({large}, false), "result            saved  way");
  large.result = verdict::exists;
  large.reason = "-f replaces it";
  EXPECT_EQ(headings({large}, false), "result  saved  way");
  // What nobody knows has no column, and a long name costs no other.
  large = written("c.eps");
  large.way = "";
  large.polygons_before = large.polygons_after = {};
  EXPECT_EQ(headings({large}, true), "result   saved  bytes  after  seconds  hairlines  after");
  captured_text out;
  write_table({written(std::string(90, 'n'))}, false, out);
  EXPECT_NE(out.text().find(" bytes "), std::string::npos);
}

TEST(table, as_tab_separated_values_keeps_every_byte_apart) {
  file_report odd = written("a\tb\nc\\d\x1b.eps");
  odd.reason = "\x7f \xc3\xa4 \xe4 \xc2\x9b";
  odd.hairlines_after.cairo.reset();
  captured_text out;
  write_tsv({odd}, out);
  EXPECT_TRUE(out.text().starts_with(report_begin));
  const std::vector<std::string> lines = split(out.text(), '\n');
  const std::vector<std::string> headings = split(lines[0], '\t');
  const std::vector<std::string> values = split(lines[1] + '\t', '\t');
  ASSERT_EQ(headings.size(), values.size());
  std::map<std::string, std::string> row;
  for (std::size_t i = 0; i < values.size(); ++i) row[headings[i]] = values[i];
  const std::map<std::string, std::string> expected = {
      {"file", "a\\tb\\nc\\\\d\\x1b.eps"},
      {"result", "written"},
      {"polygons_after", "2"},
      {"reason", "\\x7f \xc3\xa4 \\xe4 \\xc2\\x9b"},
      {"hairlines_gs_before", "500"},
      {"hairlines_cairo_before", "40"},
      {"hairlines_cairo_after", ""}};
  for (const auto& [heading, field] : expected) EXPECT_EQ(row[heading], field) << heading;

  odd.earlier_row = "as\tit\twas";
  captured_text again;
  write_tsv({odd}, again);
  EXPECT_EQ(split(again.text(), '\n').back(), "as\tit\twas");
}

TEST(verdicts, have_an_order_and_a_status) {
  const std::vector<verdict> by_gravity = {
      verdict::written,  verdict::possible,        verdict::exists,
      verdict::skipped,  verdict::nothing_to_join, verdict::not_kept,
      verdict::withheld, verdict::failed,          verdict::interrupted};
  for (std::size_t i = 0; i < by_gravity.size(); ++i) {
    EXPECT_EQ(is_good(by_gravity[i]), i < 6);
    for (std::size_t j = 0; j < by_gravity.size(); ++j) {
      EXPECT_EQ(is_graver(by_gravity[i], by_gravity[j]), i > j);
    }
  }
  EXPECT_EQ(sum(written("").hairlines_before), 540);
}

}  // namespace
}  // namespace trellion::testing
