#include "batch/table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <utility>

#include "batch/text.h"
#include "param.h"

namespace trellion::batch {
namespace {

std::string_view name_of(verdict result) {
  switch (result) {
    case verdict::written: return "written";
    case verdict::exists: return "exists";
    case verdict::nothing_to_join: return "nothing to join";
    case verdict::not_kept: return "not kept";
    case verdict::withheld: return "WITHHELD";
    case verdict::failed: return "FAILED";
    case verdict::interrupted: break;
  }
  return "interrupted";
}

std::string count_text(std::optional<std::int64_t> count) {
  return count ? std::to_string(*count) : "";
}

/// Both counts in one column: by Ghostscript, by cairo.
std::string hairlines_text(const hairline_counts& counts) {
  if (!counts.ghostscript) return "";
  return count_text(counts.ghostscript) + (counts.cairo ? "/" + count_text(counts.cairo) : "");
}

std::string seconds_text(double seconds) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f", seconds);
  return text.data();
}

using table_row = std::vector<std::string>;

struct column {
  const char* heading;
  bool is_numeric;
};

std::vector<column> columns_of_table(bool with_hairlines) {
  std::vector<column> columns = {{"file", false},   {"way", false},  {"polygons", true},
                                 {"after", true},   {"bytes", true}, {"after", true},
                                 {"picture", false}};
  if (with_hairlines) columns.insert(columns.end(), {{"hairlines", true}, {"after", true}});
  columns.insert(columns.end(), {{"seconds", true}, {"result", false}});
  return columns;
}

void write_row(const table_row& row, const std::vector<column>& columns,
               const std::vector<std::size_t>& widths, text_writer& out) {
  std::string line;
  for (std::size_t i = 0; i < row.size(); ++i) {
    const std::size_t padding = widths[i] - width_of(row[i]);
    if (i > 0) line += "  ";
    if (columns[i].is_numeric) line.append(padding, ' ');
    line += row[i];
    if (!columns[i].is_numeric) line.append(padding, ' ');
  }
  out.put(std::string_view(line).substr(0, line.find_last_not_of(' ') + 1)).put(nl);
}

/// A row of the table, for a file or for the totals.
table_row row_of(const file_report& report, std::string first, std::string last,
                 bool with_hairlines) {
  table_row row = {std::move(first),
                   report.way,
                   count_text(report.polygons_before),
                   count_text(report.polygons_after),
                   count_text(report.bytes_before),
                   count_text(report.bytes_after),
                   report.picture};
  if (with_hairlines) {
    row.push_back(hairlines_text(report.hairlines_before));
    row.push_back(hairlines_text(report.hairlines_after));
  }
  row.push_back(seconds_text(report.seconds));
  row.push_back(std::move(last));
  return row;
}

/// What the written results sum up to.
file_report total_of(const std::vector<file_report>& reports) {
  file_report total;
  total.polygons_before = total.polygons_after = total.bytes_before = total.bytes_after = 0;
  for (const file_report& report : reports) {
    total.seconds += report.seconds;
    if (report.result != verdict::written) continue;
    *total.polygons_before += report.polygons_before.value_or(0);
    *total.polygons_after += report.polygons_after.value_or(0);
    *total.bytes_before += report.bytes_before.value_or(0);
    *total.bytes_after += report.bytes_after.value_or(0);
  }
  return total;
}

}  // namespace

std::string in_words(const file_report& report) {
  std::string words(name_of(report.result));
  if (!report.reason.empty()) words += ": " + report.reason;
  return printable(words);
}

void write_table(const std::vector<file_report>& reports, bool with_hairlines, text_writer& out) {
  const std::vector<column> columns = columns_of_table(with_hairlines);
  std::vector<table_row> rows(1);
  for (const column& c : columns) rows.front().emplace_back(c.heading);
  for (const file_report& report : reports) {
    rows.push_back(
        row_of(report, printable(report.file.native()), in_words(report), with_hairlines));
  }
  const auto n_written = std::ranges::count(reports, verdict::written, &file_report::result);
  rows.push_back(
      row_of(total_of(reports),
             "written: " + std::to_string(n_written) + " of " + std::to_string(reports.size()), "",
             with_hairlines));

  std::vector<std::size_t> widths(columns.size());
  for (const table_row& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], width_of(row[i]));
  }
  for (const table_row& row : rows) write_row(row, columns, widths, out);
}

void write_tsv(const std::vector<file_report>& reports, text_writer& out) {
  out.put(report_begin)
      .put(
          "way\tpolygons_before\tpolygons_after\tbytes_before\tbytes_after\tpicture\t"
          "seconds\treason\thairlines_gs_before\thairlines_gs_after\thairlines_cairo_before\t"
          "hairlines_cairo_after")
      .put(nl);
  for (const file_report& report : reports) {
    const std::array fields = {escaped(report.file.string()),
                               std::string(name_of(report.result)),
                               report.way,
                               count_text(report.polygons_before),
                               count_text(report.polygons_after),
                               count_text(report.bytes_before),
                               count_text(report.bytes_after),
                               report.picture,
                               seconds_text(report.seconds),
                               escaped(report.reason),
                               count_text(report.hairlines_before.ghostscript),
                               count_text(report.hairlines_after.ghostscript),
                               count_text(report.hairlines_before.cairo),
                               count_text(report.hairlines_after.cairo)};
    for (std::size_t i = 0; i < fields.size(); ++i) {
      out.put(fields[i]).put(i + 1 < fields.size() ? '\t' : nl);
    }
  }
}

}  // namespace trellion::batch
