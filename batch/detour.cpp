#include "batch/detour.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "files.h"

namespace trellion::batch {
namespace {

// Lines of pdftops, with the line end before them.
constexpr std::string_view end_of_comments = "\n%%EndComments\n";
constexpr std::string_view end_of_prolog = "\n%%EndProlog\n";
constexpr std::string_view begin_of_page = "\npdfStartPage\n%%EndPageSetup\n";

/// What draws the page; empty where that is not to be found.
std::string_view page_content(std::string_view eps) {
  const std::size_t prolog = std::min(eps.find(end_of_prolog), eps.size());
  const std::size_t page = eps.find(begin_of_page, prolog);
  return page == std::string_view::npos ? std::string_view()
                                        : eps.substr(page + begin_of_page.size());
}

bool is_about_page(std::string_view line) {
  return line.starts_with("%%BoundingBox:") || line.starts_with("%%HiResBoundingBox:");
}

/// The comments that the original has on its page, as lines.
std::string page_lines(const eps_page& original) {
  std::string lines;
  if (!original.title_line.empty()) lines += original.title_line + '\n';
  const auto is_plain = [](const std::string& line) { return line.starts_with("%%BoundingBox:"); };
  if (std::none_of(original.box_lines.begin(), original.box_lines.end(), is_plain)) {
    lines += bounding_box_line(frame_of(original.box.value())) + '\n';
  }
  for (const std::string& line : original.box_lines) lines += line + '\n';
  return lines;
}

}  // namespace

bool is_whole(std::string_view eps) { return eps.ends_with("\n%%EOF\n"); }

bool is_one_bitmap(std::string_view eps) {
  // Any other page begins with the graphics state.
  return page_content(eps).starts_with("gsave\n[");
}

bool has_calibrated_colours_only(std::string_view eps) {
  const std::string_view page = eps.substr(std::min(eps.find(end_of_prolog), eps.size()));
  return page.find("/CIEBased") != std::string_view::npos &&
         page.find("/DeviceCMYK") == std::string_view::npos;
}

std::string with_page_of(std::string_view detoured, const eps_page& original,
                         const page_frame& frame) {
  const std::optional<bounding_box> box = read_page(detoured).box;
  if (!box || frame_of(*box) != page_frame{0, 0, frame.width, frame.height}) {
    throw run_error("pdftops: the page has another size");
  }
  const std::string_view content = page_content(detoured);
  const std::size_t header_end = detoured.find(end_of_comments);
  if (content.empty() || header_end == std::string_view::npos) {
    throw run_error("pdftops: there is no page");
  }
  std::string_view header = detoured.substr(0, header_end + 1);
  std::string_view rest = detoured.substr(header.size());
  rest.remove_suffix(content.size());

  std::string result;
  result.reserve(detoured.size() + 4096);
  for (bool is_first = true; !header.empty(); is_first = false) {
    const std::string_view line = header.substr(0, header.find('\n') + 1);
    header.remove_prefix(line.size());
    if (!is_about_page(line)) result += line;
    if (is_first) result += page_lines(original);
  }
  result += rest;
  if (frame.left != 0 || frame.bottom != 0) {
    result += std::to_string(frame.left) + ' ' + std::to_string(frame.bottom) + " translate\n";
  }
  return result += content;
}

}  // namespace trellion::batch
