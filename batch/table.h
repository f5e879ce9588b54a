#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "batch/file_report.h"
#include "files.h"

namespace trellion::batch {

/// What became of a file in a few words: the verdict and, unless a result was written, why.
std::string in_words(const file_report& report);

/// Writes the reports as a table for people, with the totals of what was written.
void write_table(const std::vector<file_report>& reports, bool with_hairlines, text_writer& out);

/// What a report that write_tsv has written begins with.
inline constexpr std::string_view report_begin = "file\tresult\t";

/// Writes them as tab-separated values below a line of headings. What is unknown is left empty;
/// texts are escaped.
void write_tsv(const std::vector<file_report>& reports, text_writer& out);

}  // namespace trellion::batch
