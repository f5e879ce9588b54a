#pragma once

#include <filesystem>

#include "batch/file_report.h"
#include "batch/options.h"
#include "batch/process.h"

namespace trellion::batch {

/// Repairs a file as the options say, in a private directory beside it, and puts the best result in
/// its place when it is good. Everything that goes wrong is in the report.
file_report repair_file(const std::filesystem::path& file, const batch_options& options,
                        const process_runner& runner);

}  // namespace trellion::batch
