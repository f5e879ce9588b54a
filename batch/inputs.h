#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace trellion::batch {

/// The directory that a file is in.
std::filesystem::path directory_of(const std::filesystem::path& file);

/// Where the result of an input goes unless that is told: beside it, "_r" before the last "." of
/// its name.
std::filesystem::path result_path(const std::filesystem::path& input);

/// Whether a name ends in .eps, .epsf or .epsi, in whatever letters; in .pdf.
bool is_eps_name(const std::filesystem::path& name);
bool is_pdf_name(const std::filesystem::path& name);

/// A figure, and where its result goes.
struct work_item {
  std::filesystem::path file;
  std::filesystem::path result;
  std::string refusal;  ///< why it cannot be worked on; mostly empty
};

struct found_inputs {
  std::vector<work_item> figures;
  /// Files that were named and are results of ours, of other figures.
  std::vector<std::filesystem::path> results;
  bool complete = true;  ///< false when a folder could not be looked into
};

/// The named files, and for every folder the files below it whose names end in .eps, .epsf, .epsi
/// or, where PDF can be repaired, .pdf, in order of their names. No file occurs twice; what is
/// hidden in folders, and results of ours, whatever their names, are left out. What cannot be
/// looked into is reported on standard error. Results go beside their figures or, under the names
/// of these, into the output directory, in the same folders below it as below the folder that was
/// named. It is not searched for figures when it is within such a folder. Where results would get
/// in each other's way, or in that of their figures, the figure is refused.
found_inputs find_inputs(const std::vector<std::filesystem::path>& named,
                         const std::filesystem::path& output_directory = {});

/// The names in a list: one in a line, which may end with CR LF, or, when there are such, a NUL
/// after each.
std::vector<std::filesystem::path> names_in(const std::string& list);

/// Whether two paths are spellings of one place, or lead to one file.
bool is_same_place(const std::filesystem::path& a, const std::filesystem::path& b);

}  // namespace trellion::batch
