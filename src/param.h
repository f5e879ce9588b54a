#pragma once

#include <string_view>

namespace trellion {

/// The line end of everything the program writes, whatever the input used.
inline constexpr char nl = '\n';

/// Names the program in the banner and in the line it leaves in repaired files.
inline constexpr std::string_view version_text = "trellion version 3 (November 2011)";

}  // namespace trellion
