#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "batch/pdf_moving.h"
#include "files.h"
#include "pdf/changed_pages.h"

namespace trellion::batch {

/// One repair of a PDF file, as it is handed to a worker.
struct pdf_request {
  std::filesystem::path source;
  std::filesystem::path result;
  bool careful = false;  ///< polygons keep their order, and numbers all their digits
  bool close = false;    ///< colours are painted under their neighbours, too

  bool operator==(const pdf_request&) const = default;
};

/// What a repair of a PDF file did.
struct pdf_outcome {
  std::int64_t streams_changed = 0;
  std::int64_t polygons_read = 0;
  std::int64_t polygons_left = 0;
  std::vector<pdf::numbered_page> pages;  ///< those that may look different now

  bool operator==(const pdf_outcome&) const = default;
};

/// The first argument that makes the program a worker on PDF files.
inline constexpr std::string_view pdf_worker_argument = "--pdf-worker";

/// The arguments that make the program do a repair, and the way back; nothing when they are none.
std::vector<std::string> worker_arguments(const pdf_request& request);
std::optional<pdf_request> read_pdf_worker_arguments(std::span<const char* const> arguments);

/// A PDF file to be drawn moved, as it is handed to a worker.
struct move_request {
  std::filesystem::path source;
  std::filesystem::path result;
  shift by;

  bool operator==(const move_request&) const = default;
};

inline constexpr std::string_view pdf_mover_argument = "--pdf-mover";

std::vector<std::string> worker_arguments(const move_request& request);
std::optional<move_request> read_pdf_mover_arguments(std::span<const char* const> arguments);

/// What the worker says on standard output, and the way back; nothing when it is not all there.
void write_outcome(const pdf_outcome& outcome, text_writer& out);
std::optional<pdf_outcome> read_pdf_outcome(std::string_view text);

/// Repairs a file. The result is on disk, complete, when it returns. Throws run_error, also when
/// the file refuses repair or the program was built without it.
pdf_outcome work(const pdf_request& request);

}  // namespace trellion::batch
