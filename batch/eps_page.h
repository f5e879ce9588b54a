#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trellion::batch {

/// What a file is, judged by its first bytes.
enum class file_kind : std::uint8_t {
  eps,      ///< begins with "%!", whether or not "EPSF" follows; a ^D may precede it
  dos_eps,  ///< PostScript after a binary head, together with a preview of the picture
  pdf,
  gzip,
  packed,  ///< in another way
  bitmap,
  markup,  ///< SVG, say
  empty,
  other
};

file_kind kind_of(std::string_view file);

/// The PostScript in a file: the section that the head of a dos_eps names, otherwise all of it.
/// Empty when that section is not within the file.
std::string_view postscript(std::string_view file);

/// In points, left < right and bottom < top, none of them farther than 10^7 from the origin.
struct bounding_box {
  double left;
  double bottom;
  double right;
  double top;

  bool operator==(const bounding_box&) const = default;
};

/// The whole points that a box covers.
struct page_frame {
  std::int64_t left;
  std::int64_t bottom;
  std::int64_t width;
  std::int64_t height;

  bool operator==(const page_frame&) const = default;
};

/// The frame of a box, with as many points more on each side.
page_frame frame_of(const bounding_box& box, std::int64_t margin = 0);

/// What the comments of a file say about its page.
struct eps_page {
  /// %%BoundingBox or, where there is none, %%HiResBoundingBox.
  std::optional<bounding_box> box;
  /// The comments that give boxes in numbers, %%BoundingBox first, verbatim, without line ends.
  std::vector<std::string> box_lines;
  std::string title_line;  ///< of the header, verbatim; empty where there is none
};

/// Reads the comments of PostScript with any line ends. Of each kind the last sound one in the
/// header counts, else the last one in the file; those of embedded documents and data do not, nor
/// any of more than 1000 characters. A box without area or out of bounds is none.
eps_page read_page(std::string_view eps);

/// The comment that gives the frame as a file's box, without a line end.
std::string bounding_box_line(const page_frame& frame);

/// What makes Ghostscript draw on a page of just the frame, when it stands in front of a file and
/// the page's size is fixed at the frame's (-dFIXEDMEDIA, -dDEVICEWIDTHPOINTS,
/// -dDEVICEHEIGHTPOINTS; no -dEPSCrop). The origin moves when the device is set up, so that neither
/// other comments in the file nor initgraphics or names of paper move it back, and setpagedevice,
/// which has no place in a figure, does nothing.
std::string framing_head(const page_frame& frame);

}  // namespace trellion::batch
