#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "batch/file_report.h"
#include "files.h"

namespace trellion::batch {

/// What became of a file in a few words: the verdict and, unless a result was written, why.
std::string in_words(const file_report& report);

/// By how much the result is smaller, "12.3%"; empty where there is none.
std::string saved_text(const file_report& report);

/// Writes the reports as a table for people, with the totals of the results and a tally. Columns
/// that say nothing are left out, and the less important ones where rows of results would be wider
/// than a terminal. Reports without a result have no numbers.
void write_table(const std::vector<file_report>& reports, bool with_hairlines, text_writer& out);

/// What a report that write_tsv has written begins with.
inline constexpr std::string_view report_begin = "file\tresult\t";

/// The line of headings.
inline constexpr std::string_view report_headings =
    "file\tresult\tway\tpolygons_before\tpolygons_after\tbytes_before\tbytes_after\tpicture\t"
    "seconds\treason\thairlines_gs_before\thairlines_gs_after\thairlines_cairo_before\t"
    "hairlines_cairo_after";

/// Writes them as tab-separated values below a line of headings. What is unknown is left empty;
/// texts are escaped. A row of an earlier report stays as it was.
void write_tsv(const std::vector<file_report>& reports, text_writer& out);

}  // namespace trellion::batch
