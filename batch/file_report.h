#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace trellion::batch {

/// What became of a file.
enum class verdict {
  written,          ///< the result is in its place
  possible,         ///< the result could be kept, but nothing is to be written
  exists,           ///< there is a result already
  skipped,          ///< it is a result itself
  nothing_to_join,  ///< no polygons, or none that share an edge
  not_kept,         ///< the result is no gain
  withheld,         ///< the result shows another picture, or none
  failed,
  interrupted,
};

/// Whether a run over a folder can go by as if nothing had happened.
bool is_good(verdict result);

/// Whether a user should hear of one end before another, when several ways ended differently.
bool is_graver(verdict a, verdict b);

/// Pixels of hairlines in a drawing, by who drew it; unknown where nobody did.
struct hairline_counts {
  std::optional<std::int64_t> ghostscript;
  std::optional<std::int64_t> cairo;
};

/// By all who drew it.
std::int64_t sum(const hairline_counts& counts);

/// The row of a file in the table. What is unknown has no value.
struct file_report {
  std::filesystem::path file;
  verdict result = verdict::interrupted;
  std::string way;  ///< the options of trellion, and whether there was a detour
  std::optional<std::int64_t> polygons_before;
  std::optional<std::int64_t> polygons_after;
  std::optional<std::int64_t> bytes_before;
  std::optional<std::int64_t> bytes_after;
  std::string picture;  ///< what the comparison of the pictures showed
  hairline_counts hairlines_before;
  hairline_counts hairlines_after;
  double seconds = 0;
  bool is_stale = false;    ///< the figure is newer than the result that exists
  std::string reason;       ///< why there is no result, or what is to be said of it
  std::string earlier_row;  ///< of the report that told when the result was written; mostly empty
};

/// A part of a page, in points from its left and upper edges, as pictures count; PostScript counts
/// from below.
struct page_part {
  double left;
  double top;
  double right;
  double bottom;
};

/// Work that leads to no result that can be kept: how it ends, and why, in words for the user.
struct dead_end {
  verdict result;
  std::string reason;
  /// Where the picture changed, if it did at few places.
  std::optional<page_part> place = std::nullopt;
  bool is_of_way = false;  ///< another way of repairing may end otherwise
};

}  // namespace trellion::batch
