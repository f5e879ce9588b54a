#include "batch/pdf_worker.h"

#include <array>
#include <cstdio>
#include <utility>

#include "batch/lines.h"
#include "batch/pdf_support.h"
#ifdef TRELLION_HAS_PDF
#include "pdf/document.h"
#endif

namespace trellion::batch {
namespace {

constexpr std::array pdf_counts = {
    std::pair("streams_changed", &pdf_outcome::streams_changed),
    std::pair("polygons_read", &pdf_outcome::polygons_read),
    std::pair("polygons_left", &pdf_outcome::polygons_left),
};

std::string text_of(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.17g", value);
  return text.data();
}

/// "NUMBER WIDTH HEIGHT"
std::string text_of(const pdf::numbered_page& page) {
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), "%lld %.17g %.17g", static_cast<long long>(page.number),
                page.width, page.height);
  return text.data();
}

std::optional<pdf::numbered_page> read_numbered_page(std::string_view text) {
  const std::size_t first = text.find(' ');
  const std::size_t last = text.rfind(' ');
  pdf::numbered_page page;
  if (first == last || !read_number(text.substr(0, first), page.number) ||
      !read_number(text.substr(first + 1, last - first - 1), page.width) ||
      !read_number(text.substr(last + 1), page.height)) {
    return std::nullopt;
  }
  return page;
}

}  // namespace

std::vector<std::string> worker_arguments(const pdf_request& request) {
  return {std::string(pdf_worker_argument), request.source.string(), request.result.string(),
          request.careful ? "1" : "0", request.close ? "1" : "0"};
}

std::optional<pdf_request> read_pdf_worker_arguments(std::span<const char* const> arguments) {
  if (arguments.size() != 5 || arguments[0] != pdf_worker_argument) return std::nullopt;
  int careful = 0;
  int close = 0;
  if (!read_number(arguments[3], careful) || !read_number(arguments[4], close)) return std::nullopt;
  return pdf_request{arguments[1], arguments[2], careful != 0, close != 0};
}

std::vector<std::string> worker_arguments(const move_request& request) {
  return {std::string(pdf_mover_argument), request.source.string(), request.result.string(),
          text_of(request.by.right), text_of(request.by.up)};
}

std::optional<move_request> read_pdf_mover_arguments(std::span<const char* const> arguments) {
  if (arguments.size() != 5 || arguments[0] != pdf_mover_argument) return std::nullopt;
  move_request request{arguments[1], arguments[2], {}};
  if (!read_number(arguments[3], request.by.right) || !read_number(arguments[4], request.by.up)) {
    return std::nullopt;
  }
  return request;
}

void write_outcome(const pdf_outcome& outcome, text_writer& out) {
  for (const auto& [name, count] : pdf_counts) {
    out.put(name).put(' ').put(std::to_string(outcome.*count)).put('\n');
  }
  for (const pdf::numbered_page& page : outcome.pages) {
    out.put("page ").put(text_of(page)).put('\n');
  }
  out.put("pages ").put(std::to_string(outcome.pages.size())).put('\n');
}

std::optional<pdf_outcome> read_pdf_outcome(std::string_view text) {
  pdf_outcome outcome;
  for (const auto& [name, count] : pdf_counts) {
    const auto value = take_value(text, name);
    if (!value || !read_number(*value, outcome.*count)) return std::nullopt;
  }
  while (const auto value = take_value(text, "page")) {
    const auto page = read_numbered_page(*value);
    if (!page) return std::nullopt;
    outcome.pages.push_back(*page);
  }
  const auto n_pages = take_value(text, "pages");
  if (!n_pages || *n_pages != std::to_string(outcome.pages.size()) || !text.empty()) {
    return std::nullopt;
  }
  return outcome;
}

#ifdef TRELLION_HAS_PDF
pdf_outcome work(const pdf_request& request) {
  pdf::content_settings settings;
  settings.reorder = !request.careful;
  constexpr double every_digit = 1e-8;
  if (request.careful) settings.precision = every_digit;
  if (request.close) settings.close = pdf::closing::under;
  const pdf::document_summary summary =
      pdf::repair_document(request.source, request.result, settings);
  pdf_outcome outcome{summary.streams_changed, summary.polygons_read, summary.polygons_left, {}};
  if (outcome.streams_changed > 0) {
    outcome.pages = pdf::changed_pages(request.source, request.result);
  }
  return outcome;
}
#else
pdf_outcome work(const pdf_request& /*request*/) {
  throw run_error("this trellion-batch was built without PDF");
}

void write_moved(const std::filesystem::path& /*source*/, const std::filesystem::path& /*moved*/,
                 const shift& /*by*/) {
  throw run_error("this trellion-batch was built without PDF");
}
#endif

}  // namespace trellion::batch
