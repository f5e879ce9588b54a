#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "bytes.h"
#include "settings.h"

namespace trellion {

/// What a repair has done, for a program that calls it: the console is for people.
struct repair_summary {
  std::int64_t groups = 0;
  std::int64_t group_bytes = 0;    ///< of the text that the groups take up
  std::int64_t polygons_read = 0;  ///< those of all groups
  /// Of those, the ones that have fewer than three points when they are cleaned. They fall away; a
  /// careful repair passes them on, and with them those whose area is zero in all.
  std::int64_t without_area = 0;
  std::int64_t mergers = 0;        ///< each makes one polygon of two
  std::int64_t polygons_left = 0;  ///< paths written in place of the groups
  /// The areas of a group's polygons before joining, their signs left aside, do not sum up to those
  /// of the outlines after it: polygons on the same side of an edge that they share (a fold) have
  /// been joined, and subtracted from each other. Where none is lost, and no polygon crosses
  /// itself, the outlines wind round the same area as the polygons did.
  bool area_lost = false;
};

/// Is told before each group is joined how many bytes of the text are left, its own among them.
using progress_report = std::function<void(std::size_t bytes_left)>;

/// Reads a text to its end, joins the polygons of its groups and writes the repaired text; what is
/// found and done goes to the console. `expected_size` (bytes, 0 when unknown) saves copying.
/// Throws early_end when the console has said why the repair ends, coordinate_error for a number
/// that cannot be a coordinate, and what the source and the writers throw. The writers are not
/// flushed, and what was written until then stands.
repair_summary repair(const run_settings& settings, byte_source& input, std::size_t expected_size,
                      text_writer& console, text_writer& repaired,
                      const progress_report& tell_progress = nullptr);

}  // namespace trellion
