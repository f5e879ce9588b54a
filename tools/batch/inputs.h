#pragma once

#include <filesystem>
#include <vector>

namespace trellion::batch {

/// The directory that a file is in.
std::filesystem::path directory_of(const std::filesystem::path& file);

/// Where the result of an input goes: beside it, "_r" before the last "." of its name.
std::filesystem::path result_path(const std::filesystem::path& input);

/// The named files, and for every folder the files below it whose names end in .eps, .epsf or
/// .epsi, in order of their names; what is hidden and results of other files are left out. No
/// result path occurs twice. What cannot be looked into is reported on standard error, and
/// `complete` is made false.
std::vector<std::filesystem::path> find_inputs(const std::vector<std::filesystem::path>& named,
                                               bool& complete);

}  // namespace trellion::batch
