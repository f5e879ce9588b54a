#include "batch/eps_page.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <system_error>
#include <utility>

namespace trellion::batch {
namespace {

constexpr std::size_t max_comment_length = 1000;
constexpr double max_coordinate = 1e7;

// The comments that give boxes, in the order in which they are passed on.
constexpr std::array<std::string_view, 4> box_names = {
    "%%BoundingBox:", "%%HiResBoundingBox:", "%%ExactBoundingBox:", "%%CropBox:"};

constexpr std::string_view dos_magic = "\xC5\xD0\xD3\xC6";
constexpr std::size_t dos_head_size = 30;

// How files begin that are taken for figures by mistake.
constexpr std::array<std::pair<std::string_view, file_kind>, 11> other_kinds = {{
    {"\x1F\x8B", file_kind::gzip},
    {"BZh", file_kind::packed},
    {"\xFD"
     "7zXZ",
     file_kind::packed},
    {"\x28\xB5\x2F\xFD", file_kind::packed},
    {"PK\x03\x04", file_kind::packed},
    {"\x89PNG", file_kind::bitmap},
    {"\xFF\xD8\xFF", file_kind::bitmap},
    {"GIF8", file_kind::bitmap},
    {"<?xml", file_kind::markup},
    {"<svg", file_kind::markup},
    {"<!DOCTYPE", file_kind::markup},
}};

/// A number in the head of a dos_eps: four bytes, the lowest first.
std::size_t number_at(std::string_view head, std::size_t position) {
  std::size_t value = 0;
  for (std::size_t i = 4; i-- > 0;) {
    value = value * 256 + static_cast<unsigned char>(head[position + i]);
  }
  return value;
}

std::string_view without_end_of_transmission(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of('\x04'), text.size()));
  return text;
}

bool is_blank(char c) { return c == ' ' || c == '\t'; }

/// Takes a number that ends with the text or a blank; nothing when there is none.
std::optional<double> take_number(std::string_view& text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || (at != end && !is_blank(*at))) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(at - text.data()));
  return value;
}

std::optional<bounding_box> parse_box(std::string_view text) {
  std::array<double, 4> numbers{};
  for (double& number : numbers) {
    const std::optional<double> value = take_number(text);
    // What is not a number compares as false.
    if (!value || !(std::abs(*value) <= max_coordinate)) return std::nullopt;
    number = *value;
  }
  const bounding_box box{numbers[0], numbers[1], numbers[2], numbers[3]};
  if (!(box.left < box.right && box.bottom < box.top)) return std::nullopt;
  return box;
}

/// Gathers what matters from a file's comments, line by line.
class comment_reader {
 public:
  void read(std::string_view line, bool in_header) {
    if (skip(line)) return;
    if (in_header && line.starts_with("%%Title:")) title_ = line;
    for (std::size_t i = 0; i < box_names.size(); ++i) {
      if (!line.starts_with(box_names[i])) continue;
      const std::optional<bounding_box> box = parse_box(line.substr(box_names[i].size()));
      if (!box) return;
      found_box& found = found_[i];
      if (in_header || !found.in_header) found = {line, box, in_header};
      return;
    }
  }

  [[nodiscard]] eps_page page() const {
    eps_page page;
    page.title_line = title_;
    page.box = found_[0].box ? found_[0].box : found_[1].box;
    for (const found_box& found : found_) {
      if (found.box) page.box_lines.emplace_back(found.line);
    }
    return page;
  }

 private:
  struct found_box {
    std::string_view line;
    std::optional<bounding_box> box;
    bool in_header = false;
  };

  /// Whether a line is inside of something embedded, or begins or ends such a thing.
  bool skip(std::string_view line) {
    if (!end_of_data_.empty()) {
      if (line.starts_with(end_of_data_)) end_of_data_ = {};
      return true;
    }
    if (line.starts_with("%%BeginData")) end_of_data_ = "%%EndData";
    if (line.starts_with("%%BeginBinary")) end_of_data_ = "%%EndBinary";
    if (!end_of_data_.empty()) return true;
    if (line.starts_with("%%BeginDocument")) ++depth_;
    if (line.starts_with("%%EndDocument") && depth_ > 0) {
      --depth_;
      return true;
    }
    return depth_ > 0;
  }

