#include "table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "inputs.h"
#include "param.h"

namespace trellion::batch {
namespace {

std::string_view name_of(verdict result) {
  switch (result) {
    case verdict::written: return "written";
    case verdict::exists: return "exists";
    case verdict::nothing_to_join: return "nothing to join";
    case verdict::not_smaller: return "not kept";
    case verdict::withheld: return "WITHHELD";
    case verdict::failed: return "FAILED";
    case verdict::interrupted: break;
  }
  return "interrupted";
}

std::string count_text(std::int64_t count) { return count < 0 ? "" : std::to_string(count); }

std::string seconds_text(double seconds) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f", seconds);
  return text.data();
}

/// How many columns a text in UTF-8 takes, wide and combining characters aside.
std::size_t width_of(std::string_view text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](unsigned char c) { return (c & 0xc0) != 0x80; }));
}

constexpr std::size_t n_columns = 9;
using table_row = std::array<std::string, n_columns>;

constexpr std::array<bool, n_columns> is_numeric = {false, false, true, true, true,
                                                    true,  false, true, false};

void write_row(const table_row& row, const std::array<std::size_t, n_columns>& widths,
               text_writer& out) {
  std::string line;
  for (std::size_t i = 0; i < n_columns; ++i) {
    const std::size_t padding = widths[i] - width_of(row[i]);
    if (i > 0) line += "  ";
    if (is_numeric[i]) line.append(padding, ' ');
    line += row[i];
    if (!is_numeric[i]) line.append(padding, ' ');
  }
  out.put(std::string_view(line).substr(0, line.find_last_not_of(' ') + 1)).put(nl);
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '\t') {
      result += "\\t";
    } else if (c == '\n') {
      result += "\\n";
    } else if (c == '\\') {
      result += "\\\\";
    } else {
      result += c;
    }
  }
  return result;
}

}  // namespace

std::string printable(std::string text) {
  unsigned char before = 0;
  for (char& c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool is_control = byte < ' ' || byte == 0x7f;
    // The control characters beyond ASCII have two bytes in UTF-8.
    const bool is_second_of_control = before == 0xc2 && byte >= 0x80 && byte < 0xa0;
    if (is_control || is_second_of_control) c = '?';
    before = byte;
  }
  return text;
}

std::string in_words(const file_report& report) {
  std::string words(name_of(report.result));
  if (!report.reason.empty()) words += ": " + report.reason;
  return printable(words);
}

void write_table(const std::vector<file_report>& reports, text_writer& out) {
  std::vector<table_row> rows = {
      {"file", "way", "polygons", "after", "bytes", "after", "picture", "seconds", "result"}};
  file_report total;
  total.polygons_before = total.polygons_after = total.bytes_before = total.bytes_after = 0;
  std::int64_t n_written = 0;
  for (const file_report& report : reports) {
    rows.push_back({printable(report.file), report.way, count_text(report.polygons_before),
                    count_text(report.polygons_after), count_text(report.bytes_before),
                    count_text(report.bytes_after), report.picture, seconds_text(report.seconds),
                    in_words(report)});
    total.seconds += report.seconds;
    if (report.result != verdict::written) continue;
    ++n_written;
    total.polygons_before += std::max<std::int64_t>(report.polygons_before, 0);
    total.polygons_after += std::max<std::int64_t>(report.polygons_after, 0);
    total.bytes_before += report.bytes_before;
    total.bytes_after += report.bytes_after;
  }
  rows.push_back({"written: " + std::to_string(n_written) + " of " + std::to_string(reports.size()),
                  "", count_text(total.polygons_before), count_text(total.polygons_after),
                  count_text(total.bytes_before), count_text(total.bytes_after), "",
                  seconds_text(total.seconds), ""});

  std::array<std::size_t, n_columns> widths{};
  for (const table_row& row : rows) {
    for (std::size_t i = 0; i < n_columns; ++i) widths[i] = std::max(widths[i], width_of(row[i]));
  }
  for (const table_row& row : rows) write_row(row, widths, out);
}

void write_tsv(const std::vector<file_report>& reports, text_writer& out) {
  out.put(
         "file\tresult\tway\tpolygons_before\tpolygons_after\tbytes_before\tbytes_after\tpicture\t"
         "seconds\treason")
      .put(nl);
  for (const file_report& report : reports) {
    out.put(escaped(report.file.string())).put('\t').put(name_of(report.result)).put('\t');
    out.put(report.way).put('\t').put(count_text(report.polygons_before)).put('\t');
    out.put(count_text(report.polygons_after)).put('\t').put(count_text(report.bytes_before));
    out.put('\t').put(count_text(report.bytes_after)).put('\t').put(report.picture).put('\t');
    out.put(seconds_text(report.seconds)).put('\t').put(escaped(report.reason)).put(nl);
  }
}

}  // namespace trellion::batch
