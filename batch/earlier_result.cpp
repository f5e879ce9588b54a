#include "batch/earlier_result.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <system_error>

#include "batch/eps_page.h"
#include "batch/whole_file.h"
#include "files.h"
#include "pdf/result_mark.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view processing_mark = "%%Processed by trellion ";
constexpr std::string_view blanks = " \t\r\n\f";

std::string_view trimmed(std::string_view text) {
  const std::size_t last = text.find_last_not_of(blanks);
  return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

/// The processing lines among the comments that a text begins with.
struct processing {
  int lines = 0;
  std::string_view rest;  ///< what follows the comments
};

processing processing_of(std::string_view text) {
  processing found;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    const std::size_t begin = line.find_first_not_of(" \t\f");
    if (begin != std::string_view::npos && line[begin] != '%') break;
    if (line.starts_with(processing_mark)) ++found.lines;
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  found.rest = text;
  return found;
}

/// What ends with the last such character, or all.
std::string_view after_last(std::string_view text, std::string_view characters) {
  return text.substr(text.find_last_of(characters) + 1);
}

/// How often a text has a line, blanks at its end left aside.
std::ptrdiff_t count_lines(std::string_view text, std::string_view line) {
  std::ptrdiff_t count = 0;
  for (std::size_t at = text.find(line); at != std::string_view::npos;
       at = text.find(line, at + line.size())) {
    const std::string_view rest = text.substr(at + line.size());
    const bool begins = at == 0 || text[at - 1] == '\n' || text[at - 1] == '\r';
    if (begins && trimmed(rest.substr(0, rest.find_first_of("\r\n"))).empty()) ++count;
  }
  return count;
}

/// Whether a repaired text goes on to its end. All lines but those of polygons pass through, so
/// that the last is there as often as in the original, wherever somebody added another. Where it
/// is one of polygons its last operator at least is the same.
bool is_whole_text(std::string_view repaired, std::string_view original) {
  repaired = trimmed(repaired);
  original = trimmed(original);
  if (repaired.empty()) return false;
  if (repaired.ends_with("%%EOF")) return true;
  const std::string_view line = after_last(original, "\r\n");
  if (line.empty() || count_lines(repaired, line) >= count_lines(original, line)) return true;
  const bool has_numbers = line.find_first_of("0123456789") != std::string_view::npos;
  return has_numbers && after_last(repaired, blanks) == after_last(original, blanks);
}

/// The length in which readers look for what begins and ends a document.
constexpr std::size_t pdf_margin = 1024;

bool has_pdf_mark(std::string_view pdf) {
  return pdf.substr(0, pdf_margin).find(pdf::result_mark) != std::string_view::npos;
}

earlier_result judge_pdf(std::string_view result, std::string_view original) {
  if (result == original) return earlier_result::complete;
  if (!has_pdf_mark(result)) return earlier_result::not_ours;
  const std::size_t tail = result.size() - std::min(result.size(), pdf_margin);
  return result.find("%%EOF", tail) == std::string_view::npos ? earlier_result::unfinished
                                                              : earlier_result::complete;
}

}  // namespace

earlier_result judge_result(std::string_view result, std::string_view original) {
  if (result.empty()) return earlier_result::unfinished;
  if (kind_of(result) == file_kind::pdf) return judge_pdf(result, original);
  const std::string_view drawn = postscript(original);
  const processing found = processing_of(result);
  if (found.lines <= processing_of(drawn).lines) return earlier_result::not_ours;
  return is_whole_text(found.rest, drawn) ? earlier_result::complete : earlier_result::unfinished;
}

earlier_result look_for_result(const fs::path& place, const fs::path& original) {
  std::error_code ignored;
  if (!fs::exists(fs::symlink_status(place, ignored))) return earlier_result::none;
  if (!fs::is_regular_file(place, ignored)) return earlier_result::not_ours;
  std::string result;
  try {
    result = read_whole(place);
  } catch (const run_error&) {
    return earlier_result::not_ours;
  }
  return judge_result(result, read_whole(original));
}

bool is_marked(std::string_view text) {
  if (kind_of(text) == file_kind::pdf) return has_pdf_mark(text);
  const processing found = processing_of(text);
  return found.lines > 0 && !found.rest.empty();
}

bool is_marked_file(const fs::path& file) {
  try {
    input_file opened(file);
    std::string head;
    // Mostly this is enough; a preview in comments makes them long.
    for (std::size_t wanted = std::size_t{8} << 10; processing_of(head).rest.empty(); wanted *= 2) {
      std::size_t size = head.size();
      head.resize(wanted);
      while (size < wanted) {
        const std::size_t count = opened.read(head.data() + size, wanted - size);
        if (count == 0) break;
        size += count;
      }
      head.resize(size);
      if (size < wanted) break;
    }
    return is_marked(head);
  } catch (const run_error&) {
    return false;
  }
}

}  // namespace trellion::batch
