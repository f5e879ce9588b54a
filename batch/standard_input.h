#pragma once

#include <string>

#include "batch/interruption.h"

namespace trellion::batch {

/// All of standard input. Throws run_error when it cannot be read, or an interruption comes first:
/// it may be a terminal.
std::string read_standard_input(const interruption& interrupted);

}  // namespace trellion::batch
