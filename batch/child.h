#pragma once

#include <sys/types.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "batch/descriptors.h"
#include "batch/supervisor.h"

namespace trellion::batch {

/// What a child gets of the process as it was before we changed it.
struct inheritance {
  sigset_t signal_mask;
  std::uint64_t open_files;
};

/// A program running below a supervisor: in a given directory, which is also its directory for
/// temporary files, with nothing to read. At the end of its life it is gone, with all processes of
/// its group.
class child {
 public:
  /// Throws run_error when the system allows no child.
  child(const std::vector<std::string>& command, const std::filesystem::path& directory,
        const child_limits& limits, const inheritance& inherited);
  ~child();
  child(const child&) = delete;
  child& operator=(const child&) = delete;

  /// What it writes on standard output and standard error. They end after the program.
  [[nodiscard]] const file_descriptor& output() const { return output_.read; }
  [[nodiscard]] const file_descriptor& messages() const { return messages_.read; }
  /// Can be read from when the program has ended; to be polled.
  [[nodiscard]] const file_descriptor& lifeline() const { return lifeline_.ours; }
  /// Waits for the end of the program, and says how it ended.
  supervisor_report end();

 private:
  void finish();

  pipe_ends output_;
  pipe_ends messages_;
  connection_ends lifeline_;
  pid_t supervisor_ = 0;  ///< and the number of the group; 0 when all is over
  int status_ = 0;        ///< of the supervisor
};

}  // namespace trellion::batch
