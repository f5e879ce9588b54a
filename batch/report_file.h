#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "batch/file_report.h"
#include "batch/inputs.h"
#include "files.h"

namespace trellion::batch {

/// A report to be written when the work is done.
struct report_file {
  std::filesystem::path name;
  std::map<std::string, std::string> rows;  ///< of the report that it replaces, by file
  std::unique_ptr<output_file> opened;
};

/// Opens the file for a report, before the work, so that a wrong name does not show after hours.
/// Nothing is replaced but a report of ours, or what holds nothing, such as a terminal; never an
/// input or the result of one. Null when the name is empty. Throws run_error.
std::unique_ptr<report_file> open_report(const std::filesystem::path& name,
                                         const std::vector<work_item>& figures);

/// Gives the files whose results exist what the earlier report told when these were written, as
/// far as sizes are still the same and no figure is newer than its result.
void take_over(const report_file& earlier, std::vector<file_report>& reports);

/// Writes the reports to the file, in place of what it held. Throws run_error.
void write_report(const std::vector<file_report>& reports, const report_file& file);

}  // namespace trellion::batch
