#pragma once

#include <filesystem>
#include <vector>

namespace trellion::batch {

/// The directory that a file is in.
std::filesystem::path directory_of(const std::filesystem::path& file);

/// Where the result of an input goes: beside it, "_r" before the last "." of its name.
std::filesystem::path result_path(const std::filesystem::path& input);

/// Whether a name ends in .pdf, in whatever letters.
bool is_pdf_name(const std::filesystem::path& name);

/// The named files, and for every folder the files below it whose names end in .eps, .epsf, .epsi
/// or, where PDF can be repaired, .pdf, in order of their names. No file occurs twice; what is
/// hidden, and results of other inputs, are left out. What cannot be looked into is reported on
/// standard error, and makes `complete` false.
std::vector<std::filesystem::path> find_inputs(const std::vector<std::filesystem::path>& named,
                                               bool& complete);

/// Whether two paths are spellings of one place, or lead to one file.
bool is_same_place(const std::filesystem::path& a, const std::filesystem::path& b);

}  // namespace trellion::batch
