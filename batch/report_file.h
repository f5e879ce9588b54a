#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "batch/file_report.h"
#include "files.h"

namespace trellion::batch {

/// Opens the file for a report, before the work, so that a wrong name does not show after hours.
/// Nothing is replaced but a report of ours, or what holds nothing, such as a terminal; never an
/// input or the result of one. Null when the name is empty. Throws run_error.
std::unique_ptr<output_file> open_report(const std::filesystem::path& name,
                                         const std::vector<std::filesystem::path>& inputs);

/// Writes the reports to the file and closes it. Throws run_error.
void write_report(const std::vector<file_report>& reports, output_file& file);

}  // namespace trellion::batch