  std::array<found_box, box_names.size()> found_;
  std::string_view title_;
  std::string_view end_of_data_;  // what ends the data at hand; empty outside
  std::size_t depth_ = 0;         // of documents within documents
};

/// The line that the text begins with, without its end; cut off a little past the longest comment.
std::string_view first_line(std::string_view text) {
  text = text.substr(0, max_comment_length + 1);
  return text.substr(0, text.find_first_of("\r\n"));
}

/// Takes the header: the lines that are comments, up to %%EndComments.
void read_header(std::string_view& text, comment_reader& reader) {
  while (text.starts_with('%')) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    if (line.size() <= max_comment_length) reader.read(line, true);
    text.remove_prefix(line.size());
    if (text.starts_with("\r\n")) text.remove_prefix(1);
    if (!text.empty()) text.remove_prefix(1);
    if (line.starts_with("%%EndComments")) return;
  }
}

/// Reads the comments among whatever else there is.
void read_body(std::string_view text, comment_reader& reader) {
  for (std::size_t at = text.find("%%"); at != std::string_view::npos; at = text.find("%%", at)) {
    const bool starts_line = at == 0 || text[at - 1] == '\n' || text[at - 1] == '\r';
    if (starts_line) {
      const std::string_view line = first_line(text.substr(at));
      if (line.size() <= max_comment_length) reader.read(line, false);
      at += line.size();
    } else {
      at += 2;
    }
  }
}

}  // namespace

file_kind kind_of(std::string_view file) {
  if (file.empty()) return file_kind::empty;
  if (file.starts_with(dos_magic)) return file_kind::dos_eps;
  if (file.starts_with("%PDF")) return file_kind::pdf;
  for (const auto& [begin, kind] : other_kinds) {
    if (file.starts_with(begin)) return kind;
  }
  // The name of the first file in the archive stands before that.
  if (file.substr(std::min<std::size_t>(file.size(), 257)).starts_with("ustar"))
    return file_kind::packed;
  if (without_end_of_transmission(file).starts_with("%!")) return file_kind::eps;
  // Readers look for it that far.
  const bool is_pdf = file.substr(0, 1024).find("%PDF-") != std::string_view::npos;
  return is_pdf ? file_kind::pdf : file_kind::other;
}

std::string_view postscript(std::string_view file) {
  if (kind_of(file) != file_kind::dos_eps) return file;
  if (file.size() < dos_head_size) return {};
  const std::size_t offset = number_at(file, 4);
  const std::size_t length = number_at(file, 8);
  if (offset < dos_head_size || offset > file.size() || length > file.size() - offset) return {};
  return file.substr(offset, length);
}

page_frame frame_of(const bounding_box& box, std::int64_t margin) {
  const std::int64_t left = static_cast<std::int64_t>(std::floor(box.left)) - margin;
  const std::int64_t bottom = static_cast<std::int64_t>(std::floor(box.bottom)) - margin;
  const std::int64_t right = static_cast<std::int64_t>(std::ceil(box.right)) + margin;
  const std::int64_t top = static_cast<std::int64_t>(std::ceil(box.top)) + margin;
  return {left, bottom, right - left, top - bottom};
}

eps_page read_page(std::string_view eps) {
  eps = without_end_of_transmission(eps);
  comment_reader reader;
  read_header(eps, reader);
  read_body(eps, reader);
  return reader.page();
}

std::string bounding_box_line(const page_frame& frame) {
  return "%%BoundingBox: " + std::to_string(frame.left) + ' ' + std::to_string(frame.bottom) + ' ' +
         std::to_string(frame.left + frame.width) + ' ' +
         std::to_string(frame.bottom + frame.height);
}

std::string framing_head(const page_frame& frame) {
  return "%!PS-Adobe-3.0 EPSF-3.0\n" + bounding_box_line(frame) +
         "\n%%EndComments\n<< /Install { " + std::to_string(-frame.left) + ' ' +
         std::to_string(-frame.bottom) +
         " translate } >> setpagedevice /setpagedevice { pop } bind def\n";
}

}  // namespace trellion::batch
