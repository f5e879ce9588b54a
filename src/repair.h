#pragma once

#include <cstddef>

#include "files.h"
#include "settings.h"

namespace trellion {

/// Reads a text to its end, joins the polygons of its groups and writes the repaired text; what is
/// found and done goes to the console. `expected_size` (bytes, 0 when unknown) saves copying.
/// Throws early_end when the console has said why the repair ends, coordinate_error for a number
/// that cannot be a coordinate, and what the source and the writers throw. The writers are not
/// flushed, and what was written until then stands.
void repair(const run_settings& settings, byte_source& input, std::size_t expected_size,
            text_writer& console, text_writer& repaired);

}  // namespace trellion
