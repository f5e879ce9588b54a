#include "batch/report_file.h"

#include <fstream>
#include <string>
#include <system_error>

#include "batch/inputs.h"
#include "batch/table.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

bool is_report(const fs::path& file) {
  std::ifstream existing(file, std::ios::binary);
  std::string begin(report_begin.size(), '\0');
  existing.read(begin.data(), static_cast<std::streamsize>(begin.size()));
  return begin == report_begin;
}

}  // namespace

std::unique_ptr<output_file> open_report(const fs::path& name,
                                         const std::vector<fs::path>& inputs) {
  if (name.empty()) return nullptr;
  const auto refuse = [&name](const char* why) {
    throw run_error("cannot write the report to '" + name.string() + "': " + why);
  };
  for (const fs::path& input : inputs) {
    if (is_same_place(name, input) || is_same_place(name, result_path(input))) {
      refuse("it is an input or a result");
    }
  }
  std::error_code ignored;
  // Opening it would wait for somebody who reads.
  if (fs::is_fifo(name, ignored) && !name.string().starts_with("/dev/")) refuse("it is a pipe");
  const bool holds_something =
      fs::is_regular_file(name, ignored) && fs::file_size(name, ignored) > 0;
  if (holds_something && !is_report(name)) refuse("it holds something else");
  return std::make_unique<output_file>(name, output_file::mode::replace);
}

void write_report(const std::vector<file_report>& reports, output_file& file) {
  text_writer report(file);
  write_tsv(reports, report);
  report.flush();
  file.close();
}

}  // namespace trellion::batch
