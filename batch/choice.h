#pragma once

#include <filesystem>
#include <functional>

#include "batch/file_report.h"
#include "batch/options.h"
#include "batch/workshop.h"

namespace trellion::batch {

/// Takes the best result while it is there, and says what became of it. May throw dead_end and
/// run_error.
using result_taker = std::function<verdict(const std::filesystem::path& best)>;

/// Tries all ways that the options ask for, and has the best result taken. Where there is none that
/// can be kept the gravest end is reported.
file_report choose_result(workshop& shop, const batch_options& options, const result_taker& take);

}  // namespace trellion::batch
