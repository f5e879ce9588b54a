#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace trellion::batch {

/// The programs that are run as children, where they are there.
struct programs {
  std::optional<std::string> gs;
  std::optional<std::string> pdftops;
  std::optional<std::string> pdftocairo;

  [[nodiscard]] bool can_take_detours() const { return gs && pdftops; }
};

/// What trellion-batch is asked to do.
struct batch_options {
  std::vector<std::filesystem::path> inputs;  ///< files and folders
  std::optional<std::int32_t> merge_limit;
  std::optional<std::int32_t> min_separators;
  bool remove_mesh = false;
  bool auto_way = false;  ///< try all ways and take the best
  bool detour = false;
  bool replace = false;   ///< existing results of ours
  bool dry_run = false;   ///< nothing is written but the report
  bool keep_all = false;  ///< results that are not smaller, or with nothing joined
  bool verify = false;
  bool show_hairlines = false;  ///< in the table
  bool quiet = false;
  unsigned jobs = 1;
  std::chrono::seconds time_limit{300};                 ///< for each child process
  std::uint64_t memory_limit = std::uint64_t{4} << 30;  ///< bytes, for each child process
  std::filesystem::path files_from;                     ///< empty for none, "-" for standard input
  std::filesystem::path output_directory;               ///< empty: results go beside figures
  std::filesystem::path report;                         ///< empty for none
  programs tools;

  /// Whether one figure goes from standard input to standard output.
  [[nodiscard]] bool is_filter() const { return inputs.size() == 1 && inputs.front() == "-"; }
};

/// Ends the program: with help or version on standard output and status 0, or with a line about a
/// mistake on standard error and status 2.
struct early_exit {
  int status;
};

/// Reads the command line and finds the programs. Throws early_exit.
batch_options parse_options(int argc, const char* const* argv);

}  // namespace trellion::batch
