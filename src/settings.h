#pragma once

#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

#include "bytes.h"

namespace trellion {

/// Groups by their numbers, from 1; both ends belong to it.
struct group_range {
  std::int64_t first = 1;
  std::int64_t last = 0;

  bool operator==(const group_range&) const = default;
};

/// What a run is asked to do.
struct run_settings {
  std::string filename;
  std::string repaired_filename;
  std::int32_t merge_limit = 0;     ///< most points of a path that is taken up; 0 is no limit
  std::int32_t min_separators = 2;  ///< least number of operators between two polygons
  bool remove_mesh = false;
  bool verbose = false;
  /// Loses no polygon and no area: polygons that lie on each other are joined in layers (layers.h),
  /// and those without area are passed on. trellion's own command line never sets it; it is for a
  /// program that must not change a picture.
  bool careful = false;
  /// The summary is to tell whether area was lost; a careful repair tells it anyway.
  bool compare_areas = true;
  std::vector<group_range> left_alone;  ///< careful: these pass through as they stand
};

/// Takes the settings from the command line's arguments (the program's name left out), or, when
/// there are none, from answers to prompts. A missing file, a bad option and a missing name end
/// the run early, with the reason on the console. Throws run_error when the prompts' input ends
/// before the last of them is answered, or the console cannot be written while prompting.
run_settings obtain_settings(std::span<const char* const> arguments, std::istream& answers,
                             text_writer& console);

}  // namespace trellion
