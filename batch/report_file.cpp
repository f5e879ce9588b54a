#include "batch/report_file.h"

#include <cstdint>
#include <fstream>
#include <optional>
#include <sstream>
#include <system_error>

#include "batch/lines.h"
#include "batch/table.h"
#include "batch/text.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

bool is_report(const fs::path& file) {
  std::ifstream existing(file, std::ios::binary);
  std::string begin(report_begin.size(), '\0');
  existing.read(begin.data(), static_cast<std::streamsize>(begin.size()));
  return begin == report_begin;
}

/// The rows of a report, by their first fields. None when the columns are others.
std::map<std::string, std::string> rows_of(const fs::path& name) {
  std::map<std::string, std::string> rows;
  std::ifstream existing(name, std::ios::binary);
  std::string line;
  if (!std::getline(existing, line) || line != report_headings) return rows;
  while (std::getline(existing, line)) rows[line.substr(0, line.find('\t'))] = line;
  return rows;
}

std::optional<std::int64_t> number_in(const std::string& field) {
  std::int64_t number = 0;
  return read_number(field, number) ? std::optional(number) : std::nullopt;
}

/// Takes what a row tells of the result that is still there.
void take_over(const std::string& row, file_report& report) {
  std::vector<std::string> fields;
  std::istringstream text(row + '\t');
  for (std::string field; std::getline(text, field, '\t');) fields.push_back(field);
  if (fields.size() != 14 || fields[1] != "written" ||
      number_in(fields[5]) != report.bytes_before || number_in(fields[6]) != report.bytes_after) {
    return;
  }
  report.earlier_row = row;
  report.way = fields[2];
  report.polygons_before = number_in(fields[3]);
  report.polygons_after = number_in(fields[4]);
  report.picture = fields[7];
  report.hairlines_before = {number_in(fields[10]), number_in(fields[12])};
  report.hairlines_after = {number_in(fields[11]), number_in(fields[13])};
}

}  // namespace

std::unique_ptr<report_file> open_report(const fs::path& name,
                                         const std::vector<work_item>& figures) {
  if (name.empty()) return nullptr;
  const auto refuse = [&name](const char* why) {
    throw run_error("cannot write the report to '" + name.string() + "': " + why);
  };
  for (const work_item& item : figures) {
    if (is_same_place(name, item.file) || is_same_place(name, item.result)) {
      refuse("it is an input or a result");
    }
  }
  std::error_code ignored;
  // Opening it would wait for somebody who reads.
  if (fs::is_fifo(name, ignored) && !name.string().starts_with("/dev/")) refuse("it is a pipe");
  const bool holds_something =
      fs::is_regular_file(name, ignored) && fs::file_size(name, ignored) > 0;
  if (holds_something && !is_report(name)) refuse("it holds something else");
  auto file = std::make_unique<report_file>(report_file{name, {}, {}});
  if (holds_something) file->rows = rows_of(name);
  // Whether it can be written shows now, but what it holds stays until there is something better.
  file->opened = std::make_unique<output_file>(name, output_file::mode::append);
  return file;
}

void take_over(const report_file& earlier, std::vector<file_report>& reports) {
  for (file_report& report : reports) {
    if (report.result != verdict::exists || report.is_stale) continue;
    const auto row = earlier.rows.find(escaped(report.file.string()));
    if (row != earlier.rows.end()) take_over(row->second, report);
  }
}

void write_report(const std::vector<file_report>& reports, const report_file& file) {
  output_file rewritten(file.name, output_file::mode::replace);
  text_writer report(rewritten);
  write_tsv(reports, report);
  report.flush();
  rewritten.close();
}

}  // namespace trellion::batch
