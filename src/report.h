#pragma once

#include <cstdint>

#include "bytes.h"

namespace trellion {

/// Greets the user.
void write_banner(text_writer& console);

/// Writes the structured comment that tells a repaired file from its original: the program's
/// version, the merge limit, and the local date and time.
void write_processing_line(std::int32_t merge_limit, text_writer& out);

/// Milliseconds since the day began, in universal time, so that no change of the local clock's
/// offset counts as time spent.
std::int32_t milliseconds_of_day();

/// Reports the time between two readings of milliseconds_of_day. A run over midnight shows a
/// negative time.
void report_time(std::int32_t start_clock, std::int32_t end_clock, text_writer& console);

/// Reports by how much smaller the output is; sizes in bytes.
void report_reduction(std::uint64_t input_size, std::uint64_t output_size, text_writer& console);

}  // namespace trellion
