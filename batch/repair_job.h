#pragma once

#include "batch/file_report.h"
#include "batch/inputs.h"
#include "batch/options.h"
#include "batch/process.h"

namespace trellion::batch {

/// Repairs a file as the options say, in a private directory beside its result, and puts the best
/// one in its place when it is good. Everything that goes wrong is in the report.
file_report repair_file(const work_item& item, const batch_options& options,
                        const process_runner& runner);

}  // namespace trellion::batch
