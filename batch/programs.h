#pragma once

#include <optional>
#include <string>

namespace trellion::batch {

/// This very program, to be run again in another role, even when its file has been replaced.
inline constexpr const char* own_executable = "/proc/self/exe";

/// The absolute path of a program in PATH.
std::optional<std::string> find_program(const std::string& name);

}  // namespace trellion::batch
