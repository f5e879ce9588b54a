#include "batch/table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <string_view>
#include <utility>

#include "batch/text.h"
#include "param.h"

namespace trellion::batch {
namespace {

std::string_view name_of(verdict result) {
  switch (result) {
    case verdict::written: return "written";
    case verdict::possible: return "would be written";
    case verdict::exists: return "exists";
    case verdict::skipped: return "skipped";
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

/// The fields of a row, from the left on, and what it says behind them, as wide as it is.
struct table_row {
  std::vector<std::string> fields;
  std::string remark;
};

struct column {
  const char* heading;
  bool is_numeric;
  int dispensable;  ///< where there is no room the highest go first; 0 stays
};

std::vector<column> columns_of_table(bool with_hairlines) {
  std::vector<column> columns = {{"file", false, 0}, {"result", false, 0}, {"saved", true, 0},
                                 {"bytes", true, 1}, {"after", true, 1},   {"polygons", true, 2},
                                 {"after", true, 2}, {"seconds", true, 3}};
  if (with_hairlines) columns.insert(columns.end(), {{"hairlines", true, 0}, {"after", true, 0}});
  columns.push_back({"way", false, 0});
  return columns;
}

/// The longest of the texts in each column.
std::vector<std::size_t> widths_of(const std::vector<table_row>& rows) {
  std::vector<std::size_t> widths(rows.front().fields.size());
  for (const table_row& row : rows) {
    for (std::size_t i = 0; i < row.fields.size(); ++i) {
      widths[i] = std::max(widths[i], width_of(row.fields[i]));
    }
  }
  return widths;
}

/// Whether rows of results fit on a terminal, long names and remarks aside, for which nothing makes
/// room.
bool fit_terminal(const std::vector<table_row>& rows) {
  constexpr std::size_t terminal = 80;
  constexpr std::size_t long_name = 30;
  constexpr std::size_t long_remark = 20;
  std::vector<std::size_t> widths = widths_of(rows);
  widths.front() = std::min(widths.front(), long_name);
  return std::ranges::all_of(rows, [&](const table_row& row) {
    if (row.fields.size() == 1) return true;
    std::size_t width = width_of(row.remark) > long_remark ? 0 : width_of(row.remark);
    for (std::size_t i = 0; i < row.fields.size(); ++i) width += widths[i] + 2;
    return width <= terminal + (row.remark.empty() ? 2 : 0);
  });
}

/// Takes the columns away that are as dispensable as that or, when it is 0, those that say nothing.
void take_away(int dispensable, std::vector<column>& columns, std::vector<table_row>& rows) {
  constexpr std::size_t n_fixed = 2;
  for (std::size_t i = columns.size(); i-- > n_fixed;) {
    const bool is_said = std::any_of(rows.begin() + 1, rows.end(), [i](const table_row& row) {
      return row.fields.size() > i && !row.fields[i].empty();
    });
    if (dispensable == 0 ? is_said : columns[i].dispensable != dispensable) continue;
    const auto at = static_cast<std::ptrdiff_t>(i);
    columns.erase(columns.begin() + at);
    for (table_row& row : rows) {
      if (row.fields.size() > i) row.fields.erase(row.fields.begin() + at);
    }
  }
}

void write_row(const table_row& row, const std::vector<column>& columns,
               const std::vector<std::size_t>& widths, text_writer& out) {
  std::string line;
  for (std::size_t i = 0; i < row.fields.size(); ++i) {
    const std::size_t padding = widths[i] - width_of(row.fields[i]);
    if (columns[i].is_numeric) line.append(padding, ' ');
    line += row.fields[i];
    if (!columns[i].is_numeric) line.append(padding, ' ');
    line += "  ";
  }
  line += row.remark;
  out.put(std::string_view(line).substr(0, line.find_last_not_of(' ') + 1)).put(nl);
}

bool has_result(const file_report& report) {
  return report.result == verdict::written || report.result == verdict::possible ||
         report.result == verdict::exists;
}

/// A row of the table, for a result or for the totals.
table_row row_of(const file_report& report, std::string file, std::string result,
                 bool with_hairlines) {
  std::vector<std::string> fields = {std::move(file),
                                     std::move(result),
                                     saved_text(report),
                                     count_text(report.bytes_before),
                                     count_text(report.bytes_after),
                                     count_text(report.polygons_before),
                                     count_text(report.polygons_after),
                                     seconds_text(report.seconds)};
  if (with_hairlines) {
    fields.push_back(hairlines_text(report.hairlines_before));
    fields.push_back(hairlines_text(report.hairlines_after));
  }
  fields.push_back(report.way);
  return {std::move(fields), printable(report.reason)};
}

/// Of a file without a result the row says why, and has no numbers.
table_row row_of(const file_report& report, bool with_hairlines) {
  std::string file = printable(report.file.native());
  if (!has_result(report)) return {{std::move(file)}, in_words(report)};
  return row_of(report, std::move(file), std::string(name_of(report.result)), with_hairlines);
}

/// What the results sum up to. What none of them knows is unknown.
file_report total_of(const std::vector<file_report>& reports) {
  using number = std::optional<std::int64_t> file_report::*;
  file_report total;
  for (const file_report& report : reports) {
    total.seconds += report.seconds;
    if (!has_result(report)) continue;
    for (const number n : {&file_report::polygons_before, &file_report::polygons_after,
                           &file_report::bytes_before, &file_report::bytes_after}) {
      if (report.*n) total.*n = (total.*n).value_or(0) + *(report.*n);
    }
  }
  return total;
}

/// "5 files: 3 written, 2 FAILED"
std::string tally_of(const std::vector<file_report>& reports) {
  std::map<std::string_view, std::int64_t> counts;
  for (const file_report& report : reports) ++counts[name_of(report.result)];
  std::string tally = std::to_string(reports.size()) + (reports.size() == 1 ? " file" : " files");
  const char* separator = ": ";
  for (const file_report& report : reports) {
    const auto found = counts.find(name_of(report.result));
    if (found == counts.end()) continue;
    tally += separator + std::to_string(found->second) + ' ' + std::string(found->first);
    separator = ", ";
    counts.erase(found);
  }
  return tally;
}

}  // namespace

std::string in_words(const file_report& report) {
  std::string words(name_of(report.result));
  if (!report.reason.empty()) words += ": " + report.reason;
  return printable(words);
}

std::string saved_text(const file_report& report) {
  if (report.bytes_before.value_or(0) <= 0 || !report.bytes_after) return "";
  const auto before = static_cast<double>(*report.bytes_before);
  constexpr double percent = 100;
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.1f%%",
                percent * (before - static_cast<double>(*report.bytes_after)) / before);
  return text.data();
}

void write_table(const std::vector<file_report>& reports, bool with_hairlines, text_writer& out) {
  std::vector<column> columns = columns_of_table(with_hairlines);
  std::vector<table_row> rows(1);
  for (const column& c : columns) rows.front().fields.emplace_back(c.heading);
  for (const file_report& report : reports) rows.push_back(row_of(report, with_hairlines));
  rows.push_back(row_of(total_of(reports), "all results", "", with_hairlines));
  take_away(0, columns, rows);
  int dispensable = 0;
  for (const column& c : columns) dispensable = std::max(dispensable, c.dispensable);
  for (; dispensable > 0 && !fit_terminal(rows); --dispensable) {
    take_away(dispensable, columns, rows);
  }

  const std::vector<std::size_t> widths = widths_of(rows);
  for (const table_row& row : rows) write_row(row, columns, widths, out);
  out.put(tally_of(reports)).put(nl);
}

void write_tsv(const std::vector<file_report>& reports, text_writer& out) {
  out.put(report_headings).put(nl);
  for (const file_report& report : reports) {
    if (!report.earlier_row.empty()) {
      out.put(report.earlier_row).put(nl);
      continue;
    }
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
