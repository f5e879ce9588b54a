#pragma once

#include "batch/interruption.h"
#include "batch/options.h"
#include "batch/process.h"

namespace trellion::batch {

/// Repairs the figure on standard input to standard output. Where no result is kept the figure
/// passes through as it came, so that what follows goes on; standard error and the status, that of
/// a run on a file, tell. Nothing is written when it was interrupted. Throws run_error.
int run_filter(const batch_options& options, const process_runner& runner,
               const interruption& interrupted);

}  // namespace trellion::batch
