#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "options.h"
#include "process.h"

namespace trellion::batch {

/// What became of a file.
enum class verdict {
  written,          ///< the result is in its place
  exists,           ///< there is a result already
  nothing_to_join,  ///< no polygons, or none that share an edge
  not_smaller,      ///< the result was not kept
  withheld,         ///< the result shows another picture, or none
  failed,
  interrupted,
};

constexpr bool is_good(verdict v) { return v < verdict::withheld; }

/// The row of a file in the table. Counts of -1 are unknown.
struct file_report {
  std::filesystem::path file;
  verdict result = verdict::interrupted;
  std::string way;  ///< the options of trellion, and whether there was a detour
  std::int64_t polygons_before = -1;
  std::int64_t polygons_after = -1;
  std::int64_t bytes_before = -1;
  std::int64_t bytes_after = -1;
  std::string picture;  ///< what the comparison of the pictures showed
  double seconds = 0;
  std::string reason;  ///< why there is no result
};

/// Repairs a file as the options say, in a private directory beside it, and puts the result in its
/// place when it is good. Everything that goes wrong is in the report.
file_report repair_file(const std::filesystem::path& file, const batch_options& options,
                        const process_runner& runner);

}  // namespace trellion::batch
