#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "files.h"
#include "repair.h"

namespace trellion::batch {

/// One repair, as it is handed to a worker: a child process that is this program again, so that no
/// file can harm the work on another, and each has a limit of its own.
struct repair_request {
  std::filesystem::path source;
  std::filesystem::path result;
  std::int32_t merge_limit = 0;
  std::int32_t min_separators = 2;
  bool remove_mesh = false;
  std::vector<group_range> left_alone;

  bool operator==(const repair_request&) const = default;
};

/// What a repair did, or why it ended early.
using repair_outcome = std::variant<repair_summary, early_end>;

/// The first argument that makes the program a worker.
inline constexpr std::string_view worker_argument = "--worker";

/// The arguments that make the program do a repair, and the way back; nothing when they are none.
std::vector<std::string> worker_arguments(const repair_request& request);
std::optional<repair_request> read_worker_arguments(std::span<const char* const> arguments);

/// What the worker says on standard output, and the way back; nothing when it is not all there.
void write_outcome(const repair_outcome& outcome, text_writer& out);
std::optional<repair_outcome> read_outcome(std::string_view text);

/// Repairs a file. The result is on disk, complete, when a summary comes back. Throws run_error.
repair_outcome work(const repair_request& request);

/// Whether the arguments after the program's name make it a worker, of either kind.
bool is_worker(std::span<const char* const> arguments);

/// The worker's main: the arguments after the program's name. Says why it failed on standard error.
int run_worker(std::span<const char* const> arguments);

}  // namespace trellion::batch
