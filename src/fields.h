#pragma once

#include <cstdint>
#include <string>

namespace trellion {

/// The value right-aligned in `width` columns; a row of asterisks when it does not fit.
std::string integer_field(std::int64_t value, int width);

/// The value with `decimals` decimals, right-aligned in `width` columns; asterisks when it does
/// not fit. A value that rounds to zero from below keeps its sign ("-0.00").
std::string fixed_field(float value, int width, int decimals);

}  // namespace trellion
