#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "batch/child.h"
#include "batch/interruption.h"
#include "batch/supervisor.h"

namespace trellion::batch {

/// How a child process ended.
struct child_result {
  /// `killed` by a signal; `stopped` by us, since its output was enough.
  enum class ending { exited, killed, timed_out, interrupted, stopped };

  ending how = ending::exited;
  int status = 0;        ///< exit status, or the number of the signal that killed it
  std::string messages;  ///< the end of what it wrote on standard error, no control characters

  [[nodiscard]] bool succeeded() const { return how == ending::exited && status == 0; }
  /// What went wrong, in words: the most telling line of `messages`, if there are any.
  [[nodiscard]] std::string reason() const;
};

/// Takes what a child writes on standard output, piece by piece. False: enough, it is killed.
using output_taker = std::function<bool(std::string_view bytes)>;

/// Runs programs as children that never outlive us: in a given directory, which is also their
/// directory for temporary files, with nothing to read.
class process_runner {
 public:
  /// `open_files` is the limit on them that children get: what raise_file_limit returned.
  process_runner(const interruption& interrupted, const child_limits& limits,
                 std::uint64_t open_files = UINT64_MAX)
      : interrupted_(interrupted), limits_(limits), open_files_(open_files) {}

  /// Runs a program, whose path comes first in the command, and waits for its end. When it takes
  /// too long, its output is enough, or an interruption is requested, it is killed with all
  /// processes that it has started. Time for which this process is stopped does not count. Throws
  /// run_error when the system allows no child.
  [[nodiscard]] child_result run(const std::vector<std::string>& command,
                                 const std::filesystem::path& directory,
                                 const output_taker& take) const {
    return run(command, directory, take, limits_);
  }
  /// With other limits for this run.
  [[nodiscard]] child_result run(const std::vector<std::string>& command,
                                 const std::filesystem::path& directory, const output_taker& take,
                                 const child_limits& limits) const;

 private:
  const interruption& interrupted_;
  child_limits limits_;
  std::uint64_t open_files_;
};

}  // namespace trellion::batch
