#include "batch/worker.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <new>
#include <utility>

#include "batch/lines.h"
#include "batch/pdf_worker.h"
#include "postscript_path_queue.h"

namespace trellion::batch {
namespace {

/// What the console would get is for people; the summary has what we want to know.
class no_console : public byte_sink {
 public:
  void write(std::string_view /*bytes*/) override {}
};

constexpr std::array eps_counts = {
    std::pair("groups", &repair_summary::groups),
    std::pair("group_bytes", &repair_summary::group_bytes),
    std::pair("polygons_read", &repair_summary::polygons_read),
    std::pair("without_area", &repair_summary::without_area),
    std::pair("mergers", &repair_summary::mergers),
    std::pair("polygons_left", &repair_summary::polygons_left),
};

constexpr std::array reasons = {
    std::pair("no_operators", end_reason::no_operators),
    std::pair("no_safe_name", end_reason::no_safe_name),
    std::pair("collapsed_path", end_reason::collapsed_path),
};

/// "FIRST-LAST," for each.
std::string text_of(const std::vector<group_range>& ranges) {
  std::string text;
  for (const group_range& range : ranges) {
    text += std::to_string(range.first) + '-' + std::to_string(range.last) + ',';
  }
  return text;
}

bool read_ranges(std::string_view text, std::vector<group_range>& ranges) {
  while (!text.empty()) {
    const std::size_t dash = text.find('-');
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos || dash > comma) return false;
    group_range& range = ranges.emplace_back();
    if (!read_number(text.substr(0, dash), range.first) ||
        !read_number(text.substr(dash + 1, comma - dash - 1), range.last)) {
      return false;
    }
    text.remove_prefix(comma + 1);
  }
  return true;
}

}  // namespace

std::vector<std::string> worker_arguments(const repair_request& request) {
  return {std::string(worker_argument),
          request.source.string(),
          request.result.string(),
          std::to_string(request.merge_limit),
          std::to_string(request.min_separators),
          request.remove_mesh ? "1" : "0",
          text_of(request.left_alone)};
}

std::optional<repair_request> read_worker_arguments(std::span<const char* const> arguments) {
  if (arguments.size() != 7 || arguments[0] != worker_argument) return std::nullopt;
  repair_request request;
  request.source = arguments[1];
  request.result = arguments[2];
  int remove_mesh = 0;
  if (!read_number(arguments[3], request.merge_limit) ||
      !read_number(arguments[4], request.min_separators) ||
      !read_number(arguments[5], remove_mesh) || !read_ranges(arguments[6], request.left_alone)) {
    return std::nullopt;
  }
  request.remove_mesh = remove_mesh != 0;
  return request;
}

void write_outcome(const repair_outcome& outcome, text_writer& out) {
  if (const auto* ended = std::get_if<early_end>(&outcome)) {
    for (const auto& [name, reason] : reasons) {
      if (reason == ended->reason) out.put("ended ").put(name).put('\n');
    }
    return;
  }
  const auto& summary = std::get<repair_summary>(outcome);
  for (const auto& [name, count] : eps_counts) {
    out.put(name).put(' ').put(std::to_string(summary.*count)).put('\n');
  }
  out.put("area_lost ").put(summary.area_lost ? "1" : "0").put('\n');
}

std::optional<repair_outcome> read_outcome(std::string_view text) {
  if (const auto name = take_value(text, "ended")) {
    const auto* const found =
        std::ranges::find(reasons, *name, [](const auto& entry) { return entry.first; });
    if (found == reasons.end() || !text.empty()) return std::nullopt;
    return early_end{found->second};
  }
  repair_summary summary;
  for (const auto& [name, count] : eps_counts) {
    const auto value = take_value(text, name);
    if (!value || !read_number(*value, summary.*count)) return std::nullopt;
  }
  const auto lost = take_value(text, "area_lost");
  if (!lost || !text.empty()) return std::nullopt;
  summary.area_lost = *lost != "0";
  return summary;
}

repair_outcome work(const repair_request& request) {
  run_settings settings;
  settings.merge_limit = request.merge_limit;
  settings.min_separators = request.min_separators;
  settings.remove_mesh = request.remove_mesh;
  settings.careful = true;
  settings.left_alone = request.left_alone;
  no_console nobody;
  text_writer console(nobody);
  input_file input(request.source);
  output_file result(request.result, input);
  text_writer repaired(result);
  try {
    const repair_summary summary =
        trellion::repair(settings, input, input.expected_size(), console, repaired);
    repaired.flush();
    result.close();
    return summary;
  } catch (const early_end& end) {
    return end;
  }
}

int run_worker(std::span<const char* const> arguments) {
  try {
    console_output standard_output;
    text_writer out(standard_output);
    if (const auto request = read_worker_arguments(arguments)) {
      write_outcome(work(*request), out);
    } else if (const auto pdf_request = read_pdf_worker_arguments(arguments)) {
      write_outcome(work(*pdf_request), out);
    } else if (const auto move = read_pdf_mover_arguments(arguments)) {
      write_moved(move->source, move->result, move->by);
    } else {
      throw run_error("the worker does not understand its arguments");
    }
    out.flush();
    return 0;
  } catch (const std::bad_alloc&) {
    std::fputs("not enough memory\n", stderr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
  }
  return 1;
}

bool is_worker(std::span<const char* const> arguments) {
  return !arguments.empty() &&
         (arguments[0] == worker_argument || arguments[0] == pdf_worker_argument ||
          arguments[0] == pdf_mover_argument);
}

}  // namespace trellion::batch
